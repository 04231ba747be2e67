#include <functional>
#include <gtest/gtest.h>
#include <random>

#include "tests/plugins/torvane/ModelHarness.h"
#include "tests/support/CaseName.h"

namespace TorvaneTest {
namespace {

const Value kNull = Value::NULL_VALUE;

const char* const kGolfFields = R"(<DataField name="temperature" optype="continuous" dataType="double"/>
<DataField name="humidity" optype="continuous" dataType="double"/>
<DataField name="outlook" optype="categorical" dataType="string"><Value value="sunny"/><Value value="overcast"/><Value value="rain"/></DataField>
<DataField name="y" optype="categorical" dataType="string"><Value value="will play"/><Value value="may play"/><Value value="no play"/></DataField>)";

const char* const kGolfNodes = R"(<Node id="1" score="will play" recordCount="100" defaultChild="2"><True/>
<ScoreDistribution value="will play" recordCount="60"/><ScoreDistribution value="may play" recordCount="30"/><ScoreDistribution value="no play" recordCount="10"/>
<Node id="2" score="will play" recordCount="50" defaultChild="3"><SimplePredicate field="outlook" operator="equal" value="sunny"/>
<ScoreDistribution value="will play" recordCount="40"/><ScoreDistribution value="may play" recordCount="2"/><ScoreDistribution value="no play" recordCount="8"/>
<Node id="3" score="will play" recordCount="40"><CompoundPredicate booleanOperator="surrogate">
<SimplePredicate field="temperature" operator="greaterOrEqual" value="50"/><SimplePredicate field="humidity" operator="lessThan" value="80"/></CompoundPredicate>
<ScoreDistribution value="will play" recordCount="36"/><ScoreDistribution value="may play" recordCount="2"/><ScoreDistribution value="no play" recordCount="2"/></Node>
<Node id="4" score="no play" recordCount="10"><CompoundPredicate booleanOperator="surrogate">
<SimplePredicate field="temperature" operator="lessThan" value="50"/><SimplePredicate field="humidity" operator="greaterOrEqual" value="80"/></CompoundPredicate>
<ScoreDistribution value="will play" recordCount="4"/><ScoreDistribution value="may play" recordCount="0"/><ScoreDistribution value="no play" recordCount="6"/></Node></Node>
<Node id="5" score="may play" recordCount="50"><SimpleSetPredicate field="outlook" booleanOperator="isIn"><Array type="string">overcast rain</Array></SimpleSetPredicate>
<ScoreDistribution value="will play" recordCount="20"/><ScoreDistribution value="may play" recordCount="28"/><ScoreDistribution value="no play" recordCount="2"/></Node></Node>)";

Scorer Golf(const std::string& strategy, const std::string& further = "") {
  std::string confidences;
  for (const char* category : {"will play", "may play", "no play"}) {
    confidences +=
        "<OutputField name=\"c " + std::string(category) + "\" feature=\"confidence\" value=\"" + category + "\"/>";
  }
  return Load(
      {.attributes = "missingValueStrategy=\"" + strategy + "\" " + further,
       .body = "<Output>" + confidences + "</Output>" + kGolfNodes,
       .schema = R"(<MiningField name="temperature"/><MiningField name="humidity"/><MiningField name="outlook"/>)",
       .dictionary = kGolfFields});
}

struct GolfCase {
  const char* name;
  const char* strategy;
  const char* further;
  Value outlook;
  Value temperature;
  Value humidity;
  const char* node;  // "null" for no prediction
  const char* prediction;
  double probabilities[3];
  double confidences[3];
};

class GolfTree : public testing::TestWithParam<GolfCase> {};

// The published example of the standard, under each strategy.
TEST_P(GolfTree, EachStrategy_GivesTheKnownAnswer) {
  const GolfCase& row = GetParam();
  const auto out = Golf(row.strategy, row.further)
                       .Score({{"outlook", row.outlook}, {"temperature", row.temperature}, {"humidity", row.humidity}});
  EXPECT_EQ(Shown(out, "tree-nodeid"), row.node);
  EXPECT_EQ(Shown(out, "prediction"), row.prediction);
  if (std::string(row.prediction) == "null") return;
  const char* const categories[] = {"will play", "may play", "no play"};
  for (int i = 0; i < 3; ++i) {
    EXPECT_NEAR(Probability(out, categories[i]), row.probabilities[i], 1e-15) << categories[i];
    EXPECT_NEAR(Number(out, std::string("c ") + categories[i]), row.confidences[i], 1e-15) << categories[i];
  }
}

const char* const kPenalty = R"(missingValuePenalty="0.8")";

INSTANTIATE_TEST_SUITE_P(
    Table, GolfTree,
    testing::Values(
        GolfCase{"nothing_missing", "none", "", "sunny", 40.0, 70.0, "4", "no play", {.4, 0, .6}, {.4, 0, .6}},
        GolfCase{"other_branch", "none", "", "rain", 40.0, 70.0, "5", "may play", {.4, .56, .04}, {.4, .56, .04}},
        GolfCase{"null_prediction", "nullPrediction", "", "sunny", kNull, kNull, "null", "null", {}, {}},
        GolfCase{"last_prediction",
                 "lastPrediction",
                 "",
                 "sunny",
                 kNull,
                 kNull,
                 "2",
                 "will play",
                 {.8, .04, .16},
                 {.8, .04, .16}},
        GolfCase{"last_prediction_at_the_root",
                 "lastPrediction",
                 "",
                 kNull,
                 kNull,
                 kNull,
                 "1",
                 "will play",
                 {.6, .3, .1},
                 {.6, .3, .1}},
        GolfCase{"none_passes_over", "none", "", kNull, 40.0, 70.0, "null", "null", {}, {}},
        GolfCase{"none_returning_last",
                 "none",
                 R"(noTrueChildStrategy="returnLastPrediction")",
                 kNull,
                 40.0,
                 70.0,
                 "1",
                 "will play",
                 {.6, .3, .1},
                 {.6, .3, .1}},
        GolfCase{
            "default_child", "defaultChild", kPenalty, kNull, 40.0, 70.0, "4", "no play", {.4, 0, .6}, {.32, 0, .48}},
        GolfCase{"default_child_and_surrogate",
                 "defaultChild",
                 kPenalty,
                 kNull,
                 kNull,
                 70.0,
                 "3",
                 "will play",
                 {.9, .05, .05},
                 {.576, .032, .032}},
        GolfCase{"surrogate_alone", "none", kPenalty, "sunny", kNull, 90.0, "4", "no play", {.4, 0, .6}, {.32, 0, .48}},
        GolfCase{"weighted_confidence",
                 "weightedConfidence",
                 "",
                 "sunny",
                 kNull,
                 kNull,
                 "2",
                 "will play",
                 {.8, .04, .16},
                 {.8, .04, .16}},
        GolfCase{"weighted_confidence_twice",
                 "weightedConfidence",
                 "",
                 kNull,
                 kNull,
                 kNull,
                 "1",
                 "will play",
                 {.6, .3, .1},
                 {.6, .3, .1}},
        GolfCase{"weighted_confidence_one_sure",
                 "weightedConfidence",
                 "",
                 kNull,
                 40.0,
                 70.0,
                 "1",
                 "will play",
                 {.4, .28, .32},
                 {.4, .28, .32}},
        GolfCase{"aggregate_nodes",
                 "aggregateNodes",
                 "",
                 "sunny",
                 kNull,
                 kNull,
                 "2",
                 "will play",
                 {.8, .04, .16},
                 {.8, .04, .16}},
        GolfCase{"aggregate_nodes_one_sure",
                 "aggregateNodes",
                 "",
                 kNull,
                 45.0,
                 90.0,
                 "1",
                 "may play",
                 {24. / 60, 28. / 60, 8. / 60},
                 {24. / 60, 28. / 60, 8. / 60}}),
    KelTest::CaseName());

Document Tree(const std::string& nodes, const std::string& attributes = "") {
  return {.attributes = attributes, .body = nodes};
}

std::string Leaf(const std::string& attributes, const std::string& inside) {
  return "<Node " + attributes + "><True/>" + inside + "</Node>";
}

struct LeafCase {
  const char* name;
  const char* attributes;
  const char* inside;
  const char* prediction;
  double probabilityOfYes;
  double confidence;
};

class LeafResult : public testing::TestWithParam<LeafCase> {};

TEST_P(LeafResult, ScoreAndDistribution_GiveResultProbabilityAndConfidence) {
  const LeafCase& row = GetParam();
  const auto out = Load(Tree(Leaf(row.attributes, row.inside))).Score({});
  EXPECT_EQ(Shown(out, "prediction"), row.prediction);
  EXPECT_DOUBLE_EQ(Probability(out, "yes"), row.probabilityOfYes);
  EXPECT_DOUBLE_EQ(Number(out, "confidence"), row.confidence);
}

INSTANTIATE_TEST_SUITE_P(
    Table, LeafResult,
    testing::Values(
        LeafCase{"score_only", R"(score="yes")", "", "yes", 1, 1},
        LeafCase{"most_records", "",
                 R"(<ScoreDistribution value="no" recordCount="3"/><ScoreDistribution value="yes" recordCount="5"/>)",
                 "yes", .625, .625},
        LeafCase{"first_on_a_tie", "",
                 R"(<ScoreDistribution value="no" recordCount="4"/><ScoreDistribution value="yes" recordCount="4"/>)",
                 "no", .5, .5},
        LeafCase{
            "first_on_a_tie_whatever_the_confidences", "",
            R"(<ScoreDistribution value="no" recordCount="4" confidence="0.1"/><ScoreDistribution value="yes" recordCount="4" confidence="0.7"/>)",
            "no", .5, .1},
        LeafCase{"score_over_records", R"(score="no")",
                 R"(<ScoreDistribution value="no" recordCount="1"/><ScoreDistribution value="yes" recordCount="3"/>)",
                 "no", .75, .25},
        LeafCase{"confidence_of_the_nodes_records", R"(score="yes" recordCount="10")",
                 R"(<ScoreDistribution value="yes" recordCount="4"/><ScoreDistribution value="no" recordCount="4"/>)",
                 "yes", .5, .4},
        LeafCase{
            "given_confidence", R"(score="yes")",
            R"(<ScoreDistribution value="yes" recordCount="3" confidence="0.7"/><ScoreDistribution value="no" recordCount="1" confidence="0.1"/>)",
            "yes", .75, .7},
        LeafCase{
            "given_probabilities", R"(score="yes")",
            R"(<ScoreDistribution value="yes" recordCount="3" probability="0.9"/><ScoreDistribution value="no" recordCount="3" probability="0.1"/>)",
            "yes", .9, .5},
        LeafCase{
            "no_records_but_confidences", "",
            R"(<ScoreDistribution value="no" recordCount="0" confidence="0.2"/><ScoreDistribution value="yes" recordCount="0" confidence="0.8"/>)",
            "yes", .8, .8}),
    KelTest::CaseName());

TEST(TreeModel, LeafWithoutScoreAndDistribution_GivesNothing) {
  const Scorer scorer = Load(Tree(Leaf("", "")));
  EXPECT_TRUE(scorer.Predict({}).IsNull());
}

// Leaves that say nothing make the result invalid, leaves without records leave it open; then the priors step in.
TEST(TreeModel, WeightedConfidenceOfLeavesWithoutWeight_PredictsNoCategory) {
  const auto predict = [](const std::string& leaf) {
    const std::string nodes = R"(<Targets><Target field="y"><TargetValue value="maybe" priorProbability="1"/></Target>
        </Targets><Node recordCount="2"><True/><Node )" +
                              leaf + R"(><SimplePredicate field="x" operator="lessThan" value="1"/></Node><Node )" +
                              leaf +
                              R"(><SimplePredicate field="x" operator="greaterOrEqual" value="1"/></Node></Node>)";
    return Shown(Load(Tree(nodes, R"(missingValueStrategy="weightedConfidence")")).Score({}), "prediction");
  };
  EXPECT_EQ(predict(R"(score="no" recordCount="1")"), "no");
  EXPECT_EQ(predict(R"(score="no" recordCount="0")"), "maybe");
  EXPECT_EQ(predict(R"(recordCount="1")"), "null");
}

TEST(TreeModel, UnknownChildBeforeATrueOne_IsActedUponAtOnce) {
  const std::string nodes = R"(<Node score="maybe"><True/>
      <Node score="yes"><SimplePredicate field="x" operator="lessThan" value="1"/></Node>
      <Node score="no"><SimplePredicate field="n" operator="lessThan" value="1"/></Node></Node>)";
  const auto predict = [&](const char* strategy) {
    return Shown(Load(Tree(nodes, "missingValueStrategy=\"" + std::string(strategy) + "\"")).Score({{"n", 0.0}}),
                 "prediction");
  };
  EXPECT_EQ(predict("lastPrediction"), "maybe");
  EXPECT_EQ(predict("nullPrediction"), "null");
  EXPECT_EQ(predict("none"), "no");
}

TEST(TreeModel, DefaultChildThatIsNeededButNotNamed_GivesNothing) {
  const Scorer scorer = Load(Tree(R"(<Node><True/>
      <Node id="a" score="yes"><SimplePredicate field="x" operator="lessThan" value="1"/></Node></Node>)",
                                  R"(missingValueStrategy="defaultChild")"));
  EXPECT_TRUE(scorer.Predict({}).IsNull());
  EXPECT_EQ(scorer.Predict({{"x", 0.0}}).GetString(), "yes");
}

TEST(TreeModel, RootThatIsNotTrue_GivesNothing) {
  const Scorer scorer =
      Load(Tree(R"(<Node score="yes"><SimplePredicate field="x" operator="lessThan" value="1"/></Node>)",
                R"(missingValueStrategy="lastPrediction" noTrueChildStrategy="returnLastPrediction")"));
  EXPECT_EQ(scorer.Predict({{"x", 0.0}}).GetString(), "yes");
  EXPECT_TRUE(scorer.Predict({{"x", 2.0}}).IsNull());
  EXPECT_TRUE(scorer.Predict({}).IsNull());
}

TEST(TreeModel, NodeIds_AreTextsNumbersOrPositions) {
  const auto ids = [](const std::string& root, const std::string& left, const std::string& right) {
    const Scorer scorer =
        Load(Tree("<Node " + root + R"(><True/><Node score="yes" )" + left +
                  R"(><SimplePredicate field="x" operator="lessThan" value="1"/></Node><Node score="no" )" + right +
                  R"(><True/></Node></Node>)"));
    return Shown(scorer.Score({{"x", 0.0}}), "tree-nodeid") + " " + Shown(scorer.Score({{"x", 1.0}}), "tree-nodeid");
  };
  EXPECT_EQ(ids(R"(id="0")", R"(id="17")", R"(id="4000000000")"), "17 4000000000");
  EXPECT_EQ(ids(R"(id="n0")", R"(id="left leaf")", R"(id="")"), "left leaf ");
  EXPECT_EQ(ids("", "", ""), "2 3");
  EXPECT_EQ(ids(R"(id="0")", R"(id="1")", R"(id="2")"), "1 2");
  EXPECT_EQ(ids(R"(id="0")", R"(id="2")", R"(id="1")"), "2 1");
  EXPECT_EQ(ids(R"(id="1")", R"(id="01")", ""), "01 3");
}

TEST(TreeModel, Regression_GivesNumbers) {
  const Scorer scorer = Load({.function = "regression",
                              .attributes = R"(noTrueChildStrategy="returnLastPrediction")",
                              .body = R"(<Node score="-1.5"><True/><Node score="2.25"><SimplePredicate field="x"
                                  operator="lessThan" value="1"/></Node></Node>)"});
  EXPECT_EQ(scorer.Predict({{"x", 0.0}}).GetReal(), 2.25);
  EXPECT_EQ(scorer.Predict({{"x", 3.0}}).GetReal(), -1.5);
}

// Splits of two children are followed with one comparison; a plain walk over the same numbers says what must come out.
TEST(TreeModel, RandomTrees_AgreeWithAPlainWalk) {
  struct Plain {
    double threshold = 0.0;
    int field = 0;
    int operation = 0;  // of the left child; the right one has the opposite
    int children[2] = {-1, -1};
  };
  const char* const kFields[] = {"x", "n", "f"};
  const char* const kOperations[] = {"lessThan", "lessOrEqual", "greaterThan", "greaterOrEqual"};
  std::mt19937 random(7);
  for (int round = 0; round < 30; ++round) {
    std::vector<Plain> nodes;
    const std::function<std::string(int, const std::string&)> grow = [&](int depth, const std::string& predicate) {
      const std::size_t index = nodes.size();
      nodes.emplace_back();
      std::string text =
          "<Node id=\"" + std::to_string(index) + "\" score=\"" + std::to_string(index) + "\">" + predicate;
      if (depth > 0 && random() % 5 != 0) {
        nodes[index].threshold = static_cast<double>(random() % 7) - 3.0;
        nodes[index].field = static_cast<int>(random() % 3);
        nodes[index].operation = static_cast<int>(random() % 4);
        for (int side = 0; side < 2; ++side) {
          const int operation = side == 0 ? nodes[index].operation : 3 - nodes[index].operation;
          const int child = static_cast<int>(nodes.size());
          text += grow(depth - 1, "<SimplePredicate field=\"" + std::string(kFields[nodes[index].field]) +
                                      "\" operator=\"" + kOperations[operation] + "\" value=\"" +
                                      std::to_string(nodes[index].threshold) + "\"/>");
          nodes[index].children[side] = child;
        }
      }
      return text + "</Node>";
    };
    const Scorer scorer = Load({.function = "regression", .body = grow(6, "<True/>")});
    for (int row = 0; row < 200; ++row) {
      double values[3];
      for (double& value : values) value = static_cast<double>(random() % 7) - 3.0;
      int at = 0;
      while (nodes[static_cast<std::size_t>(at)].children[0] >= 0) {
        const Plain& node = nodes[static_cast<std::size_t>(at)];
        const double value = values[node.field];
        const bool holds[] = {value<node.threshold, value <= node.threshold, value> node.threshold,
                              value >= node.threshold};
        at = node.children[holds[node.operation] ? 0 : 1];
      }
      ASSERT_EQ(scorer.Predict({{"x", values[0]}, {"n", values[1]}, {"f", values[2]}}).GetReal(), at)
          << "round " << round;
    }
  }
}

TEST(TreeModel, NestedAsDeepAsADocumentMay_IsBuiltScoredAndDestroyed) {
  constexpr int kDepth = 9900;
  for (const char* strategy : {"none", "weightedConfidence", "aggregateNodes", "defaultChild"}) {
    std::string nodes;
    for (int i = 0; i < kDepth; ++i) {
      nodes += "<Node id=\"" + std::to_string(i) + "\" score=\"yes\" recordCount=\"1\" " +
               (i + 1 < kDepth ? "defaultChild=\"" + std::to_string(i + 1) + "\"" : "") + ">" +
               (i == 0 ? "<True/>" : R"(<SimplePredicate field="x" operator="greaterThan" value="0"/>)") +
               R"(<ScoreDistribution value="yes" recordCount="1"/>)";
    }
    for (int i = 0; i < kDepth; ++i) nodes += "</Node>";
    const Scorer scorer = Load(Tree(nodes, "missingValueStrategy=\"" + std::string(strategy) + "\""));
    const auto sure = scorer.Score({{"x", 1.0}});
    EXPECT_EQ(Shown(sure, "tree-nodeid"), std::to_string(kDepth - 1)) << strategy;
    const auto unsure = scorer.Score({{"x", kNull}});
    EXPECT_EQ(Shown(unsure, "prediction"), std::string(strategy) == "none" ? "null" : "yes") << strategy;
  }
}

// The leaf under the surrogate holds 3 and 1 records, the other one 1 and 5. Half of the former count for confidences.
TEST(TreeModel, AggregatedNodes_ReduceConfidencesByThePenaltiesOnEachWay) {
  const std::string nodes = R"(<Node><True/><Node><SimplePredicate field="x" operator="lessThan" value="0"/><Node>
      <CompoundPredicate booleanOperator="surrogate"><SimplePredicate field="n" operator="lessThan" value="0"/>
      <SimplePredicate field="f" operator="lessThan" value="0"/></CompoundPredicate>
      <ScoreDistribution value="yes" recordCount="3"/><ScoreDistribution value="no" recordCount="1"/></Node></Node>
      <Node><SimplePredicate field="x" operator="greaterOrEqual" value="0"/>
      <ScoreDistribution value="yes" recordCount="1"/><ScoreDistribution value="no" recordCount="5"/></Node></Node>)";
  const std::string output = R"(<Output><OutputField name="sureYes" feature="confidence" value="yes"/>
      <OutputField name="sureNo" feature="confidence" value="no"/></Output>)";
  const Scorer scorer =
      Load(Tree(output + nodes, R"(missingValueStrategy="aggregateNodes" missingValuePenalty="0.5")"));
  const auto out = scorer.Score({{"f", -1.0}});
  EXPECT_EQ(Shown(out, "prediction"), "no");
  EXPECT_DOUBLE_EQ(Probability(out, "yes"), 0.4);
  EXPECT_DOUBLE_EQ(Number(out, "sureYes"), 0.25);  // (3 / 2 + 1) / 10
  EXPECT_DOUBLE_EQ(Number(out, "sureNo"), 0.55);   // (1 / 2 + 5) / 10
}

struct RefusalCase {
  const char* name;
  Document document;
  const char* reason;
};

class TreeRefusal : public testing::TestWithParam<RefusalCase> {};

TEST_P(TreeRefusal, Document_IsRefusedWithAReason) {
  EXPECT_NE(ReasonOf(GetParam().document).find(GetParam().reason), std::string::npos) << ReasonOf(GetParam().document);
}

std::string Splitting(const std::string& predicate) {
  return "<Node><True/><Node score=\"yes\">" + predicate + "</Node></Node>";
}

INSTANTIATE_TEST_SUITE_P(
    Table, TreeRefusal,
    testing::Values(
        RefusalCase{"no_node", Tree(""), "Node"},
        RefusalCase{"two_roots", Tree(Leaf(R"(score="yes")", "") + Leaf(R"(score="no")", "")), "is a second root"},
        RefusalCase{"no_predicate", Tree(R"(<Node score="yes"/>)"), "has no predicate"},
        RefusalCase{"two_predicates", Tree(R"(<Node score="yes"><True/><True/></Node>)"), "is a second predicate"},
        RefusalCase{"embedded_regression", Tree(R"(<Node><True/><Regression functionName="regression"/></Node>)"),
                    "<Regression"},
        RefusalCase{"missing_strategy", Tree(Leaf(R"(score="yes")", ""), R"(missingValueStrategy="guess")"),
                    "lastPrediction, nullPrediction"},
        RefusalCase{"no_true_child", Tree(Leaf(R"(score="yes")", ""), R"(noTrueChildStrategy="x")"),
                    "returnNullPrediction, returnLastPrediction"},
        RefusalCase{"penalty", Tree(Leaf(R"(score="yes")", ""), R"(missingValuePenalty="1.5")"), "missingValuePenalty"},
        RefusalCase{"record_count",
                    Tree(Leaf(R"(score="yes")", R"(<ScoreDistribution value="yes" recordCount="-2"/>)")),
                    "recordCount"},
        RefusalCase{"category_twice", Tree(Leaf("", R"(<ScoreDistribution value="yes" recordCount="3"/>
                        <ScoreDistribution value="no" recordCount="4"/><ScoreDistribution value="yes" recordCount="3"/>)")),
                    "stands there twice"},
        RefusalCase{
            "number_twice",
            Document{.function = "regression", .body = Leaf("", R"(<ScoreDistribution value="1" recordCount="3"/>
                                 <ScoreDistribution value="1.0" recordCount="3"/>)")},
            "stands there twice"},
        RefusalCase{"default_child",
                    Tree(R"(<Node defaultChild="9"><True/><Node id="a"><True/></Node></Node>)",
                         R"(missingValueStrategy="defaultChild")"),
                    "isn't the id of a child"},
        RefusalCase{"weights_without_counts",
                    Tree(Splitting("<True/>"), R"(missingValueStrategy="weightedConfidence")"), "recordCount"},
        RefusalCase{"sums_without_counts", Tree(Splitting("<True/>"), R"(missingValueStrategy="aggregateNodes")"),
                    "recordCount"},
        RefusalCase{"sums_of_a_regression",
                    Document{.function = "regression",
                             .attributes = R"(missingValueStrategy="aggregateNodes")",
                             .body = Leaf(R"(score="1")", "")},
                    "no meaning for a regression"},
        RefusalCase{"no_category",
                    Document{.body = Leaf("", ""),
                             .schema = "",
                             .dictionary = R"(<DataField name="y" optype="categorical" dataType="string"/>)"},
                    "names no category"},
        RefusalCase{"infinite_weight",
                    Tree(R"(<Node score="yes" recordCount="INF"><True/></Node>)",
                         R"(missingValueStrategy="weightedConfidence")"),
                    "recordCount"},
        RefusalCase{"text_as_number", Document{.function = "regression", .body = Leaf(R"(score="high")", "")},
                    "is no number"},
        RefusalCase{"unknown_field", Tree(Splitting(R"(<SimplePredicate field="q" operator="equal" value="1"/>)")),
                    "no field"},
        RefusalCase{"unknown_operator", Tree(Splitting(R"(<SimplePredicate field="x" operator="like" value="1"/>)")),
                    "lessThan, lessOrEqual"},
        RefusalCase{"no_value", Tree(Splitting(R"(<SimplePredicate field="x" operator="equal"/>)")), "value"},
        RefusalCase{"value_of_another_type",
                    Tree(Splitting(R"(<SimplePredicate field="x" operator="equal" value="abc"/>)")), "'abc'"},
        RefusalCase{"order_of_texts", Tree(Splitting(R"(<SimplePredicate field="s" operator="lessThan" value="b"/>)")),
                    "needs an order"},
        RefusalCase{"unlisted_ordinal",
                    Tree(Splitting(R"(<SimplePredicate field="o" operator="lessThan" value="huge"/>)")),
                    "isn't among the values"},
        RefusalCase{"set_without_array", Tree(Splitting(R"(<SimpleSetPredicate field="s" booleanOperator="isIn"/>)")),
                    "Array"},
        RefusalCase{
            "set_operator",
            Tree(Splitting(
                R"(<SimpleSetPredicate field="s" booleanOperator="in"><Array type="string">a</Array></SimpleSetPredicate>)")),
            "isIn, isNotIn"},
        RefusalCase{
            "set_of_two_arrays",
            Tree(Splitting(
                R"(<SimpleSetPredicate field="s" booleanOperator="isIn"><Array type="string">a</Array><Array type="string">b</Array></SimpleSetPredicate>)")),
            "second array"},
        RefusalCase{"empty_compound", Tree(Splitting(R"(<CompoundPredicate booleanOperator="and"/>)")),
                    "holds no predicate"},
        RefusalCase{"compound_operator",
                    Tree(Splitting(R"(<CompoundPredicate booleanOperator="nand"><True/></CompoundPredicate>)")),
                    "and, or, xor, surrogate"},
        RefusalCase{"unknown_predicate",
                    Tree(Splitting(R"(<CompoundPredicate booleanOperator="and"><Maybe/></CompoundPredicate>)")),
                    "<Maybe>"}),
    KelTest::CaseName());

}  // namespace
}  // namespace TorvaneTest
