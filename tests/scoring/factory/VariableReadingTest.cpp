#include <gtest/gtest.h>
#include <memory>
#include <sstream>

#include "scoring/common/KelTransformation.h"
#include "scoring/common/KelVarList.h"
#include "scoring/common/ValueRecord.h"
#include "scoring/factory/ScoringModelAttr.h"
#include "scoring/factory/ScoringScorerFactory.h"
#include "tests/support/PmmlText.h"
#include "tests/support/XmlPlatform.h"

namespace KelScoring_20 {
namespace {

using KelCommon_1_3::KelStatus;
using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;
using KelTest::PmmlText;
using KelTransformNS::KelTransformation;
using KelXML_1_3::KelVarList;

const auto* const kPlatform = KelTest::XmlPlatform::KeepUp();

// The reduced document of `text`, which is what the prescan leaves in a record.
void Reduce(const PmmlText& text, ScoringModelAttr& attr) {
  attr.documentStream << "<PMML version=\"4.0\">" << text.dictionary << text.transformations << "</PMML>";
}

int RoleOf(const KelVarList& varList, const std::string& name) { return varList.GetVariable(name)->GetVariableRole(); }

TEST(ParseVarList, Dictionary_GivesVariablesWithRoles) {
  ScoringModelAttr attr;
  Reduce({.transformations = PmmlText::Constant("d")}, attr);
  attr.predictedFields = {"answer", "not there"};
  attr.activeFields = {"x", "p"};
  attr.derivedFields = {"d", "answer"};  // of two roles the later one stays
  KelVarList varList;
  EXPECT_TRUE(ScoringScorerFactory::ParseVarList(varList, attr).IsOK());
  ASSERT_EQ(varList.Size(), 4);
  EXPECT_EQ(RoleOf(varList, "x"), KelXML_1_3::kRoleInput);
  EXPECT_EQ(RoleOf(varList, "d"), KelXML_1_3::kRoleInput);
  EXPECT_EQ(RoleOf(varList, "answer"), KelXML_1_3::kRoleInput);
  EXPECT_EQ(varList.GetTargetRespVariable(), nullptr);
}

TEST(ParseVarList, StreamWithAFlag_LeavesTheListAndIsOK) {
  for (const auto flag : {std::ios::eofbit, std::ios::failbit, std::ios::badbit}) {
    ScoringModelAttr attr;
    Reduce({}, attr);
    attr.activeFields = {"x"};
    attr.documentStream.setstate(flag);
    KelVarList varList;
    varList.AddContVar("x", "", KelXML_1_3::kRoleNone);
    EXPECT_TRUE(ScoringScorerFactory::ParseVarList(varList, attr).IsOK());
    EXPECT_EQ(varList.Size(), 1);
    EXPECT_EQ(RoleOf(varList, "x"), KelXML_1_3::kRoleNone);
  }
}

TEST(ParseVarList, FaultInTheDictionary_WarnsAndStillSetsRoles) {
  ScoringModelAttr attr;
  attr.documentStream << R"(<PMML><DataDictionary><DataField name="x" optype="continuous"/><DataField name="y"/>)"
                      << "</DataDictionary></PMML>";
  attr.activeFields = {"x"};
  attr.dictionaryStream = new std::stringstream(PmmlText::Constant("d"));  // isn't read any more
  KelVarList varList;
  const KelStatus status = ScoringScorerFactory::ParseVarList(varList, attr);
  EXPECT_EQ(status.GetErrorCode(), 108);
  EXPECT_FALSE(status.IsError());
  EXPECT_FALSE(status.IsOK());
  ASSERT_EQ(varList.Size(), 1);
  EXPECT_EQ(RoleOf(varList, "x"), KelXML_1_3::kRoleInput);
}

TEST(ParseVarList, DictionaryStream_AddsToTheSameListAndDecidesTheStatus) {
  ScoringModelAttr attr;
  Reduce({}, attr);
  attr.dictionaryStream = new std::stringstream(PmmlText::Constant("d"));
  KelVarList varList;
  EXPECT_TRUE(ScoringScorerFactory::ParseVarList(varList, attr).IsOK());
  EXPECT_EQ(varList.Size(), 4);
  attr.documentStream.clear();
  attr.dictionaryStream->str("<Other/>");
  KelVarList again;
  EXPECT_EQ(ScoringScorerFactory::ParseVarList(again, attr).GetErrorCode(), 105);
  EXPECT_EQ(again.Size(), 3);
}

std::unique_ptr<KelTransformation> Transformation(ScoringModelAttr& attr) {
  return std::unique_ptr<KelTransformation>(ScoringScorerFactory::GetTransformation(attr));
}

TEST(GetTransformation, AfterTheTextWasRead_ReadsItAgain) {
  ScoringModelAttr attr;
  Reduce({.transformations = PmmlText::Constant("d")}, attr);
  KelVarList varList;
  ASSERT_TRUE(ScoringScorerFactory::ParseVarList(varList, attr).IsOK());
  attr.documentStream.setstate(std::ios::eofbit | std::ios::failbit);
  attr.dictionaryStream = new std::stringstream(PmmlText::Constant("e"));
  attr.dictionaryStream->setstate(std::ios::eofbit);
  const auto transformation = Transformation(attr);
  ASSERT_NE(transformation, nullptr);
  ValueRecord record;
  record.Add("d", Value::NULL_VALUE);
  record.Add("e", Value::NULL_VALUE);
  EXPECT_TRUE(transformation->Transform(record).IsOK());
  EXPECT_EQ(record["d"], Value(3.0));
  EXPECT_EQ(record["e"], Value(3.0));
}

TEST(GetTransformation, TextsThatAreRefused_GiveNull) {
  ScoringModelAttr badDocument;
  badDocument.documentStream << "<PMML><TransformationDictionary><DerivedField/></TransformationDictionary></PMML>";
  EXPECT_EQ(Transformation(badDocument), nullptr);
  ScoringModelAttr badDictionary;
  Reduce({.transformations = PmmlText::Constant("d")}, badDictionary);
  badDictionary.dictionaryStream = new std::stringstream("<TransformationDictionary><DerivedField/>");
  EXPECT_EQ(Transformation(badDictionary), nullptr);
}

}  // namespace
}  // namespace KelScoring_20
