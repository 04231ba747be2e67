#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "components/kelparsexml/ElementStream.h"
#include "components/kelparsexml/SegmentCursor.h"
#include "tests/components/kelparsexml/SourceText.h"
#include "tests/components/kelparsexml/TreeDump.h"
#include "tests/support/CaseName.h"

namespace {

using KelTest::Dump;
using KelTest::ReadDom;
using KelTest::ReadError;
using KelTest::ReadTree;
using KelXML_1_3::Element;
using KelXML_1_3::ElementStream;
using KelXML_1_3::PmmlError;
using KelXML_1_3::SegmentCursor;

constexpr auto kModel = "MiningModel";

// With all that may stand beside and between segments.
const std::string kEnsemble =
    "<PMML version='4.1'><Header/>\n"
    "<DataDictionary><Segmentation><Segment/></Segmentation></DataDictionary>\n"
    "<TreeModel><Segmentation><Segment/></Segmentation></TreeModel>\n"
    "<MiningModel functionName='regression'><Extension><Segmentation><Segment/></Segmentation></Extension>\n"
    " <p:Segmentation m='sum'>\n  <LocalTransformations/>\n"
    "  <Segment id='1'><True/><TreeModel>one</TreeModel></Segment>\n"
    "  <Segment/>\n"
    "  <Extension e='1'>between</Extension>\n"
    "  <p:Segment id='3'>\n   <MiningModel><Segmentation><Segment id='3.1'/><Segment id='3.2'/></Segmentation>\n"
    "   </MiningModel></p:Segment>\n"
    "  <Extension e='2'><Segment id='no piece'/></Extension>\n"
    "  <Segment id='4'/>text\n"
    " </p:Segmentation>\n"
    " <ModelVerification/><Segmentation><Segment id='tree'/></Segmentation>\n"
    "</MiningModel>\n"
    "<MiningModel a='1'><Segmentation><Segment/></Segmentation></MiningModel></PMML>\n";

const std::vector<std::string> kSegments = {"Segment(id=1){TrueTreeModel'one'}", "Segment",
                                            "Segment(id=3){MiningModel{Segmentation{Segment(id=3.1)Segment(id=3.2)}}}",
                                            "Segment(id=4)"};

Element FindSegmentation(const Element& root) { return root.Child(kModel).Child("Segmentation"); }

std::vector<std::string> Walk(SegmentCursor cursor) {
  std::vector<std::string> segments;
  for (Element segment = cursor.Next(); segment; segment = cursor.Next()) {
    segments.push_back(Dump(segment));
  }
  return segments;
}

// All that a stream gives, as one text.
std::string DumpStream(const std::string& document) {
  std::istringstream text(document);
  const auto stream = ElementStream::Open(text, kModel);
  std::string dump;
  while (const Element segment = stream->NextPiece()) dump += Dump(segment) + "\n";
  return dump + Dump(stream->Root());
}

std::string StreamError(const std::string& document) {
  try {
    DumpStream(document);
  } catch (const PmmlError& error) {
    return error.what();
  }
  return {};
}

TEST(ElementStreamTest, Ensemble_ComesInPiecesBesideTheRest) {
  std::istringstream text(kEnsemble);
  const auto stream = ElementStream::Open(text, kModel);
  const Element root = stream->Root();
  const Element segmentation = FindSegmentation(root);
  EXPECT_EQ(stream->Segmentation(), segmentation);
  const std::string start =
      "PMML(version=4.1){HeaderDataDictionary{Segmentation{Segment}}TreeModelMiningModel(functionName=regression){"
      "Extension{Segmentation{Segment}}Segmentation(m=sum)";
  EXPECT_EQ(Dump(root), start + "{LocalTransformations}}}");
  for (const std::string& expected : kSegments) {
    const Element segment = stream->NextPiece();
    EXPECT_EQ(Dump(segment), expected);
    EXPECT_FALSE(segment.NextSibling());
  }
  EXPECT_FALSE(stream->NextPiece());
  EXPECT_EQ(Dump(root), start +
                            "'text\n '{LocalTransformationsExtension(e=1)'between'"
                            "Extension(e=2){Segment(id=no piece)}}"
                            "ModelVerificationSegmentation{Segment(id=tree)}}MiningModel}");
  EXPECT_FALSE(stream->NextPiece());
}

TEST(ElementStreamTest, Lines_AreThoseOfTheTree) {
  const auto tree = ReadTree(kEnsemble, kModel);
  std::istringstream text(kEnsemble);
  const auto stream = ElementStream::Open(text, kModel);
  SegmentCursor pieces(stream->Segmentation(), stream.get());
  SegmentCursor siblings(FindSegmentation(tree->Root()));
  for (int i = 0; i < 4; ++i) {
    const Element piece = pieces.Next();
    const Element sibling = siblings.Next();
    EXPECT_EQ(piece.Line(), sibling.Line());
    EXPECT_EQ(piece.FirstChild().Line(), sibling.FirstChild().Line());
  }
  EXPECT_FALSE(pieces.Next());
  EXPECT_EQ(stream->Root().Child(kModel).Child("ModelVerification").Line(), 16);
}

struct CursorCase {
  const char* name;
  std::string document;
  std::vector<std::string> segments;
};

class SegmentCursorTest : public testing::TestWithParam<CursorCase> {};

TEST_P(SegmentCursorTest, StreamAndTreeAndDom_GiveSameSegments) {
  const auto& [name, document, segments] = GetParam();
  std::istringstream text(document);
  const auto stream = ElementStream::Open(text, kModel);
  EXPECT_EQ(Walk(SegmentCursor(FindSegmentation(stream->Root()), stream.get())), segments);
  for (const auto& tree : {ReadTree(document, kModel), ReadDom(document, kModel)}) {
    const Element segmentation = FindSegmentation(tree->Root());
    EXPECT_EQ(Walk(SegmentCursor(segmentation)), segments);
    EXPECT_EQ(FindSegmentation(stream->Root()).Text(), segmentation.Text());
  }
}

std::string Ensemble(const std::string& segmentation) {
  return "<PMML><MiningModel>" + segmentation + "</MiningModel></PMML>";
}

INSTANTIATE_TEST_SUITE_P(
    Documents, SegmentCursorTest,
    testing::Values(
        CursorCase{"all", kEnsemble, kSegments},
        CursorCase{"one", Ensemble("<Segmentation><Segment/></Segmentation>"), {"Segment"}},
        CursorCase{"white_space", Ensemble("<Segmentation>\n<Segment> </Segment>\n</Segmentation>"), {"Segment' '"}},
        CursorCase{"no_segment", Ensemble("<Segmentation><Extension/></Segmentation>"), {}},
        CursorCase{"empty", Ensemble("<Segmentation/><Segmentation><Segment/></Segmentation>"), {}},
        CursorCase{"no_segmentation", Ensemble("<Segment/>"), {}},
        CursorCase{"other_model", "<PMML><TreeModel><Segmentation><Segment/></Segmentation></TreeModel></PMML>", {}},
        CursorCase{"no_model", "<PMML/>", {}}),
    KelTest::CaseName());

// A nested ensemble and the model's second segmentation stand as a whole, whichever cursor is asked.
TEST(SegmentCursorTest, OtherSegmentations_ComeFromTheTree) {
  std::istringstream text(kEnsemble);
  const auto stream = ElementStream::Open(text, kModel);
  stream->NextPiece();
  stream->NextPiece();
  const Element nested = stream->NextPiece().Child(kModel).Child("Segmentation");
  const std::vector<std::string> expected = {"Segment(id=3.1)", "Segment(id=3.2)"};
  EXPECT_EQ(Walk(SegmentCursor(nested, stream.get())), expected);
  EXPECT_EQ(Dump(stream->NextPiece()), "Segment(id=4)");
  EXPECT_FALSE(stream->NextPiece());
  const Element second = FindSegmentation(stream->Root()).Next("Segmentation");
  EXPECT_EQ(Walk(SegmentCursor(second, stream.get())), std::vector<std::string>{"Segment(id=tree)"});
}

TEST(ElementStreamTest, DocumentWithoutPieces_IsReadAtOnce) {
  for (const std::string document : {"<a/>", "<PMML><MiningModel>\n<Output/></MiningModel><Header/></PMML>",
                                     "<PMML><TreeModel><Node/></TreeModel><Extension/></PMML>"}) {
    std::istringstream text(document);
    const auto stream = ElementStream::Open(text, kModel);
    EXPECT_EQ(Dump(stream->Root()), Dump(ReadTree(document, kModel)->Root()));
    EXPECT_FALSE(stream->Segmentation());
    EXPECT_FALSE(stream->NextPiece());
  }
}

// The same texts in each piece: they can only stand at the same places if the memory of the piece before is used again.
TEST(ElementStreamTest, DroppedPieces_GiveTheirMemoryBack) {
  std::string segment = "<Segment id='" + std::string(100'000, 'i') + "'>";
  for (int i = 0; i < 5'000; ++i) segment += "<Node id='" + std::string(40, 'n') + "'>text</Node>";
  segment += "</Segment>";
  std::string document = "<PMML><MiningModel><Segmentation method='sum'>";
  for (int i = 0; i < 30; ++i) document += segment;
  std::istringstream text(document + "</Segmentation></MiningModel></PMML>");
  const auto stream = ElementStream::Open(text, kModel);
  const Element root = stream->Root();
  std::set<const void*> places;
  int pieces = 0;
  for (; const Element piece = stream->NextPiece(); ++pieces) {
    EXPECT_EQ(piece.AttributeValue(0).size(), 100'000U);
    for (Element node = piece.FirstChild(); node; node = node.NextSibling()) {
      places.insert(node.AttributeValue(0).data());
      places.insert(node.Text().data());
    }
    EXPECT_EQ(Dump(root), "PMML{MiningModel{Segmentation(method=sum)}}");
  }
  EXPECT_EQ(pieces, 30);
  // Chunks of text may change places with each other, so that a few more than 2 * 5,000 are used.
  EXPECT_LT(places.size(), 2 * 2 * 5'000U);
}

TEST(ElementStreamTest, TruncatedDocument_FailsAsTheTreeDoes) {
  const std::size_t end = kEnsemble.rfind('>');
  for (std::size_t length = 0; length <= end; ++length) {
    const std::string document = kEnsemble.substr(0, length);
    ASSERT_EQ(StreamError(document).find("line "), 0U) << "cut at " << length;
    ASSERT_EQ(StreamError(document), ReadError(document, kModel)) << "cut at " << length;
  }
}

// Whatever is wrong or odd, a stream gives what the tree gives.
TEST(ElementStreamTest, DamagedDocument_GivesWhatTheTreeGives) {
  std::mt19937 random(11);
  int refused = 0;
  for (int round = 0; round < 2'000; ++round) {
    std::string document = kEnsemble;
    for (int change = 0; change < 1 + round % 3; ++change) {
      const char character = "<>/'&S\0 "[random() % 8];
      document[random() % document.size()] = character;
    }
    const std::string error = ReadError(document, kModel);
    ASSERT_EQ(StreamError(document), error) << document;
    if (!error.empty()) {
      ++refused;
      continue;
    }
    const auto tree = ReadTree(document, kModel);
    std::istringstream text(document);
    const auto stream = ElementStream::Open(text, kModel);
    ASSERT_EQ(Walk(SegmentCursor(FindSegmentation(stream->Root()), stream.get())),
              Walk(SegmentCursor(FindSegmentation(tree->Root()))))
        << document;
  }
  EXPECT_GT(refused, 500);
  EXPECT_LT(refused, 1'900);
}

struct BrokenCase {
  const char* name;
  std::string second;  // the second segment
  const char* error;
};

class BrokenStreamTest : public testing::TestWithParam<BrokenCase> {};

TEST_P(BrokenStreamTest, NextPiece_FailsForGoodAndLeavesTheRest) {
  const std::string filler(300'000, ' ');  // more than is read ahead, so that the first segment can be had
  std::istringstream text(Ensemble("<Segmentation m='sum'><Segment id='1'/>" + filler + GetParam().second));
  const auto stream = ElementStream::Open(text, kModel);
  EXPECT_EQ(Dump(stream->NextPiece()), "Segment(id=1)");
  for (int call = 0; call < 2; ++call) {
    try {
      stream->NextPiece();
      FAIL() << "a piece was read";
    } catch (const PmmlError& error) {
      EXPECT_EQ(std::string(error.what()).find(GetParam().error), 0U) << error.what();
    }
  }
  EXPECT_EQ(FindSegmentation(stream->Root()).Attribute("m"), "sum");
}

std::string Repeat(std::string_view text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) all += text;
  return all;
}

INSTANTIATE_TEST_SUITE_P(
    Documents, BrokenStreamTest,
    testing::Values(BrokenCase{"wrong_end", "<Segment>\n<True></Segment>", "line 2, column "},
                    BrokenCase{"unknown_entity", "<Segment>\n\n&lol;</Segment>", "line 3, column "},
                    BrokenCase{"document_ends", "<Segment><True/>", "line 1, column "},
                    BrokenCase{"too_deep", "<Segment>" + Repeat("<a>", 20'000), "line 1: elements are nested deeper"},
                    BrokenCase{"too_many_attributes", "<Segment " + Repeat("a='' ", 2'000) + "/>",
                               "line 1: an element has more than"},
                    BrokenCase{"junk_at_end", "</Segmentation></MiningModel></PMML>junk<a/>", "line 1, column "}),
    KelTest::CaseName());

// What is left behind is for the leak checker to see.
TEST(ElementStreamTest, StreamGivenUpAnywhere_EndsCleanly) {
  for (std::size_t pieces = 0; pieces <= kSegments.size() + 1; ++pieces) {
    std::istringstream text(kEnsemble);
    const auto stream = ElementStream::Open(text, kModel);
    for (std::size_t i = 0; i < pieces; ++i) stream->NextPiece();
  }
}

TEST(ElementStreamTest, BytesFewAtATime_GiveTheSame) {
  const std::string expected = DumpStream(kEnsemble);
  for (const std::size_t piece : {1, 7, 4'096}) {
    KelTest::PiecewiseBuffer buffer(kEnsemble, piece);
    std::istream text(&buffer);
    const auto stream = ElementStream::Open(text, kModel);
    std::string dump;
    while (const Element segment = stream->NextPiece()) dump += Dump(segment) + "\n";
    EXPECT_EQ(dump + Dump(stream->Root()), expected);
  }
}

}  // namespace
