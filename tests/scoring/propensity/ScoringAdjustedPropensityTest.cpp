#include <cmath>
#include <gtest/gtest.h>

#include "scoring/common/KelCatVar.h"
#include "scoring/common/KelSettings.h"
#include "scoring/common/KelVarList.h"
#include "scoring/common/ValueRecord.h"
#include "scoring/propensity/ScoringAdjustedPropensity.h"
#include "tests/support/CaseName.h"

namespace KelScoring_20 {
namespace {

using KelCommon_1_3::KelStatus;
using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;
using KelXML_1_3::KelCatVar;
using KelXML_1_3::KelVarList;

enum class Target { kNone, kContinuous, kNoFlag, kNoTrueIndex, kTexts, kNumbers };

KelVarList MakeTarget(Target target) {
  KelVarList varList;
  varList.AddContVar("input", "", KelXML_1_3::kRoleInput);
  if (target == Target::kContinuous) varList.AddContVar("answer", "", KelXML_1_3::kRoleTarget);
  if (target == Target::kNone || target == Target::kContinuous) return varList;
  if (target == Target::kNumbers) {
    varList.AddCatVar("answer", "", std::vector<double>{0.0, 1.0}, KelXML_1_3::kRoleTarget);
  } else {
    varList.AddCatVar("answer", "", std::vector<std::string>{"no", "yes"}, KelXML_1_3::kRoleTarget);
  }
  if (target != Target::kNoFlag) {
    dynamic_cast<KelCatVar&>(*varList.GetVarAt(1)).SetBinaryFlag(true, target == Target::kNoTrueIndex ? -1 : 1);
  }
  return varList;
}

ValueRecord Predicted(const Value& prediction, const Value& probability) {
  ValueRecord record;
  record.Add("prediction", prediction);
  record.Add("probability", probability);
  return record;
}

struct Fixture {
  explicit Fixture(Target target) : varList(MakeTarget(target)) {}

  KelXML_1_3::KelSettings settings;
  KelVarList varList;
  ScoringAdjustedPropensity evaluator{settings, varList};
};

struct RawCase {
  const char* name;
  Target target;
  Value prediction;
  Value probability;
  long code;  // 0: OK
  double expected;
};

class RawPropensity : public testing::TestWithParam<RawCase> {};

TEST_P(RawPropensity, RefersToTheTrueCategory) {
  const RawCase& param = GetParam();
  Fixture fixture(param.target);
  ValueRecord record = Predicted(param.prediction, param.probability);
  EXPECT_EQ(fixture.evaluator.ComputeRawPropensity(record).GetErrorCode(), param.code);
  EXPECT_EQ(record.Contains("rawpropensity"), param.code == 0);
  if (param.code == 0) {
    EXPECT_EQ(record["rawpropensity"], Value(param.expected));
  }
}

const RawCase kRawCases[] = {
    {"TrueCategory", Target::kTexts, "yes", 0.8, 0, 0.8},
    {"OtherCategory", Target::kTexts, "no", 0.8, 0, 1.0 - 0.8},  // 0.19999999999999996: nothing is rounded
    {"NumericFlag", Target::kNumbers, 1.0, 0.8, 0, 0.8},
    {"NumericFlagByText", Target::kNumbers, "0", 0.75, 0, 0.25},
    {"NumericPredictionOfTexts", Target::kTexts, 1.0, 0.8, 260017, 0.0},  // its text "1" is no category
    {"UnknownCategory", Target::kTexts, "maybe", 0.8, 260017, 0.0},
    {"NullPrediction", Target::kTexts, Value(), 0.8, 260017, 0.0},
    {"NullPredictionOfNumbers", Target::kNumbers, Value(), 0.8, 260017, 0.0},
    {"ProbabilityAsText", Target::kTexts, "no", "0.75", 0, 0.25},
    {"NoTarget", Target::kNone, "yes", 0.8, 260017, 0.0},
    {"ContinuousTarget", Target::kContinuous, "yes", 0.8, 260017, 0.0},
    {"NoFlag", Target::kNoFlag, "yes", 0.8, 260017, 0.0},
    {"NoTrueCategory", Target::kNoTrueIndex, "yes", 0.8, 260017, 0.0},
};
INSTANTIATE_TEST_SUITE_P(Cases, RawPropensity, testing::ValuesIn(kRawCases), KelTest::CaseName());

TEST(ScoringAdjustedPropensity, OutputsMissingInRecord_RefusesAndLeavesIt) {
  Fixture fixture(Target::kTexts);
  for (const char* present : {"prediction", "probability"}) {
    ValueRecord record;
    record.Add(present, Value("yes"));
    record.Add("rawpropensity", Value(7.0));
    EXPECT_EQ(fixture.evaluator.ComputeRawPropensity(record).GetErrorCode(), 260017);
    EXPECT_EQ(record["rawpropensity"], Value(7.0));
    EXPECT_EQ(record.Size(), 2);
  }
}

struct NetworkCase {
  const char* name;
  std::vector<double> hiddenWeights, hiddenBiases, outputWeights;
  double outputBias;
  double raw;
  double expected;
};

class AdjustedPropensity : public testing::TestWithParam<NetworkCase> {};

TEST_P(AdjustedPropensity, IsTheNetworkOfTheRawOne) {
  const NetworkCase& param = GetParam();
  Fixture fixture(Target::kTexts);
  fixture.evaluator.fHiddenWeights = param.hiddenWeights;
  fixture.evaluator.fHiddenBiases = param.hiddenBiases;
  fixture.evaluator.fOutputWeights = param.outputWeights;
  fixture.evaluator.fOutputBias = param.outputBias;
  fixture.evaluator.fNetworkRead = true;
  ValueRecord record = Predicted("yes", param.raw);
  EXPECT_TRUE(fixture.evaluator.ComputeAdjustedPropensity(record).IsOK());
  EXPECT_EQ(record["rawpropensity"], Value(param.raw));
  EXPECT_DOUBLE_EQ(record["adjustedpropensity"].GetReal(), param.expected);
}

// Expected numbers by python: math.tanh
const NetworkCase kNetworkCases[] = {
    {"NoUnits", {}, {}, {}, 0.5, 0.3, 0.5},
    {"OneUnitAboveOne", {2.0}, {0.0}, {1.0}, 0.5, 0.5, 1.2615941559557649},
    {"BiasesOnlyAtZero", {5.0, -3.0}, {0.25, 1.0}, {2.0, -1.0}, 0.0, 0.0, -0.2717568311483466},
    {"TwoUnits", {1.5, -2.0}, {0.25, 1.0}, {0.75, 0.5}, -0.125, 0.4, 0.4919897624871499},
    {"Saturated", {1e9, -1e9}, {0.0, 0.0}, {2.0, 1.0}, 0.0, 0.5, 1.0},
};
INSTANTIATE_TEST_SUITE_P(Cases, AdjustedPropensity, testing::ValuesIn(kNetworkCases), KelTest::CaseName());

// Three terms whose sum depends on the order: (1e16 + 1) - 1e16 is 0 in doubles. The bias comes last and stays.
TEST(ScoringAdjustedPropensity, Sum_GoesInTheOrderOfUnitsWithTheBiasLast) {
  Fixture fixture(Target::kTexts);
  fixture.evaluator.fHiddenWeights = {0.0, 0.0, 0.0};
  fixture.evaluator.fHiddenBiases = {1e9, 1e9, 1e9};
  fixture.evaluator.fOutputWeights = {1e16, 1.0, -1e16};
  fixture.evaluator.fOutputBias = 0.25;
  fixture.evaluator.fNetworkRead = true;
  ValueRecord record = Predicted("yes", 0.5);
  EXPECT_TRUE(fixture.evaluator.ComputeAdjustedPropensity(record).IsOK());
  EXPECT_EQ(record["adjustedpropensity"].GetReal(), 0.25);
}

TEST(ScoringAdjustedPropensity, WithoutNetwork_RefusesBeforeAnythingIsComputed) {
  Fixture fixture(Target::kTexts);
  ValueRecord record = Predicted("yes", 0.5);
  EXPECT_EQ(fixture.evaluator.ComputeAdjustedPropensity(record).GetErrorCode(), 260016);
  EXPECT_EQ(record.Size(), 2);
}

TEST(ScoringAdjustedPropensity, NetworkOfUnequalParts_WritesTheRawPropensityOnly) {
  const std::vector<double> one = {1.0};
  const std::vector<double> parts[][3] = {{one, {}, {}}, {{}, one, {}}, {{}, {}, one}, {one, one, {}}};
  for (const auto& [hiddenWeights, hiddenBiases, outputWeights] : parts) {
    Fixture fixture(Target::kTexts);
    fixture.evaluator.fHiddenWeights = hiddenWeights;
    fixture.evaluator.fHiddenBiases = hiddenBiases;
    fixture.evaluator.fOutputWeights = outputWeights;
    fixture.evaluator.fNetworkRead = true;
    ValueRecord record = Predicted("yes", 0.5);
    record.Add("adjustedpropensity", Value(7.0));
    EXPECT_EQ(fixture.evaluator.ComputeAdjustedPropensity(record).GetErrorCode(), 260023);
    EXPECT_EQ(record["rawpropensity"], Value(0.5));
    EXPECT_EQ(record["adjustedpropensity"], Value(7.0));
  }
}

TEST(ScoringAdjustedPropensity, RawPropensityRefused_AdjustedOneIsNotWritten) {
  Fixture fixture(Target::kTexts);
  fixture.evaluator.fNetworkRead = true;
  ValueRecord record = Predicted("maybe", 0.5);
  EXPECT_EQ(fixture.evaluator.ComputeAdjustedPropensity(record).GetErrorCode(), 260017);
  EXPECT_EQ(record.Size(), 2);
}

}  // namespace
}  // namespace KelScoring_20
