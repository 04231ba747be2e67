#include <gtest/gtest.h>
#include <sstream>

#include "scoring/common/ValueRecord.h"
#include "scoring/model/ScoringAbsModel.h"
#include "scoring/propensity/ScoringAdjustedPropensity.h"
#include "tests/support/FakeTransformation.h"

namespace KelScoring_20 {
namespace {

using KelCommon_1_3::KelStatus;
using KelCommon_1_3::ValueRecord;
using KelTest::CallLog;
using KelTest::FakeTransformation;
using KelXML_1_3::KelSettings;
using KelXML_1_3::KelVarList;

// The base as it is: what is pure there does nothing here.
class BareModel : public ScoringAbsModel {
 public:
  BareModel() = default;
  BareModel(const KelSettings& settings, const KelVarList& varList) : ScoringAbsModel(settings, varList) {}
  [[nodiscard]] ScoringModel* Clone() const override { return nullptr; }
  KelStatus Score(ValueRecord& /*in*/, ValueRecord& /*out*/) override { return KelStatus(1, false); }
  KelStatus Scorable(ValueRecord& /*record*/) override { return KelStatus(1, false); }
};

// Reads the model's settings and variables when it dies: both must still be there.
class LoggedEvaluator : public ScoringAdjustedPropensity {
 public:
  LoggedEvaluator(CallLog& log, ScoringModel& model)
      : ScoringAdjustedPropensity(model.GetSettings(), model.GetVarList()), fLog(log), fModel(model.GetVarList()) {}
  ~LoggedEvaluator() override { fLog.push_back("~evaluator of " + std::to_string(fModel.Size())); }

 private:
  CallLog& fLog;
  KelVarList& fModel;
};

struct ModelOfTwo {
  KelSettings settings;
  KelVarList varList;

  ModelOfTwo() {
    settings.AddSetting("key", "value", true);
    varList.AddContVar("a", "", KelXML_1_3::kRoleInput);
    varList.AddContVar("b", "", KelXML_1_3::kRoleTarget);
  }
};

TEST(ScoringAbsModel, FreshModel_HoldsNothing) {
  const BareModel model;
  EXPECT_EQ(model.GetType(), KelScoringConst::UnknownModel);
  EXPECT_EQ(model.GetModelType(), "UNKNOWN");
  EXPECT_EQ(model.GetSubType() + model.GetAlgName() + model.GetVersion() + model.GetModelID() + model.GetAppName() +
                model.GetAppVersion(),
            "");
  EXPECT_EQ(model.GetTransformation(), nullptr);
  EXPECT_EQ(model.GetAdjustedPropensity(), nullptr);
  EXPECT_FALSE(model.NeedDerivedPredictor());
  EXPECT_TRUE(model.GetDerivedFields().empty());
  EXPECT_EQ(model.GetVarList().Size(), 0);
  EXPECT_TRUE(model.GetStatus().IsOK());
}

TEST(ScoringAbsModel, StringSetters_EachReachItsOwnGetter) {
  BareModel model;
  model.SetType(KelScoringConst::TreeModel);
  model.SetSubType("sub");
  model.SetAlgName("algorithm");
  model.SetVersion("version");
  model.SetModelID("id");
  model.SetAppName("application");
  model.SetAppVersion("7");
  model.SetNeedDerivedPredictor(true);
  EXPECT_EQ(model.GetType(), KelScoringConst::TreeModel);
  EXPECT_EQ(model.GetSubType(), "sub");
  EXPECT_EQ(model.GetAlgName(), "algorithm");
  EXPECT_EQ(model.GetVersion(), "version");
  EXPECT_EQ(model.GetModelID(), "id");
  EXPECT_EQ(model.GetAppName(), "application");
  EXPECT_EQ(model.GetAppVersion(), "7");
  EXPECT_TRUE(model.NeedDerivedPredictor());
}

TEST(ScoringAbsModel, Construction_CopiesSettingsAndVariables) {
  ModelOfTwo source;
  BareModel model(source.settings, source.varList);
  source.settings.AddSetting("key", "changed", true);
  source.varList.SetVariableRole(0, KelXML_1_3::kRoleNone);
  std::string value;
  EXPECT_TRUE(model.GetSettings().GetSettingValByName("key", value));
  EXPECT_EQ(value, "value");
  EXPECT_EQ(model.GetVarList().GetVarAt(0)->GetVariableRole(), KelXML_1_3::kRoleInput);
}

TEST(ScoringAbsModel, SetDerivedFields_Replaces) {
  BareModel model;
  model.SetDerivedFields({"a", "b"});
  model.SetDerivedFields({"c"});
  EXPECT_EQ(model.GetDerivedFields(), std::vector<std::string>{"c"});
}

TEST(ScoringAbsModel, SetTransformation_DestroysTheOneHeld) {
  CallLog log;
  BareModel model;
  model.SetTransformation(new FakeTransformation(log, {}));
  model.SetTransformation(new FakeTransformation(log, {}));
  EXPECT_EQ(log, (CallLog{"~transformation"}));
  model.SetTransformation(nullptr);
  EXPECT_EQ(log, (CallLog{"~transformation", "~transformation"}));
  EXPECT_EQ(model.GetTransformation(), nullptr);
}

TEST(ScoringAbsModel, SetAdjustedPropensity_LetsTheOneHeldLive) {
  CallLog log;
  BareModel model;
  auto* first = new LoggedEvaluator(log, model);
  model.SetAdjustedPropensity(first);
  model.SetAdjustedPropensity(nullptr);
  EXPECT_TRUE(log.empty());
  EXPECT_EQ(model.GetAdjustedPropensity(), nullptr);
  delete first;
}

TEST(ScoringAbsModel, Destruction_TransformationThenEvaluatorThenWhatItRefersTo) {
  CallLog log;
  const ModelOfTwo source;
  {
    BareModel model(source.settings, source.varList);
    model.SetAdjustedPropensity(new LoggedEvaluator(log, model));
    model.SetTransformation(new FakeTransformation(log, {}));
  }
  EXPECT_EQ(log, (CallLog{"~transformation", "~evaluator of 2"}));
}

TEST(ScoringAbsModel, Copies_HaveTheFieldsAndNeitherTransformationNorEvaluator) {
  CallLog log;
  const ModelOfTwo source;
  BareModel model(source.settings, source.varList);
  model.SetAppName("application");
  model.SetDerivedFields({"d"});
  model.SetTransformation(new FakeTransformation(log, {}));
  model.SetAdjustedPropensity(new LoggedEvaluator(log, model));

  const BareModel copy(model);
  BareModel assigned;
  assigned.SetTransformation(new FakeTransformation(log, {}));
  assigned = model;
  EXPECT_EQ(log, (CallLog{"~transformation"}));  // that of the target: it knew other fields
  for (const BareModel* each : {&copy, static_cast<const BareModel*>(&assigned)}) {
    EXPECT_EQ(each->GetAppName(), "application");
    EXPECT_EQ(each->GetDerivedFields(), std::vector<std::string>{"d"});
    EXPECT_EQ(each->GetVarList().Size(), 2);
    EXPECT_EQ(each->GetTransformation(), nullptr);
    EXPECT_EQ(each->GetAdjustedPropensity(), nullptr);
  }
  const BareModel& itself = model;
  model = itself;
  EXPECT_NE(model.GetTransformation(), nullptr);
}

TEST(ScoringAbsModel, FailedScore_ShowsNeitherInStatusNorDisplay) {
  BareModel model;
  ValueRecord record;
  EXPECT_TRUE(model.Score(record, record).IsError());
  EXPECT_TRUE(model.GetStatus().IsOK());
  std::ostringstream stream;
  model.Display(stream);
  EXPECT_EQ(stream.str(), "");
}

}  // namespace
}  // namespace KelScoring_20
