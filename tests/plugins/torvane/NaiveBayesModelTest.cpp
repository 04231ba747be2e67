#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

#include "tests/plugins/torvane/ModelHarness.h"
#include "tests/support/CaseName.h"

namespace TorvaneTest {
namespace {

const Value kNull = Value::NULL_VALUE;

// A list of counts of "yes", "no" and "maybe"; an empty one is left out.
std::string Counts(const std::vector<std::string>& counts) {
  const char* const categories[] = {"yes", "no", "maybe"};
  std::string text = "<TargetValueCounts>";
  for (std::size_t i = 0; i < counts.size(); ++i) {
    if (counts[i].empty()) continue;
    text += std::string("<TargetValueCount value=\"") + categories[i] + "\" count=\"" + counts[i] + "\"/>";
  }
  return text + "</TargetValueCounts>";
}

std::string Pair(const std::string& value, const std::vector<std::string>& counts) {
  return "<PairCounts value=\"" + value + "\">" + Counts(counts) + "</PairCounts>";
}

std::string Input(const std::string& field, const std::string& inside) {
  return "<BayesInput fieldName=\"" + field + "\">" + inside + "</BayesInput>";
}

std::string Normal(const std::string& mean, const std::string& variance) {
  return "<GaussianDistribution mean=\"" + mean + "\" variance=\"" + variance + "\"/>";
}
std::string Poisson(const std::string& mean) { return "<PoissonDistribution mean=\"" + mean + "\"/>"; }

// The distributions of "yes", "no" and "maybe"; an empty one is left out.
std::string Stats(const std::vector<std::string>& distributions) {
  const char* const categories[] = {"yes", "no", "maybe"};
  std::string text = "<TargetValueStats>";
  for (std::size_t i = 0; i < distributions.size(); ++i) {
    if (distributions[i].empty()) continue;
    text += std::string("<TargetValueStat value=\"") + categories[i] + "\">" + distributions[i] + "</TargetValueStat>";
  }
  return text + "</TargetValueStats>";
}

Document Bayes(const std::string& inputs, const std::vector<std::string>& counts, const std::string& threshold = "0") {
  return {.kind = "NaiveBayesModel",
          .attributes = "threshold=\"" + threshold + "\"",
          .body = "<BayesInputs>" + inputs + "</BayesInputs><BayesOutput fieldName=\"y\">" + Counts(counts) +
                  "</BayesOutput>"};
}

// The probabilities are those of L_k / sum of L.
void ExpectShares(const ValueRecord& out, const std::vector<double>& likelihoods) {
  double sum = 0.0;
  for (const double likelihood : likelihoods) sum += likelihood;
  EXPECT_NEAR(Probability(out, "yes"), likelihoods[0] / sum, 1e-14);
  EXPECT_NEAR(Probability(out, "no"), likelihoods[1] / sum, 1e-14);
  EXPECT_NEAR(Probability(out, "maybe"), likelihoods[2] / sum, 1e-14);
}

// --- An outside tool: oracle/naive_bayes.py ---

struct NumbersCase {
  double x;
  double f;
  const char* prediction;
  double maybe;
  double no;
  double yes;
};

const NumbersCase kNumbersCases[] = {
    {2.5, 11, "yes", 3.046963549264342e-59, 3.234328404367366e-19, 1.0},
    {4.5, 17, "no", 1.2982279958390648e-30, 0.98944024348540338, 0.010559756514597061},
    {3, 25, "no", 0.048541383714568141, 0.95145861628543049, 2.0109930087422382e-16},
    {60, 11, "no", 0.0, 1.0, 1.5975909171223656e-180},  // all densities are 0 in double precision
    {-80, 400, "yes", 0.0, 0.0, 1.0},
};

TEST(NaiveBayes, Numbers_AgreeWithScikitLearn) {
  const std::string first = Stats({Normal("2.4", "1.04"), Normal("6.5", "1.25"), Normal("1", "0.6666666666666666")});
  const std::string second =
      Stats({Normal("11", "2"), Normal("20.5", "1.25"), Normal("31.333333333333332", "1.5555555555555556")});
  const Scorer scorer = Load(Bayes(Input("x", first) + Input("f", second), {"5", "4", "3"}));
  for (const NumbersCase& row : kNumbersCases) {
    const auto out = scorer.Score({{"x", row.x}, {"f", row.f}});
    EXPECT_EQ(Shown(out, "prediction"), row.prediction) << row.x;
    EXPECT_NEAR(Probability(out, "maybe"), row.maybe, 1e-10 * row.maybe) << row.x;
    EXPECT_NEAR(Probability(out, "no"), row.no, 1e-10 * row.no) << row.x;
    EXPECT_NEAR(Probability(out, "yes"), row.yes, 1e-10 * row.yes) << row.x;
  }
}

TEST(NaiveBayes, Categories_AgreeWithScikitLearn) {
  const std::string text = Pair("a", {"3", "1", "1"}) + Pair("b", {"1", "2", "1"}) + Pair("c", {"1", "1", "1"});
  const std::string boolean = Pair("false", {"2", "2", "1"}) + Pair("true", {"3", "2", "2"});
  const Scorer scorer = Load(Bayes(Input("s", text) + Input("b", boolean), {"5", "4", "3"}));
  const auto score = [&](const char* s, const char* b) { return scorer.Score({{"s", s}, {"b", b}}); };
  EXPECT_NEAR(Probability(score("a", "false"), "yes"), 0.5901639344262294, 1e-15);
  EXPECT_NEAR(Probability(score("b", "true"), "no"), 0.44117647058823534, 1e-15);
  EXPECT_NEAR(Probability(score("c", "false"), "yes"), 0.32432432432432434, 1e-15);
  const auto last = score("c", "true");
  EXPECT_EQ(Shown(last, "prediction"), "maybe");
  EXPECT_NEAR(Number(last, "probability"), 0.3773584905660378, 1e-15);
}

// --- By hand ---

const std::string kText = Input("s", Pair("a", {"3", "1", ""}) + Pair("b", {"1", "0", ""}));

TEST(NaiveBayes, CountOfZeroOrNone_IsTheThreshold) {
  const Scorer scorer = Load(Bayes(kText, {"10", "6", "4"}, "0.01"));
  ExpectShares(scorer.Score({{"s", "a"}}), {10 * 3.0 / 4.0, 6 * 1.0 / 1.0, 4 * 0.01});
  ExpectShares(scorer.Score({{"s", "b"}}), {10 * 1.0 / 4.0, 6 * 0.01, 4 * 0.01});
}

TEST(NaiveBayes, MissingValueOrOneWithoutCounts_SaysNothing) {
  for (const char* threshold : {"0", "0.01"}) {
    const Scorer scorer = Load(Bayes(kText, {"10", "6", "4"}, threshold));
    ExpectShares(scorer.Score({{"s", kNull}}), {10, 6, 4});
    ExpectShares(scorer.Score({{"s", "c"}}), {10, 6, 4});
  }
}

TEST(NaiveBayes, ValuesOfNumbers_AreComparedAsNumbers) {
  const Scorer scorer =
      Load(Bayes(Input("n", Pair("1.0", {"1", "3", "2"}) + Pair("-2", {"3", "1", "2"})), {"1", "1", "1"}));
  ExpectShares(scorer.Score({{"n", 1.0}}), {0.25, 0.75, 0.5});
  ExpectShares(scorer.Score({{"n", -2.0}}), {0.75, 0.25, 0.5});
  ExpectShares(scorer.Score({{"n", 0.0}}), {1, 1, 1});
}

TEST(NaiveBayes, Poisson_HasTheDensityOfCounts) {
  const Scorer scorer =
      Load(Bayes(Input("x", Stats({Poisson("2"), Poisson("0"), Poisson("7.5")})), {"5", "4", "3"}, "1e-9"));
  for (const double x : {1.0, 3.0, 12.0}) {
    const double factorial = std::tgamma(x + 1.0);
    const double none = 1e-9;  // of a mean of 0
    ExpectShares(scorer.Score({{"x", x}}), {5 * std::pow(2.0, x) * std::exp(-2.0) / factorial, 4 * none,
                                            3 * std::pow(7.5, x) * std::exp(-7.5) / factorial});
  }
  ExpectShares(scorer.Score({{"x", 0.0}}), {5 * std::exp(-2.0), 4, 3 * std::exp(-7.5)});
  for (const double x : {0.5, -1.0, 1e300, 1e308}) ExpectShares(scorer.Score({{"x", x}}), {5, 4, 3});
}

TEST(NaiveBayes, DensityBelowTheThreshold_IsTheThreshold) {
  const Scorer scorer =
      Load(Bayes(Input("x", Stats({Normal("0", "1"), Poisson("1"), Normal("0", "4")})), {"1", "1", "1"}, "0.01"));
  const double root = std::sqrt(2.0 * std::acos(-1.0));
  ExpectShares(scorer.Score({{"x", 3.0}}), {0.01, std::exp(-1.0) / 6.0, std::exp(-9.0 / 8.0) / (2.0 * root)});
  ExpectShares(scorer.Score({{"x", 1.5}}), {std::exp(-1.125) / root, 0.01, std::exp(-2.25 / 8.0) / (2.0 * root)});
}

const char* const kDerived = R"(<DerivedField optype="categorical" dataType="string"><Discretize field="x"%>
<DiscretizeBin binValue="small"><Interval closure="openOpen" rightMargin="1"/></DiscretizeBin>
<DiscretizeBin binValue="large"><Interval closure="closedOpen" leftMargin="1"/></DiscretizeBin>
</Discretize></DerivedField>)";

Document Discretized(const std::string& attributes) {
  std::string derived = kDerived;
  derived.replace(derived.find('%'), 1, attributes);
  const std::string pairs = Pair("small", {"1", "3", "1"}) + Pair("large", {"3", "1", "1"});
  return Bayes(Input("x", derived + pairs), {"1", "1", "1"});
}

TEST(NaiveBayes, DiscretizedInput_CountsByItsBins) {
  const Scorer scorer = Load(Discretized(""));
  ExpectShares(scorer.Score({{"x", 0.9}}), {0.25, 0.75, 0.5});
  ExpectShares(scorer.Score({{"x", 1.0}}), {0.75, 0.25, 0.5});
  ExpectShares(scorer.Score({{"x", kNull}}), {1, 1, 1});
  ExpectShares(Load(Discretized(R"( mapMissingTo="large")")).Score({{"x", kNull}}), {0.75, 0.25, 0.5});
}

TEST(NaiveBayes, InvalidDerivedInput_GivesNoResult) {
  const Scorer scorer =
      Load(Bayes(Input("x", R"(<DerivedField optype="continuous" dataType="double"><Apply function="ln">
      <FieldRef field="x"/></Apply></DerivedField>)" +
                                Stats({Normal("0", "1"), Normal("1", "1"), Normal("2", "1")})),
                 {"1", "1", "1"}));
  EXPECT_EQ(Shown(scorer.Score({{"x", 1.0}}), "prediction"), "yes");
  EXPECT_EQ(Shown(scorer.Score({{"x", std::exp(2.0)}}), "prediction"), "maybe");
  EXPECT_EQ(Shown(scorer.Score({{"x", -1.0}}), "prediction"), "null");
}

TEST(NaiveBayes, InputInsideAnExtension_CountsLikeAnyOther) {
  const std::string numbers = Input("x", Stats({Normal("0", "1"), Normal("1", "1"), Normal("2", "1")}));
  const Scorer plain = Load(Bayes(kText + numbers, {"10", "6", "4"}, "0.01"));
  const Scorer wrapped = Load(Bayes(kText + "<Extension>" + numbers + "</Extension>", {"10", "6", "4"}, "0.01"));
  const auto expected = plain.Score({{"x", 1.5}, {"s", "a"}});
  const auto actual = wrapped.Score({{"x", 1.5}, {"s", "a"}});
  EXPECT_NE(Probability(plain.Score({{"s", "a"}}), "yes"), Probability(expected, "yes"));
  for (const char* category : {"yes", "no", "maybe"}) {
    EXPECT_EQ(Probability(actual, category), Probability(expected, category));
  }
}

// The product of all shares is 1e-900, far below the smallest double. One input tells yes from no, 3 to 1.
TEST(NaiveBayes, HundredsOfInputs_DoNotUnderflow) {
  std::string fields, schema, inputs;
  ValueRecord record(2);
  for (int i = 0; i < 300; ++i) {
    const std::string name = std::string("k").append(std::to_string(i));
    fields += "<DataField name=\"" + name + R"(" optype="categorical" dataType="string"/>)";
    schema += "<MiningField name=\"" + name + "\"/>";
    inputs += Input(name, Pair("rare", {i == 7 ? "3" : "1", "1"}) + Pair("usual", {i == 7 ? "997" : "999", "999"}));
    record.Add(name.c_str(), "rare");
  }
  Document document = Bayes(inputs, {"1", "1"});
  document.dictionary = fields + R"(<DataField name="y" optype="categorical" dataType="string"/>)";
  document.schema = schema;
  const auto out = Load(document).Score(record);
  EXPECT_NEAR(Probability(out, "yes"), 0.75, 1e-12);
  EXPECT_NEAR(Probability(out, "no"), 0.25, 1e-12);
}

TEST(NaiveBayes, CategoryWithoutRecords_IsNeverTheAnswer) {
  const std::string inputs =
      Input("s", Pair("a", {"1", "1", "9"})) + Input("x", Stats({Normal("0", "1"), Normal("1", "1")}));
  for (const char* none : {"0", ""}) {
    Document document = Bayes(inputs, {"1", "2", none});
    if (*none == '\0')
      document.body.replace(document.body.find(R"(<TargetValueCount value="maybe" count="9"/>)"), 43, "");
    const auto out = Load(document).Score({{"s", "a"}, {"x", 0.5}});
    ExpectShares(out, {1, 2, 0});
    EXPECT_EQ(Shown(out, "prediction"), "no");
  }
}

TEST(NaiveBayes, RecordThatIsImpossibleInAllCategories_HasNoResult) {
  Document document = Bayes(Input("s", Pair("a", {"0", "0", "1"}) + Pair("b", {"1", "1", "0"})) +
                                Input("n", Pair("1", {"1", "1", "0"}) + Pair("2", {"0", "1", "1"})),
                            {"1", "1", "1"});
  document.body = R"(<Targets><Target field="y"><TargetValue value="yes" priorProbability="1"/></Target></Targets>)" +
                  document.body;
  const Scorer scorer = Load(document);
  EXPECT_EQ(Shown(scorer.Score({{"s", "a"}, {"n", 2.0}}), "prediction"), "maybe");
  EXPECT_EQ(Shown(scorer.Score({{"s", "a"}, {"n", 1.0}}), "prediction"), "null");
}

TEST(NaiveBayes, InfiniteNumber_IsAsFarAwayAsCanBe) {
  const double infinity = std::numeric_limits<double>::infinity();
  const std::string inputs = Input("x", Stats({Normal("0", "1"), Poisson("1"), Normal("0", "4")}));
  ExpectShares(Load(Bayes(inputs, {"1", "2", "3"}, "0.01")).Score({{"x", infinity}}), {1, 2, 3});
  EXPECT_EQ(Shown(Load(Bayes(inputs, {"1", "2", "3"})).Score({{"x", infinity}}), "prediction"), "null");
}

TEST(NaiveBayes, Tie_GoesToTheFirstValueOfTheDictionary) {
  Document document = Bayes(Input("s", Pair("a", {"1", "1", "1"})), {"1", "2", "2"});
  EXPECT_EQ(Shown(Load(document).Score({{"s", "a"}}), "prediction"), "no");
  document.dictionary.insert(document.dictionary.find("<Value value=\"yes\""), "<Value value=\"maybe\"/>");
  EXPECT_EQ(Shown(Load(document).Score({{"s", "a"}}), "prediction"), "maybe");
}

// --- Refusals ---

struct RefusalCase {
  const char* name;
  Document document;
  const char* reason;
};

class NaiveBayesRefusal : public testing::TestWithParam<RefusalCase> {};

TEST_P(NaiveBayesRefusal, Document_IsRefusedWithAReason) {
  const std::string reason = ReasonOf(GetParam().document);
  EXPECT_NE(reason.find(GetParam().reason), std::string::npos) << reason;
}

Document OfInput(const std::string& input) { return Bayes(input, {"1", "1", "1"}); }

Document With(const std::string& what, const std::string& replacement) {
  Document document = OfInput(Input("s", Pair("a", {"1", "1", "1"})));
  std::string& text = document.body.find(what) == std::string::npos ? document.attributes : document.body;
  text.replace(text.find(what), what.size(), replacement);
  return document;
}

// So many pairs that each tell of one category only would take as much memory as all their categories.
Document Sparse() {
  std::string categories, pairs;
  for (int i = 0; i < 2000; ++i) {
    const std::string number = std::to_string(i);
    categories += "<TargetValueCount value=\"c" + number + "\" count=\"1\"/>";
    pairs += "<PairCounts value=\"v" + number + "\">" + Counts({}) + "</PairCounts>";
  }
  Document document = OfInput(Input("o", pairs));
  document.body = "<BayesInputs>" + Input("o", pairs) +
                  "</BayesInputs><BayesOutput fieldName=\"y\"><TargetValueCounts>" + categories +
                  "</TargetValueCounts></BayesOutput>";
  return document;
}

INSTANTIATE_TEST_SUITE_P(
    Table, NaiveBayesRefusal,
    testing::Values(
        RefusalCase{"no_threshold", With("threshold=\"0\"", ""), "threshold"},
        RefusalCase{"threshold_negative", With("threshold=\"0\"", "threshold=\"-1\""), "is below 0"},
        RefusalCase{"threshold_nan", With("threshold=\"0\"", "threshold=\"NaN\""), "isn't finite"},
        RefusalCase{"no_output", With("<BayesOutput fieldName=\"y\">" + Counts({"1", "1", "1"}) + "</BayesOutput>", ""),
                    "BayesOutput"},
        RefusalCase{"other_output", With("fieldName=\"y\"", "fieldName=\"s\""), "isn't the target of the model"},
        RefusalCase{"second_output", With("</BayesOutput>", "</BayesOutput><BayesOutput/>"), "is one too many"},
        RefusalCase{"unknown_element", With("</BayesOutput>", "</BayesOutput><Surprise/>"), "Surprise"},
        RefusalCase{"no_records", Bayes(Input("s", Pair("a", {"1"})), {"0", "0"}), "counts no record"},
        RefusalCase{"output_twice", With("</BayesOutput>", "<TargetValueCounts/></BayesOutput>"), "is one too many"},
        RefusalCase{"count_twice",
                    With("</TargetValueCounts></BayesOutput>",
                         R"(<TargetValueCount value="no" count="1"/></TargetValueCounts></BayesOutput>)"),
                    "has a count already"},
        RefusalCase{"no_inputs", OfInput(""), "has no BayesInput"},
        RefusalCase{"unknown_field", OfInput(Input("z", Pair("a", {"1"}))), "no field \"z\""},
        RefusalCase{"field_twice", OfInput(kText + kText), "has a BayesInput already"},
        RefusalCase{"nothing_told", OfInput(Input("s", "")), "PairCounts"},
        RefusalCase{"both_told", OfInput(Input("x", Pair("1", {"1"}) + Stats({Poisson("1")}))),
                    "stands beside PairCounts"},
        RefusalCase{"value_twice", OfInput(Input("n", Pair("1", {"1"}) + Pair("1.0", {"1"}))), "has counts already"},
        RefusalCase{"value_of_another_type", OfInput(Input("n", Pair("one", {"1"}))), "isn't of the data type"},
        RefusalCase{"pair_without_counts", OfInput(Input("s", "<PairCounts value=\"a\"/>")), "TargetValueCounts"},
        RefusalCase{"count_negative", OfInput(Input("s", Pair("a", {"-1"}))), "is below 0"},
        RefusalCase{"count_infinite", OfInput(Input("s", Pair("a", {"INF"}))), "isn't finite"},
        RefusalCase{"counts_too_large", OfInput(Input("s", Pair("a", {"1e308"}) + Pair("b", {"1e308"}))), "too large"},
        RefusalCase{"unknown_category", Bayes(Input("s", Pair("a", {"1", "1", "1"})), {"1", "1"}),
                    "isn't among the values"},
        RefusalCase{"pair_category_twice",
                    With("</TargetValueCounts></PairCounts>",
                         R"(<TargetValueCount value="no" count="1"/></TargetValueCounts></PairCounts>)"),
                    "stands there twice"},
        RefusalCase{"sparse", Sparse(), "too few of the model's categories"},
        RefusalCase{"stats_of_texts", OfInput(Input("s", Stats({Poisson("1")}))), "needs numbers"},
        RefusalCase{"stat_missing", OfInput(Input("x", Stats({Poisson("1"), Poisson("1")}))), "has none for 'maybe'"},
        RefusalCase{"stat_twice", OfInput(Input("x", Stats({Poisson("1") + Poisson("1")}))), "is one too many"},
        RefusalCase{"two_distributions", OfInput(Input("x", Stats({Poisson("1") + Normal("1", "1")}))),
                    "stands beside another"},
        RefusalCase{"other_distribution",
                    OfInput(Input("x", Stats({"<UniformDistribution lower=\"0\" upper=\"1\"/>"}))), "Uniform"},
        RefusalCase{"no_distribution", OfInput(Input("x", Stats({"<X-Nothing/>"}))), "GaussianDistribution"},
        RefusalCase{"variance_zero", OfInput(Input("x", Stats({Normal("1", "0")}))), "isn't above 0"},
        RefusalCase{"variance_nan", OfInput(Input("x", Stats({Normal("1", "NaN")}))), "isn't finite"},
        RefusalCase{"mean_infinite", OfInput(Input("x", Stats({Normal("INF", "1")}))), "isn't finite"},
        RefusalCase{"mean_negative", OfInput(Input("x", Stats({Poisson("-1")}))), "is below 0"},
        RefusalCase{"derived_without_type", OfInput(Input("x", "<DerivedField><FieldRef field=\"x\"/></DerivedField>")),
                    "dataType"},
        RefusalCase{"derived_without_expression", OfInput(Input("x", "<DerivedField dataType=\"double\"/>")),
                    "has no expression"},
        RefusalCase{"regression",
                    Document{.kind = "NaiveBayesModel", .function = "regression", .attributes = "threshold=\"0\""},
                    "isn't one of this kind"}),
    KelTest::CaseName());

}  // namespace
}  // namespace TorvaneTest
