#include <gtest/gtest.h>

#include "scoring/common/ValueRecord.h"
#include "scoring/model/ScoringBaseScorer.h"

namespace KelScoring_20 {
namespace {

using KelCommon_1_3::KelStatus;
using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;
using KelXML_1_3::KelSettings;
using KelXML_1_3::KelVarList;

class CallingUp : public ScoringBaseScorer {
 public:
  using ScoringBaseScorer::ScoringBaseScorer;
  KelStatus Score(const ValueRecord& in, ValueRecord& out) override { return ScoringBaseScorer::Score(in, out); }
  KelStatus Scorable(ValueRecord& record) override { return ScoringBaseScorer::Scorable(record); }
};

KelVarList OneVariable(const std::string& name) {
  KelVarList varList;
  varList.AddContVar(name, "", KelXML_1_3::kRoleInput);
  return varList;
}

TEST(ScoringBaseScorer, CallsUp_GiveNotImplementedAndTouchNothing) {
  KelSettings settings;
  CallingUp scorer(settings, KelVarList());
  ValueRecord out;
  out.Add("prediction", Value(1.0));
  EXPECT_EQ(scorer.Score(ValueRecord(), out).GetErrorCode(), 260016);
  const KelStatus status = scorer.Scorable(out);
  EXPECT_EQ(status.GetErrorCode(), 260016);
  EXPECT_TRUE(status.IsError());
  EXPECT_EQ(out.Size(), 1);
  EXPECT_EQ(out.At(0), Value(1.0));
  EXPECT_EQ(scorer.GetType(), "UNKNOWN");
  EXPECT_FALSE(scorer.IsReady());
}

TEST(ScoringBaseScorer, SettingsAreShared_VariablesAreItsOwn) {
  KelSettings settings;
  KelVarList varList = OneVariable("a");
  CallingUp scorer(settings, varList);
  const CallingUp copy(scorer);

  KelSettings others;
  others.AddSetting("key", "new", true);
  scorer.SetSettings(others);
  std::string value;
  EXPECT_TRUE(settings.GetSettingValByName("key", value));
  EXPECT_EQ(&copy.GetSettings(), &settings);

  scorer.SetVarList(OneVariable("b"));
  EXPECT_NE(scorer.GetVarList().GetVariable("b"), nullptr);
  EXPECT_NE(copy.GetVarList().GetVariable("a"), nullptr);
  EXPECT_EQ(varList.GetVariable("b"), nullptr);
}

}  // namespace
}  // namespace KelScoring_20
