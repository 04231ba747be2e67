#include <algorithm>
#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <vector>

#include "tests/plugins/torvane/ModelHarness.h"
#include "tests/support/CaseName.h"

namespace TorvaneTest {
namespace {

const Value kNull = Value::NULL_VALUE;
const double kInfinity = std::numeric_limits<double>::infinity();
const double kPi = std::acos(-1.0);

std::string Text(double number) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.17g", number);
  return buffer;
}

std::string Input(const std::string& id, const std::string& expression) {
  return "<NeuralInput id=\"" + id + "\"><DerivedField optype=\"continuous\" dataType=\"double\">" + expression +
         "</DerivedField></NeuralInput>";
}

std::string Inputs(const std::string& inputs) { return "<NeuralInputs>" + inputs + "</NeuralInputs>\n"; }
// The inputs "x" and "f" of the harness, under their names.
const std::string kTwoInputs = Inputs(Input("x", R"(<FieldRef field="x"/>)") + Input("f", R"(<FieldRef field="f"/>)"));

using Connections = std::vector<std::pair<std::string, double>>;

std::string Neuron(const std::string& id, double bias, const Connections& connections,
                   const std::string& attributes = "") {
  std::string text = "<Neuron id=\"" + id + "\" bias=\"" + Text(bias) + "\" " + attributes + ">";
  for (const auto& [from, weight] : connections) {
    text += "<Con from=\"" + from + "\" weight=\"" + Text(weight) + "\"/>";
  }
  return text + "</Neuron>\n";
}

std::string Layer(const std::string& neurons, const std::string& attributes = "") {
  return "<NeuralLayer " + attributes + ">" + neurons + "</NeuralLayer>\n";
}

std::string Output(const std::string& neuron, const std::string& expression) {
  return "<NeuralOutput outputNeuron=\"" + neuron + "\"><DerivedField optype=\"continuous\" dataType=\"double\">" +
         expression + "</DerivedField></NeuralOutput>";
}

std::string Outputs(const std::string& outputs) { return "<NeuralOutputs>" + outputs + "</NeuralOutputs>"; }

std::string CategoryOutput(const std::string& neuron, const std::string& category) {
  return Output(neuron, "<NormDiscrete field=\"y\" value=\"" + category + "\"/>");
}

std::string NumberOutput(const std::string& neuron) { return Outputs(Output(neuron, R"(<FieldRef field="t"/>)")); }

Document Regression(const std::string& body, const std::string& attributes = R"(activationFunction="identity")") {
  return {.kind = "NeuralNetwork", .function = "regression", .attributes = attributes, .body = body};
}

Document Classification(const std::string& body, const std::string& attributes = R"(activationFunction="identity")") {
  return {.kind = "NeuralNetwork", .attributes = attributes, .body = body};
}

// One neuron with Z = 0.25 + 2 x.
Document OneNeuron(const std::string& attributes, const std::string& ofLayer = "", const std::string& ofNeuron = "") {
  return Regression(Inputs(Input("x", R"(<FieldRef field="x"/>)")) +
                        Layer(Neuron("1", 0.25, {{"x", 2.0}}, ofNeuron), ofLayer) + NumberOutput("1"),
                    attributes);
}

// --- Layers ---

// R's nnet, see oracle/neural.R.
const std::string kHiddenLayer =
    Layer(Neuron("h1", 0.1, {{"x", 0.5}, {"f", -0.4}}) + Neuron("h2", -0.2, {{"x", 0.3}, {"f", 0.8}}) +
              Neuron("h3", 0.7, {{"x", -0.6}, {"f", 0.9}}),
          R"(numberOfNeurons="3" activationFunction="logistic")");
const double kNnetRows[4][2] = {{0.5, -1.0}, {2.0, 0.25}, {0.0, 0.0}, {-3.0, 1.5}};

TEST(NeuralNetwork, LinearOutput_AgreesWithNnet) {
  const auto scorer =
      Load(Regression(kTwoInputs + kHiddenLayer + Layer(Neuron("o", 0.4, {{"h1", 1.5}, {"h2", -2.0}, {"h3", 0.25}})) +
                      NumberOutput("o")));
  const double expected[] = {0.91428750091057187, 0.31319525962385453, 0.45418371888540715, -0.22636307805437375};
  for (int i = 0; i < 4; ++i) {
    const auto out = scorer.Score({{"x", kNnetRows[i][0]}, {"f", kNnetRows[i][1]}});
    EXPECT_NEAR(Number(out, "prediction"), expected[i], 1e-15) << i;
  }
}

TEST(NeuralNetwork, ConnectionsFromEarlierLayers_AgreeWithNnet) {
  const auto scorer =
      Load(Regression(kTwoInputs + kHiddenLayer +
                      Layer(Neuron("o", 0.4, {{"h1", 1.5}, {"h2", -2.0}, {"h3", 0.25}, {"x", 0.125}, {"f", -0.75}})) +
                      NumberOutput("o")));
  const double expected[] = {1.72678750091057198, 0.37569525962385453, 0.45418371888540715, -1.72636307805437372};
  for (int i = 0; i < 4; ++i) {
    const auto out = scorer.Score({{"x", kNnetRows[i][0]}, {"f", kNnetRows[i][1]}});
    EXPECT_NEAR(Number(out, "prediction"), expected[i], 1e-15) << i;
  }
}

TEST(NeuralNetwork, Softmax_AgreesWithNnet) {
  const std::string body =
      kTwoInputs + kHiddenLayer +
      Layer(Neuron("o1", 0.3, {{"h1", 1.0}, {"h2", -1.0}, {"h3", 0.5}}) +
                Neuron("o2", -0.1, {{"h1", 0.2}, {"h2", 0.6}, {"h3", -1.2}}) +
                Neuron("o3", 0.05, {{"h1", -0.7}, {"h2", 0.9}, {"h3", 1.1}}),
            R"(normalizationMethod="softmax")") +
      Outputs(CategoryOutput("o1", "no") + CategoryOutput("o2", "yes") + CategoryOutput("o3", "maybe"));
  const double expected[4][3] = {{0.53342836513519198, 0.176488419806552305, 0.29008321505825557},
                                 {0.40052205175549227, 0.201767495989179174, 0.39771045225532847},
                                 {0.41474215700574163, 0.120544630306949965, 0.46471321268730831},
                                 {0.22883455199254299, 0.061131385591176694, 0.71003406241628031}};
  const char* const winners[] = {"no", "no", "maybe", "maybe"};
  const auto scorer = Load(Classification(
      R"(<Output><OutputField name="id" feature="entityId"/><OutputField name="copy" feature="transformedValue">
         <FieldRef field="id"/></OutputField></Output>)" +
      body));
  for (int i = 0; i < 4; ++i) {
    const auto out = scorer.Score({{"x", kNnetRows[i][0]}, {"f", kNnetRows[i][1]}});
    EXPECT_NEAR(Probability(out, "no"), expected[i][0], 1e-15) << i;
    EXPECT_NEAR(Probability(out, "yes"), expected[i][1], 1e-15) << i;
    EXPECT_NEAR(Probability(out, "maybe"), expected[i][2], 1e-15) << i;
    EXPECT_EQ(Shown(out, "prediction"), winners[i]);
    EXPECT_EQ(Shown(out, "id"), winners[i] == std::string("no") ? "o1" : "o3");
    EXPECT_EQ(Shown(out, "copy"), Shown(out, "id"));
  }
}

struct ActivationCase {
  const char* name;
  double (*function)(double);
};

const ActivationCase kActivations[] = {
    {"threshold", [](double z) { return z > 0.0 ? 1.0 : 0.0; }},
    {"logistic", [](double z) { return 1.0 / (1.0 + std::exp(-z)); }},
    {"tanh", [](double z) { return (1.0 - std::exp(-2.0 * z)) / (1.0 + std::exp(-2.0 * z)); }},
    {"identity", [](double z) { return z; }},
    {"exponential", [](double z) { return std::exp(z); }},
    {"reciprocal", [](double z) { return 1.0 / z; }},
    {"square", [](double z) { return z * z; }},
    {"Gauss", [](double z) { return std::exp(-z * z); }},
    {"sine", [](double z) { return std::sin(z); }},
    {"cosine", [](double z) { return std::cos(z); }},
    {"Elliott", [](double z) { return z / (1.0 + std::fabs(z)); }},
    {"arctan", [](double z) { return 2.0 * std::atan(z) / kPi; }},
    {"rectifier", [](double z) { return z > 0.0 ? z : 0.0; }},
};

TEST(NeuralNetwork, ActivationFunctions_AreThoseOfTheStandard) {
  for (const ActivationCase& row : kActivations) {
    const auto ofNetwork = Load(OneNeuron("activationFunction=\"" + std::string(row.name) + "\""));
    const auto ofLayer =
        Load(OneNeuron(R"(activationFunction="identity")", "activationFunction=\"" + std::string(row.name) + "\""));
    for (const double x : {-2.0, -0.25, 0.0, 0.75, 3.5}) {
      const double expected = row.function(0.25 + 2.0 * x);
      EXPECT_NEAR(Number(ofNetwork.Score({{"x", x}}), "prediction"), expected, 1e-13) << row.name << " " << x;
      EXPECT_NEAR(Number(ofLayer.Score({{"x", x}}), "prediction"), expected, 1e-13) << row.name << " " << x;
    }
  }
}

TEST(NeuralNetwork, TanhFarAway_IsOne) {
  const auto scorer = Load(OneNeuron(R"(activationFunction="tanh")"));
  EXPECT_EQ(Number(scorer.Score({{"x", -1000.0}}), "prediction"), -1.0);
}

TEST(NeuralNetwork, Threshold_IsThatOfTheLayerElseOfTheNetwork) {
  const std::string ofNetwork = R"(activationFunction="threshold" threshold="2.25")";
  for (const auto& [ofLayer, border] : {std::pair("", 1.0), std::pair(R"(threshold="4.25")", 2.0)}) {
    const auto scorer = Load(OneNeuron(ofNetwork, ofLayer));
    EXPECT_EQ(Number(scorer.Score({{"x", border}}), "prediction"), 0.0);  // Z must be above it
    EXPECT_EQ(Number(scorer.Score({{"x", border + 0.125}}), "prediction"), 1.0);
  }
}

// Z = ((x - 2)^2 + (f + 1)^2) / (2 width^2), activation = altitude^2 exp(-Z); the bias plays no part.
TEST(NeuralNetwork, RadialBasis_TakesTheNearestWidthAndAltitude) {
  struct Case {
    const char* ofNetwork;
    const char* ofLayer;
    const char* ofNeuron;
    double width;
    double altitude;
  };
  const Case cases[] = {{R"(width="0.5")", "", "", 0.5, 1.0},
                        {R"(width="0.5" altitude="3")", R"(width="2")", "", 2.0, 3.0},
                        {R"(width="0.5" altitude="3")", R"(altitude="0.5")", R"(width="1.5")", 1.5, 0.5},
                        {"", R"(width="9" altitude="9")", R"(width="4" altitude="2")", 4.0, 2.0}};
  for (const Case& row : cases) {
    for (const bool isDense : {true, false}) {
      const Connections connections =
          isDense ? Connections{{"x", 2.0}, {"f", -1.0}} : Connections{{"f", -1.0}, {"x", 2.0}};
      const auto scorer = Load(
          Regression(kTwoInputs + Layer(Neuron("1", 7.0, connections, row.ofNeuron), row.ofLayer) + NumberOutput("1"),
                     std::string(R"(activationFunction="radialBasis" )") + row.ofNetwork));
      const double z = (0.25 + 2.25) / (2.0 * row.width * row.width);
      EXPECT_NEAR(Number(scorer.Score({{"x", 2.5}, {"f", 0.5}}), "prediction"),
                  row.altitude * row.altitude * std::exp(-z), 1e-14);
    }
  }
}

// Two layers of two neurons; the second one swaps what it gets.
std::string TwoLayers(const std::string& ofFirst, const std::string& ofSecond) {
  return kTwoInputs + Layer(Neuron("a", 0, {{"x", 1.0}}) + Neuron("b", 0, {{"f", 1.0}}), ofFirst) +
         Layer(Neuron("c", 0, {{"b", 1.0}}) + Neuron("d", 0, {{"a", 1.0}}), ofSecond) +
         Outputs(CategoryOutput("c", "yes") + CategoryOutput("d", "no"));
}

TEST(NeuralNetwork, Normalization_IsOfItsLayerOrOfTheNetworksLast) {
  const std::string simplemax = R"(normalizationMethod="simplemax")";
  const std::string softmax = R"(normalizationMethod="softmax")";
  const std::string none = R"(normalizationMethod="none")";
  const double e = std::exp(1.0);
  struct Case {
    std::string ofNetwork, ofFirst, ofSecond;
    double yes, no;  // of x = 1, f = 3
  };
  const Case cases[] = {{none, "", "", 3.0, 1.0},
                        {"", simplemax, "", 0.75, 0.25},
                        {simplemax, "", "", 0.75, 0.25},
                        {softmax, "", none, 3.0, 1.0},
                        {softmax, "", "", e * e / (e * e + 1.0), 1.0 / (e * e + 1.0)},  // hidden layers have none
                        {simplemax, softmax, "", e * e / (e * e + 1.0), 1.0 / (e * e + 1.0)}};
  for (const Case& row : cases) {
    const auto out =
        Load(Classification(TwoLayers(row.ofFirst, row.ofSecond), R"(activationFunction="identity" )" + row.ofNetwork))
            .Score({{"x", 1.0}, {"f", 3.0}});
    EXPECT_NEAR(Probability(out, "yes"), row.yes, 1e-15) << row.ofNetwork << row.ofFirst << row.ofSecond;
    EXPECT_NEAR(Probability(out, "no"), row.no, 1e-15) << row.ofNetwork << row.ofFirst << row.ofSecond;
  }
}

// Layers of all sizes against plain loops in the order of the document, to the last bit. Every third neuron's
// connections stand backwards in one of the two documents, so that its layers are read as lists.
TEST(NeuralNetwork, LayersOfAllSizes_AreSummedInTheOrderOfTheDocument) {
  std::mt19937 random(5);
  std::uniform_real_distribution<double> number(-1.0, 1.0);
  for (const std::size_t width : {1, 2, 3, 5, 7, 8, 9, 15, 16, 23}) {
    for (const bool isDense : {true, false}) {
      std::string body = kTwoInputs;
      std::vector<std::string> ids = {"x", "f"};
      std::vector<double> values = {0.625, -0.375};
      for (int layer = 0; layer < 3; ++layer) {
        std::string neurons;
        std::vector<std::string> nextIds;
        std::vector<double> nextValues;
        for (std::size_t i = 0; i < width; ++i) {
          Connections connections;
          for (const std::string& id : ids) connections.emplace_back(id, number(random));
          std::vector<double> terms;
          for (std::size_t k = 0; k < ids.size(); ++k) terms.push_back(values[k] * connections[k].second);
          if (!isDense && i % 3 == 0) {
            std::reverse(connections.begin(), connections.end());
            std::reverse(terms.begin(), terms.end());
          }
          const double bias = number(random);
          double sum = 0.0;
          for (const double term : terms) sum += term;
          nextIds.push_back(std::to_string(layer) + "," + std::to_string(i));
          nextValues.push_back(std::tanh(sum + bias));
          neurons += Neuron(nextIds.back(), bias, connections);
        }
        body += Layer(neurons);
        ids = nextIds;
        values = nextValues;
      }
      const auto scorer = Load(Regression(body + NumberOutput(ids.back()), R"(activationFunction="tanh")"));
      EXPECT_EQ(Number(scorer.Score({{"x", 0.625}, {"f", -0.375}}), "prediction"), values.back()) << width;
    }
  }
}

// --- Inputs ---

TEST(NeuralNetwork, Inputs_AreExpressionsOfFields) {
  const auto scorer =
      Load(Regression(Inputs(Input("i1", R"(<NormDiscrete field="s" value="b"/>)") +
                             Input("i2", R"(<NormContinuous field="x" mapMissingTo="5"><LinearNorm orig="0" norm="1"/>
                            <LinearNorm orig="2" norm="2"/></NormContinuous>)") +
                             R"(<NeuralInput id="i3"><DerivedField optype="categorical" dataType="string">
                <NormDiscrete field="o" value="mid"/></DerivedField></NeuralInput>)") +
                      Layer(Neuron("1", 0.0, {{"i1", 100.0}, {"i2", 1.0}, {"i3", 1000.0}})) + NumberOutput("1")));
  EXPECT_EQ(Number(scorer.Score({{"s", "b"}, {"x", 1.0}, {"o", "low"}}), "prediction"), 101.5);
  EXPECT_EQ(Number(scorer.Score({{"s", "a"}, {"x", kNull}, {"o", "mid"}}), "prediction"), 1005.0);
  EXPECT_TRUE(scorer.Predict({{"s", kNull}, {"x", 1.0}, {"o", "mid"}}).IsNull());
}

TEST(NeuralNetwork, InvalidInputExpression_GivesNoResultNorTheTargetsDefault) {
  const auto scorer =
      Load(Regression(R"(<Targets><Target field="t"><TargetValue defaultValue="7"/></Target></Targets>)" +
                      Inputs(Input("1", R"(<Apply function="/"><Constant>1</Constant><FieldRef field="x"/></Apply>)")) +
                      Layer(Neuron("2", 0.0, {{"1", 1.0}})) + NumberOutput("2")));
  EXPECT_EQ(Number(scorer.Score({{"x", 4.0}}), "prediction"), 0.25);
  EXPECT_TRUE(scorer.Predict({{"x", 0.0}}).IsNull());
  EXPECT_EQ(Number(scorer.Score({{"x", kNull}}), "prediction"), 7.0);
}

// An infinity minus an infinity must not become a number by a comparison.
TEST(NeuralNetwork, SumThatIsNoNumber_GivesNoResult) {
  for (const char* function : {"threshold", "rectifier", "identity", "Elliott", "logistic"}) {
    const std::string body = kTwoInputs +
                             Layer(Neuron("a", 0, {{"x", 1.0}, {"f", -1.0}}) + Neuron("b", 0, {{"x", 0.0}, {"f", 0.0}}),
                                   "activationFunction=\"" + std::string(function) + "\"") +
                             Outputs(CategoryOutput("a", "yes") + CategoryOutput("b", "no"));
    const auto out = Load(Classification(body)).Score({{"x", kInfinity}, {"f", kInfinity}});
    EXPECT_EQ(Shown(out, "prediction"), "null") << function;
  }
}

// --- Outputs ---

std::string Points(const std::string& field, const std::string& points, const std::string& attributes = "") {
  return "<NormContinuous field=\"" + field + "\" " + attributes + ">" + points + "</NormContinuous>";
}

const char* const kThreePoints = R"(<LinearNorm orig="0.01" norm="0"/><LinearNorm orig="3.07897" norm="0.5"/>
                                    <LinearNorm orig="11.44" norm="1"/>)";
const char* const kFallingPoints =
    R"(<LinearNorm orig="0" norm="10"/><LinearNorm orig="1" norm="4"/><LinearNorm orig="5" norm="0"/>)";

TEST(NeuralNetwork, NormContinuousOfAnOutput_IsTurnedBack) {
  struct Case {
    const char* points;
    const char* attributes;
    double neuron;
    double expected;  // NaN: none
  };
  const Case cases[] = {
      {kThreePoints, "", 0.047247, 0.01 + 0.047247 / 0.5 * 3.06897},     // 0.300
      {kThreePoints, "", 0.741838, 3.07897 + 0.241838 / 0.5 * 8.36103},  // 7.123
      {kThreePoints, "", 0.5, 3.07897},
      {kThreePoints, "", -0.25, 0.01 - 0.5 * 3.06897},
      {kThreePoints, R"(outliers="asExtremeValues")", -0.25, 0.01},
      {kThreePoints, R"(outliers="asExtremeValues")", 1.25, 11.44},
      {kThreePoints, R"(outliers="asMissingValues")", 1.25, NAN},
      {kFallingPoints, "", 7.0, 0.5},
      {kFallingPoints, "", 1.0, 4.0},
      {kFallingPoints, "", -1.0, 6.0},
  };
  for (const Case& row : cases) {
    const auto scorer =
        Load(Regression(Inputs(Input("x", R"(<FieldRef field="x"/>)")) + Layer(Neuron("1", 0.0, {{"x", 1.0}})) +
                        Outputs(Output("1", Points("t", row.points, row.attributes)))));
    const Value prediction = scorer.Predict({{"x", row.neuron}});
    ASSERT_EQ(prediction.IsNull(), std::isnan(row.expected)) << row.neuron;
    if (prediction.IsNull()) continue;
    EXPECT_NEAR(prediction.GetReal(), row.expected, 1e-12) << row.neuron;
  }
}

// The output refers to a field of the model, that to one of the document: t -> (t - 10) / 2 -> 3 + 4 of that.
TEST(NeuralNetwork, OutputOfNamedDerivedFields_IsTurnedBackStepByStep) {
  Document document =
      Regression(R"(<LocalTransformations><DerivedField name="outer" optype="continuous" dataType="double">)" +
                 Points("inner", R"(<LinearNorm orig="0" norm="3"/><LinearNorm orig="1" norm="7"/>)") +
                 R"(</DerivedField></LocalTransformations>)" + Inputs(Input("x", R"(<FieldRef field="x"/>)")) +
                 Layer(Neuron("1", 0.0, {{"x", 1.0}})) + Outputs(Output("1", R"(<FieldRef field="outer"/>)")));
  document.transformations =
      R"(<TransformationDictionary><DerivedField name="inner" optype="continuous" dataType="double">)" +
      Points("t", R"(<LinearNorm orig="10" norm="0"/><LinearNorm orig="12" norm="1"/>)") +
      "</DerivedField></TransformationDictionary>";
  EXPECT_NEAR(Number(Load(document).Score({{"x", 13.0}}), "prediction"), 15.0, 1e-14);  // (13 - 3) / 4 = 2.5, 10 + 5
}

TEST(NeuralNetwork, CategoriesOfNamedDerivedFields_AreFound) {
  Document document = Classification(kTwoInputs + Layer(Neuron("a", 0, {{"x", 1.0}}) + Neuron("b", 0, {{"f", 1.0}})) +
                                     Outputs(Output("a", R"(<FieldRef field="isMaybe"/>)") +
                                             Output("b", R"(<NormDiscrete field="alias" value="yes"/>)")));
  document.transformations = R"(<TransformationDictionary>
      <DerivedField name="isMaybe" optype="continuous" dataType="double"><NormDiscrete field="y" value="maybe"/></DerivedField>
      <DerivedField name="alias" optype="categorical" dataType="string"><FieldRef field="y"/></DerivedField>
      </TransformationDictionary>)";
  const auto scorer = Load(document);
  const auto out = scorer.Score({{"x", 0.5}, {"f", 0.25}});
  EXPECT_EQ(Shown(out, "prediction"), "maybe");
  EXPECT_EQ(Probability(out, "yes"), 0.25);
  EXPECT_EQ(Probability(out, "no"), 0.0);                                           // it has no neuron
  EXPECT_EQ(Shown(scorer.Score({{"x", 0.5}, {"f", 0.5}}), "prediction"), "maybe");  // the first output wins a tie
}

TEST(NeuralNetwork, TargetThatTheSchemaDoesntList_IsThatOfTheOutputs) {
  std::string text = OneNeuron(R"(activationFunction="identity")").Text();
  const std::string target = R"(<MiningField name="t" usageType="predicted"/>)";
  text.replace(text.find(target), target.size(), "");
  EXPECT_EQ(TryLoad(text).Predict({{"x", 1.0}}).GetReal(), 2.25);
}

// The first target is the prediction; t = 10 + 2 z of neuron a, y of neurons a and b.
Document TwoTargets(const std::string& outputs) {
  Document document = Classification(
      R"(<Output><OutputField name="number" targetField="t"/><OutputField name="share" targetField="y"
         feature="probability"/><OutputField name="id" targetField="y" feature="entityId"/></Output>)" +
      kTwoInputs + Layer(Neuron("a", 0, {{"x", 1.0}}) + Neuron("b", 0, {{"f", 1.0}})) + Outputs(outputs));
  document.schema += R"(<MiningField name="t" usageType="target"/>)";
  return document;
}

const std::string kNumberOfTwo =
    Output("a", R"(<NormContinuous field="t"><LinearNorm orig="10" norm="0"/><LinearNorm orig="12" norm="1"/>
                   </NormContinuous>)");

TEST(NeuralNetwork, SeveralTargets_AreReadFromTheirOutputs) {
  const auto scorer = Load(TwoTargets(CategoryOutput("a", "yes") + kNumberOfTwo + CategoryOutput("b", "no")));
  const auto out = scorer.Score({{"x", 0.25}, {"f", 0.5}});
  EXPECT_EQ(Number(out, "prediction"), 10.5);
  EXPECT_EQ(Number(out, "number"), 10.5);
  EXPECT_EQ(Shown(out, "y"), "no");
  EXPECT_EQ(Number(out, "share"), 0.5);
  EXPECT_EQ(Shown(out, "id"), "b");
  EXPECT_EQ(Shown(scorer.Score({{"x", kNull}, {"f", 0.5}}), "y"), "null");
}

// --- Refusals ---

struct RefusalCase {
  const char* name;
  Document document;
  const char* reason;
};

class NeuralRefusal : public testing::TestWithParam<RefusalCase> {};

TEST_P(NeuralRefusal, Document_IsRefusedWithAReason) {
  EXPECT_NE(ReasonOf(GetParam().document).find(GetParam().reason), std::string::npos) << ReasonOf(GetParam().document);
}

const std::string kOneInput = Inputs(Input("x", R"(<FieldRef field="x"/>)"));
const std::string kOneLayer = Layer(Neuron("1", 0.0, {{"x", 1.0}}));

Document OfInput(const std::string& expression) {
  return Regression(Inputs(Input("x", expression)) + kOneLayer + NumberOutput("1"));
}
Document OfLayer(const std::string& layer, const std::string& attributes = R"(activationFunction="identity")") {
  return Regression(kOneInput + layer + NumberOutput("1"), attributes);
}
Document OfOutputs(const std::string& outputs) { return Regression(kOneInput + kOneLayer + Outputs(outputs)); }
Document OfCategories(const std::string& outputs) { return Classification(kOneInput + kOneLayer + Outputs(outputs)); }
Document OfPoints(const std::string& points) { return OfOutputs(Output("1", Points("t", points))); }

Document Cycle() {
  Document document = OfOutputs(Output("1", R"(<FieldRef field="d"/>)"));
  document.transformations = R"(<TransformationDictionary><DerivedField name="d" optype="continuous" dataType="double">
      <FieldRef field="d"/></DerivedField></TransformationDictionary>)";
  return document;
}

INSTANTIATE_TEST_SUITE_P(
    Table, NeuralRefusal,
    testing::Values(
        RefusalCase{"no_inputs", Regression(kOneLayer + NumberOutput("1")), "NeuralInputs"},
        RefusalCase{"second_inputs", Regression(kOneInput + kOneInput + kOneLayer + NumberOutput("1")), "a second one"},
        RefusalCase{"input_of_text",
                    Regression(R"(<NeuralInputs><NeuralInput id="x"><DerivedField dataType="string"
                        optype="categorical"><FieldRef field="s"/></DerivedField></NeuralInput></NeuralInputs>)" +
                               kOneLayer + NumberOutput("1")),
                    "gives a text"},
        RefusalCase{"input_of_unknown_field", OfInput(R"(<FieldRef field="q"/>)"), "no such field"},
        RefusalCase{"input_without_expression", OfInput(""), "has no expression"},
        RefusalCase{"input_of_two_expressions", OfInput(R"(<FieldRef field="x"/><FieldRef field="n"/>)"),
                    "has another expression"},
        RefusalCase{"input_of_marked_values", OfInput(R"(<FieldRef field="x"/><Value value="1" property="missing"/>)"),
                    "has no meaning in a derived field"},
        RefusalCase{"input_count",
                    Regression("<NeuralInputs numberOfInputs=\"2\">" + Input("x", R"(<FieldRef field="x"/>)") +
                               "</NeuralInputs>" + kOneLayer + NumberOutput("1")),
                    "isn't what is there: 1"},
        RefusalCase{"no_layer", OfLayer(""), "NeuralLayer"}, RefusalCase{"no_neuron", OfLayer(Layer("")), "Neuron"},
        RefusalCase{"neuron_count", OfLayer(Layer(Neuron("1", 0.0, {{"x", 1.0}}), R"(numberOfNeurons="2")")),
                    "numberOfNeurons"},
        RefusalCase{"no_activation", OfLayer(kOneLayer, ""), "activationFunction"},
        RefusalCase{"unknown_activation", OfLayer(kOneLayer, R"(activationFunction="gauss")"), "Gauss, sine, cosine"},
        RefusalCase{"unknown_normalization",
                    OfLayer(Layer(Neuron("1", 0.0, {{"x", 1.0}}), R"(normalizationMethod="l2")")),
                    "none, simplemax, softmax"},
        RefusalCase{"infinite_threshold", OfLayer(Layer(Neuron("1", 0.0, {{"x", 1.0}}), R"(threshold="INF")")),
                    "isn't finite"},
        RefusalCase{"id_twice", OfLayer(Layer(Neuron("x", 0.0, {{"x", 1.0}}))), "of another input or neuron"},
        RefusalCase{"no_connection", OfLayer(Layer(Neuron("1", 0.0, {}))), "Con"},
        RefusalCase{"unknown_source", OfLayer(Layer(Neuron("1", 0.0, {{"q", 1.0}}))), "neither an input nor"},
        RefusalCase{"source_in_the_layer",
                    OfLayer(Layer(Neuron("0", 0.0, {{"x", 1.0}}) + Neuron("1", 0.0, {{"0", 1.0}}))),
                    "neither an input nor"},
        RefusalCase{"infinite_weight", OfLayer(Layer(R"(<Neuron id="1"><Con from="x" weight="INF"/></Neuron>)")),
                    "isn't finite"},
        RefusalCase{"no_width", OfLayer(kOneLayer, R"(activationFunction="radialBasis")"), "needs a width"},
        RefusalCase{"width_of_zero", OfLayer(kOneLayer, R"(activationFunction="radialBasis" width="0")"),
                    "can't be divided by"},
        RefusalCase{"altitude_of_zero",
                    OfLayer(kOneLayer, R"(activationFunction="radialBasis" width="1" altitude="0")"), "isn't above 0"},
        RefusalCase{"unknown_element", OfLayer(kOneLayer + "<NeuralDropout/>"), "<NeuralDropout> line"},
        RefusalCase{"no_outputs", Regression(kOneInput + kOneLayer), "NeuralOutputs"},
        RefusalCase{"output_of_an_input", OfOutputs(Output("x", R"(<FieldRef field="t"/>)")), "is no neuron"},
        RefusalCase{"output_of_another_target", OfOutputs(Output("1", R"(<FieldRef field="n"/>)")),
                    "isn't the target of the model"},
        RefusalCase{"target_without_output", TwoTargets(CategoryOutput("a", "yes") + CategoryOutput("b", "no")),
                    "has none for the target 't'"},
        RefusalCase{"output_of_a_function", OfOutputs(Output("1", R"(<Constant>1</Constant>)")), "read backwards"},
        RefusalCase{"two_numbers",
                    OfOutputs(Output("1", R"(<FieldRef field="t"/>)") + Output("1", R"(<FieldRef field="t"/>)")),
                    "a second output"},
        RefusalCase{"number_of_a_category", OfOutputs(Output("1", R"(<NormDiscrete field="t" value="1"/>)")),
                    "tells a category"},
        RefusalCase{"one_point", OfPoints(R"(<LinearNorm orig="0" norm="0"/>)"), "two LinearNorm"},
        RefusalCase{"level_points", OfPoints(R"(<LinearNorm orig="0" norm="0"/><LinearNorm orig="1" norm="0"/>)"),
                    "neither rises nor falls"},
        RefusalCase{"points_up_and_down", OfPoints(R"(<LinearNorm orig="0" norm="0"/><LinearNorm orig="1" norm="2"/>
                                                      <LinearNorm orig="2" norm="1"/>)"),
                    "neither rises nor falls"},
        RefusalCase{"cycle", Cycle(), "depend on themselves"},
        RefusalCase{"category_of_a_number", OfCategories(Output("1", R"(<FieldRef field="y"/>)")), "tells no category"},
        RefusalCase{"category_twice", OfCategories(CategoryOutput("1", "yes") + CategoryOutput("1", "yes")),
                    "has an output already"},
        RefusalCase{"one_category", OfCategories(CategoryOutput("1", "yes")), "two categories or more"}),
    KelTest::CaseName());

}  // namespace
}  // namespace TorvaneTest
