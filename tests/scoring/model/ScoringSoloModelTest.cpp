#include <gtest/gtest.h>

#include "scoring/common/KelCatVar.h"
#include "scoring/model/ScoringSoloModel.h"
#include "scoring/propensity/ScoringAdjustedPropensity.h"
#include "tests/support/CaseName.h"
#include "tests/support/FakeTransformation.h"
#include "tests/support/ScriptedScorer.h"

namespace KelScoring_20 {
namespace {

using KelCommon_1_3::KelStatus;
using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;
using KelTest::CallLog;
using KelTest::FakeTransformation;
using KelTest::Offers;
using KelTest::ScriptedScorer;
using KelTest::Writes;
using KelXML_1_3::KelCatVar;
using KelXML_1_3::KelSettings;
using KelXML_1_3::KelVarList;

KelVarList FlagTarget() {
  KelVarList varList;
  varList.AddCatVar("answer", "", std::vector<std::string>{"no", "yes"}, KelXML_1_3::kRoleTarget);
  dynamic_cast<KelCatVar&>(*varList.GetVarAt(0)).SetBinaryFlag(true, 1);
  return varList;
}

class ScoringSoloModelTest : public testing::Test {
 protected:
  ScriptedScorer& AddScorer() {
    auto* scorer = new ScriptedScorer(fLog, "scorer");
    fModel->SetScorer(scorer);
    return *scorer;
  }

  // A scorer of the prediction "no" with probability 0.75: the raw propensity is 0.25.
  void AddFlagScorer() {
    AddScorer().OnScore([](const ValueRecord&, ValueRecord& out) {
      out["prediction"] = "no";
      out["probability"] = 0.75;
      return KelStatus();
    });
  }

  ScoringAdjustedPropensity& AddEvaluator(bool withNetwork) {
    auto* evaluator = new ScoringAdjustedPropensity(fModel->GetSettings(), fModel->GetVarList());
    evaluator->fOutputBias = 9.0;  // of a network without units: the adjusted propensity is always 9
    evaluator->fNetworkRead = withNetwork;
    fModel->SetAdjustedPropensity(evaluator);
    return *evaluator;
  }

  CallLog fLog;
  std::unique_ptr<ScoringSoloModel> fModel = std::make_unique<ScoringSoloModel>(KelSettings(), FlagTarget());
  ValueRecord fIn;
  ValueRecord fOut;
};

TEST_F(ScoringSoloModelTest, WithoutScorer_RefusesAndTouchesNothing) {
  fModel->SetTransformation(new FakeTransformation(fLog, {"d"}));
  fModel->SetNeedDerivedPredictor(true);
  EXPECT_EQ(fModel->Score(fIn, fOut).GetErrorCode(), 260009);
  EXPECT_EQ(fModel->Scorable(fOut).GetErrorCode(), 260009);
  EXPECT_EQ(fModel->GetModelType(), "UNKNOWN");
  EXPECT_EQ(fIn.Size() + fOut.Size(), 0);
  EXPECT_TRUE(fLog.empty());
  EXPECT_EQ(fModel->Clone(), nullptr);
}

TEST_F(ScoringSoloModelTest, SecondScorer_StaysTheCallers) {
  AddScorer();
  const auto second = std::make_unique<ScriptedScorer>(fLog, "second");
  fModel->SetScorer(second.get());
  EXPECT_EQ(fModel->GetModelType(), "scorer");
}

TEST_F(ScoringSoloModelTest, Destruction_ScorerGoesFirst) {
  AddScorer();
  fModel->SetTransformation(new FakeTransformation(fLog, {}));
  fModel.reset();
  EXPECT_EQ(fLog, (CallLog{"~scorer", "~transformation"}));
}

struct DerivedCase {
  const char* name;
  bool hasTransformation;
  bool needAll;
  std::vector<std::string> listed;
  CallLog calls;
  std::vector<std::string> fieldsOfInput;
};

class DerivedFields : public ScoringSoloModelTest, public testing::WithParamInterface<DerivedCase> {};

TEST_P(DerivedFields, AreAddedToTheInputBeforeTheScorerRuns) {
  const DerivedCase& param = GetParam();
  if (param.hasTransformation) fModel->SetTransformation(new FakeTransformation(fLog, {"d", "e"}));
  fModel->SetNeedDerivedPredictor(param.needAll);
  fModel->SetDerivedFields(param.listed);
  fIn.Add("x", Value(5.0));
  AddScorer().OnScore([&param](const ValueRecord& in, ValueRecord&) {
    EXPECT_EQ(in.Names(true), param.fieldsOfInput);
    for (int i = 1; i < in.Size(); ++i) EXPECT_EQ(in.At(i), in.NameAt(i) == "other" ? Value() : Value(1.0));
    return KelStatus();
  });
  for (int record = 0; record < 2; ++record) {  // a record that is used again doesn't grow
    fLog.clear();
    EXPECT_TRUE(fModel->Score(fIn, fOut).IsOK());
    EXPECT_EQ(fLog, param.calls);
    EXPECT_EQ(fIn.Names(true), param.fieldsOfInput);
    if (fIn.Contains("d")) fIn["d"] = -1.0;  // computed anew
  }
}

const DerivedCase kDerivedCases[] = {
    {"NoTransformation", false, true, {"d"}, {"scorer.Score"}, {"x"}},
    {"NothingWanted", true, false, {}, {"scorer.Score"}, {"x"}},
    {"Listed", true, false, {"e", "other"}, {"Transform", "scorer.Score"}, {"x", "e", "other"}},
    {"AllWanted", true, true, {}, {"GetDerivedVariableInfo false", "Transform", "scorer.Score"}, {"x", "d", "e"}},
    {"AllWantedIgnoresTheList",
     true,
     true,
     {"other"},
     {"GetDerivedVariableInfo false", "Transform", "scorer.Score"},
     {"x", "d", "e"}},
};
INSTANTIATE_TEST_SUITE_P(Cases, DerivedFields, testing::ValuesIn(kDerivedCases), KelTest::CaseName());

// A warning stops as an error does.
TEST_F(ScoringSoloModelTest, FailedTransformation_IsTheResultAndTheScorerIsNotCalled) {
  AddScorer();
  fModel->SetDerivedFields({"d"});
  for (const bool warning : {false, true}) {
    fModel->SetTransformation(new FakeTransformation(fLog, {"d"}, KelStatus(77, warning)));
    fLog.clear();
    EXPECT_EQ(fModel->Score(fIn, fOut).GetErrorCode(), 77);
    EXPECT_EQ(fLog, (CallLog{"Transform"}));
    EXPECT_TRUE(fIn.Contains("d"));
    EXPECT_EQ(fOut.Size(), 0);
  }
}

struct PropensityCase {
  const char* name;
  std::vector<std::string> wanted;
  bool hasEvaluator;
  bool hasNetwork;
  Value raw;       // afterwards; null: untouched or absent
  Value adjusted;  // likewise
};

class Propensities : public ScoringSoloModelTest, public testing::WithParamInterface<PropensityCase> {};

TEST_P(Propensities, AreWrittenAsTheOutputRecordWants) {
  const PropensityCase& param = GetParam();
  AddFlagScorer();
  if (param.hasEvaluator) AddEvaluator(param.hasNetwork);
  for (const std::string& name : param.wanted) fOut.Add(name, Value::NULL_VALUE);
  EXPECT_TRUE(fModel->Score(fIn, fOut).IsOK());
  EXPECT_EQ(fOut.Get(fOut.IndexOf("rawpropensity")), param.raw);
  EXPECT_EQ(fOut.Get(fOut.IndexOf("adjustedpropensity")), param.adjusted);
}

const Value kNone;
const PropensityCase kPropensityCases[] = {
    {"NeitherWanted", {}, true, true, kNone, kNone},
    {"NoEvaluator", {"rawpropensity", "adjustedpropensity"}, false, false, kNone, kNone},
    {"RawWanted", {"rawpropensity"}, true, true, Value(0.25), kNone},
    {"AdjustedWantedBringsTheRawOne", {"adjustedpropensity"}, true, true, Value(0.25), Value(9.0)},
    {"BothWanted", {"rawpropensity", "adjustedpropensity"}, true, true, Value(0.25), Value(9.0)},
    // The adjusted computation alone is tried, and it refuses before the raw one: both stay as they were, in silence.
    {"AdjustedWantedWithoutNetwork", {"rawpropensity", "adjustedpropensity"}, true, false, kNone, kNone},
};
INSTANTIATE_TEST_SUITE_P(Cases, Propensities, testing::ValuesIn(kPropensityCases), KelTest::CaseName());

// A warning of the scorer leaves out the propensity as an error does.
TEST_F(ScoringSoloModelTest, FailedScorer_IsTheResultWithoutPropensity) {
  for (const bool warning : {false, true}) {
    fModel = std::make_unique<ScoringSoloModel>(KelSettings(), FlagTarget());
    AddScorer().OnScore([warning](const ValueRecord&, ValueRecord& out) {
      out["prediction"] = "yes";
      out["probability"] = 0.75;
      return KelStatus(55, warning);
    });
    AddEvaluator(true);
    fOut.Add("rawpropensity", Value::NULL_VALUE);
    EXPECT_EQ(fModel->Score(fIn, fOut).GetErrorCode(), 55);
    EXPECT_TRUE(fOut["rawpropensity"].IsNull());
  }
}

struct ScorableCase {
  const char* name;
  std::vector<std::string> offered;
  KelStatus status;
  bool hasEvaluator;
  bool hasNetwork;
  std::vector<std::string> expected;
};

class Scorables : public ScoringSoloModelTest, public testing::WithParamInterface<ScorableCase> {};

TEST_P(Scorables, AddPropensitiesThatCanBeComputed) {
  const ScorableCase& param = GetParam();
  AddScorer().OnScorable(Offers(param.offered, param.status));
  if (param.hasEvaluator) AddEvaluator(param.hasNetwork);
  EXPECT_EQ(fModel->Scorable(fOut).GetErrorCode(), param.status.GetErrorCode());
  EXPECT_EQ(fOut.Names(true), param.expected);
}

const std::vector<std::string> kBoth = {"prediction", "probability"};
const ScorableCase kScorableCases[] = {
    {"NoEvaluator", kBoth, {}, false, false, kBoth},
    {"NoNetwork", kBoth, {}, true, false, {"prediction", "probability", "rawpropensity"}},
    {"Network", kBoth, {}, true, true, {"prediction", "probability", "rawpropensity", "adjustedpropensity"}},
    {"NoProbability", {"prediction"}, {}, true, true, {"prediction"}},
    {"NoPrediction", {"probability"}, {}, true, true, {"probability"}},
    {"ScorerFails", kBoth, KelStatus(5, false), true, true, kBoth},
    {"ScorerWarns", kBoth, KelStatus(5, true), true, true, kBoth},
};
INSTANTIATE_TEST_SUITE_P(Cases, Scorables, testing::ValuesIn(kScorableCases), KelTest::CaseName());

}  // namespace
}  // namespace KelScoring_20
