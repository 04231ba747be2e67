#include <cmath>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/plugins/torvane/ModelHarness.h"
#include "tests/support/CaseName.h"

// Answers "of R" come from oracle/GeneralRegression.R: R 4.2.2, MASS 7.3.58.2, nnet 7.3.18, survival 3.5.3.

namespace TorvaneTest {
namespace {

const Value kNull = Value::NULL_VALUE;
constexpr double kOfR = 2e-14;  // R prints 15 digits

// What stands in the body of a model.
struct Parts {
  std::string parameters = "";  // "Parameter" elements, and so on
  std::string factors = "";
  std::string covariates = "";
  std::string products = "";
  std::string coefficients = "";
  std::string rest = "";

  [[nodiscard]] std::string Text() const {
    return "<ParameterList>" + parameters + "</ParameterList>\n<FactorList>" + factors +
           "</FactorList><CovariateList>" + covariates + "</CovariateList>\n<PPMatrix>" + products +
           "</PPMatrix>\n<ParamMatrix>" + coefficients + "</ParamMatrix>\n" + rest;
  }
};

std::string Parameter(const std::string& name) { return "<Parameter name=\"" + name + "\"/>"; }
std::string Predictor(const std::string& name) { return "<Predictor name=\"" + name + "\"/>"; }
std::string Category(const std::string& name) {
  return name.empty() ? "" : std::string(" targetCategory=\"").append(name) + "\"";
}
std::string Product(const std::string& parameter, const std::string& predictor, const std::string& value,
                    const std::string& category = "") {
  return "<PPCell value=\"" + value + "\" predictorName=\"" + predictor + "\" parameterName=\"" + parameter + "\"" +
         Category(category) + "/>";
}
std::string Coefficient(const std::string& parameter, const std::string& beta, const std::string& category = "") {
  return "<PCell parameterName=\"" + parameter + "\" beta=\"" + beta + "\"" + Category(category) + "/>\n";
}

// A model of the parameters p0, an intercept, and p1 = x, with the coefficients as they stand.
Parts OfX(const std::string& coefficients) {
  return {Parameter("p0") + Parameter("p1"), "", Predictor("x"), Product("p1", "x", "1"), coefficients, ""};
}
Parts Line(const std::string& intercept, const std::string& slope, const std::string& category = "") {
  return OfX(Coefficient("p0", intercept, category) + Coefficient("p1", slope, category));
}

Document General(const std::string& attributes, const Parts& parts, const std::string& function = "regression") {
  return {.kind = "GeneralRegressionModel", .function = function, .attributes = attributes, .body = parts.Text()};
}
Document Categories(const std::string& attributes, const Parts& parts) {
  return General(attributes, parts, "classification");
}

struct LinkCase {
  const char* name;
  const char* attributes;
  const char* intercept;
  const char* slope;
  double first;  // at x = 2.62
  double last;   // at x = 2.78
};

class GeneralizedLinear : public testing::TestWithParam<LinkCase> {};

TEST_P(GeneralizedLinear, Link_GivesWhatTheProducersToolPredicts) {
  const LinkCase& row = GetParam();
  const Scorer scorer = Load(
      General(std::string("modelType=\"generalizedLinear\" ").append(row.attributes), Line(row.intercept, row.slope)));
  EXPECT_NEAR(Number(scorer.Score({{"x", 2.62}}), "prediction"), row.first, kOfR * std::abs(row.first) * 10);
  EXPECT_NEAR(Number(scorer.Score({{"x", 2.78}}), "prediction"), row.last, kOfR * std::abs(row.last) * 10);
}

INSTANTIATE_TEST_SUITE_P(
    OfR, GeneralizedLinear,
    testing::Values(LinkCase{"identity", R"(distribution="normal" linkFunction="identity")", "37.28512616734203",
                             "-5.34447157272268", 23.2826106468086, 22.4274951951730},
                    LinkCase{"log", R"(distribution="poisson" linkFunction="log")", "0.239148746580790",
                             "0.238593516507242", 2.37325815461966, 2.46560872056452},
                    LinkCase{"logit", R"(distribution="binomial" linkFunction="logit")", "12.04036965896271",
                             "-4.02396994032789", 0.817211533874688, 0.701349684736819},
                    LinkCase{"probit", R"(distribution="binomial" linkFunction="probit")", "6.72640806230438",
                             "-2.25776311536933", 0.791336890334169, 0.673582262466827},
                    LinkCase{"cloglog", R"(distribution="binomial" linkFunction="cloglog")", "6.87663308852657",
                             "-2.50741847564025", 0.743238682869774, 0.597593141324046},
                    LinkCase{"power_minus_one", R"(distribution="gamma" linkFunction="power" linkParameter="-1")",
                             "0.00804914244732761", "0.01404642858521411", 22.2961536215294, 21.2322276556228},
                    LinkCase{"power_minus_two", R"(distribution="igauss" linkFunction="power" linkParameter="-2")",
                             "-0.00134869649347897", "0.00134466096849687", 21.4456268296336, 20.4573806828921},
                    LinkCase{"power_half", R"(distribution="tweedie" linkFunction="power" linkParameter="0.5")",
                             "6.356300939996575", "-0.593887414389268", 23.0430328770501, 22.1397909488211}),
    KelTest::CaseName());

// Links that R has no family for; y is -0.5.
INSTANTIATE_TEST_SUITE_P(
    ClosedForms, GeneralizedLinear,
    testing::Values(
        LinkCase{"logc", R"(linkFunction="logc")", "-0.5", "0", 1 - std::exp(-0.5), 1 - std::exp(-0.5)},
        LinkCase{"loglog", R"(linkFunction="loglog")", "-0.5", "0", std::exp(-std::exp(0.5)), std::exp(-std::exp(0.5))},
        LinkCase{"negbin", R"(distribution="negbin" linkFunction="negbin" distParameter="3")", "-0.5", "0",
                 1 / (3 * (std::exp(0.5) - 1)), 1 / (3 * (std::exp(0.5) - 1))},
        LinkCase{"oddspower", R"(linkFunction="oddspower" linkParameter="0.5")", "-0.5", "0",
                 1 / (1 + std::pow(0.75, -2)), 1 / (1 + std::pow(0.75, -2))},
        LinkCase{"offset", R"(linkFunction="log" offsetValue="1.5")", "-0.5", "0", std::exp(1.0), std::exp(1.0)},
        LinkCase{"trials", R"(linkFunction="identity" distribution="binomial" trialsValue="10")", "0.5", "0", 5.0,
                 5.0}),
    KelTest::CaseName());

TEST(GeneralRegression, LinearTypes_PredictTheSum) {
  for (const char* type : {"regression", "generalLinear"}) {
    const std::string attribute = std::string("modelType=\"").append(type) + "\"";
    EXPECT_EQ(Number(Load(General(attribute, Line("0.5", "2"))).Score({{"x", 3.0}}), "prediction"), 6.5);
    EXPECT_EQ(Number(Load(General(attribute, Line("0.5", "2", "event"))).Score({{"x", 3.0}}), "prediction"), 6.5);
  }
}

TEST(GeneralRegression, LinkOutsideOfItsValues_GivesNoResult) {
  const Scorer scorer =
      Load(General(R"(modelType="generalizedLinear" linkFunction="power" linkParameter="2")", Line("0", "1")));
  EXPECT_EQ(Number(scorer.Score({{"x", 9.0}}), "prediction"), 3.0);
  EXPECT_TRUE(scorer.Predict({{"x", -9.0}}).IsNull());
}

// glm(cbind(dead, n - dead) ~ dose + offset(o), binomial): trials * expected proportion.
TEST(GeneralRegression, OffsetAndTrialsFromFields_AreThoseOfTheRecord) {
  const Scorer scorer = Load(General(
      R"(modelType="generalizedLinear" linkFunction="logit" distribution="binomial" offsetVariable="f" trialsVariable="n")",
      Line("-2.125135208191743", "0.300341191533814")));
  const auto f = [](double number) { return static_cast<double>(static_cast<float>(number)); };
  EXPECT_NEAR(Number(scorer.Score({{"x", 1.0}, {"n", 20}, {"f", 0.1}}), "prediction"), 3.02509388147260, 1e-7);
  EXPECT_NEAR(Number(scorer.Score({{"x", 32.0}, {"n", 20}, {"f", f(0.3)}}), "prediction"), 19.99169141667359, 1e-7);
  EXPECT_TRUE(scorer.Predict({{"x", 1.0}, {"n", kNull}, {"f", 0.1}}).IsNull());
  EXPECT_TRUE(scorer.Predict({{"x", 1.0}, {"n", 20}, {"f", kNull}}).IsNull());
}

// lm(mpg ~ cyl + I(wt^2) + cyl:wt) with the contrasts of Helmert, where cyl 4, 6, 8 are a, b, c of field s.
Parts Helmert(const std::string& categories) {
  const std::string matrix = R"(<Matrix nbRows="3" nbCols="2"><Array type="real">-1 -1</Array>
      <Array type="real">1 -1</Array><Array type="real">0 2</Array></Matrix>)";
  Parts parts;
  for (int i = 0; i < 9; ++i) parts.parameters += Parameter(std::string("p").append(std::to_string(i)));
  // The interaction's own coefficients are of each category against none, so it has a parameter for each of them.
  parts.factors =
      "<Predictor name=\"s\" contrastMatrixType=\"Helmert\">" + categories + matrix + "</Predictor>" + Predictor("o");
  parts.covariates = Predictor("x");
  parts.products = Product("p1", "s", "a") + Product("p2", "s", "b") + Product("p3", "x", "2") +
                   Product("p4", "o", "low") + Product("p4", "x", "1") + Product("p5", "o", "mid") +
                   Product("p5", "x", "1") + Product("p6", "x", "1") + Product("p6", "o", "high");
  parts.coefficients = Coefficient("p0", "30.3340370242226172") + Coefficient("p1", "-5.6313790680968809") +
                       Coefficient("p2", "-3.4699063409584516") + Coefficient("p3", "-0.0253522231831139") +
                       Coefficient("p4", "-5.5263616170868435") + Coefficient("p5", "-2.6243939569712329") +
                       Coefficient("p6", "-1.9691797832562732");
  return parts;
}

TEST(GeneralRegression, ContrastsInteractionsAndPowers_MultiplyToTheParameters) {
  const std::string listed =
      R"(<Categories><Category value="a"/><Category value="b"/><Category value="c"/></Categories>)";
  for (const std::string& categories : {std::string(), listed}) {  // without a list, the order is that of the field
    const Scorer scorer = Load(General(R"(modelType="generalLinear")", Helmert(categories)));
    EXPECT_NEAR(Number(scorer.Score({{"s", "b"}, {"o", "mid"}, {"x", 2.62}}), "prediction"), 21.1226243290014, 1e-12);
    EXPECT_NEAR(Number(scorer.Score({{"s", "a"}, {"o", "low"}, {"x", 2.32}}), "prediction"), 26.4777076755757, 1e-12);
    EXPECT_NEAR(Number(scorer.Score({{"s", "c"}, {"o", "high"}, {"x", 3.44}}), "prediction"), 16.3202378196444, 1e-12);
    EXPECT_TRUE(scorer.Predict({{"s", kNull}, {"o", "mid"}, {"x", 1.0}}).IsNull());
    EXPECT_TRUE(scorer.Predict({{"s", "a"}, {"o", kNull}, {"x", 1.0}}).IsNull());
    EXPECT_TRUE(scorer.Predict({{"s", "a"}, {"o", "mid"}, {"x", kNull}}).IsNull());
  }
}

TEST(GeneralRegression, CategoryThatTheModelDoesNotKnow_IsNoneOfAFactorButNoRowOfAContrast) {
  Parts parts = Line("1", "1");
  parts.covariates = "";
  parts.factors = Predictor("s");
  parts.products = Product("p1", "s", "a");
  Document document = General(R"(modelType="regression")", parts);
  const std::string declared = R"(<Value value="a"/><Value value="b"/><Value value="c"/>)";
  document.dictionary.erase(document.dictionary.find(declared), declared.size());
  EXPECT_EQ(Number(Load(document).Score({{"s", "a"}}), "prediction"), 2.0);
  EXPECT_EQ(Number(Load(document).Score({{"s", "other"}}), "prediction"), 1.0);
  EXPECT_TRUE(Load(document).Predict({{"s", kNull}}).IsNull());
  parts.factors = R"(<Predictor name="s"><Categories><Category value="a"/><Category value="b"/></Categories>
      <Matrix><Array type="real">0.5</Array><Array type="real">-0.5</Array></Matrix></Predictor>)";
  document.body = parts.Text();
  EXPECT_EQ(Number(Load(document).Score({{"s", "b"}}), "prediction"), 0.5);
  EXPECT_TRUE(Load(document).Predict({{"s", "other"}}).IsNull());
}

TEST(GeneralRegression, FactorsOfNumbersAndPowersOfCovariates_AreValuesOfParameters) {
  Parts parts;
  parts.parameters = Parameter("n2") + Parameter("b") + Parameter("root") + Parameter("none") + Parameter("unused");
  parts.factors = Predictor("n") + Predictor("b");
  parts.covariates = Predictor("x");
  parts.products = Product("n2", "n", "2") + Product("b", "b", "true") + Product("root", "x", "0.5") +
                   Product("none", "x", "0") + Product("unused", "x", "3");
  parts.coefficients =
      Coefficient("n2", "10") + Coefficient("b", "100") + Coefficient("root", "1") + Coefficient("none", "1000");
  const Scorer scorer = Load(General(R"(modelType="regression")", parts));
  EXPECT_EQ(Number(scorer.Score({{"n", 2}, {"b", "true"}, {"x", 9.0}}), "prediction"), 1113.0);
  EXPECT_EQ(Number(scorer.Score({{"n", 3}, {"b", "false"}, {"x", 0.0}}), "prediction"), 1000.0);
  EXPECT_TRUE(scorer.Predict({{"n", 3}, {"b", "false"}, {"x", -1.0}}).IsNull());  // a root of a negative number
  EXPECT_TRUE(scorer.Predict({{"n", kNull}, {"b", "false"}, {"x", 1.0}}).IsNull());
}

// nnet::multinom(gear ~ wt + qsec): the categories 3, 4, 5 are maybe (the reference), no, yes here.
TEST(Multinomial, Probabilities_AreThoseOfTheProducersTool) {
  Parts parts = OfX(Coefficient("p0", "3.86039814673814", "no") + Coefficient("p1", "-3.02989349996696", "no") +
                    Coefficient("p2", "0.30981488498636", "no") + Coefficient("p0", "157.92712873091764", "yes") +
                    Coefficient("p1", "-12.47200126584352", "yes") + Coefficient("p2", "-7.59763283033600", "yes"));
  parts.parameters += Parameter("p2");
  parts.covariates += Predictor("f");
  parts.products += Product("p2", "f", "1");
  for (const char* reference : {"", R"( targetReferenceCategory="maybe")"}) {
    Document document = Categories(std::string(R"(modelType="multinomialLogistic")").append(reference), parts);
    const std::size_t f = document.dictionary.find("dataType=\"float\"");
    document.dictionary.replace(f, 16, "dataType=\"double\"");
    const auto out = Load(document).Score({{"x", 3.44}, {"f", 17.02}});
    EXPECT_NEAR(Probability(out, "maybe"), 7.84042887542683e-01, 1e-12);
    EXPECT_NEAR(Probability(out, "no"), 2.15956623777314e-01, 1e-12);
    EXPECT_NEAR(Probability(out, "yes"), 4.88680002872577e-07, 1e-17);
    EXPECT_EQ(Shown(out, "prediction"), "maybe");
  }
}

// p_j = exp(y_j + a) / sum, where cells of no category are of each but the reference.
TEST(Multinomial, CellsOfNoCategoryAndOffset_AreOfEachCategoryButTheReference) {
  const Parts parts = OfX(Coefficient("p0", "0.5", "yes") + Coefficient("p0", "0.25", "no") + Coefficient("p1", "2"));
  const auto out = Load(Categories(R"(modelType="multinomialLogistic" offsetVariable="f")", parts))
                       .Score({{"x", 0.75}, {"f", 0.125}});
  const double yes = std::exp(0.5 + 1.5 + 0.125);
  const double no = std::exp(0.25 + 1.5 + 0.125);
  EXPECT_NEAR(Probability(out, "yes"), yes / (yes + no + 1), 1e-15);
  EXPECT_NEAR(Probability(out, "no"), no / (yes + no + 1), 1e-15);
  EXPECT_NEAR(Probability(out, "maybe"), 1 / (yes + no + 1), 1e-15);
}

// A coefficient of all categories whose parameter is another field for each: y_yes = 2 x, y_no = 2 f n.
TEST(Multinomial, ProductsOfOneCategory_MakeAParameterDifferBetweenCategories) {
  Parts parts = OfX(Coefficient("p1", "2"));
  parts.covariates += Predictor("n") + Predictor("f");
  parts.products = Product("p1", "x", "1", "yes") + Product("p1", "f", "1", "no") + Product("p1", "n", "1", "no");
  const auto out = Load(Categories(R"(modelType="multinomialLogistic" targetReferenceCategory="maybe")", parts))
                       .Score({{"x", 0.5}, {"n", 2}, {"f", 0.125}});
  const double sum = std::exp(1.0) + std::exp(0.5) + 1;
  EXPECT_NEAR(Probability(out, "yes"), std::exp(1.0) / sum, 1e-15);
  EXPECT_NEAR(Probability(out, "no"), std::exp(0.5) / sum, 1e-15);
}

TEST(Multinomial, LargeSums_DoNotOverflow) {
  const Parts parts = OfX(Coefficient("p1", "1000", "yes") + Coefficient("p1", "1000", "no"));
  const auto out = Load(Categories(R"(modelType="multinomialLogistic")", parts)).Score({{"x", 50.0}});
  EXPECT_EQ(Probability(out, "yes"), 0.5);
  EXPECT_EQ(Shown(out, "prediction"), "yes");  // the first one in the order of the target
}

struct OrdinalCase {
  const char* link;
  const char* first;  // the thresholds
  const char* second;
  const char* slope;  // of R with the other sign: its F is of the threshold minus the sum
  double low, middle, high;
};

// MASS::polr(Sat ~ Infl, housing, weights = Freq) at Infl = "Medium", whose indicator is x here.
TEST(Ordinal, CumulativeLinks_GiveWhatTheProducersToolPredicts) {
  const OrdinalCase kCases[] = {{"logit", "-0.201376263098277", "0.948475598514008", "-0.563578827538694",
                                 0.317571430476134, 0.277482169071444, 0.404946400452422},
                                {"probit", "-0.124692868290502", "0.583426527661192", "-0.346590032280940",
                                 0.318719362470960, 0.274888818701869, 0.406391818827171},
                                {"cloglog", "-0.567925855773826", "0.265496229784603", "-0.366242749295727",
                                 0.324912114030385, 0.270206930143575, 0.404880955826040},
                                {"loglog", "0.242588491641652", "1.031533900439007", "-0.385116199580588",
                                 0.315629875199497, 0.276565155517298, 0.407804969283205},
                                {"cauchit", "-0.159886493790589", "0.839246418445064", "-0.514233357053796",
                                 0.311196157005323, 0.288830723392938, 0.399973119601739}};
  for (const OrdinalCase& row : kCases) {
    const std::string attributes =
        std::string(R"(modelType="ordinalMultinomial" cumulativeLink=")").append(row.link) + "\"";
    const std::string coefficients = Coefficient("p1", row.slope) + Coefficient("p0", row.second, "no") +
                                     Coefficient("p0", row.first, "yes");  // in whatever order
    const auto out = Load(Categories(attributes, OfX(coefficients))).Score({{"x", 1.0}});
    EXPECT_NEAR(Probability(out, "yes"), row.low, kOfR) << row.link;
    EXPECT_NEAR(Probability(out, "no"), row.middle, kOfR) << row.link;
    EXPECT_NEAR(Probability(out, "maybe"), row.high, kOfR) << row.link;
    EXPECT_EQ(Shown(out, "prediction"), "maybe");
    const auto shifted = Load(Categories(attributes + " offsetValue=\"" + row.slope + "\"", OfX(coefficients)));
    EXPECT_NEAR(Probability(shifted.Score({{"x", 0.0}}), "yes"), row.low, kOfR) << row.link;
  }
}

TEST(Binary, ParametersOfOneCategory_SpeakForBoth) {
  const double p = 1 / (1 + std::exp(-1.25));
  const std::string attributes = R"(modelType="generalizedLinear" linkFunction="logit" targetReferenceCategory="no")";
  const auto out = Load(Categories(attributes, Line("0.25", "2", "yes"))).Score({{"x", 0.5}});
  EXPECT_NEAR(Probability(out, "yes"), p, 1e-15);
  EXPECT_NEAR(Probability(out, "no"), 1 - p, 1e-15);
  EXPECT_EQ(Probability(out, "maybe"), 0.0);
  EXPECT_EQ(Shown(out, "prediction"), "yes");
}

TEST(Binary, TargetOfTwoCategories_NeedsOnlyOneNamed) {
  const double p = 1 / (1 + std::exp(-1.25));
  for (const auto& [attributes, category] :
       {std::pair<std::string, std::string>{"", "yes"}, {R"(targetReferenceCategory="no")", ""}}) {
    Document document =
        Categories(R"(modelType="generalizedLinear" linkFunction="logit" )" + attributes, Line("0.25", "2", category));
    const std::string third = R"(<Value value="maybe"/>)";
    document.dictionary.erase(document.dictionary.find(third), third.size());
    const auto out = Load(document).Score({{"x", 0.5}});
    EXPECT_NEAR(Probability(out, "yes"), p, 1e-15);
    EXPECT_NEAR(Probability(out, "no"), 1 - p, 1e-15);
  }
}

TEST(Binary, LinkBeyondProbabilities_IsLimited) {
  const Scorer scorer = Load(Categories(
      R"(modelType="generalizedLinear" linkFunction="log" targetReferenceCategory="no")", Line("0", "1", "yes")));
  EXPECT_NEAR(Probability(scorer.Score({{"x", -1.0}}), "yes"), std::exp(-1.0), 1e-15);
  EXPECT_EQ(Probability(scorer.Score({{"x", 1.0}}), "yes"), 1.0);
  EXPECT_EQ(Probability(scorer.Score({{"x", 1.0}}), "no"), 0.0);
  EXPECT_TRUE(scorer.Predict({{"x", kNull}}).IsNull());
}

// coxph(Surv(time, status) ~ age + ph.ecog + strata(sex), lung): x is the age, f ph.ecog, s the stratum, n the time.
const char* const kTables = R"(<BaseCumHazardTables><BaselineStratum value="a" maxTime="1022">
<BaselineCell time="166" cumHazard="0.340538027392340"/><BaselineCell time="303" cumHazard="0.846395180339952"/>
<BaselineCell time="310" cumHazard="0.894734121949243"/></BaselineStratum>
<BaselineStratum value="b" maxTime="500"><BaselineCell time="433" cumHazard="0.727955885185822"/>
<BaselineCell time="166" cumHazard="0.152048990721731"/></BaselineStratum></BaseCumHazardTables>)";

const char* const kCox =
    R"(modelType="CoxRegression" endTimeVariable="n" baselineStrataVariable="s" statusVariable="b")";

Parts Cox(const std::string& tables = kTables) {
  Parts parts;
  parts.parameters = R"(<Parameter name="p0" referencePoint="62.458149779735685"/>
      <Parameter name="p1" referencePoint="0.951541850220264"/>)";
  parts.covariates = Predictor("x") + Predictor("f");
  parts.products = Product("p0", "x", "1") + Product("p1", "f", "1");
  parts.coefficients = Coefficient("p0", "0.0105662546009495") + Coefficient("p1", "0.4624244343582905");
  parts.rest = R"(<EventValues><Value value="1"/></EventValues>)" + tables;
  return parts;
}

TEST(Cox, SurvivalAndCumulativeHazard_AreThoseOfTheProducersTool) {
  const Scorer scorer = Load(General(kCox, Cox()));
  const auto first = scorer.Score({{"x", 60.0}, {"f", 2.0}, {"s", "a"}, {"n", 303}});
  EXPECT_NEAR(Number(first, "prediction"), 0.262048947924862, 1e-13);
  EXPECT_NEAR(Number(first, "cox-cumhazard"), 1.339223968529801, 1e-13);
  const auto second = scorer.Score({{"x", 45.0}, {"f", 0.0}, {"s", "b"}, {"n", 433}});
  EXPECT_NEAR(Number(second, "prediction"), 0.677159775895927, 1e-13);
  EXPECT_NEAR(Number(second, "cox-cumhazard"), 0.389848028160146, 1e-13);
  const auto between = scorer.Score({{"x", 60.0}, {"f", 2.0}, {"s", "a"}, {"n", 309}});  // the step before it counts
  EXPECT_EQ(Number(between, "prediction"), Number(first, "prediction"));
}

TEST(Cox, TimeBeforeTheFirstEvent_IsSurvived) {
  const auto out = Load(General(kCox, Cox())).Score({{"x", 1e300}, {"f", 2.0}, {"s", "a"}, {"n", 165}});
  EXPECT_EQ(Number(out, "prediction"), 1.0);
  EXPECT_EQ(Number(out, "cox-cumhazard"), 0.0);
}

TEST(Cox, UnknownStratumOrTimeBeyondTheLast_GivesNoResult) {
  const Scorer scorer = Load(General(kCox, Cox()));
  const auto expectNothing = [&](Value x, Value stratum, Value time) {
    const auto out = scorer.Score({{"x", x}, {"f", 2.0}, {"s", stratum}, {"n", time}});
    EXPECT_EQ(Shown(out, "prediction"), "null");
    EXPECT_EQ(Shown(out, "cox-cumhazard"), "null");
  };
  expectNothing(60.0, "c", 303);
  expectNothing(60.0, kNull, 303);
  expectNothing(60.0, "b", 501);
  expectNothing(60.0, "a", kNull);
  expectNothing(kNull, "a", 303);
  EXPECT_FALSE(scorer.Predict({{"x", 60.0}, {"f", 2.0}, {"s", "a"}, {"n", 501}}).IsNull());
}

TEST(Cox, WithoutStrataAndParameters_IsTheBaseline) {
  const Parts parts = {.rest = R"(<BaseCumHazardTables maxTime="9"><BaselineCell time="2" cumHazard="0.5"/>
      </BaseCumHazardTables>)"};
  const auto out = Load(General(R"(modelType="CoxRegression" endTimeVariable="x")", parts)).Score({{"x", 9.0}});
  EXPECT_NEAR(Number(out, "prediction"), std::exp(-0.5), 1e-16);
}

// Some producers' prediction is the hazard. Their documents show it by an output that makes a survival of it.
TEST(Cox, OutputThatMakesSurvivalOfThePrediction_MakesThePredictionTheHazard) {
  Document document = General(kCox, Cox());
  document.body = R"(<Output><OutputField name="h" feature="predictedValue"/><OutputField name="S"
      feature="transformedValue"><Apply function="exp"><Apply function="*"><Constant>-1.0</Constant><FieldRef field="h"/>
      </Apply></Apply></OutputField></Output>)" +
                  document.body;
  const auto out = Load(document).Score({{"x", 60.0}, {"f", 2.0}, {"s", "a"}, {"n", 303}});
  EXPECT_NEAR(Number(out, "prediction"), 1.339223968529801, 1e-13);
  EXPECT_NEAR(Number(out, "S"), 0.262048947924862, 1e-13);
  EXPECT_EQ(Number(out, "cox-cumhazard"), Number(out, "prediction"));
}

struct RefusalCase {
  const char* name;
  Document document;
  const char* reason;
};

class GeneralRegressionRefusal : public testing::TestWithParam<RefusalCase> {};

TEST_P(GeneralRegressionRefusal, Document_IsRefusedWithAReason) {
  const std::string reason = ReasonOf(GetParam().document);
  EXPECT_NE(reason.find(GetParam().reason), std::string::npos) << reason;
}

Document Linear(const std::string& attributes) {
  return General(R"(modelType="regression" )" + attributes, Line("1", "2"));
}
Document Linked(const std::string& attributes) {
  return General(R"(modelType="generalizedLinear" )" + attributes, Line("1", "2"));
}

INSTANTIATE_TEST_SUITE_P(
    Attributes, GeneralRegressionRefusal,
    testing::Values(
        RefusalCase{"no_model_type", General("", Line("1", "2")), "\"modelType\" is missing"},
        RefusalCase{"model_type", General(R"(modelType="ridge")", Line("1", "2")), "generalizedLinear, CoxRegression"},
        RefusalCase{"linear_classification", Categories(R"(modelType="generalLinear")", Line("1", "2", "yes")),
                    "is for a regression"},
        RefusalCase{"multinomial_regression", General(R"(modelType="multinomialLogistic")", Line("1", "2", "yes")),
                    "is for a classification"},
        RefusalCase{"no_link", Linked(""), "\"linkFunction\" is missing"},
        RefusalCase{"link", Linked(R"(linkFunction="sqrt")"), "cloglog, identity"},
        RefusalCase{"other_link", Linear(R"(linkFunction="log")"), "isn't the link of this modelType"},
        RefusalCase{"cumulative_link", Linear(R"(cumulativeLink="log")"), "probit, cloglog"},
        RefusalCase{"no_cumulative_link", Categories(R"(modelType="ordinalMultinomial")", Line("1", "2", "yes")),
                    "\"cumulativeLink\" is missing"},
        RefusalCase{"distribution", Linked(R"(linkFunction="log" distribution="beta")"), "binomial, gamma"},
        RefusalCase{"no_link_parameter", Linked(R"(linkFunction="power")"), "\"linkParameter\" is missing"},
        RefusalCase{"no_dispersion", Linked(R"(linkFunction="negbin")"), "\"distParameter\" is missing"},
        RefusalCase{"dispersion", Linked(R"(linkFunction="negbin" distParameter="0")"), "isn't above 0"},
        RefusalCase{"two_offsets", Linked(R"(linkFunction="log" offsetVariable="n" offsetValue="1")"), "stands beside"},
        RefusalCase{"offset_of_linear", Linear(R"(offsetValue="1")"), "has no offset"},
        RefusalCase{"unknown_offset", Linked(R"(linkFunction="log" offsetVariable="q")"), "no field"},
        RefusalCase{"two_trials", Linked(R"(linkFunction="log" distribution="binomial" trialsVariable="n"
                        trialsValue="2")"),
                    "stands beside"},
        RefusalCase{"trials_of_poisson", Linked(R"(linkFunction="log" distribution="poisson" trialsValue="2")"),
                    "distribution binomial"},
        RefusalCase{"part_of_a_trial", Linked(R"(linkFunction="log" distribution="binomial" trialsValue="2.5")"),
                    "no number of trials"},
        RefusalCase{"trials_of_classification",
                    Categories(R"(modelType="generalizedLinear" linkFunction="logit" distribution="binomial"
                        trialsVariable="n" targetReferenceCategory="no")",
                               Line("1", "2", "yes")),
                    "no meaning for a classification"}),
    KelTest::CaseName());

Document With(const std::string& part, const std::string& replacement) {
  Document document = Linear("");
  const std::size_t at = document.body.find(part);
  document.body.replace(at, part.size(), replacement);
  return document;
}

Document Factor(const std::string& content, const std::string& value = "a") {
  Parts parts = Line("1", "2");
  parts.factors = "<Predictor name=\"s\">" + content + "</Predictor>";
  parts.products += Product("p1", "s", value);
  return General(R"(modelType="regression")", parts);
}

INSTANTIATE_TEST_SUITE_P(
    Parameters, GeneralRegressionRefusal,
    testing::Values(
        RefusalCase{"no_list", With("<ParameterList>" + Parameter("p0") + Parameter("p1") + "</ParameterList>", ""),
                    "<ParameterList> is missing"},
        RefusalCase{"parameter_twice", With(Parameter("p0"), Parameter("p1")), "of another parameter"},
        RefusalCase{"no_parameter_of_product", With("parameterName=\"p1\"", "parameterName=\"p2\""),
                    "<PPCell parameterName=\"p2\">"},
        RefusalCase{"no_parameter_of_coefficient", With(Coefficient("p0", "1"), Coefficient("p7", "1")),
                    "<PCell parameterName=\"p7\">"},
        RefusalCase{"reference_point", With("name=\"p0\"", R"(name="p0" referencePoint="INF")"), "isn't finite"},
        RefusalCase{"no_predictor", With("predictorName=\"x\"", "predictorName=\"n\""), "in neither FactorList"},
        RefusalCase{"unknown_field", With(Predictor("x"), Predictor("x") + Predictor("q")), "no field"},
        RefusalCase{"predictor_twice", With(Predictor("x"), Predictor("x") + Predictor("x")), "another predictor"},
        RefusalCase{"covariate_of_texts", With(Predictor("x"), Predictor("x") + Predictor("s")), "needs numbers"},
        RefusalCase{"matrix_of_covariate", With(Predictor("x"), R"(<Predictor name="x"><Matrix/></Predictor>)"),
                    "is a covariate"},
        RefusalCase{"exponent", With("PPCell value=\"1\"", "PPCell value=\"one\""), "not a number"},
        RefusalCase{"beta", With("beta=\"1\"", "beta=\"NaN\""), "isn't finite"},
        RefusalCase{"coefficient_twice", With(Coefficient("p0", "1"), Coefficient("p1", "1")), "already"},
        RefusalCase{"no_coefficient", General(R"(modelType="regression")", OfX("")), "has no <PCell>"},
        RefusalCase{
            "second_category",
            General(R"(modelType="regression")", OfX(Coefficient("p0", "1", "yes") + Coefficient("p1", "1", "no"))),
            "is a second category"},
        RefusalCase{"unknown_element", With(Parameter("p0"), Parameter("p0") + "<Spline/>"), "<Spline> line"},
        RefusalCase{"hazards_elsewhere", With("</ParamMatrix>", "</ParamMatrix><BaseCumHazardTables/>"),
                    "is for a CoxRegression"},
        RefusalCase{"matrix_of_other_rows", Factor("<Matrix><Array>1 2</Array><Array>3 4</Array></Matrix>"),
                    "3 categories"},
        RefusalCase{"matrix_of_few_columns",
                    Factor("<Matrix><Array>1</Array><Array>2</Array><Array>3</Array></Matrix>"), "3 categories"},
        RefusalCase{"category_without_column",
                    Factor("<Matrix><Array>1 0</Array><Array>0 1</Array><Array>0 0</Array></Matrix>", "c"),
                    "has no column"},
        RefusalCase{"two_matrices", Factor("<Matrix/><Matrix/>"), "is a second one in <Predictor>"},
        RefusalCase{"two_category_lists", Factor("<Categories/><Categories/><Matrix/>"), "is a second one"},
        RefusalCase{"standard_error",
                    With("<ParameterList>",
                         "<Output><OutputField name=\"e\" feature=\"standardError\"/></Output>"
                         "<PCovMatrix/><ParameterList>"),
                    "is not supported: nothing is computed of the <PCovMatrix>"},
        RefusalCase{"category_listed_twice", Factor(R"(<Categories><Category value="a"/><Category value="a"/>
                        </Categories><Matrix><Array>1</Array><Array>0</Array></Matrix>)"),
                    "lists a category twice"}),
    KelTest::CaseName());

Document Multinomial(const std::string& attributes, const std::string& coefficients) {
  return Categories(R"(modelType="multinomialLogistic" )" + attributes, OfX(coefficients));
}
Document OrdinalOf(const std::string& coefficients, const std::string& attributes = "") {
  return Categories(R"(modelType="ordinalMultinomial" cumulativeLink="logit" )" + attributes, OfX(coefficients));
}
Document BinaryOf(const std::string& coefficients, const std::string& attributes = "") {
  return Categories(R"(modelType="generalizedLinear" linkFunction="logit" )" + attributes, OfX(coefficients));
}
std::string Intercepts(const std::vector<const char*>& categories) {
  std::string text;
  for (const char* category : categories) text += Coefficient("p0", "1", category);
  return text;
}

INSTANTIATE_TEST_SUITE_P(
    Categories, GeneralRegressionRefusal,
    testing::Values(
        RefusalCase{"unknown", Multinomial("", Intercepts({"yes", "no", "never"})), "targetCategory=\"never\""},
        RefusalCase{"unknown_reference", Multinomial(R"(targetReferenceCategory="never")", Intercepts({"yes"})),
                    "isn't a category of the target"},
        RefusalCase{"cells_of_the_reference", Multinomial(R"(targetReferenceCategory="no")", Intercepts({"no"})),
                    "has parameters of its own"},
        RefusalCase{"no_reference", Multinomial("", Intercepts({"yes", "no", "maybe"})), "no reference category"},
        RefusalCase{"several_references", Multinomial("", Intercepts({"yes"})), "needs targetReferenceCategory"},
        RefusalCase{"ordinal_without_the_first", OrdinalOf(Intercepts({"no"})), "category 'yes'"},
        RefusalCase{"ordinal_with_the_last", OrdinalOf(Intercepts({"yes", "no", "maybe"})), "of the last value"},
        RefusalCase{"ordinal_reference", OrdinalOf(Intercepts({"yes", "no"}), R"(targetReferenceCategory="no")"),
                    "isn't the last value"},
        RefusalCase{"binary_of_two", BinaryOf(Intercepts({"yes", "no"})), "parameters of two categories"},
        RefusalCase{"binary_of_none", BinaryOf(Coefficient("p0", "1")), "of which category"},
        RefusalCase{"binary_of_three", BinaryOf(Intercepts({"yes"})), "which two of its 3"},
        RefusalCase{"binary_reference", BinaryOf(Intercepts({"yes"}), R"(targetReferenceCategory="yes")"),
                    "has parameters of its own"}),
    KelTest::CaseName());

Document CoxOf(const std::string& tables, const std::string& attributes = R"(endTimeVariable="n")") {
  return General(R"(modelType="CoxRegression" )" + attributes, Cox(tables));
}
std::string Steps(const std::string& cells) {
  return "<BaseCumHazardTables maxTime=\"9\">" + cells + "</BaseCumHazardTables>";
}

INSTANTIATE_TEST_SUITE_P(
    Cox, GeneralRegressionRefusal,
    testing::Values(
        RefusalCase{"classification", Categories(kCox, Cox()), "is for a regression"},
        RefusalCase{"no_time", CoxOf(Steps(R"(<BaselineCell time="1" cumHazard="1"/>)"), ""),
                    "\"endTimeVariable\" is missing"},
        RefusalCase{"no_tables", CoxOf(""), "<BaseCumHazardTables> is missing"},
        RefusalCase{"no_cells", CoxOf(Steps("")), "has no <BaselineCell>"},
        RefusalCase{"no_hazard", CoxOf(Steps(R"(<BaselineCell time="1"/>)")), "\"cumHazard\" is missing"},
        RefusalCase{"negative_hazard", CoxOf(Steps(R"(<BaselineCell time="1" cumHazard="-1"/>)")), "is below 0"},
        RefusalCase{"time_twice", CoxOf(Steps(R"(<BaselineCell time="1" cumHazard="1"/>
                        <BaselineCell time="1" cumHazard="2"/>)")),
                    "same time"},
        RefusalCase{"strata_without_variable", CoxOf(kTables), "<BaselineStratum> line"},
        RefusalCase{"variable_without_strata", General(kCox, Cox(Steps(""))), "<BaselineStratum> is missing"},
        RefusalCase{"stratum_twice", General(kCox, Cox(R"(<BaseCumHazardTables>
                        <BaselineStratum value="a" maxTime="2"><BaselineCell time="1" cumHazard="1"/></BaselineStratum>
                        <BaselineStratum value="a" maxTime="2"><BaselineCell time="1" cumHazard="1"/></BaselineStratum>
                        </BaseCumHazardTables>)")),
                    "of the same value"},
        RefusalCase{"no_max_time", CoxOf(R"(<BaseCumHazardTables><BaselineCell time="1" cumHazard="1"/>
                        </BaseCumHazardTables>)"),
                    "\"maxTime\" is missing"}),
    KelTest::CaseName());

}  // namespace
}  // namespace TorvaneTest
