#include <clocale>
#include <limits>
#include <string>
#include <vector>

#include "scoring/pmml/ScoringBaseParser.h"
#include "tests/scoring/pmml/DomText.h"
#include "tests/scoring/text/XmlPlatform.h"

namespace KelScoring_20 {
namespace {

using xercesc::DOMElement;
using xercesc::DOMNode;
using xercesc::DOMNodeList;

using Parser = ScoringBaseParser;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct IntCase {
  const XMLCh* text;
  bool accepted;
  int value;
} const kIntCases[] = {
    {u"5", true, 5},
    {u"-5", true, -5},
    {u"+5", true, 5},
    {u"007", true, 7},
    {u"-0", true, 0},
    {u"", false, 0},
    {u"-", false, 0},
    {u"+", false, 0},
    {u"--5", false, 0},
    {u"5-", false, 0},
    {u"-+5", false, 0},
    {u"+-5", false, 0},
    {u"1.5", false, 0},
    {u" 5", false, 0},
    {u"5 ", false, 0},
    {u"1-5", false, 0},
    {u"0x1F", false, 0},
    {u"1e5", false, 0},
    {u"\u0665", false, 0},  // an Arabic five
    {u"\uFF15", false, 0},  // a wide five
    {u"2147483647", true, 2147483647},
    {u"4294967299", true, 3},             // the low 32 bits
    {u"99999999999999999999", true, -1},  // the low 32 bits of the largest 64-bit number
};

TEST(ScoringBaseParser, ParseInt_TakesWholeNumbersOnly) {
  for (const IntCase& row : kIntCases) {
    int value = 77;
    EXPECT_EQ(Parser::ParseInt(row.text, value), row.accepted) << Parser().ToString(row.text);
    EXPECT_EQ(value, row.accepted ? row.value : 77) << Parser().ToString(row.text);
  }
}

struct DoubleCase {
  const XMLCh* text;
  double value;
} const kDoubleCases[] = {
    {u"5", 5},
    {u"-5", -5},
    {u"+5", 5},
    {u".5", 0.5},
    {u"-.5", -0.5},
    {u"+.5", 0.5},
    {u"1.5", 1.5},
    {u"1e5", 1e5},
    {u"1E5", 1e5},
    {u"1e-5", 1e-5},
    {u"1E+5", 1e5},
    {u"-1.5e-3", -1.5e-3},
    {u"-e5", 0},  // the form passes, and there is no digit to convert
    {u"+E5", 0},
    {u"1-2e-3", 1},  // the conversion stops at the inner sign
    {u"1+2E+3", 1},
    {u"0.1", 0.1},
    {u"1e400", kInfinity},
    {u"-1e400", -kInfinity},
    {u"1e-400", 0},
};

const XMLCh* const kNoDoubles[] = {u"",       u"-",      u"+",        u".",      u"-.",  u"5.",   u"1.e5",  u".e5",
                                   u"1e",     u"e5",     u"E5",       u"1e-",    u"1e+", u"-1e",  u"1e5.5", u"1.5.5",
                                   u"1e2e3",  u"1e5E2",  u"1E5e2",    u"--5",    u"+-5", u"-+5",  u"5-",    u"5+",
                                   u"1-2e+3", u"1e-5-3", u" 5",       u"5 ",     u"1,5", u"0x1F", u"inf",   u"INF",
                                   u"nan",    u"NaN",    u"infinity", u"\uFF15", u"1-2"};

void ExpectDoublesAsInTheCLocale() {
  for (const DoubleCase& row : kDoubleCases) {
    double value = 77;
    EXPECT_TRUE(Parser::ParseDouble(row.text, value)) << Parser().ToString(row.text);
    EXPECT_EQ(value, row.value) << Parser().ToString(row.text);
  }
  for (const XMLCh* const text : kNoDoubles) {
    double value = 77;
    EXPECT_FALSE(Parser::ParseDouble(text, value)) << Parser().ToString(text);
    EXPECT_EQ(value, 77) << Parser().ToString(text);
  }
}

TEST(ScoringBaseParser, ParseDouble_TakesWholeNumbersOnly) { ExpectDoublesAsInTheCLocale(); }

TEST(ScoringBaseParser, ParseDouble_DecimalCommaOfTheHost_ChangesNothing) {
  const std::string before = std::setlocale(LC_ALL, nullptr);
  if (!std::setlocale(LC_ALL, "de_DE.UTF-8")) GTEST_SKIP() << "this machine has no locale with a decimal comma";
  ExpectDoublesAsInTheCLocale();
  std::setlocale(LC_ALL, before.c_str());
}

constexpr char kDocument[] =
    "<r>\n text <!-- comment --><b i='12' d='2.5' empty='' bad='1 2'/><c>x</c><b id='second'><d><b/></d></b>"
    "<p:b xmlns:p='urn:x'/></r>";

TEST(ScoringBaseParser, Navigation_SkipsWhatIsNoElementOfTheName) {
  DomText dom(kDocument);
  DOMElement* const first = Parser::GetFirstChildElement(dom.Root());
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(Parser::GetFirstChildElement(dom.Root(), "b"), first);
  DOMElement* const c = Parser::GetFirstChildElement(dom.Root(), "c");
  EXPECT_EQ(Parser::GetNextSiblingElement(first), c);
  DOMElement* const second = Parser::GetNextSiblingElement(first, "b");
  EXPECT_EQ(Parser::GetNextSiblingElement(c, "b"), second);
  EXPECT_EQ(Parser().ToString(Parser::GetAttribute(second, "id")), "second");
  EXPECT_EQ(Parser::GetNextSiblingElement(second, "b"), nullptr);     // a prefix makes another name
  EXPECT_EQ(Parser::GetFirstChildElement(dom.Root(), "d"), nullptr);  // deeper
  EXPECT_EQ(Parser::GetFirstChildElement(c), nullptr);
  EXPECT_EQ(Parser::AsElement(c->getFirstChild()), nullptr);
  EXPECT_EQ(Parser::AsElement(static_cast<DOMNode*>(c), "c"), c);
  EXPECT_EQ(Parser::AsElement(static_cast<DOMNode*>(c), "b"), nullptr);
  EXPECT_EQ(Parser::GetElementsByTagName(dom.Root(), "b")->getLength(), 3U);
  EXPECT_EQ(Parser::GetElementsByTagName(dom.Document(), "r")->getLength(), 1U);
}

TEST(ScoringBaseParser, NullArguments_GiveNothing) {
  int number = 5;
  DOMElement* const noElement = nullptr;
  DOMNode* const noNode = nullptr;
  EXPECT_EQ(Parser::GetFirstChildElement(noNode, "b"), nullptr);
  EXPECT_EQ(Parser::GetFirstChildElement(noNode), nullptr);
  EXPECT_EQ(Parser::GetNextSiblingElement(noNode, "b"), nullptr);
  EXPECT_EQ(Parser::GetNextSiblingElement(noNode), nullptr);
  EXPECT_EQ(Parser::GetElementsByTagName(noElement, "b"), nullptr);
  EXPECT_EQ(Parser::GetElementsByTagName(static_cast<const xercesc::DOMDocument*>(nullptr), "b"), nullptr);
  EXPECT_EQ(Parser::GetAttribute(noElement, "b"), nullptr);
  EXPECT_EQ(Parser::GetAttribute(noNode, "b"), nullptr);
  EXPECT_EQ(Parser::GetIntAttribute(noElement, "b", number), -1);
  EXPECT_EQ(Parser::AsElement(noNode, "b"), nullptr);
  EXPECT_FALSE(Parser::TagNameEquals(noElement, "b"));
  EXPECT_EQ(number, 5);
}

TEST(ScoringBaseParser, Attributes_TellAbsentFromEmptyAndMalformed) {
  DomText dom(kDocument);
  const DOMElement* const b = Parser::GetFirstChildElement(dom.Root());
  EXPECT_EQ(Parser::GetAttribute(b, "absent"), nullptr);
  ASSERT_NE(Parser::GetAttribute(b, "empty"), nullptr);
  EXPECT_EQ(*Parser::GetAttribute(static_cast<const DOMNode*>(b), "empty"), 0);
  EXPECT_EQ(Parser::GetAttribute(static_cast<const DOMNode*>(dom.Document()), "i"), nullptr);

  int integer = 5;
  double real = 5;
  EXPECT_EQ(Parser::GetIntAttribute(b, "absent", integer), -1);
  EXPECT_EQ(Parser::GetIntAttribute(b, "d", integer), 1);
  EXPECT_EQ(Parser::GetDoubleAttribute(b, "empty", real), 1);
  EXPECT_EQ(Parser::GetDoubleAttribute(b, "bad", real), 1);
  EXPECT_EQ(integer, 5);
  EXPECT_EQ(real, 5);
  EXPECT_EQ(Parser::GetIntAttribute(b, "i", integer), 0);
  EXPECT_EQ(Parser::GetDoubleAttribute(b, "d", real), 0);
  EXPECT_EQ(integer, 12);
  EXPECT_EQ(real, 2.5);
}

TEST(ScoringBaseParser, IsEqual_IsExactForNamesOfAnyLength) {
  const std::string longName(100, 'n');
  EXPECT_TRUE(Parser::IsEqual(std::u16string(100, u'n').c_str(), longName));
  EXPECT_FALSE(Parser::IsEqual(std::u16string(99, u'n').c_str(), longName));
  EXPECT_TRUE(Parser::IsEqual(std::u16string(47, u'n').c_str(), std::string(47, 'n')));
  EXPECT_TRUE(Parser::IsEqual(std::u16string(48, u'n').c_str(), std::string(48, 'n')));
  EXPECT_FALSE(Parser::IsEqual(u"Value", "value"));
  EXPECT_TRUE(Parser::IsEqual(nullptr, ""));
  EXPECT_FALSE(Parser::IsEqual(nullptr, "value"));
}

TEST(ScoringBaseParser, ToString_UsesTheChosenEncoding) {
  Parser parser;
  EXPECT_EQ(parser.ToString(nullptr), "");
  EXPECT_EQ(parser.ToString(u"plain"), "plain");
  parser.CreateTranscoder("");
  EXPECT_EQ(parser.ToString(u"caf\u00E9"), "caf\xC3\xA9");
  parser.CreateTranscoder("ISO-8859-1");
  EXPECT_EQ(parser.ToString(u"caf\u00E9"), "caf\xE9");
  parser.CreateTranscoder("no-such-encoding");
  EXPECT_EQ(parser.ToString(u"plain"), "");
  EXPECT_EQ(parser.ToString(nullptr), "");
  parser.FreeTranscoder();
  EXPECT_EQ(parser.ToString(u"plain"), "plain");
}

}  // namespace
}  // namespace KelScoring_20
