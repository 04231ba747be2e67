#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include "tests/plugins/torvane/EnsembleParts.h"
#include "tests/support/CaseName.h"

namespace TorvaneTest {
namespace {

const Value kNull = Value::NULL_VALUE;

// --- Methods ---

struct NumberCase {
  const char* name;
  const char* method;
  double expected;
};

class MethodsOfNumbers : public testing::TestWithParam<NumberCase> {};

// 6, 1, 11, 2 with the weights 3, 1, 1, 1.
TEST_P(MethodsOfNumbers, EachMethod_CombinesAsItSays) {
  const std::string segments = Segment(Linear("6"), "weight=\"3\"") + Segment(Linear("1")) + Segment(Linear("11")) +
                               Segment(Linear("2"), "weight=\"1\"");
  const Scorer scorer = Load(Ensemble("regression", Segmentation(GetParam().method, segments)));
  EXPECT_DOUBLE_EQ(scorer.Predict({}).GetReal(), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Methods, MethodsOfNumbers,
                         testing::Values(NumberCase{"average", "average", 20.0 / 4},
                                         NumberCase{"weighted_average", "weightedAverage", 32.0 / 6},
                                         NumberCase{"median", "median", (2.0 + 6.0) / 2},
                                         NumberCase{"weighted_median", "weightedMedian", 6.0},
                                         NumberCase{"weighted_median_of_producers", "x-weightedMedian", 6.0},
                                         NumberCase{"sum", "sum", 20.0},
                                         NumberCase{"weighted_sum", "weightedSum", 32.0},
                                         NumberCase{"weighted_sum_of_producers", "x-weightedSum", 32.0},
                                         NumberCase{"first", "selectFirst", 6.0},
                                         NumberCase{"chain", "modelChain", 2.0}),
                         KelTest::CaseName());

TEST(WeightedMedian, ValuesWithoutWeight_DontCount) {
  struct Row {
    std::vector<std::pair<const char*, const char*>> parts;  // value and weight
    const char* expected;
  };
  const Row rows[] = {
      {{{"1", "1"}, {"5", "0"}, {"9", "1"}}, "5"},  // (1 + 9) / 2; the 5 itself has no say
      {{{"7", "0.5"}, {"1", "0.25"}, {"3", "0.5"}}, "3"},
      {{{"4", "1"}, {"2", "0"}}, "4"},
      {{{"9", "1"}, {"8", "1"}, {"7", "1"}, {"6", "1"}, {"5", "1"}, {"4", "5"}}, "4.5"},
      {{{"4", "0"}, {"2", "0"}}, "null"},
  };
  for (const Row& row : rows) {
    std::string segments;
    for (const auto& [value, weight] : row.parts) {
      segments += Segment(Linear(value), "weight=\"" + std::string(weight) + "\"");
    }
    const Scorer scorer = Load(Ensemble("regression", Segmentation("weightedMedian", segments)));
    EXPECT_EQ(Shown(scorer.Score({}), "prediction"), row.expected) << segments;
  }
}

TEST(MiningModel, ModelsWithoutAnyWeight_LeaveTheResultToTheTargets) {
  const std::string targets = R"(<Targets><Target field="t"><TargetValue defaultValue="7"/></Target></Targets>)";
  const std::pair<const char*, double> rows[] = {
      {"weightedAverage", 7.0}, {"weightedMedian", 7.0}, {"weightedSum", 0.0}};
  for (const auto& [method, expected] : rows) {
    const std::string body = Segmentation(method, Segment(Linear("3", "x"), "weight=\"0\""));
    EXPECT_EQ(Load(Ensemble("regression", targets + body)).Predict({{"x", 1.0}}).GetReal(), expected) << method;
  }
}

TEST(MiningModel, SinglePrecision_RoundsEachSum) {
  const std::string body =
      Segmentation("sum", Segment(Linear("16777216")) + Segment(Linear("1")) + Segment(Linear("1")));
  Document document = Ensemble("regression", body);
  EXPECT_EQ(Load(document).Predict({}).GetReal(), 16777218.0);
  document.attributes = "x-mathContext=\"float\"";
  EXPECT_EQ(Load(document).Predict({}).GetReal(), 16777216.0);  // 2^24 + 1 has no float
}

struct CategoryCase {
  const char* name;
  const char* method;
  const char* version;
  const char* winner;
  double probabilities[3];
};

class MethodsOfCategories : public testing::TestWithParam<CategoryCase> {};

TEST_P(MethodsOfCategories, EachMethod_CombinesAsItSays) {
  const std::string segments =
      Segment(Leaf("yes", {"0.5", "0.3", "0.2"})) + Segment(Leaf("no", {"0.1", "0.6", "0.3"})) +
      Segment(Leaf("no", {"0.2", "0.45", "0.35"})) + Segment(Leaf("maybe", {"0.1", "0.1", "0.8"}), "weight=\"4\"");
  Document document = Ensemble("classification", Segmentation(GetParam().method, segments));
  document.version = GetParam().version;
  const ValueRecord out = Load(document).Score({});
  EXPECT_EQ(Shown(out, "prediction"), GetParam().winner);
  const double* const expected = GetParam().probabilities;
  EXPECT_NEAR(Probability(out, "yes"), expected[0], 1e-15);
  EXPECT_NEAR(Probability(out, "no"), expected[1], 1e-15);
  EXPECT_NEAR(Probability(out, "maybe"), expected[2], 1e-15);
}

INSTANTIATE_TEST_SUITE_P(
    Methods, MethodsOfCategories,
    testing::Values(CategoryCase{"vote", "majorityVote", "4.4", "no", {1.0 / 4, 2.0 / 4, 1.0 / 4}},
                    CategoryCase{"weighted_vote", "weightedMajorityVote", "4.4", "maybe", {1.0 / 7, 2.0 / 7, 4.0 / 7}},
                    CategoryCase{"average", "average", "4.4", "maybe", {0.9 / 4, 1.45 / 4, 1.65 / 4}},
                    CategoryCase{"weighted_average", "weightedAverage", "4.4", "maybe", {1.2 / 7, 1.75 / 7, 4.05 / 7}},
                    // Medians: yes 0.1 0.1 0.2 0.5, no 0.1 0.3 0.45 0.6, maybe 0.2 0.3 0.35 0.8.
                    CategoryCase{"median", "median", "4.2", "no", {0.15, 0.375, 0.325}},
                    // The first and the third model have the two middle probabilities of "no".
                    CategoryCase{"median_since_4_3", "median", "4.3", "no", {0.35, 0.375, 0.275}},
                    CategoryCase{"max", "max", "4.4", "maybe", {0.1, 0.1, 0.8}},
                    CategoryCase{"first", "selectFirst", "4.4", "yes", {0.5, 0.3, 0.2}},
                    CategoryCase{"chain", "modelChain", "4.4", "maybe", {0.1, 0.1, 0.8}}),
    KelTest::CaseName());

TEST(MiningModel, MaximumOfSeveralModels_TellsTheirMean) {
  const std::string segments = Segment(Leaf("yes", {"0.75", "0.25", "0"})) + Segment(Leaf("no", {"0.5", "0.5", "0"})) +
                               Segment(Leaf("yes", {"0.75", "0", "0.25"}));
  const ValueRecord out = Load(Ensemble("classification", Segmentation("max", segments))).Score({});
  EXPECT_EQ(Shown(out, "prediction"), "yes");
  EXPECT_EQ(Probability(out, "no"), 0.125);
  EXPECT_EQ(Probability(out, "maybe"), 0.125);
}

TEST(MiningModel, TiedVote_GoesToTheFirstCategoryOfTheDictionary) {
  const std::string segments = Segment(Leaf("maybe")) + Segment(Leaf("no"));
  EXPECT_EQ(Load(Ensemble("classification", Segmentation("majorityVote", segments))).Predict({}).GetString(), "no");
}

// A model names its categories in its own order, and may know more than the dictionary.
TEST(MiningModel, CategoriesOfModels_FindThoseOfTheEnsemble) {
  const auto member = [](const char* first, const char* second) {
    return std::string(R"(<TreeModel functionName="classification"><MiningSchema><MiningField name="x"/></MiningSchema>
<Node score=")") +
           first + R"("><True/><ScoreDistribution value=")" + first +
           R"(" recordCount="3"/><ScoreDistribution value=")" + second + R"(" recordCount="1"/></Node></TreeModel>)";
  };
  for (const char* method : {"average", "median", "max", "selectFirst"}) {
    const Scorer scorer =
        Load(Ensemble("classification", Segmentation(method, Segment(member("maybe", "other")) +
                                                                 Segment(member("other", "no"), "", "<False/>"))));
    const ValueRecord out = scorer.Score({});
    EXPECT_EQ(Shown(out, "prediction"), "maybe") << method;
    EXPECT_EQ(Probability(out, "other"), 0.25) << method;
    EXPECT_EQ(Probability(out, "maybe"), 0.75) << method;
    EXPECT_EQ(Probability(out, "no"), 0.0) << method;
  }
}

TEST(MiningModel, Clusterings_VoteByTheirIdentifiers) {
  const auto member = [](const char* low, const char* high) {
    return std::string(R"(<ClusteringModel functionName="clustering" modelClass="centerBased" numberOfClusters="2">)") +
           Fields({"x"}) + R"(<ComparisonMeasure kind="distance"><squaredEuclidean/></ComparisonMeasure>
<ClusteringField field="x"/><Cluster id="low" name="Low one"><Array n="1" type="real">)" +
           low + R"(</Array></Cluster><Cluster id="high" name="High one"><Array n="1" type="real">)" + high +
           "</Array></Cluster></ClusteringModel>";
  };
  const std::string output = R"(<Output><OutputField name="shown" feature="predictedDisplayValue"/></Output>)";
  const std::string segments = Segment(member("10", "0")) + Segment(member("4", "0")) + Segment(member("2", "5"));
  for (const auto& [method, expected] : {std::pair("majorityVote", "low"), std::pair("selectFirst", "high")}) {
    const ValueRecord out = Load(Ensemble("clustering", output + Segmentation(method, segments))).Score({{"x", 3.0}});
    EXPECT_EQ(Shown(out, "prediction"), expected);
    EXPECT_EQ(Shown(out, "shown"), expected[0] == 'l' ? "Low one" : "High one");
  }
}

TEST(MiningModel, ClustersThatSegmentsNameDifferently_AreShownByTheirIdentifiers) {
  const auto member = [](const char* first, const char* second) {
    return std::string(R"(<ClusteringModel functionName="clustering" modelClass="centerBased" numberOfClusters="2">)") +
           Fields({"x"}) + R"(<ComparisonMeasure kind="distance"><squaredEuclidean/></ComparisonMeasure>
<ClusteringField field="x"/><Cluster name=")" +
           first + R"("><Array type="real">0</Array></Cluster><Cluster name=")" + second +
           R"("><Array type="real">9</Array></Cluster></ClusteringModel>)";
  };
  const std::string body =
      R"(<Output><OutputField name="shown" feature="predictedDisplayValue"/></Output>)" +
      Segmentation("selectFirst",
                   Segment(member("young", "other"), {}, When("x", "lessThan", "0")) + Segment(member("old", "other")));
  const Scorer scorer = Load(Ensemble("clustering", body));
  EXPECT_EQ(Shown(scorer.Score({{"x", 1.0}}), "shown"), "1");
  EXPECT_EQ(Shown(scorer.Score({{"x", 8.0}}), "shown"), "other");
}

// --- Results that are missing ---

struct MissingCase {
  const char* name;
  const char* function;
  const char* method;
  const char* further;
  const char* expected;
};

class MissingResults : public testing::TestWithParam<MissingCase> {};

// Of three models the second, with half of all weight, has no result. The categories have the order yes, no.
TEST_P(MissingResults, EachTreatment_DoesAsItSays) {
  const bool isNumeric = std::string(GetParam().function) == "regression";
  const std::string unknown = When("x", "lessThan", "5");
  const std::string segments =
      isNumeric ? Segment(Linear("10")) + Segment(Linear("20", "x"), "weight=\"2\"") + Segment(Linear("40"))
                : Segment(Leaf("no")) + Segment(Leaf("yes", {}, unknown), "weight=\"2\"") + Segment(Leaf("no"));
  Document document = Ensemble(GetParam().function, Segmentation(GetParam().method, segments, GetParam().further));
  document.version = "4.4";
  EXPECT_EQ(Shown(Load(document).Score({}), "prediction"), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Treatments, MissingResults,
    testing::Values(
        MissingCase{"sum_by_default", "regression", "sum", "", "null"},
        MissingCase{"average_goes_on", "regression", "average", "missingPredictionTreatment=\"continue\"", "null"},
        MissingCase{"sum_skips", "regression", "sum", kSkip, "50"},
        MissingCase{"average_skips", "regression", "average", kSkip, "25"},
        MissingCase{"weighted_average_skips", "regression", "weightedAverage", kSkip, "25"},
        MissingCase{"median_skips", "regression", "median", kSkip, "25"},
        MissingCase{"weighted_median_skips", "regression", "weightedMedian", kSkip, "25"},
        MissingCase{"a_third_is_allowed", "regression", "sum",
                    "missingPredictionTreatment=\"skipSegment\" missingThreshold=\"0.34\"", "50"},
        MissingCase{"a_third_is_too_much", "regression", "sum",
                    "missingPredictionTreatment=\"skipSegment\" missingThreshold=\"0.33\"", "null"},
        MissingCase{"half_of_the_weight_is_allowed", "regression", "weightedSum",
                    "missingPredictionTreatment=\"skipSegment\" missingThreshold=\"0.5\"", "50"},
        MissingCase{"half_of_the_weight_is_too_much", "regression", "weightedSum",
                    "x-missingPredictionTreatment=\"skipSegment\" x-missingThreshold=\"0.49\"", "null"},
        MissingCase{"sum_returns", "regression", "sum", "missingPredictionTreatment=\"returnMissing\"", "null"},
        MissingCase{"vote_outvotes_it", "classification", "majorityVote", "", "no"},
        MissingCase{"vote_ties_with_it", "classification", "weightedMajorityVote", "", "no"},  // 2 : 2, it must win
        MissingCase{"vote_returns", "classification", "majorityVote", "missingPredictionTreatment=\"returnMissing\"",
                    "null"},
        MissingCase{"vote_skips", "classification", "weightedMajorityVote", kSkip, "no"},
        MissingCase{"probabilities_go_on", "classification", "average", "", "null"},
        MissingCase{"probabilities_skip", "classification", "average", kSkip, "no"},
        MissingCase{"median_of_probabilities_skips", "classification", "median", kSkip, "no"},
        MissingCase{"max_returns", "classification", "max", "missingPredictionTreatment=\"returnMissing\"", "null"},
        MissingCase{"chain_goes_on", "regression", "modelChain", "", "40"},
        MissingCase{"chain_returns", "regression", "modelChain", "missingPredictionTreatment=\"returnMissing\"",
                    "null"}),
    KelTest::CaseName());

TEST(MiningModel, MissingVotes_WinOverFewerOthersAndShareTheProbability) {
  const std::string unknown = When("x", "lessThan", "5");
  const std::string lost = Segment(Leaf("yes", {}, unknown));
  const auto score = [&](const std::string& segments) {
    return Load(Ensemble("classification", Segmentation("majorityVote", segments))).Score({});
  };
  EXPECT_EQ(Shown(score(Segment(Leaf("no")) + lost + lost), "prediction"), "null");
  const ValueRecord out = score(Segment(Leaf("no")) + Segment(Leaf("no")) + lost + Segment(Leaf("yes")));
  EXPECT_EQ(Shown(out, "prediction"), "no");
  EXPECT_EQ(Probability(out, "no"), 0.5);
}

// 29 of 100 are no more than 0.29, though 0.29 * 100 is less than 29 in double precision.
TEST(MiningModel, MissingThreshold_IsMetExactly) {
  std::string segments;
  for (int i = 0; i < 100; ++i) segments += Segment(Linear("1", i < 29 ? "x" : ""));
  const std::string further = "missingPredictionTreatment=\"skipSegment\" missingThreshold=\"0.29\"";
  EXPECT_EQ(Load(Ensemble("regression", Segmentation("sum", segments, further))).Predict({}).GetReal(), 71.0);
}

TEST(MiningModel, SelectFirst_TakesTheFirstTrueOneEvenWithoutResult) {
  const std::string segments = Segment(Linear("1"), "id=\"low\"", When("n", "lessThan", "3")) +
                               Segment(Linear("2", "x"), "", When("n", "greaterThan", "5")) +
                               Segment(Linear("3"), "id=\"rest\"");
  const std::string output = "<Output><OutputField name=\"segment\" feature=\"entityId\"/></Output>";
  struct Row {
    const char* further;
    Value n;
    const char* prediction;
    const char* segment;
  };
  const Row rows[] = {
      {"", 1.0, "1", "low"},     {"", 4.0, "3", "rest"},
      {"", kNull, "3", "rest"},  // an unknown predicate isn't true
      {"", 6.0, "null", "null"}, {kSkip, 6.0, "3", "rest"},
  };
  for (const Row& row : rows) {
    const Scorer scorer = Load(Ensemble("regression", output + Segmentation("selectFirst", segments, row.further)));
    const ValueRecord out = scorer.Score({{"n", row.n}});
    EXPECT_EQ(Shown(out, "prediction"), row.prediction) << row.n.GetString() << row.further;
    EXPECT_EQ(Shown(out, "segment"), row.segment) << row.n.GetString() << row.further;
  }
}

TEST(MiningModel, NoSegmentTrue_LeavesTheResultToTheTargets) {
  for (const char* method : {"average", "sum", "median", "selectFirst", "modelChain"}) {
    const std::string body = Segmentation(method, Segment(Linear("1"), "", "<False/>"));
    EXPECT_EQ(Shown(Load(Ensemble("regression", body)).Score({}), "prediction"), "null") << method;
    const std::string targets = R"(<Targets><Target field="t"><TargetValue defaultValue="7"/></Target></Targets>)";
    EXPECT_EQ(Shown(Load(Ensemble("regression", targets + body)).Score({}), "prediction"), "7") << method;
  }
}

TEST(MiningModel, TargetsOfBoth_ApplyFromTheInsideOut) {
  const std::string inner = R"(<Targets><Target rescaleFactor="10" max="2"/></Targets>)";
  const std::string outer = R"(<Targets><Target field="t" rescaleConstant="1"/></Targets>)";
  const std::string segments = Segment(Linear("0", "x", inner)) + Segment(Linear("0", "x"));
  // (min(3, 2) * 10 + 3) + 1
  EXPECT_EQ(Load(Ensemble("regression", outer + Segmentation("sum", segments))).Predict({{"x", 3.0}}).GetReal(), 24.0);
  // A default of a model is a result of it.
  const std::string defaults = R"(<Targets><Target><TargetValue defaultValue="5"/></Target></Targets>)";
  const std::string body = Segmentation("sum", Segment(Linear("0", "x", defaults)) + Segment(Linear("1")));
  EXPECT_EQ(Load(Ensemble("regression", body)).Predict({}).GetReal(), 6.0);
}

TEST(MiningModel, VariableWeight_MultipliesTheWeight) {
  const std::string variable = "<VariableWeight field=\"n\"/>";
  const auto load = [&](const std::string& method, const std::string& further) {
    return Load(Ensemble("regression", Segmentation(method,
                                                    "<Segment weight=\"0.5\"><True/>" + Linear("10") + variable +
                                                        "</Segment>" + Segment(Linear("30"), "weight=\"2\""),
                                                    further)));
  };
  const Scorer scorer = load("weightedAverage", "");
  EXPECT_EQ(scorer.Predict({{"n", 4.0}}).GetReal(), 20.0);  // (0.5 * 4 * 10 + 2 * 30) / 4
  EXPECT_EQ(scorer.Predict({{"n", 0.0}}).GetReal(), 30.0);
  EXPECT_TRUE(scorer.Predict({}).IsNull());
  EXPECT_TRUE(scorer.Predict({{"n", -1.0}}).IsNull());
  const Scorer skipping = load("weightedAverage", kSkip);
  EXPECT_EQ(skipping.Predict({}).GetReal(), 30.0);
  EXPECT_EQ(load("average", "").Predict({}).GetReal(), 20.0);  // that weighs nothing
}

TEST(MiningModel, SelectAll_TellsEachResult) {
  const std::string segments = Segment(Leaf("no"), "id=\"a\"", When("x", "lessThan", "0")) +
                               Segment(Leaf("maybe"), "id=\"b\"") +
                               Segment(Leaf("yes", {}, When("n", "lessThan", "0")), "id=\"c\"");
  const auto load = [&](const char* further) {
    return Load(Ensemble("classification", "<Output><OutputField name=\"all\"/></Output>" +
                                               Segmentation("selectAll", segments, further)));
  };
  const ValueRecord out = load("").Score({{"x", -1.0}, {"n", -1.0}});
  EXPECT_EQ(Part(out, "a"), "no");
  EXPECT_EQ(Part(out, "b"), "maybe");
  EXPECT_EQ(Part(out, "c"), "yes");
  EXPECT_EQ(Shown(*out.At(out.IndexOf("all")).Members(), "b"), "maybe");
  EXPECT_LT(out.IndexOf("probability"), 0);
  EXPECT_EQ(Part(load(kSkip).Score({{"x", 1.0}}), "a"), "null");
  EXPECT_EQ(Part(load("").Score({{"x", 1.0}}), "b"), "maybe");
  EXPECT_EQ(Part(load("").Score({{"x", 1.0}}), "c"), "null");
  EXPECT_EQ(Part(load(kSkip).Score({{"x", 1.0}}), "b"), "maybe");
}

// A default score without a confidence says which category, but nothing of the others.
TEST(MiningModel, MemberThatOnlySaysTheCategory_HasNoSharesToCombine) {
  const std::string rules = R"(<RuleSetModel functionName="classification">)" + Fields({"x"}) +
                            R"(<RuleSet defaultScore="no"><RuleSelectionMethod criterion="firstHit"/>
      <SimpleRule id="r" score="yes" confidence="0.75">)" +
                            When("x", "lessThan", "0") + "</SimpleRule></RuleSet></RuleSetModel>";
  for (const char* method : {"average", "median", "max"}) {
    const std::string certain = Segment(Leaf("maybe", {"0.25", "0.25", "0.5"}));
    const Scorer scorer = Load(Ensemble("classification", Segmentation(method, Segment(rules) + certain)));
    EXPECT_EQ(Shown(scorer.Score({{"x", -1.0}}), "prediction"), "yes") << method;
    EXPECT_EQ(Shown(scorer.Score({{"x", 1.0}}), "prediction"), "null") << method;
    const Scorer skips = Load(Ensemble("classification", Segmentation(method, Segment(rules) + certain, kSkip)));
    EXPECT_EQ(Shown(skips.Score({{"x", 1.0}}), "prediction"), "maybe") << method;
  }
}

// --- Ensembles of ensembles, and many segments ---

TEST(MiningModel, EnsemblesInside_CountAsModels) {
  const std::string vote =
      Nested("classification", Segmentation("majorityVote", Segment(Leaf("no")) + Segment(Leaf("no")) +
                                                                Segment(Leaf("yes")) + Segment(Leaf("maybe"))));
  const std::string first =
      Nested("classification",
             Segmentation("selectFirst", Segment(Leaf("yes", {"0.6", "0.2", "0.2"}), "", When("x", "lessThan", "0")) +
                                             Segment(Leaf("maybe", {"0", "0.5", "0.5"}))));
  const Scorer scorer = Load(Ensemble("classification", Segmentation("average", Segment(vote) + Segment(first))));
  const ValueRecord out = scorer.Score({{"x", 1.0}});  // the mean of (0.25, 0.5, 0.25) and (0, 0.5, 0.5)
  EXPECT_EQ(Shown(out, "prediction"), "no");
  EXPECT_EQ(Probability(out, "yes"), 0.125);
  EXPECT_EQ(Probability(out, "maybe"), 0.375);
  EXPECT_DOUBLE_EQ(Probability(scorer.Score({{"x", -1.0}}), "yes"), 0.425);
}

std::string Nest(int levels) {
  std::string body = Segmentation("sum", Segment(Linear("1", "x")) + Segment(Linear("2")));
  for (int i = 1; i < levels; ++i)
    body = Segmentation("sum", Segment(Nested("regression", body)) + Segment(Linear("1")));
  return body;
}

TEST(MiningModel, HundredEnsemblesInsideEachOther_AreTheMost) {
  const Scorer scorer = Load(Ensemble("regression", Nest(100)));
  EXPECT_EQ(scorer.Predict({{"x", 5.0}}).GetReal(), 107.0);
  EXPECT_NE(ReasonOf(Ensemble("regression", Nest(101))).find("is a model inside too many others"), std::string::npos);
}

TEST(MiningModel, ThousandSegments_AllCount) {
  for (const char* method : {"sum", "average", "median", "weightedMedian"}) {
    std::string segments;
    for (int i = 0; i < 1000; ++i) segments += Segment(Linear(std::to_string((i * 7919) % 1000), "x"));
    const Scorer scorer = Load(Ensemble("regression", Segmentation(method, segments)));
    // 0 to 999, each once, moved by x.
    EXPECT_EQ(scorer.Predict({{"x", 0.5}}).GetReal(), std::string(method) == "sum" ? 500000.0 : 500.0) << method;
  }
}

// --- Models composed the older way ---

TEST(Composition, ResultFields_HandResultsOn) {
  const std::string body =
      R"(<DecisionTree functionName="regression"><ResultField name="filled" feature="predictedValue"/>
<Node score="0"><True/><Node score="50"><SimplePredicate field="s" operator="equal" value="a"/></Node><Node score="60"><True/></Node></Node></DecisionTree>
<DecisionTree functionName="classification"><ResultField name="p" feature="probability" value="u"/><ResultField name="label"/>
<Node score="u"><True/><ScoreDistribution value="u" recordCount="1"/><ScoreDistribution value="v" recordCount="3"/></Node></DecisionTree>
<Regression functionName="regression"><LocalTransformations><DerivedField name="d" optype="continuous" dataType="double"><Apply function="*"><FieldRef field="filled"/><Constant>2</Constant></Apply></DerivedField></LocalTransformations>
<RegressionTable intercept="1"><NumericPredictor name="d" coefficient="1"/><NumericPredictor name="p" coefficient="4"/>
<CategoricalPredictor name="label" value="u" coefficient="1000"/><NumericPredictor name="x" coefficient="1"/></RegressionTable></Regression>)";
  Document document = Ensemble("regression", body);
  document.version = "3.2";
  const Scorer scorer = Load(document);
  const ValueRecord out = scorer.Score({{"s", "a"}, {"x", 0.5}});
  EXPECT_EQ(Shown(out, "prediction"), "1102.5");  // 1 + 2 * 50 + 4 * 0.25 + 1000 + 0.5, and u wins by its score
  EXPECT_EQ(Shown(out, "filled"), "50");
  EXPECT_EQ(Shown(scorer.Score({{"s", "b"}, {"x", 0.5}}), "prediction"), "1122.5");
  EXPECT_TRUE(scorer.Predict({{"s", "a"}}).IsNull());
}

// --- Refusals ---

struct Refusal {
  const char* name;
  std::string body;
  const char* reason;
  const char* function = "regression";
};

void PrintTo(const Refusal& refusal, std::ostream* stream) { *stream << refusal.name; }

class RefusedEnsembles : public testing::TestWithParam<Refusal> {};

TEST_P(RefusedEnsembles, Reason_NamesWhatIsWrong) {
  const std::string reason = ReasonOf(Ensemble(GetParam().function, GetParam().body));
  EXPECT_NE(reason.find(GetParam().reason), std::string::npos) << reason;
}

const std::string kOne = Segment(Linear("1"));

INSTANTIATE_TEST_SUITE_P(
    Refusals, RefusedEnsembles,
    testing::Values(
        Refusal{"no_models", "", "has no model"}, Refusal{"no_segments", Segmentation("sum", ""), "has no Segment"},
        Refusal{"unknown_precision",
                Segmentation("sum", Segment("<MiningModel functionName=\"regression\" x-mathContext=\"half\">" +
                                            Fields({"x"}) + Segmentation("sum", kOne) + "</MiningModel>")),
                "x-mathContext"},
        Refusal{"unknown_method", Segmentation("mean", kOne), "isn't one of: majorityVote,"},
        Refusal{"vote_on_numbers", Segmentation("majorityVote", kOne), "has no meaning for the function"},
        Refusal{"max_of_numbers", Segmentation("max", kOne), "has no meaning for the function"},
        Refusal{"sum_of_categories", Segmentation("sum", Segment(Leaf("yes"))), "has no meaning for the function",
                "classification"},
        Refusal{"other_function", Segmentation("sum", Segment(Leaf("yes"))), "functionName"},
        Refusal{"other_function_at_the_end", Segmentation("modelChain", kOne + Segment(Leaf("yes"))),
                "isn't that of its last model"},
        Refusal{"no_predicate", Segmentation("sum", "<Segment>" + Linear("1") + "</Segment>"), "has no predicate"},
        Refusal{"two_predicates", Segmentation("sum", Segment(Linear("1"), "", "<True/><False/>")),
                "is a second predicate"},
        Refusal{"segment_without_model", Segmentation("sum", Segment("")), "has no model"},
        Refusal{"segment_with_two_models", Segmentation("sum", Segment(Linear("1") + Linear("2"))),
                "is a second model"},
        Refusal{"unknown_model", Segmentation("sum", Segment("<OtherModel/>")), "is not supported"},
        Refusal{"unknown_child", Segmentation("sum", kOne + "<Other/>"), "is not supported in <Segmentation>"},
        Refusal{"second_segmentation", Segmentation("sum", kOne) + Segmentation("sum", kOne), "Segmentation"},
        Refusal{"composed_and_segmented", Segmentation("sum", kOne) + "<Regression functionName=\"regression\"/>",
                "is not supported"},
        Refusal{"same_id", Segmentation("sum", Segment(Linear("1"), "id=\"a\"") + Segment(Linear("1"), "id=\"a\"")),
                "has the identifier 'a' of another one"},
        Refusal{"id_is_a_position", Segmentation("selectAll", Segment(Linear("1"), "id=\"2\"") + Segment(Linear("1"))),
                "has the identifier '2' of another one"},
        Refusal{"weight", Segmentation("sum", Segment(Linear("1"), "weight=\"-1\"")), "is below 0"},
        Refusal{"infinite_weight", Segmentation("sum", Segment(Linear("1"), "weight=\"INF\"")), "isn't finite"},
        Refusal{"unknown_variable_weight",
                Segmentation("weightedSum", Segment(Linear("1") + "<VariableWeight field=\"q\"/>")), "\"q\""},
        Refusal{"variable_weight_of_texts",
                Segmentation("weightedSum", Segment(Linear("1") + "<VariableWeight field=\"s\"/>")), "needs numbers"},
        Refusal{"treatment", Segmentation("sum", kOne, "missingPredictionTreatment=\"drop\""),
                "isn't one of: continue, skipSegment, returnMissing"},
        Refusal{"threshold", Segmentation("sum", kOne, "missingThreshold=\"1.5\""), "isn't between 0 and 1"},
        Refusal{"field_of_no_schema", Segmentation("sum", Segment(Linear("1", "x", Fields({"n"})))), "\"x\""},
        Refusal{"field_that_the_ensemble_lacks", Segmentation("sum", Segment(Linear("1", "q", Fields({"q"})))),
                "\"q\""},
        Refusal{"output_of_a_later_segment",
                Segmentation("modelChain", Segment(Linear("0", "z")) + Segment(Linear("1", "", Predicted("z")))),
                "\"z\""},
        Refusal{"outputs_of_two_types",
                Segmentation("modelChain",
                             Segment(Linear("1", "", Predicted("z"))) +
                                 Segment(Linear("1", "",
                                                "<Output><OutputField name=\"z\" dataType=\"string\"/></Output>"))),
                "of another type"},
        Refusal{"select_all_with_targets",
                "<Targets><Target field=\"t\" rescaleFactor=\"2\"/></Targets>" + Segmentation("selectAll", kOne),
                "gives results that Targets can't adjust"},
        Refusal{"select_all_inside",
                Segmentation("sum", Segment(Nested("regression", Segmentation("selectAll", kOne)))),
                "gives no result that an ensemble could use"},
        Refusal{"not_scorable",
                Segmentation("sum", Segment("<RegressionModel functionName=\"regression\" isScorable=\"false\">" +
                                            Fields({"x"}) + "<RegressionTable intercept=\"1\"/></RegressionModel>")),
                "isn't meant for scoring"},
        Refusal{
            "feature_of_no_segment",
            "<Output><OutputField name=\"r\" feature=\"foo\" segmentId=\"9\"/></Output>" + Segmentation("sum", kOne),
            "isn't one of: predictedValue"},
        Refusal{"targets_of_clusters", "<Targets><Target/></Targets>" + Segmentation("majorityVote", kOne),
                "has no meaning for a clustering", "clustering"},
        Refusal{"two_lists_of_fields", Segmentation("sum", "<LocalTransformations/><LocalTransformations/>" + kOne),
                "is a second one in <Segmentation>"},
        Refusal{"residual_without_target",
                "<Output><OutputField name=\"r\" feature=\"residual\" segmentId=\"1\"/></Output>" +
                    Segmentation("sum", kOne),
                "needs a target field"}),
    KelTest::CaseName());

}  // namespace
}  // namespace TorvaneTest
