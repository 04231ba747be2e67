// What strangers may send: whoever reads it must come to an end, soon and without opening anything.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/EntityResolver.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/XMLString.hpp>

#include "components/kelparsexml/ElementTree.h"
#include "scoring/common/KelXInputSource.h"
#include "tests/components/kelparsexml/SourceText.h"
#include "tests/components/kelparsexml/TreeDump.h"
#include "tests/support/CaseName.h"
#include "tests/support/PmmlText.h"

namespace {

using KelTest::ReadError;
using KelTest::Widen;
using KelXML_1_3::ElementTree;
using KelXML_1_3::KelXInputSource;

std::string Repeat(std::string_view text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) all += text;
  return all;
}

// Counts what happens in a pass of the parser as others of the project make it.
class Watcher : public xercesc::DefaultHandler {
 public:
  void startElement(const XMLCh*, const XMLCh*, const XMLCh*, const xercesc::Attributes&) override { ++fElements; }
  void fatalError(const xercesc::SAXParseException& error) override { throw error; }
  xercesc::InputSource* resolveEntity(const XMLCh*, const XMLCh*) override {
    ++fOpened;
    return nullptr;
  }

  int fElements = 0;
  int fOpened = 0;
};

struct SaxOutcome {
  bool failed = false;
  int elements = 0;
  int opened = 0;
};

SaxOutcome ParseSax(const std::string& document) {
  std::istringstream stream(document);
  Watcher watcher;
  const std::unique_ptr<xercesc::SAX2XMLReader> reader(xercesc::XMLReaderFactory::createXMLReader());
  reader->setContentHandler(&watcher);
  reader->setErrorHandler(&watcher);
  reader->setEntityResolver(&watcher);
  bool failed = false;
  try {
    reader->parse(KelXInputSource(stream));
  } catch (const xercesc::SAXParseException&) {
    failed = true;
  }
  return {failed, watcher.fElements, watcher.fOpened};
}

// A DOM parser as it is made by default, without an error handler.
struct DomOutcome {
  XMLSize_t errors;
  int opened;
};

DomOutcome ParseDom(const std::string& document) {
  std::istringstream stream(document);
  Watcher watcher;
  xercesc::XercesDOMParser parser;
  parser.setEntityResolver(&watcher);
  parser.parse(KelXInputSource(stream));
  return {parser.getErrorCount(), watcher.fOpened};
}

struct HostileCase {
  const char* name;
  std::string document;
  std::string error;
};

std::string NestedEntities() {
  std::string subset = "<!ENTITY a0 'ha'>";
  for (int i = 1; i < 40; ++i) {
    const std::string inner = "&a" + std::to_string(i - 1) + ";";
    subset += "<!ENTITY a" + std::to_string(i) + " '" + inner + inner + "'>";
  }
  return "<!DOCTYPE a [" + subset + "]><a>&a39;</a>";
}

constexpr auto kSubset = "line 1: a document type declaration with an internal subset is not accepted";

class HostileInputTest : public testing::TestWithParam<HostileCase> {};

TEST_P(HostileInputTest, AllReaders_EndWithError) {
  const auto& [name, document, error] = GetParam();
  EXPECT_EQ(ReadError(document), error);
  const SaxOutcome sax = ParseSax(document);
  EXPECT_TRUE(sax.failed);
  EXPECT_LE(sax.elements, 10'000);
  EXPECT_EQ(sax.opened, 0);
  const DomOutcome dom = ParseDom(document);
  EXPECT_GT(dom.errors, 0U);
  EXPECT_EQ(dom.opened, 0);
}

INSTANTIATE_TEST_SUITE_P(
    Documents, HostileInputTest,
    testing::Values(
        HostileCase{"nested_entities", NestedEntities(), kSubset},
        HostileCase{"nested_entities_utf16", Widen(NestedEntities(), 2, true, true), kSubset},
        HostileCase{"parameter_entity", "<!DOCTYPE a [<!ENTITY % b SYSTEM 'file:///etc/hostname'> %b;]><a/>", kSubset},
        HostileCase{"subset_behind_external", "<!DOCTYPE a SYSTEM 'file:///etc/hostname' [ ]><a/>", kSubset},
        HostileCase{"hidden_by_comment", "<!-- > --><!DOCTYPE a [<!ENTITY b 'c'>]><a>&b;</a>", kSubset},
        HostileCase{"utf32", Widen(NestedEntities(), 4, false, true),
                    "line 1: its encoding is not UTF-8, UTF-16, US-ASCII, ISO-8859-x or windows-125x"},
        HostileCase{"deep", Repeat("<a>", 1'000'000), "line 1: elements are nested deeper than 10000"},
        HostileCase{"deep_and_closed", Repeat("<a>", 20'000) + Repeat("</a>", 20'000),
                    "line 1: elements are nested deeper than 10000"}),
    KelTest::CaseName());

std::string WithAttributes(int count) {
  std::string document = "<a";
  for (int i = 0; i < count; ++i) document += " a" + std::to_string(i) + "=''";
  return document + "/>";
}

// The tree's own limit is lower: its parser takes a time of the square of the number.
TEST(HostileInputTest, ManyAttributes_EndAtTheirLimit) {
  EXPECT_FALSE(ParseSax(WithAttributes(10'000)).failed);
  EXPECT_TRUE(ParseSax(WithAttributes(10'001)).failed);
  EXPECT_TRUE(ParseSax(WithAttributes(20'000)).failed);
  EXPECT_EQ(ReadError(WithAttributes(1'000)), "");
  EXPECT_EQ(ReadError(WithAttributes(20'000)), "line 1: an element has more than 1000 attributes");
}

TEST(HostileInputTest, LongAttribute_IsReadUpToItsLimit) {
  std::istringstream stream("<a b='" + std::string(50'000'000, 'x') + "'/>");
  EXPECT_EQ(ElementTree::Read(stream)->Root().AttributeValue(0).size(), 50'000'000U);
  EXPECT_EQ(ReadError("<a b='" + std::string(70'000'000, 'x') + "'/>"), "line 1: a tag is longer than 64 MiB");
}

// The file exists and would give the element a default attribute and the entity a text, were it opened.
TEST(HostileInputTest, ExternalType_IsNotOpened) {
  const auto path = std::filesystem::temp_directory_path() / ("kel" + std::to_string(std::random_device()()) + ".dtd");
  std::ofstream(path) << "<!ENTITY secret 'opened'><!ATTLIST a opened CDATA 'opened'>";
  const std::string type = "<!DOCTYPE a SYSTEM '" + path.string() + "'>";
  for (const std::string& document : {type + "<a>\n</a>", Widen(type + "<a>\n</a>", 2, false, true)}) {
    std::istringstream stream(document);
    const auto tree = ElementTree::Read(stream);
    EXPECT_EQ(tree->Root().AttributeCount(), 0);
    const SaxOutcome sax = ParseSax(document);
    EXPECT_FALSE(sax.failed);
    EXPECT_EQ(sax.opened, 0);
    const DomOutcome dom = ParseDom(document);
    EXPECT_EQ(dom.errors, 0U);
    EXPECT_EQ(dom.opened, 0);
  }
  EXPECT_NE(ReadError(type + "<a>&secret;</a>"), "");
  EXPECT_TRUE(ParseSax(type + "<a>&secret;</a>").failed);
  std::filesystem::remove(path);
}

// What the gate overlooks would still be read by the parser: both must agree on what is markup.
TEST(HostileInputTest, FakeMarkup_IsText) {
  const std::string document =
      "<?p <!DOCTYPE a [ ]> ?><!-- <!DOCTYPE a [ ]> <b> --><a x='<!DOCTYPE a [' y=\"'>\"><![CDATA[<b></a>]]>"
      "<!-- </a> --></a>";
  EXPECT_NE(ReadError(document), "");  // '<' in a value is malformed, whoever looks at it
  const std::string honest =
      "<?p <!DOCTYPE a [ ]> ?><!-- <!DOCTYPE a [ ]> <b> --><a y=\"'>\"><![CDATA[<b></a>]]><!-- </a> --></a>";
  std::istringstream stream(honest);
  const auto tree = ElementTree::Read(stream);
  EXPECT_EQ(tree->Root().Text(), "<b></a>");
  EXPECT_FALSE(tree->Root().FirstChild());
  EXPECT_EQ(tree->Root().AttributeValue(0), "'>");
}

TEST(HostileInputTest, TruncatedAnywhere_IsAnErrorWithLine) {
  const std::string document = KelTest::PmmlText().Text();
  ASSERT_EQ(ReadError(document), "");
  const std::size_t end = document.rfind('>');
  for (std::size_t length = 0; length <= end; ++length) {
    const std::string error = ReadError(document.substr(0, length));
    ASSERT_EQ(error.find("line "), 0U) << "cut at " << length << ": " << error;
  }
}

// Some noise is well-formed; what counts is that all of it comes to an end.
TEST(HostileInputTest, Noise_EndsWithoutCrash) {
  std::mt19937 random(7);
  const std::string seed = "<a b='c'><!-- --><![CDATA[ ]]>&lt;<?x ?><b/></a>";
  int errors = 0;
  for (int round = 0; round < 3'000; ++round) {
    std::string noise = round % 3 == 0 ? std::string(random() % 200, '\0') : seed;
    for (int change = 0; change < 1 + round % 5; ++change) {
      if (!noise.empty()) noise[random() % noise.size()] = static_cast<char>(random());
    }
    if (round % 2 == 0) noise = Widen(noise, 2, random() % 2 == 0, true);
    errors += ReadError(noise).empty() ? 0 : 1;
  }
  EXPECT_GT(errors, 1'000);
}

}  // namespace
