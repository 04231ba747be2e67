#include <cmath>
#include <gtest/gtest.h>

#include "tests/plugins/torvane/ModelHarness.h"
#include "tests/support/CaseName.h"

namespace TorvaneTest {
namespace {

const Value kNull = Value::NULL_VALUE;

Document Regression(const std::string& tables, const std::string& attributes = "") {
  return {.kind = "RegressionModel", .function = "regression", .attributes = attributes, .body = tables};
}

Document Classification(const std::string& tables, const std::string& method, const std::string& version = "4.2") {
  return {.kind = "RegressionModel",
          .attributes = "normalizationMethod=\"" + method + "\"",
          .body = tables,
          .version = version};
}

// A table with y = x + `shift`; one without a shift is the trivial table.
std::string Table(const std::string& category, const std::string& shift) {
  const std::string predictor = shift.empty() ? "" : R"(<NumericPredictor name="x" coefficient="1"/>)";
  return "<RegressionTable intercept=\"" + (shift.empty() ? "0" : shift) + "\" targetCategory=\"" + category + "\">" +
         predictor + "</RegressionTable>";
}

double Phi(double y) { return 0.5 * (1.0 + std::erf(y / std::sqrt(2.0))); }
double Logistic(double y) { return 1.0 / (1.0 + std::exp(-y)); }
double Cloglog(double y) { return 1.0 - std::exp(-std::exp(y)); }
double Loglog(double y) { return std::exp(-std::exp(-y)); }
double Cauchit(double y) { return 0.5 + std::atan(y) / std::acos(-1.0); }
double Same(double y) { return y; }
double Exp(double y) { return std::exp(y); }

struct MethodCase {
  const char* name;
  double (*inverse)(double);
};

const MethodCase kMethods[] = {{"none", Same},       {"softmax", Logistic}, {"logit", Logistic},  {"probit", Phi},
                               {"cloglog", Cloglog}, {"loglog", Loglog},    {"cauchit", Cauchit}, {"exp", Exp}};

TEST(Regression, NormalizationMethod_AppliesTheInverseLink) {
  for (const MethodCase& method : kMethods) {
    const Scorer scorer = Load(Regression(R"(<RegressionTable intercept="0.25"><NumericPredictor name="x"
        coefficient="2"/></RegressionTable>)",
                                          "normalizationMethod=\"" + std::string(method.name) + "\""));
    for (const double x : {-1.5, -0.125, 0.0, 0.75}) {
      EXPECT_NEAR(Number(scorer.Score({{"x", x}}), "prediction"), method.inverse(0.25 + 2.0 * x), 1e-14)
          << method.name << " " << x;
    }
  }
}

TEST(Regression, ProbitFarBelow_KeepsItsDigits) {
  const Scorer scorer = Load(Regression(R"(<RegressionTable intercept="-10"/>)", R"(normalizationMethod="probit")"));
  EXPECT_NEAR(Number(scorer.Score({}), "prediction"), 7.619853024160527e-24, 1e-36);  // scipy.stats.norm.cdf(-10)
}

// y = 1 + 2 x + 3 n^2 - n^3 + [s = a: 10, s = b: 20] + [b = true: 100] + 0.5 x n f
const char* const kAllTerms = R"(<RegressionTable intercept="1">
<NumericPredictor name="x" coefficient="2"/><NumericPredictor name="n" exponent="2" coefficient="3"/>
<NumericPredictor name="n" exponent="3" coefficient="-1"/>
<CategoricalPredictor name="s" value="a" coefficient="10"/><CategoricalPredictor name="s" value="b" coefficient="20"/>
<CategoricalPredictor name="b" value="true" coefficient="100"/>
<PredictorTerm coefficient="0.5"><FieldRef field="x"/><FieldRef field="n"/><FieldRef field="f"/></PredictorTerm>
</RegressionTable>)";

TEST(Regression, AllTerms_AddUp) {
  const Scorer scorer = Load(Regression(kAllTerms));
  const auto score = [&](Value s, Value b) {
    return Number(scorer.Score({{"x", 1.5}, {"n", 2.0}, {"f", 4.0}, {"s", s}, {"b", b}}), "prediction");
  };
  const double numeric = 1.0 + 3.0 + 12.0 - 8.0 + 0.5 * 1.5 * 2.0 * 4.0;
  EXPECT_EQ(score("a", "true"), numeric + 110.0);
  EXPECT_EQ(score("b", "false"), numeric + 20.0);
  EXPECT_EQ(score("c", "false"), numeric);  // the reference category
  EXPECT_EQ(score(kNull, kNull), numeric);  // a missing category adds nothing
}

TEST(Regression, MissingNumber_GivesNoResult) {
  const Scorer scorer = Load(Regression(kAllTerms));
  EXPECT_TRUE(scorer.Predict({{"x", kNull}, {"n", 2.0}, {"f", 4.0}}).IsNull());
  EXPECT_TRUE(scorer.Predict({{"x", 1.0}, {"n", 2.0}}).IsNull());  // of a term
}

TEST(Regression, ExponentZeroOfZero_IsOne) {
  const Scorer scorer = Load(Regression(R"(<RegressionTable intercept="0"><NumericPredictor name="x" exponent="0"
      coefficient="7"/></RegressionTable>)"));
  EXPECT_EQ(Number(scorer.Score({{"x", 0.0}}), "prediction"), 7.0);
}

TEST(Regression, ManyCategories_EachHasItsCoefficient) {
  std::string declaration = R"(<DataField name="s" optype="categorical" dataType="string"/>
      <DataField name="k" optype="categorical" dataType="integer"/>
      <DataField name="t" optype="continuous" dataType="double"/>)";
  std::string predictors;
  for (int i = 0; i < 100; ++i) {
    const std::string text = std::to_string(i * 7919 % 100);
    predictors += R"(<CategoricalPredictor name="s" value="v)" + text + R"(" coefficient=")" + text + "\"/>";
    predictors += R"(<CategoricalPredictor name="k" value=")" + std::to_string(i * 1000) + R"(" coefficient=")" +
                  std::to_string(i) + "\"/>";
  }
  Document document = Regression("<RegressionTable intercept=\"0\">" + predictors + "</RegressionTable>");
  document.dictionary = declaration;
  document.schema = R"(<MiningField name="s"/><MiningField name="k"/>)";
  const Scorer scorer = Load(document);
  for (int i = 0; i < 100; ++i) {
    const auto out = scorer.Score({{"s", std::string("v").append(std::to_string(i))}, {"k", i * 1000}});
    EXPECT_EQ(Number(out, "prediction"), 2.0 * i);
  }
  EXPECT_EQ(Number(scorer.Score({{"s", "other"}, {"k", 1}}), "prediction"), 0.0);
}

TEST(Regression, OverflowingSum_IsNoNumberAndNoResult) {
  const Scorer scorer = Load(Regression(R"(<RegressionTable intercept="0"><NumericPredictor name="x"
      coefficient="1e200"/><NumericPredictor name="n" coefficient="-1e200"/></RegressionTable>)"));
  EXPECT_TRUE(scorer.Predict({{"x", 1e200}, {"n", 1e200}}).IsNull());  // infinity minus infinity
}

TEST(Classification, SoftmaxAndSimplemax_ShareAmongAllTables) {
  const std::string tables = Table("yes", "1") + Table("no", "2") + Table("maybe", "");
  const auto soft = Load(Classification(tables, "softmax")).Score({{"x", 0.5}});
  const double sum = std::exp(1.5) + std::exp(2.5) + 1.0;
  EXPECT_NEAR(Probability(soft, "yes"), std::exp(1.5) / sum, 1e-15);
  EXPECT_NEAR(Probability(soft, "maybe"), 1.0 / sum, 1e-15);
  EXPECT_EQ(Shown(soft, "prediction"), "no");
  EXPECT_NEAR(Number(soft, "probability"), std::exp(2.5) / sum, 1e-15);
  const auto simple = Load(Classification(tables, "simplemax")).Score({{"x", 0.5}});
  EXPECT_DOUBLE_EQ(Probability(simple, "yes"), 1.5 / 4.0);
  EXPECT_DOUBLE_EQ(Probability(simple, "no"), 2.5 / 4.0);
}

TEST(Classification, SoftmaxOfLargeNumbers_DoesNotOverflow) {
  const auto out = Load(Classification(Table("yes", "1") + Table("no", "2"), "softmax")).Score({{"x", 1e5}});
  EXPECT_NEAR(Probability(out, "yes"), Logistic(-1.0), 1e-12);
}

// The table without predictors stands for the other category, whichever place it has.
TEST(Classification, TwoCategories_OneTableSpeaksForBoth) {
  for (const char* method : {"none", "logit", "probit", "cloglog", "loglog", "cauchit"}) {
    double (*inverse)(double) = Same;
    for (const MethodCase& row : kMethods) {
      if (row.name == std::string(method)) inverse = row.inverse;
    }
    for (const std::string& tables : {Table("yes", "0.25") + Table("no", ""), Table("no", "") + Table("yes", "0.25")}) {
      const auto out = Load(Classification(tables, method)).Score({{"x", 0.125}});
      EXPECT_NEAR(Probability(out, "yes"), inverse(0.375), 1e-15) << method;
      EXPECT_NEAR(Probability(out, "no"), 1.0 - inverse(0.375), 1e-15) << method;
      EXPECT_EQ(Probability(out, "maybe"), 0.0);  // a category without a table
    }
  }
}

TEST(Classification, TwoCategoriesWithoutMethod_StayBetweenZeroAndOne) {
  const Scorer scorer = Load(Classification(Table("yes", "0.25") + Table("no", ""), "none"));
  EXPECT_EQ(Probability(scorer.Score({{"x", 9.0}}), "yes"), 1.0);
  EXPECT_EQ(Probability(scorer.Score({{"x", -9.0}}), "no"), 1.0);
}

TEST(Classification, ManyCategories_FollowTheTextOfTheVersion) {
  const std::string tables = Table("yes", "0.125") + Table("no", "0.25") + Table("maybe", "0.5");
  const auto each = Load(Classification(tables, "none")).Score({{"x", 0.0}});
  EXPECT_EQ(Probability(each, "maybe"), 0.5);
  const auto rest = Load(Classification(tables, "none", "4.3")).Score({{"x", 0.0}});
  EXPECT_EQ(Probability(rest, "maybe"), 1.0 - 0.125 - 0.25);
  const auto links = Load(Classification(tables, "logit")).Score({{"x", 0.0}});
  EXPECT_NEAR(Probability(links, "maybe"), Logistic(0.5), 1e-15);
  const auto shares = Load(Classification(tables, "logit", "4.3")).Score({{"x", 0.0}});
  const double sum = Logistic(0.125) + Logistic(0.25) + Logistic(0.5);
  EXPECT_NEAR(Probability(shares, "maybe"), Logistic(0.5) / sum, 1e-15);
}

TEST(Classification, TwoTablesWithPredictors_SpeakForThemselves) {
  const auto out = Load(Classification(Table("yes", "0.25") + Table("no", "0.5"), "logit")).Score({{"x", 0.0}});
  EXPECT_NEAR(Probability(out, "yes"), Logistic(0.25), 1e-15);
  EXPECT_NEAR(Probability(out, "no"), Logistic(0.5), 1e-15);
}

Document Ordinal(const std::string& tables, const std::string& values = R"(<Value value="low"/><Value value="mid"/>)") {
  Document document = Classification(tables, "logit");
  document.dictionary = R"(<DataField name="x" optype="continuous" dataType="double"/>
      <DataField name="y" optype="ordinal" dataType="string">)" +
                        values + "</DataField>";
  document.schema = R"(<MiningField name="x"/>)";
  return document;
}

TEST(Classification, OrdinalTargetOfTwoValues_EitherTableMayBeTheTrivialOne) {
  for (const std::string& tables : {Table("low", "") + Table("mid", "0.25"), Table("mid", "0.25") + Table("low", "")}) {
    const auto out = Load(Ordinal(tables)).Score({{"x", 0.125}});
    EXPECT_NEAR(Probability(out, "mid"), Logistic(0.375), 1e-15);
    EXPECT_NEAR(Probability(out, "low"), 1.0 - Logistic(0.375), 1e-15);
  }
  const auto out = Load(Ordinal(Table("low", "0.25") + Table("mid", "7"))).Score({{"x", 0.125}});
  EXPECT_NEAR(Probability(out, "low"), Logistic(0.375), 1e-15);
}

TEST(Classification, OrdinalTarget_TakesDifferencesAlongTheOrderOfTheValues) {
  for (const MethodCase& method : kMethods) {
    if (method.inverse == Exp || method.name == std::string("softmax")) continue;
    // The tables stand in another order than the values low, mid, high; y of the last value plays no part.
    Document document = Classification(Table("high", "") + Table("mid", "0.5") + Table("low", "0.25"), method.name);
    document.schema = R"(<MiningField name="x"/><MiningField name="o" usageType="predicted"/>)";
    std::string text = document.Text();
    text.replace(text.find("<MiningField name=\"y\" usageType=\"predicted\"/>"), 45, "");
    const Scorer scorer = TryLoad(text);
    ASSERT_NE(scorer.scorer, nullptr) << scorer.reason;
    const auto out = scorer.Score({{"x", 0.125}});
    EXPECT_NEAR(Probability(out, "low"), method.inverse(0.375), 1e-15) << method.name;
    EXPECT_NEAR(Probability(out, "mid"), method.inverse(0.625) - method.inverse(0.375), 1e-15) << method.name;
    EXPECT_NEAR(Probability(out, "high"), 1.0 - method.inverse(0.625), 1e-15) << method.name;
  }
}

TEST(Classification, Tie_GoesToTheFirstTableOfTheDocument) {
  const auto out =
      Load(Classification(Table("no", "1") + Table("yes", "1") + Table("maybe", ""), "softmax")).Score({{"x", 1.0}});
  EXPECT_EQ(Shown(out, "prediction"), "no");
}

TEST(Classification, MissingNumber_GivesNoResultAtAll) {
  const auto out = Load(Classification(Table("yes", "1") + Table("no", ""), "logit")).Score({{"x", kNull}});
  EXPECT_EQ(Shown(out, "prediction"), "null");
  EXPECT_EQ(Shown(out, "probability"), "null");
  EXPECT_TRUE(out.At(out.IndexOf("probcategory")).Members()->At(0).IsNull());
}

const char* const kThreeValues = R"(<Value value="low"/><Value value="mid"/><Value value="high"/>)";

struct RefusalCase {
  const char* name;
  Document document;
  const char* reason;
};

class RegressionRefusal : public testing::TestWithParam<RefusalCase> {};

TEST_P(RegressionRefusal, Document_IsRefusedWithAReason) {
  EXPECT_NE(ReasonOf(GetParam().document).find(GetParam().reason), std::string::npos) << ReasonOf(GetParam().document);
}

std::string Predictor(const std::string& element) {
  return "<RegressionTable intercept=\"0\">" + element + "</RegressionTable>";
}

INSTANTIATE_TEST_SUITE_P(
    Table, RegressionRefusal,
    testing::Values(
        RefusalCase{"no_table", Regression(""), "RegressionTable"},
        RefusalCase{"two_tables", Regression(Predictor("") + "\n" + Predictor("")), "is a second table"},
        RefusalCase{"no_intercept", Regression("<RegressionTable/>"), "intercept"},
        RefusalCase{"infinite_intercept", Regression(R"(<RegressionTable intercept="INF"/>)"), "isn't finite"},
        RefusalCase{"method", Regression(Predictor(""), R"(normalizationMethod="sigmoid")"), "softmax, logit, probit"},
        RefusalCase{"simplemax", Regression(Predictor(""), R"(normalizationMethod="simplemax")"), "no meaning"},
        RefusalCase{"model_type", Regression(Predictor(""), R"(modelType="quadratic")"), "linearRegression, "},
        RefusalCase{"unknown_field", Regression(Predictor(R"(<NumericPredictor name="q" coefficient="1"/>)")),
                    "no field"},
        RefusalCase{"unlisted_field", Regression(Predictor(R"(<NumericPredictor name="y" coefficient="1"/>)")),
                    "no field"},
        RefusalCase{"text_field", Regression(Predictor(R"(<NumericPredictor name="s" coefficient="1"/>)")),
                    "needs numbers"},
        RefusalCase{"no_coefficient", Regression(Predictor(R"(<NumericPredictor name="x"/>)")), "coefficient"},
        RefusalCase{"malformed_coefficient", Regression(Predictor(R"(<NumericPredictor name="x" coefficient="1,5"/>)")),
                    "1,5"},
        RefusalCase{"fraction_as_exponent",
                    Regression(Predictor(R"(<NumericPredictor name="x" exponent="0.5" coefficient="1"/>)")),
                    "is no integer"},
        RefusalCase{"category_twice", Regression(Predictor(R"(<CategoricalPredictor name="s" value="a" coefficient="1"/>
                        <CategoricalPredictor name="s" value="a" coefficient="2"/>)")),
                    "has a coefficient already"},
        RefusalCase{"category_of_another_type",
                    Regression(Predictor(R"(<CategoricalPredictor name="x" value="a" coefficient="1"/>)")),
                    "data type"},
        RefusalCase{"empty_term", Regression(Predictor(R"(<PredictorTerm coefficient="1"/>)")), "has no field"},
        RefusalCase{"unknown_element", Regression(Predictor("<Spline/>")), "<Spline> line"},
        RefusalCase{"one_category", Classification(Table("yes", "1"), "logit"), "two categories or more"},
        RefusalCase{"no_category", Classification(Predictor("") + Table("no", ""), "logit"), "targetCategory"},
        RefusalCase{"table_twice", Classification(Table("no", "1") + Table("no", ""), "logit"), "has a table already"},
        RefusalCase{"exp_of_categories", Classification(Table("yes", "1") + Table("no", ""), "exp", "4.3"),
                    "no probabilities"},
        RefusalCase{"two_full_tables", Classification(Table("yes", "1") + Table("no", "1"), "logit", "4.3"),
                    "an empty RegressionTable"},
        RefusalCase{"ordinal_value_without_table", Ordinal(Table("low", "1") + Table("mid", "2"), kThreeValues),
                    "for each value"},
        RefusalCase{"ordinal_empty_table_in_front",
                    Ordinal(Table("low", "") + Table("mid", "1") + Table("high", "2"), kThreeValues), "is empty"},
        RefusalCase{"probit_of_many",
                    Classification(Table("yes", "1") + Table("no", "1") + Table("maybe", ""), "probit", "4.3"),
                    "ordinal"}),
    KelTest::CaseName());

}  // namespace
}  // namespace TorvaneTest
