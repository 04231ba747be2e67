#include <memory>
#include <string>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/sax2/Attributes.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "scoring/pmml/ScoringSAX2Handler.h"
#include "tests/scoring/text/XmlPlatform.h"

namespace KelScoring_20 {
namespace {

/// The value that the parse throws, 0 for none.
int Parse(const std::string& document, ScoringSAX2Handler& handler, bool validates = false) {
  const std::unique_ptr<xercesc::SAX2XMLReader> reader(xercesc::XMLReaderFactory::createXMLReader());
  reader->setFeature(xercesc::XMLUni::fgSAX2CoreValidation, validates);
  reader->setFeature(xercesc::XMLUni::fgXercesDynamic, !validates);
  reader->setContentHandler(&handler);
  reader->setErrorHandler(&handler);
  try {
    reader->parse(
        xercesc::MemBufInputSource(reinterpret_cast<const XMLByte*>(document.data()), document.size(), "test"));
  } catch (ScoringSAX2Handler::HandlerState state) {
    return state;
  }
  return 0;
}

class TextCollector : public ScoringSAX2Handler {
 public:
  TextCollector() : ScoringSAX2Handler("UTF-8") {}
  void writeChars(const XMLByte* const bytes, const XMLSize_t count, xercesc::XMLFormatter* const) override {
    fText.append(reinterpret_cast<const char*>(bytes), count);
  }
  const std::string& Text() const { return fText; }

 private:
  std::string fText;
};

TEST(ScoringSAX2Handler, Alone_PassesThroughADocument) {
  ScoringSAX2Handler handler("UTF-8");
  EXPECT_EQ(Parse("<a b='1'>text<?pi x?><!-- c --><c/></a>", handler), 0);
}

TEST(ScoringSAX2Handler, FaultyDocument_EndsTheParseWithItsState) {
  for (const char* document : {"", "noise", "<a><b></a>", "<a>", "<a>&unknown;</a>", "<a b='1' b='2'/>"}) {
    ScoringSAX2Handler handler("UTF-8");
    EXPECT_EQ(Parse(document, handler), ScoringSAX2Handler::kParserReportedFatalError) << document;
  }
}

TEST(ScoringSAX2Handler, InvalidDocument_EndsTheParseWithItsState) {
  const std::string document = "<!DOCTYPE a [<!ELEMENT a EMPTY>]><a>text</a>";
  ScoringSAX2Handler handler("UTF-8");
  EXPECT_EQ(Parse(document, handler, true), ScoringSAX2Handler::kParserReportedError);
}

TEST(ScoringSAX2Handler, Characters_AreFormattedAsCharacterData) {
  TextCollector handler;
  EXPECT_EQ(Parse("<a>1 &lt; 2 &amp; \"3\"\xC3\xA9</a>", handler), 0);
  EXPECT_EQ(handler.Text(), "1 &lt; 2 &amp; \"3\"\xC3\xA9");
}

// The reader cuts text of more than a million code units, here between the halves of a pair. The formatter used to
// wait for the second half forever.
TEST(ScoringSAX2Handler, PairOfSurrogatesCutByTheReader_ComesOutWhole) {
  for (const std::string& shift : {std::string(), std::string("x")}) {
    std::string text = shift;
    for (int i = 0; i < 600'000; ++i) text += "\xF0\x9F\x98\x80";
    TextCollector handler;
    EXPECT_EQ(Parse("<a>" + text + "<b/>end</a>", handler), 0);
    EXPECT_TRUE(handler.Text() == text + "end") << handler.Text().size() << " bytes";
  }
}

TEST(ScoringSAX2Handler, TextHelpers_TreatNullAndUnservedEncodings) {
  ScoringSAX2Handler served("UTF-8");
  EXPECT_EQ(served.ToString(nullptr), "");
  EXPECT_EQ(served.ToString(u"caf\u00E9"), "caf\xC3\xA9");
  EXPECT_TRUE(ScoringSAX2Handler::IsEqual(u"PMML", "PMML"));
  EXPECT_FALSE(ScoringSAX2Handler::IsEqual(u"PMML", "pmml"));
  EXPECT_FALSE(ScoringSAX2Handler::IsEqual(nullptr, "PMML"));

  ScoringSAX2Handler unserved("no-such-encoding");
  EXPECT_EQ(unserved.ToString(nullptr), "");
  EXPECT_EQ(unserved.ToString(u"text"), "");
  ScoringTranscoder invalid("no-such-encoding");
  EXPECT_TRUE(ScoringSAX2Handler::IsEqual(&invalid, u"text", ""));
  EXPECT_FALSE(ScoringSAX2Handler::IsEqual(&invalid, u"text", "text"));
  ScoringTranscoder latin1("ISO-8859-1");
  EXPECT_TRUE(ScoringSAX2Handler::IsEqual(&latin1, u"caf\u00E9", "caf\xE9"));
  EXPECT_TRUE(ScoringSAX2Handler::IsEqual(nullptr, u"text", "text"));
}

TEST(ScoringSAX2Handler, GetAttribute_TellsAbsentFromEmpty) {
  class AttributeReader : public ScoringSAX2Handler {
   public:
    AttributeReader() : ScoringSAX2Handler("") {}
    void startElement(const XMLCh* const, const XMLCh* const, const XMLCh* const,
                      const xercesc::Attributes& attrs) override {
      EXPECT_EQ(GetAttribute(attrs, "absent"), nullptr);
      EXPECT_EQ(ToString(GetAttribute(attrs, "there")), "1");
      ASSERT_NE(GetAttribute(attrs, "empty"), nullptr);
      EXPECT_EQ(*GetAttribute(attrs, "empty"), 0);
    }
  } handler;
  EXPECT_EQ(Parse("<a there='1' empty=''/>", handler), 0);
}

}  // namespace
}  // namespace KelScoring_20
