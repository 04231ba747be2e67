#include <gtest/gtest.h>
#include <sstream>
#include <xercesc/dom/DOM.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>

#include "scoring/common/KelDiagnostics.h"
#include "scoring/factory/ScoringModelAttr.h"
#include "scoring/factory/ScoringScorerFactory.h"
#include "scoring/pmml/ScoringBaseParser.h"
#include "tests/support/CaseName.h"
#include "tests/support/PmmlText.h"
#include "tests/support/XmlPlatform.h"

namespace KelScoring_20 {
namespace {

using KelCommon_1_3::KelStatus;
using KelTest::PmmlText;
using Names = std::vector<std::string>;

const auto* const kPlatform = KelTest::XmlPlatform::KeepUp();

const Names kTree = {"TreeModel"};

TEST(Prescan, GoodDocument_FillsTheRecord) {
  std::stringstream stream = PmmlText{.transformations = PmmlText::Constant("d")}.Stream();
  ScoringModelAttr attr;
  EXPECT_TRUE(ScoringScorerFactory::GetModelAttr(stream, kTree, attr, "UTF-8").IsOK());
  EXPECT_EQ(attr.version, "4.0");
  EXPECT_EQ(attr.modelType, "TreeModel");
  EXPECT_EQ(attr.algorithmName, "CRT");
  EXPECT_EQ(attr.GetApplicationName() + attr.GetApplicationVersion(), "Maker7.1");
  EXPECT_EQ(attr.activeFields, (Names{"x", "p"}));
  EXPECT_EQ(attr.predictedFields, Names{"answer"});
  EXPECT_TRUE(attr.hasTransformations);
  EXPECT_EQ(attr.type, KelScoringConst::UnknownModel);  // follows later
}

TEST(Prescan, NoListedModel_IsStillAGoodDocument) {
  for (const Names& names : {Names{}, Names{"NeuralNetwork"}}) {
    std::stringstream stream = PmmlText().Stream();
    ScoringModelAttr attr;
    EXPECT_TRUE(ScoringScorerFactory::GetModelAttr(stream, names, attr, "UTF-8").IsOK());
    EXPECT_EQ(attr.version, "4.0");
    EXPECT_EQ(attr.modelType, "");
  }
}

struct BadText {
  const char* name;
  std::string text;
};

class PrescanOfBadText : public testing::TestWithParam<BadText> {};

TEST_P(PrescanOfBadText, WarnsAndLeavesTheRecord) {
  std::istringstream stream(GetParam().text);
  ScoringModelAttr attr;
  attr.version = "before";
  const KelStatus status = ScoringScorerFactory::GetModelAttr(stream, kTree, attr, "UTF-8");
  EXPECT_EQ(status.GetErrorCode(), 260007);
  EXPECT_FALSE(status.IsError());
  EXPECT_FALSE(status.IsOK());
  EXPECT_EQ(attr.version, "before");
  EXPECT_TRUE(attr.activeFields.empty());
}

const BadText kBadTexts[] = {
    {"Empty", ""},
    {"Noise", "\x01\xFE\xFF no XML"},
    {"OtherRoot", "<Other><DataDictionary/></Other>"},
    {"Truncated", PmmlText().Text().substr(0, 300)},
    {"FaultInTheModel", PmmlText{.body = "<Node></Other>"}.Text()},
    {"UnknownEncoding", R"(<?xml version="1.0" encoding="no-such-encoding"?><PMML/>)"},
};
INSTANTIATE_TEST_SUITE_P(Cases, PrescanOfBadText, testing::ValuesIn(kBadTexts), KelTest::CaseName());

// The pass ends at the segments, so it doesn't see what is wrong behind.
TEST(Prescan, FaultBehindSegmentation_IsNotSeen) {
  std::stringstream stream =
      PmmlText{.element = "MiningModel", .body = R"(<Segmentation multipleModelMethod="average"><broken)"}.Stream();
  ScoringModelAttr attr;
  EXPECT_TRUE(ScoringScorerFactory::GetModelAttr(stream, {"MiningModel"}, attr, "UTF-8").IsOK());
  EXPECT_EQ(attr.multipleModelMethod, "average");
}

TEST(Prescan, SecondPassWithoutRewind_Warns) {
  std::stringstream stream = PmmlText().Stream();
  ScoringModelAttr attr;
  EXPECT_TRUE(ScoringScorerFactory::GetModelAttr(stream, kTree, attr, "UTF-8").IsOK());
  EXPECT_EQ(ScoringScorerFactory::GetModelAttr(stream, kTree, attr, "UTF-8").GetErrorCode(), 260007);
}

class DomDocument : public testing::Test {
 protected:
  KelStatus Read(std::istream& stream, const Names& names) {
    KelCommon_1_3::KelDiagnostics::Clear();
    return ScoringScorerFactory::GetDOMDocument(names, stream, &fParser, fDocument, fModel);
  }

  std::string Name() {
    const KelScoring_20::ScoringBaseParser text;
    return fModel == nullptr ? "" : text.ToString(fModel->getTagName());
  }

  void ExpectRefused(std::istream& stream, const Names& names, const std::string& reason) {
    const KelStatus status = Read(stream, names);
    EXPECT_EQ(status.GetErrorCode(), 260010);
    EXPECT_TRUE(status.IsError());
    EXPECT_EQ(fDocument, nullptr);
    EXPECT_EQ(fModel, nullptr);
    EXPECT_NE(KelCommon_1_3::KelDiagnostics::Last().find(reason), std::string::npos);
  }

  xercesc::XercesDOMParser fParser;
  xercesc::DOMDocument* fDocument = nullptr;
  xercesc::DOMElement* fModel = nullptr;
};

TEST_F(DomDocument, OrderOfNames_DecidesAmongModels) {
  std::stringstream stream =
      PmmlText{
          .element = "MiningModel",
          .body =
              R"(<Segmentation multipleModelMethod="average"><TreeModel id="1"/><TreeModel id="2"/></Segmentation>)"}
          .Stream();
  EXPECT_TRUE(Read(stream, {"None", "TreeModel", "MiningModel"}).IsOK());
  EXPECT_EQ(Name(), "TreeModel");
  EXPECT_EQ(ScoringBaseParser().ToString(ScoringBaseParser::GetAttribute(fModel, "id")), "1");
  EXPECT_TRUE(Read(stream, {"MiningModel", "TreeModel"}).IsOK());
  EXPECT_EQ(Name(), "MiningModel");
  EXPECT_EQ(fDocument, fParser.getDocument());
}

TEST_F(DomDocument, StreamAtItsEnd_IsReadFromTheStart) {
  std::stringstream stream = PmmlText().Stream();
  stream.seekg(0, std::ios::end);
  stream.setstate(std::ios::eofbit | std::ios::failbit);
  EXPECT_TRUE(Read(stream, kTree).IsOK());
  EXPECT_EQ(Name(), "TreeModel");
}

TEST_F(DomDocument, BadStream_IsNotTouched) {
  std::stringstream stream = PmmlText().Stream();
  stream.seekg(7);
  stream.setstate(std::ios::badbit);
  ExpectRefused(stream, kTree, "");
  stream.clear();
  EXPECT_EQ(stream.tellg(), 7);
}

TEST_F(DomDocument, NoSuchModel_Refused) {
  std::stringstream stream = PmmlText().Stream();
  ExpectRefused(stream, {}, "modelDll");
  ExpectRefused(stream, {"NeuralNetwork"}, "modelDll");
  // After a success, too.
  EXPECT_TRUE(Read(stream, kTree).IsOK());
  ExpectRefused(stream, {"NeuralNetwork"}, "modelDll");
}

TEST_F(DomDocument, BadTexts_Refused) {
  for (const BadText& bad : kBadTexts) {
    SCOPED_TRACE(bad.name);
    std::istringstream stream(bad.text);
    ExpectRefused(stream, {"TreeModel", "DataDictionary"}, bad.name == std::string("OtherRoot") ? "PMML" : "");
  }
}

// The parser keeps the part of the tree that it had read; a document cut anywhere must not pass for whole.
TEST_F(DomDocument, DocumentCutAnywhere_Refused) {
  const std::string text = PmmlText().Text();
  const std::size_t end = text.find("</PMML>") + 7;
  for (std::size_t length = 0; length < end; ++length) {
    std::istringstream stream(text.substr(0, length));
    ASSERT_EQ(Read(stream, kTree).GetErrorCode(), 260010) << length;
  }
}

}  // namespace
}  // namespace KelScoring_20
