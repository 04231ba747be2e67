#include "benchmarks/Documents.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "scoring/common/KelDiagnostics.h"
#include "scoring/common/KelScoringConst.h"
#include "scoring/factory/ScoringFactory.h"

namespace Documents {
namespace {

namespace Const = KelScoring_20::KelScoringConst;

std::string Head(int inputs, const std::string& target) {
  std::string text =
      "<?xml version=\"1.0\"?>\n<PMML version=\"4.0\" xmlns=\"http://www.dmg.org/PMML-4_0\">\n<Header/>\n"
      "<DataDictionary>\n" +
      target;
  for (int i = 0; i < inputs; ++i) {
    text += "<DataField name=\"" + FieldName(i) + "\" optype=\"continuous\" dataType=\"double\"/>\n";
  }
  return text + "</DataDictionary>\n";
}

std::string MiningSchema(int inputs) {
  std::string text = "<MiningSchema>\n<MiningField name=\"y\" usageType=\"predicted\"/>\n";
  for (int i = 0; i < inputs; ++i) text += "<MiningField name=\"" + FieldName(i) + "\"/>\n";
  return text + "</MiningSchema>\n";
}

constexpr char kNumberTarget[] = "<DataField name=\"y\" optype=\"continuous\" dataType=\"double\"/>\n";
constexpr char kCategoryTarget[] =
    "<DataField name=\"y\" optype=\"categorical\" dataType=\"string\">"
    "<Value value=\"low\"/><Value value=\"middle\"/><Value value=\"high\"/></DataField>\n";

std::string Predictors(int terms, int table) {
  std::string text;
  for (int i = 0; i < terms; ++i) {
    text +=
        "<NumericPredictor name=\"" + FieldName(i) + "\" coefficient=\"" + NumberText(Coefficient(i, table)) + "\"/>\n";
  }
  return text;
}

constexpr const char* kCategories[] = {"low", "middle", "high"};

std::string TargetCount(const char* category, int count) {
  return std::string("<TargetValueCount value=\"") + category + "\" count=\"" + std::to_string(count) + "\"/>";
}

std::string NormalStats(int input) {
  std::string text = "<TargetValueStats>";
  for (int table = 0; table < 3; ++table) {
    text += std::string("<TargetValueStat value=\"") + kCategories[table] + "\"><GaussianDistribution mean=\"" +
            NumberText(Coefficient(input, table) - 1.0) + "\" variance=\"" + std::to_string(1 + table) +
            "\"/></TargetValueStat>";
  }
  return text + "</TargetValueStats>";
}

std::string BinCounts(int input) {
  std::string text = "<DerivedField optype=\"categorical\" dataType=\"string\"><Discretize field=\"" +
                     FieldName(input) +
                     "\"><DiscretizeBin binValue=\"0\"><Interval closure=\"openClosed\" rightMargin=\"-1\"/>"
                     "</DiscretizeBin><DiscretizeBin binValue=\"1\"><Interval closure=\"openClosed\" leftMargin=\"-1\" "
                     "rightMargin=\"1\"/></DiscretizeBin><DiscretizeBin binValue=\"2\"><Interval "
                     "closure=\"openOpen\" leftMargin=\"1\"/></DiscretizeBin></Discretize></DerivedField>";
  for (int bin = 0; bin < 3; ++bin) {
    text += "<PairCounts value=\"" + std::to_string(bin) + "\"><TargetValueCounts>";
    for (int table = 0; table < 3; ++table) text += TargetCount(kCategories[table], NaiveBayesCount(input, bin, table));
    text += "</TargetValueCounts></PairCounts>";
  }
  return text;
}

std::string SimplePredicate(const std::string& field, const std::string& comparison, double value) {
  return "<SimplePredicate field=\"" + field + "\" operator=\"" + comparison + "\" value=\"" + NumberText(value) +
         "\"/>";
}

// A perfectly regular tree: node n has children 2n + 1 and 2n + 2 while they are below 20, and splits on input
// n mod 4 at (n mod 5) - 2. A leaf's score is its number.
void AppendNode(std::string& text, int node, const std::string& predicate) {
  text += "<Node id=\"" + std::to_string(node) + "\" score=\"" + std::to_string(node) + "\">" + predicate + "\n";
  const std::string field = FieldName(node % 4);
  const std::string split = std::to_string(node % 5 - 2);
  const char* operators[] = {"lessOrEqual", "greaterThan"};
  for (int side = 0; side < 2; ++side) {
    const int child = 2 * node + 1 + side;
    if (child >= 20) break;
    AppendNode(
        text, child,
        "<SimplePredicate field=\"" + field + "\" operator=\"" + operators[side] + "\" value=\"" + split + "\"/>");
  }
  text += "</Node>\n";
}

}  // namespace

std::string NumberText(double number) {
  char text[32];
  return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

std::string FieldName(int index) { return std::string("x").append(std::to_string(index)); }

double Coefficient(int index, int table) { return 0.25 + 0.125 * index - 0.0625 * table; }

std::string LinearRegression(int terms) {
  return Head(terms, kNumberTarget) + "<RegressionModel functionName=\"regression\">\n" + MiningSchema(terms) +
         "<RegressionTable intercept=\"1\">\n" + Predictors(terms, 0) +
         "</RegressionTable>\n</RegressionModel>\n</PMML>\n";
}

std::string GeneralRegression(int terms) {
  std::string parameters = "<Parameter name=\"p\"/>\n";
  std::string covariates;
  std::string products;
  std::string coefficients = "<PCell parameterName=\"p\" beta=\"1\"/>\n";
  for (int i = 0; i < terms; ++i) {
    const std::string field = FieldName(i);
    const std::string parameter = "parameterName=\"p" + field + "\"";
    parameters += "<Parameter name=\"p" + field + "\"/>\n";
    covariates += "<Predictor name=\"" + field + "\"/>\n";
    products += "<PPCell value=\"1\" predictorName=\"" + field + "\" " + parameter + "/>\n";
    coefficients += "<PCell " + parameter + " beta=\"" + NumberText(Coefficient(i)) + "\"/>\n";
  }
  return Head(terms, kNumberTarget) +
         "<GeneralRegressionModel functionName=\"regression\" modelType=\"generalLinear\">\n" + MiningSchema(terms) +
         "<ParameterList>\n" + parameters + "</ParameterList>\n<CovariateList>\n" + covariates +
         "</CovariateList>\n<PPMatrix>\n" + products + "</PPMatrix>\n<ParamMatrix>\n" + coefficients +
         "</ParamMatrix>\n</GeneralRegressionModel>\n</PMML>\n";
}

std::string MultinomialRegression(int terms) {
  std::string text = Head(terms, kCategoryTarget) +
                     "<RegressionModel functionName=\"classification\" normalizationMethod=\"softmax\">\n" +
                     MiningSchema(terms);
  for (int table = 0; table < 3; ++table) {
    text += std::string("<RegressionTable intercept=\"1\" targetCategory=\"") + kCategories[table] + "\">\n" +
            Predictors(terms, table) + "</RegressionTable>\n";
  }
  return text + "</RegressionModel>\n</PMML>\n";
}

std::string Tree20() {
  std::string text = Head(4, kNumberTarget) + "<TreeModel functionName=\"regression\">\n" + MiningSchema(4);
  AppendNode(text, 0, "<True/>");
  return text + "</TreeModel>\n</PMML>\n";
}

int NaiveBayesCount(int input, int bin, int table) { return 1 + (input + bin + 2 * table) % 5; }

std::string NaiveBayes(int inputs) {
  std::string text = Head(inputs, kCategoryTarget) +
                     "<NaiveBayesModel functionName=\"classification\" threshold=\"0.001\">\n" + MiningSchema(inputs) +
                     "<BayesInputs>\n";
  for (int i = 0; i < inputs; ++i) {
    text += "<BayesInput fieldName=\"" + FieldName(i) + "\">" + (i % 2 == 0 ? NormalStats(i) : BinCounts(i)) +
            "</BayesInput>\n";
  }
  text += "</BayesInputs>\n<BayesOutput fieldName=\"y\"><TargetValueCounts>";
  for (const char* category : kCategories) text += TargetCount(category, 10);
  return text + "</TargetValueCounts></BayesOutput>\n</NaiveBayesModel>\n</PMML>\n";
}

std::string RuleSet(int rules) {
  std::string text = Head(4, kCategoryTarget) + "<RuleSetModel functionName=\"classification\">\n" + MiningSchema(4) +
                     "<RuleSet defaultScore=\"low\"><RuleSelectionMethod criterion=\"firstHit\"/>\n";
  for (int rule = 0; rule < rules; ++rule) {
    text += std::string("<SimpleRule score=\"") + kCategories[rule % 3] +
            "\"><CompoundPredicate booleanOperator=\"and\">" +
            SimplePredicate(FieldName(rule % 4), "greaterThan", 2.0 - rule / 25.0) +
            SimplePredicate(FieldName((rule + 1) % 4), "lessOrEqual", rule / 25.0 - 1.5) +
            "</CompoundPredicate></SimpleRule>\n";
  }
  return text + "</RuleSet></RuleSetModel>\n</PMML>\n";
}

std::string Minimal() {
  return Head(13, kNumberTarget) + "<TreeModel functionName=\"regression\">\n" + MiningSchema(13) +
         "<Node score=\"1\"><True/></Node></TreeModel>\n</PMML>\n";
}

std::string RegressionOfSize(std::size_t bytes) {
  const std::size_t perTerm = LinearRegression(101).size() - LinearRegression(100).size();
  const std::size_t fixed = LinearRegression(0).size();
  return LinearRegression(static_cast<int>((bytes - fixed) / perTerm));
}

std::string PlugIn(const std::string& baseName) { return std::string(KEL_LIBRARY_FOLDER) + "/" + baseName; }

KelXML_1_3::KelSettings Settings(const std::string& plugIn) {
  KelXML_1_3::KelSettings kinds;
  for (const char* kind :
       {"ClusteringModel", "GeneralRegressionModel", "MiningModel", "NaiveBayesModel", "NearestNeighborModel",
        "NeuralNetwork", "RegressionModel", "RuleSetModel", "SupportVectorMachineModel", "TreeModel"}) {
    kinds.AddSetting(kind, "", true);
  }
  KelXML_1_3::KelSettings plugIns;
  plugIns.AddSetting(Const::kDefaultPlugIn, plugIn, true);
  KelXML_1_3::KelSettings settings;
  settings.AddSetting(Const::kSettingModelDll, kinds, true);
  settings.AddSetting(Const::kSettingScoringDll, plugIns, true);
  return settings;
}

std::unique_ptr<KelScoring_20::ScoringModel> Load(const std::string& document, const std::string& plugIn) {
  KelScoring_20::ScoringFactory factory;
  KelXML_1_3::KelSettings settings = Settings(plugIn);
  std::istringstream stream(document);
  if (factory.CreateScoringModel(settings, stream) == nullptr) {
    std::fprintf(stderr, "no model: %ld, %s\n", factory.GetStatus().GetErrorCode(),
                 KelCommon_1_3::KelDiagnostics::Last().c_str());
    std::exit(1);
  }
  return std::unique_ptr<KelScoring_20::ScoringModel>(factory.Detach());
}

}  // namespace Documents
