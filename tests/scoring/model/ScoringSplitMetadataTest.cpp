#include <gtest/gtest.h>
#include <utility>

#include "scoring/common/KelCatVar.h"
#include "scoring/model/ScoringSoloModel.h"
#include "scoring/model/ScoringSplitModel.h"
#include "tests/support/ScriptedScorer.h"

namespace KelScoring_20 {
namespace {

using KelCommon_1_3::Value;
using KelXML_1_3::KelSettings;
using KelXML_1_3::KelVarList;
using Numbers = std::vector<double>;
using Texts = std::vector<std::string>;

class ScoringSplitMetadataTest : public testing::Test {
 protected:
  // Members stand in key order as they are added.
  ScoringSoloModel& Add(const KelVarList& varList) {
    auto* member = new ScoringSoloModel(KelSettings(), varList);
    EXPECT_TRUE(fModel.AddModel({Value(fNextKey++)}, member));
    return *member;
  }

  Texts Categories(const std::string& name) {
    const KelXML_1_3::IKelEncoder* encoder = fModel.GetVarList().GetVariable(name)->GetEncoder();
    Texts categories;
    for (int i = 0; i < encoder->GetValueCount(); ++i) categories.push_back(encoder->GetStringValueAt(i));
    return categories;
  }

  KelTest::CallLog fLog;
  ScoringSplitModel fModel;
  int fNextKey = 1;
};

TEST_F(ScoringSplitMetadataTest, EmptySet_ShowsItsOwnFields) {
  fModel.SetType(KelScoringConst::MiningModel);
  fModel.SetSubType("sub");
  fModel.SetAppName("application");
  fModel.SetAppVersion("7");
  fModel.SetDerivedFields({"d"});
  EXPECT_EQ(fModel.GetType(), KelScoringConst::MiningModel);
  EXPECT_EQ(fModel.GetSubType() + fModel.GetAppName() + fModel.GetAppVersion(), "subapplication7");
  EXPECT_EQ(fModel.GetModelType(), "UNKNOWN");
  EXPECT_EQ(fModel.GetDerivedFields(), Texts{"d"});
  EXPECT_EQ(fModel.GetVarList().Size(), 0);
}

TEST_F(ScoringSplitMetadataTest, MetadataOfTheFirst_HidesTheSetsOwn) {
  ScoringSoloModel& first = Add({});
  first.SetScorer(new KelTest::ScriptedScorer(fLog, "scorer"));
  first.SetType(KelScoringConst::TreeModel);
  first.SetSubType("sub");
  first.SetAppName("application");
  first.SetAppVersion("7");
  first.SetAlgName("algorithm");
  Add({}).SetAppName("other");
  fModel.SetAppName("own");
  EXPECT_EQ(fModel.GetType(), KelScoringConst::TreeModel);
  EXPECT_EQ(fModel.GetSubType() + fModel.GetAppName() + fModel.GetAppVersion(), "subapplication7");
  EXPECT_EQ(fModel.GetModelType(), "scorer");
  EXPECT_EQ(fModel.GetAlgName(), "");
  EXPECT_EQ(&fModel.GetSettings(), &first.GetSettings());
  EXPECT_EQ(&std::as_const(fModel).GetSettings(), &first.GetSettings());
}

TEST_F(ScoringSplitMetadataTest, OneMember_ListIsACopyMadeOnceAndForAll) {
  KelVarList list;
  list.AddContVar("a", "label", KelXML_1_3::kRoleInput);
  ScoringSoloModel& first = Add(list);
  const KelVarList& merged = std::as_const(fModel).GetVarList();  // a const request merges, too
  EXPECT_NE(&merged, &first.GetVarList());
  EXPECT_EQ(merged.Size(), 1);
  list.AddContVar("b", "", KelXML_1_3::kRoleInput);
  Add(list);
  EXPECT_EQ(fModel.GetVarList().Size(), 1);
}

TEST_F(ScoringSplitMetadataTest, NewVariables_ComeWithoutTheirCategories) {
  KelVarList first;
  first.AddContVar("a", "", KelXML_1_3::kRoleInput);
  KelVarList second;
  second.AddCatVar("t", "text", Texts{"u", "v"}, KelXML_1_3::kRoleTarget);
  second.AddCatVar("n", "number", Numbers{1.0, 2.0, 3.0}, KelXML_1_3::kRoleInput);
  second.AddContVar("c", "continuous", 0.0, 1.0, KelXML_1_3::kRoleNone, false, -1);
  Add(first);
  Add(second);
  KelVarList& merged = fModel.GetVarList();
  ASSERT_EQ(merged.Size(), 4);
  const struct {
    const char* name;
    const char* label;
    KelXML_1_3::MeasureLevel level;
    KelXML_1_3::VariableRole role;
    int categories;
  } expected[] = {{"t", "text", KelXML_1_3::kCategoricalString, KelXML_1_3::kRoleTarget, 2},
                  {"n", "number", KelXML_1_3::kCategoricalNumeric, KelXML_1_3::kRoleInput, 3},
                  {"c", "continuous", KelXML_1_3::kContinuous, KelXML_1_3::kRoleNone, 0}};
  for (int i = 0; i < 3; ++i) {
    const KelXML_1_3::IKelVariable& variable = *merged.GetVarAt(i + 1);
    EXPECT_EQ(variable.GetName(), expected[i].name);
    EXPECT_EQ(variable.GetLabel(), expected[i].label);
    EXPECT_EQ(variable.GetMeasureLevel(), expected[i].level);
    EXPECT_EQ(variable.GetVariableRole(), expected[i].role);
    EXPECT_EQ(variable.GetCategoryCount(), expected[i].categories) << variable.GetName();
    EXPECT_EQ(variable.GetEncoder()->GetValueCount(), 0);
  }
}

TEST_F(ScoringSplitMetadataTest, ThirdMember_FillsTheCategoriesThatTheSecondBroughtEmpty) {
  KelVarList first;
  first.AddContVar("a", "", KelXML_1_3::kRoleInput);
  KelVarList second;
  second.AddCatVar("t", "", Texts{"u", "v"}, KelXML_1_3::kRoleInput);
  Add(first);
  Add(second);
  Add(second);
  EXPECT_EQ(Categories("t"), (Texts{"u", "v"}));
}

TEST_F(ScoringSplitMetadataTest, KnownVariable_TakesCategoriesAndTheRoleOfAnInput) {
  KelVarList first;
  first.AddCatVar("t", "first", Texts{"u"}, KelXML_1_3::kRoleNone);
  first.AddCatVar("n", "first", Numbers{1.0}, KelXML_1_3::kRoleInput);
  KelVarList second;
  second.AddCatVar("t", "second", Texts{"v", "u"}, KelXML_1_3::kRoleInput);
  second.AddCatVar("n", "second", Numbers{2.0}, KelXML_1_3::kRoleTarget);  // no other role is carried over
  Add(first);
  Add(second);
  EXPECT_EQ(Categories("t"), (Texts{"u", "v"}));
  EXPECT_EQ(Categories("n"), (Texts{"1", "2"}));
  EXPECT_EQ(fModel.GetVarList().GetVariable("t")->GetVariableRole(), KelXML_1_3::kRoleInput);
  EXPECT_EQ(fModel.GetVarList().GetVariable("n")->GetVariableRole(), KelXML_1_3::kRoleInput);
  EXPECT_EQ(fModel.GetVarList().GetVariable("t")->GetLabel(), "first");
}

// The level of the first member decides how the values of the others are read.
TEST_F(ScoringSplitMetadataTest, KnownVariableOfAnotherLevel_KeepsItsLevel) {
  KelVarList first;
  first.AddContVar("continuous", "", KelXML_1_3::kRoleInput);
  first.AddCatVar("text", "", Texts{"a"}, KelXML_1_3::kRoleInput);
  first.AddCatVar("number", "", Numbers{1.0}, KelXML_1_3::kRoleInput);
  KelVarList second;
  second.AddCatVar("continuous", "", Texts{"u"}, KelXML_1_3::kRoleInput);
  second.AddCatVar("text", "", Numbers{7.0}, KelXML_1_3::kRoleInput);
  second.AddCatVar("number", "", Texts{"8", "no number"}, KelXML_1_3::kRoleInput);
  Add(first);
  Add(second);
  EXPECT_EQ(fModel.GetVarList().GetVariable("continuous")->GetMeasureLevel(), KelXML_1_3::kContinuous);
  EXPECT_EQ(Categories("continuous"), Texts{});
  EXPECT_EQ(Categories("text"), (Texts{"a", "7"}));
  EXPECT_EQ(Categories("number"), (Texts{"1", "8"}));
}

TEST_F(ScoringSplitMetadataTest, FirstMemberWithoutVariables_OthersMakeTheList) {
  KelVarList second;
  second.AddContVar("a", "", KelXML_1_3::kRoleInput);
  Add({});
  EXPECT_EQ(fModel.GetVarList().Size(), 0);
  Add(second);  // an empty list counts as not merged yet
  EXPECT_EQ(fModel.GetVarList().Size(), 1);
}

TEST_F(ScoringSplitMetadataTest, DerivedFields_OfAllMembersWithDuplicates) {
  Add({});
  EXPECT_EQ(std::as_const(fModel).GetDerivedFields(), Texts{});
  Add({}).SetDerivedFields({"d", "e"});
  Add({}).SetDerivedFields({"e", "c"});
  EXPECT_EQ(fModel.GetDerivedFields(), (Texts{"d", "e", "e", "c"}));
  Add({}).SetDerivedFields({"late"});
  EXPECT_EQ(fModel.GetDerivedFields().size(), 4u);
}

}  // namespace
}  // namespace KelScoring_20
