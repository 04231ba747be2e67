#include <gtest/gtest.h>
#include <thread>

#include "tests/components/kelcommon/AllocationCount.h"
#include "tests/plugins/torvane/ModelHarness.h"

namespace TorvaneTest {
namespace {

// Rows of numbers, known categories, missing and invalid values for all outputs of a model: after the first round
// nothing is allocated any more.
void ExpectNoAllocation(const Document& document) {
  const Scorer scorer = Load(document);
  ValueRecord out(2);
  ASSERT_TRUE(scorer.scorer->Scorable(out).IsOK());
  ValueRecord in = Record({{"x", 0.0}, {"n", 1.0}, {"s", "a"}});
  const std::string categories[] = {"a", "b", "a category that isn't in the document"};
  const auto scoreRows = [&] {
    for (int row = 0; row < 60; ++row) {
      in[0] = row * 0.1 - 3.0;
      if (row % 7 == 0) in[0].SetNull();
      in[2] = categories[row % 3];
      ASSERT_TRUE(scorer.scorer->Score(in, out).IsOK());
    }
  };
  scoreRows();
  const long before = AllocationCount();
  scoreRows();
  EXPECT_EQ(AllocationCount(), before);
}

const char* const kOutputs = R"(<Output><OutputField name="shown" feature="predictedDisplayValue"/>
    <OutputField name="p" feature="probability" value="yes"/><OutputField name="r" feature="residual"/>
    <OutputField name="e"><NormDiscrete field="shown" value="yes"/></OutputField></Output>)";

TEST(Score, OfTreesInTheSteadyState_AllocatesNothing) {
  for (const char* strategy : {"none", "lastPrediction", "weightedConfidence", "aggregateNodes"}) {
    ExpectNoAllocation({.attributes = "missingValueStrategy=\"" + std::string(strategy) + "\"",
                        .body = kOutputs + std::string(R"(<Node id="the root" recordCount="9"><True/>
        <Node id="a long identifier of a node, too long for a short string" score="yes" recordCount="4">
        <CompoundPredicate booleanOperator="surrogate"><SimplePredicate field="x" operator="lessThan" value="0"/>
        <SimplePredicate field="s" operator="equal" value="a"/></CompoundPredicate>
        <ScoreDistribution value="yes" recordCount="3"/><ScoreDistribution value="no" recordCount="1"/></Node>
        <Node id="12" score="no" recordCount="5"><SimplePredicate field="x" operator="greaterOrEqual" value="0"/>
        <ScoreDistribution value="no" recordCount="5"/></Node></Node>)")});
  }
}

TEST(Score, OfRegressionsInTheSteadyState_AllocatesNothing) {
  ExpectNoAllocation({.kind = "RegressionModel",
                      .attributes = R"(normalizationMethod="softmax")",
                      .body = kOutputs + std::string(R"(<RegressionTable intercept="0.5" targetCategory="yes">
        <NumericPredictor name="x" coefficient="1"/><CategoricalPredictor name="s" value="a" coefficient="2"/>
        </RegressionTable><RegressionTable intercept="0" targetCategory="no"/>)")});
}

TEST(Score, OfNaiveBayesAndRuleSetsInTheSteadyState_AllocatesNothing) {
  ExpectNoAllocation({.kind = "NaiveBayesModel",
                      .attributes = R"(threshold="0.001")",
                      .body = kOutputs + std::string(R"(<BayesInputs><BayesInput fieldName="s"><PairCounts value="a">
        <TargetValueCounts><TargetValueCount value="yes" count="1"/></TargetValueCounts></PairCounts></BayesInput>
        <BayesInput fieldName="x"><TargetValueStats><TargetValueStat value="yes"><PoissonDistribution mean="1"/>
        </TargetValueStat></TargetValueStats></BayesInput></BayesInputs><BayesOutput fieldName="y"><TargetValueCounts>
        <TargetValueCount value="yes" count="3"/></TargetValueCounts></BayesOutput>)")});
  for (const char* criterion : {"firstHit", "weightedMax", "weightedSum"}) {
    ExpectNoAllocation(
        {.kind = "RuleSetModel",
         .body = kOutputs + std::string("<RuleSet><RuleSelectionMethod criterion=\"") + criterion + R"("/>
        <SimpleRule id="a long identifier of a rule, too long for a short string" score="yes" confidence="0.5">
        <SimplePredicate field="s" operator="equal" value="a"/></SimpleRule>
        <SimpleRule score="no"><SimplePredicate field="x" operator="lessThan" value="0"/></SimpleRule></RuleSet>)"});
  }
}

// More fields than a frame on the stack holds.
TEST(Score, OfALargeModelInTheSteadyState_AllocatesNothing) {
  Document document{.kind = "RegressionModel", .function = "regression"};
  for (int i = 0; i < 500; ++i) {
    const std::string name = std::string("z").append(std::to_string(i));
    document.dictionary += "<DataField name=\"" + name + "\" optype=\"continuous\" dataType=\"double\"/>";
    document.schema += "<MiningField name=\"" + name + "\" missingValueReplacement=\"1\"/>";
    document.body += "<NumericPredictor name=\"" + name + "\" coefficient=\"1\"/>";
  }
  document.body = "<RegressionTable intercept=\"0\">" + document.body + "</RegressionTable>";
  ExpectNoAllocation(document);
}

// What a thread takes once and keeps: the open predicates of a deep compound, the open branches of a mix.
TEST(Score, NoMemoryForAThreadsFirstRecord_IsAStatusAndTheNextRecordIsScored) {
  std::string deep;
  for (int i = 0; i < 100; ++i) deep += R"(<CompoundPredicate booleanOperator="and"><True/>)";
  deep += R"(<SimplePredicate field="x" operator="lessThan" value="1"/>)";
  for (int i = 0; i < 100; ++i) deep += "</CompoundPredicate>";
  const std::string nodes = "<Node recordCount=\"1\"><True/><Node score=\"yes\" recordCount=\"1\">";
  const std::string split = R"(<SimplePredicate field="x" operator="lessThan" value="1"/>)";
  for (const std::string& predicate : {deep, split}) {
    const Scorer scorer = Load(
        {.attributes = R"(missingValueStrategy="weightedConfidence")", .body = nodes + predicate + "</Node></Node>"});
    ValueRecord out(2);
    ASSERT_TRUE(scorer.scorer->Scorable(out).IsOK());
    const ValueRecord in = Record({{"x", Value::NULL_VALUE}});
    ASSERT_TRUE(scorer.scorer->Score(in, out).IsOK());
    std::thread([&] {
      FailAllocations(true);
      const auto status = scorer.scorer->Score(in, out);
      FailAllocations(false);
      EXPECT_EQ(status.GetErrorCode(), 270002);
      EXPECT_TRUE(scorer.scorer->Score(in, out).IsOK());
    }).join();
  }
}

}  // namespace
}  // namespace TorvaneTest
