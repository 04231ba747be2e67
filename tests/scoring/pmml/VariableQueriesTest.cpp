#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "scoring/common/KelMV.h"
#include "scoring/pmml/ScoringPMMLParser.h"

namespace KelScoring_20 {
namespace {

using KelCommon_1_3::KelMV;
using KelCommon_1_3::Value;
using KelXML_1_3::IKelVariable;
using KelXML_1_3::KelVarList;

using Queries = ScoringPMMLParser;
using Strings = std::vector<std::string>;
using Numbers = std::vector<double>;

constexpr auto kNone = KelXML_1_3::kRoleNone;
constexpr auto kTarget = KelXML_1_3::kRoleTarget;

/// Variables of each kind. 9 is declared missing in "grade" and "income", "?" in "color"; both are categories, too.
class VariableQueries : public ::testing::Test {
 protected:
  VariableQueries() {
    fList.AddCatVar("color", "", Strings{"red", "green", "?"}, Strings{"Rot", "Gruen", ""}, kNone);
    fList.AddCatVar("grade", "", Numbers{1, 2.5, 9}, kTarget);
    fList.AddContVar("income", "", kNone);
    fList.AddCatVar("counted", "", 2, KelXML_1_3::kCategoricalString, kTarget);
    fList.AddCatVar("flag", "", Numbers{0, 1}, Strings{"no", "yes"}, kNone);
    Var("color")->GetEncoder()->AddMissingString("?", "");
    Var("grade")->GetEncoder()->AddMissingNumber(9, "");
    Var("income")->GetEncoder()->AddMissingNumber(9, "");
  }

  IKelVariable* Var(const std::string& name) { return name.empty() ? nullptr : fList.GetVariable(name); }

  KelVarList fList;
};

TEST_F(VariableQueries, Targets_StandInListOrder) {
  const std::vector<const IKelVariable*> expected = {Var("grade"), Var("counted")};
  EXPECT_EQ(Queries::GetTargetVars(fList), expected);
  EXPECT_TRUE(Queries::GetTargetVars(KelVarList()).empty());
}

struct CategoriesCase {
  const char* variable;
  std::vector<Value> values;
  Strings labels;
};

TEST_F(VariableQueries, Categories_ComeWithLabelOrOwnText) {
  const CategoriesCase cases[] = {
      {"color", {Value("red"), Value("green"), Value("?")}, {"Rot", "Gruen", "?"}},
      {"grade", {Value(1), Value(2.5), Value(9)}, {"1", "2.5", "9"}},
      {"flag", {Value(0), Value(1)}, {"no", "yes"}},
      {"income", {}, {}},
      {"counted", {}, {}},
      {"", {}, {}},
  };
  for (const CategoriesCase& row : cases) {
    EXPECT_EQ(Queries::GetValues(Var(row.variable)), row.values) << row.variable;
    const auto pairs = Queries::GetValueLabels(Var(row.variable));
    ASSERT_EQ(pairs.size(), row.labels.size()) << row.variable;
    for (std::size_t i = 0; i < pairs.size(); ++i) {
      EXPECT_EQ(pairs[i].first, row.values[i]) << row.variable;
      EXPECT_EQ(pairs[i].second, row.labels[i]) << row.variable;
    }
  }
}

TEST_F(VariableQueries, LabelsOfAnotherCount_AreNotUsed) {
  KelVarList list;
  list.AddCatVar("more", "", 3, KelXML_1_3::kCategoricalString, kNone);
  list.GetVarAt(0)->GetEncoder()->AddStringValue("a", "Label");
  ASSERT_EQ(list.GetVarAt(0)->GetCategoryCount(), 3);
  EXPECT_EQ(Queries::GetValueLabels(list.GetVarAt(0)).at(0).second, "a");
}

struct ValueCase {
  const char* variable;
  Value value;
  bool isCategory;
  bool isMissing;
  bool isValid;
};

TEST_F(VariableQueries, Value_IsJudgedByLevelAndEncoder) {
  const ValueCase cases[] = {
      {"", Value("red"), false, true, false},
      {"color", Value(), false, true, false},
      {"color", Value("red"), true, false, true},
      {"color", Value("Rot"), false, false, false},
      {"color", Value("?"), true, true, false},  // both a category and declared missing
      {"color", Value(KelMV::gMissingValue), false, false, false},
      {"color", Value("-1.7976931348623157e308"), false, false, false},
      {"counted", Value("anything"), false, false, false},
      {"grade", Value(), false, true, false},
      {"grade", Value(2.5), true, false, true},
      {"grade", Value("2.5"), true, false, true},
      {"grade", Value(3), false, false, false},
      {"grade", Value("many"), false, true, false},  // a text that is no number reads as the missing mark
      {"grade", Value(9), true, true, false},
      {"grade", Value(KelMV::gMissingValue), false, true, false},
      {"income", Value(12), false, false, true},
      {"income", Value("12"), false, false, false},  // a text, though one with a number
      {"income", Value(9), false, true, false},
      {"income", Value(KelMV::gMissingValue), false, true, false},
      {"income", Value(), false, true, false},
  };
  for (const ValueCase& row : cases) {
    const std::string label = std::string(row.variable) + " " + row.value.GetString();
    EXPECT_EQ(Queries::IsValidCatValue(Var(row.variable), row.value), row.isCategory) << label;
    EXPECT_EQ(Queries::IsMissingValue(Var(row.variable), row.value), row.isMissing) << label;
    EXPECT_EQ(Queries::IsValidValue(Var(row.variable), row.value), row.isValid) << label;
  }
}

TEST_F(VariableQueries, Flag_HasTwoCategories) {
  for (const auto& [name, expected] : {std::pair{"flag", true}, std::pair{"counted", true}, std::pair{"color", false},
                                       std::pair{"income", false}, std::pair{"", false}}) {
    EXPECT_EQ(Queries::IsFlagVariable(Var(name)), expected) << name;
  }
}

}  // namespace
}  // namespace KelScoring_20
