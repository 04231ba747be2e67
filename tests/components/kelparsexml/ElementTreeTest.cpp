#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <string>
#include <xercesc/dom/DOMDocument.hpp>
#include <xercesc/dom/DOMElement.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>

#include "components/kelparsexml/ElementTree.h"
#include "tests/components/kelparsexml/TreeDump.h"
#include "tests/support/CaseName.h"
#include "tests/support/TreeDocument.h"

namespace {

using KelTest::Dump;
using KelTest::ReadDom;
using KelTest::ReadTree;
using KelXML_1_3::Element;
using KelXML_1_3::ElementTree;
using KelXML_1_3::PmmlError;

struct ContentCase {
  const char* name;
  std::string document;
  std::string expected;
};

class ElementTreeContentTest : public testing::TestWithParam<ContentCase> {};

TEST_P(ElementTreeContentTest, FromStreamAndFromDom_SameTree) {
  EXPECT_EQ(Dump(ReadTree(GetParam().document)->Root()), GetParam().expected);
  EXPECT_EQ(Dump(ReadDom(GetParam().document)->Root()), GetParam().expected);
}

constexpr auto kHan = "\xE6\xBC\xA2";       // three bytes
constexpr auto kClef = "\xF0\x9D\x84\x9E";  // four bytes, two units of UTF-16
constexpr auto kUmlaut = "\xC3\xBC";

INSTANTIATE_TEST_SUITE_P(
    Contents, ElementTreeContentTest,
    testing::Values(ContentCase{"nested", "<a><b><c/><c/></b><d/><b x='1'/></a>", "a{b{cc}db(x=1)}"},
                    ContentCase{"attributes", "<a b='' c=\"2 &lt; 3&#10;\" z='1'/>", "a(b= c=2 < 3\n z=1)"},
                    ContentCase{"prefixes", "<p:a xmlns:p='u' p:b='1'><q:c:d/><p:e></p:e></p:a>",
                                "a(p:b=1 xmlns:p=u){de}"},
                    ContentCase{"white_space_between_elements", "<a>\n  <b/>\r\n\t<c> </c>\n</a>", "a{bc' '}"},
                    ContentCase{"white_space_of_a_leaf", "<a><b> \t\n</b><c></c></a>", "a{b' \t\n'c}"},
                    ContentCase{"text_around_children", "<a> x <b>y</b>\n<c/> z</a>", "a' x  z'{b'y'c}"},
                    ContentCase{"text_in_pieces", "<a>1<!-- 2 -->3<?p 4?>5<![CDATA[<6> ]]>7&amp;</a>", "a'135<6> 7&'"},
                    ContentCase{"not_ascii",
                                std::string("<") + kUmlaut + " " + kHan + "='" + kClef + "'>" + kClef + "x" + kHan +
                                    "</" + kUmlaut + ">",
                                std::string(kUmlaut) + "(" + kHan + "=" + kClef + ")'" + kClef + "x" + kHan + "'"},
                    // The bytes of the first attribute's name are the characters of the second's.
                    ContentCase{"names_alike", "<r><a \xC4\xB7='1'/><a \xC3\x84\xC2\xB7='1'/></r>",
                                "r{a(\xC4\xB7=1)a(\xC3\x84\xC2\xB7=1)}"},
                    ContentCase{"foreign_elements", "<a><Extension><svg:g svg:r='1'>t</svg:g></Extension></a>",
                                "a{Extension{g(svg:r=1)'t'}}"}),
    KelTest::CaseName());

// Lengths around those at which texts are stored in another way.
TEST(ElementTreeTest, TextsOfAnyLength_AreKept) {
  std::string document = "<a>";
  for (const std::size_t length :
       {1, 126, 253, 254, 255, 256, 8'191, 16'378, 16'379, 16'380, 65'535, 65'536, 300'000}) {
    const std::string text(length, 'x');
    document += "<b v='" + text + "' w='" + text + kHan + "'>" + kClef + text + "</b>";
  }
  const auto tree = ReadTree(document + "</a>");
  int seen = 0;
  for (Element b = tree->Root().FirstChild(); b; b = b.NextSibling(), ++seen) {
    const std::string value(b.AttributeValue(0));
    EXPECT_TRUE(b.AttributeValue(1) == value + kHan) << value.size();
    EXPECT_TRUE(b.Text() == kClef + value) << value.size();
    EXPECT_EQ(value.find_first_not_of('x'), std::string::npos);
  }
  EXPECT_EQ(seen, 13);
}

// The parser hands long texts over in pieces of about a million units. Characters outside the basic plane are two units
// each, so that with one of the two offsets a piece ends within a character.
TEST(ElementTreeTest, LongTextOutsideTheBasicPlane_IsKept) {
  for (const char* offset : {"", "x"}) {
    std::string text = offset;
    for (int i = 0; i < 1'200'000; ++i) text += kClef;
    const auto tree = ReadTree("<a>" + text + "</a>");
    EXPECT_TRUE(tree->Root().Text() == text) << "offset \"" << offset << '"';
  }
}

TEST(ElementTreeTest, ManyElementsAndNames_AreKept) {
  std::string document = "<r>";
  for (int i = 0; i < 3'000; ++i) {
    const std::string n = std::to_string(i);
    document += "<e" + n + " a" + n + "='" + n + "'><c/></e" + n + ">\n";
  }
  const auto tree = ReadTree(document + "</r>");
  Element element = tree->Root().FirstChild();
  for (int i = 0; i < 3'000; ++i, element = element.NextSibling()) {
    const std::string n = std::to_string(i);
    ASSERT_EQ(Dump(element), "e" + n + "(a" + n + "=" + n + "){c}");
    ASSERT_EQ(element.Line(), i + 1);
  }
  EXPECT_FALSE(element);
}

TEST(ElementTreeTest, Navigation_FindsByName) {
  const auto tree = ReadTree("<a>\n<b i='1'/><c/>\n\n<b\n i='2'/><b i='3'/></a>");
  const Element root = tree->Root();
  EXPECT_EQ(root.Line(), 1);
  EXPECT_EQ(root.Child("b").Attribute("i"), "1");
  EXPECT_EQ(root.Child("b").Next("b").Attribute("i"), "2");
  EXPECT_EQ(root.Child("c").Next("b").Line(), 5);  // where the tag ends
  EXPECT_FALSE(root.Child("c").Next("c"));
  EXPECT_FALSE(root.Child("d"));
  EXPECT_EQ(root.Child("b").Attribute("j"), std::nullopt);
  EXPECT_EQ(ReadDom("<a/>")->Root().Line(), 0);
}

TEST(ElementTreeTest, NoElement_GivesEmptyAnswers) {
  const Element none;
  EXPECT_FALSE(none);
  EXPECT_EQ(none.Name(), "");
  EXPECT_EQ(none.Attribute("a"), std::nullopt);
  EXPECT_EQ(none.AttributeCount(), 0);
  EXPECT_EQ(none.AttributeName(0), "");
  EXPECT_EQ(none.AttributeValue(-1), "");
  EXPECT_EQ(none.Text(), "");
  EXPECT_EQ(none.Line(), 0);
  EXPECT_FALSE(none.FirstChild());
  EXPECT_FALSE(none.NextSibling());
  EXPECT_FALSE(none.Child("a").Next("b"));
  EXPECT_EQ(none.Number("a", 2.0), 2.0);
}

TEST(ElementTreeTest, ModelName_OtherModelsAreBare) {
  const std::string document =
      "<PMML version='4.2'><Header x='1'><TreeModel y='1'/></Header><DataDictionary><DataField/></DataDictionary>"
      "<TransformationDictionary><b/></TransformationDictionary>"
      "<MiningModel a='1'>text<Segment><TreeModel/></Segment></MiningModel>"
      "<p:TreeModel a='2'>text<Node><TreeModel a='3'/></Node></p:TreeModel>"
      "<TreeModel a='4'><Node/></TreeModel><Extension e='1'><f/></Extension></PMML>";
  const std::string expected =
      "PMML(version=4.2){Header(x=1){TreeModel(y=1)}DataDictionary{DataField}TransformationDictionary{b}"
      "MiningModelTreeModel(a=2)'text'{Node{TreeModel(a=3)}}TreeModelExtension(e=1){f}}";
  EXPECT_EQ(Dump(ReadTree(document, "TreeModel")->Root()), expected);
  EXPECT_EQ(Dump(ReadDom(document, "TreeModel")->Root()), expected);
}

TEST(ElementTreeTest, LargeDocument_DomGivesSameTree) {
  const std::string document = KelTest::TreeDocument(300'000).Text();
  EXPECT_TRUE(Dump(ReadTree(document)->Root()) == Dump(ReadDom(document)->Root()));
}

TEST(ElementTreeTest, FromDomOfInnerElement_LeavesSiblings) {
  const std::string document = "<a><b x='1'><c/>t</b><d/></a>";
  xercesc::XercesDOMParser parser;
  parser.parse(xercesc::MemBufInputSource(reinterpret_cast<const XMLByte*>(document.data()), document.size(), "x"));
  const auto* const root = parser.getDocument()->getDocumentElement();
  const auto tree = ElementTree::FromDom(*root->getFirstElementChild());
  EXPECT_EQ(Dump(tree->Root()), "b(x=1)'t'{c}");
  EXPECT_FALSE(tree->Root().NextSibling());
}

TEST(ElementTreeTest, DeepDocument_ReadsWithoutRecursion) {
  std::string document;
  for (int i = 0; i < 10'000; ++i) document += "<a>";
  for (int i = 0; i < 10'000; ++i) document += "</a>";
  for (const auto& tree : {ReadTree(document), ReadDom(document)}) {
    int depth = 0;
    for (Element element = tree->Root(); element; element = element.FirstChild()) ++depth;
    EXPECT_EQ(depth, 10'000);
  }
}

TEST(ElementTreeTest, Read_StartsAtCurrentPosition) {
  std::istringstream stream("junk<a/>");
  stream.ignore(4);
  EXPECT_EQ(Dump(ElementTree::Read(stream)->Root()), "a");
}

struct MalformedCase {
  const char* name;
  std::string document;
  const char* error;  // the beginning of the text
};

class MalformedTest : public testing::TestWithParam<MalformedCase> {};

TEST_P(MalformedTest, Read_NamesLineAndColumn) {
  try {
    ReadTree(GetParam().document);
    FAIL() << "it was read";
  } catch (const PmmlError& error) {
    EXPECT_EQ(std::string(error.what()).substr(0, std::string(GetParam().error).size()), GetParam().error)
        << error.what();
  }
}

INSTANTIATE_TEST_SUITE_P(
    Documents, MalformedTest,
    testing::Values(MalformedCase{"empty", "", "line 1, column 1: "},
                    MalformedCase{"text", "PMML", "line 1, column 1: "},
                    MalformedCase{"blank", " \n ", "line 2, column 2: "},
                    MalformedCase{"wrong_end", "<a>\n<b></a>", "line 2, column 6: expected end of tag 'b'"},
                    MalformedCase{"unknown_entity", "<a>\n\n&b;</a>", "line 3, column 4: "},
                    MalformedCase{"second_root", "<a/><b/>", "line 1, column 5: "},
                    MalformedCase{"same_attribute_twice", "<a b='1' b='2'/>", "line 1, column "},
                    MalformedCase{"bad_utf8", "<a>\xC0\xBC</a>", "line 1, column "},
                    MalformedCase{"type_in_content", "<a><!DOCTYPE b SYSTEM 'c'></a>", "line 1, column "},
                    MalformedCase{"late_declaration", " <?xml version='1.0'?><a/>", "line 1, column "},
                    MalformedCase{"subset", "\n<!DOCTYPE a [ ]><a/>",
                                  "line 2: a document type declaration with an internal subset is not accepted"}),
    KelTest::CaseName());

}  // namespace
