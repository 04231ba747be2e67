#include "benchmarks/Documents.h"

#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "scoring/common/KelDiagnostics.h"
#include "scoring/common/KelScoringConst.h"
#include "scoring/factory/ScoringFactory.h"

namespace Documents {
namespace {

namespace Const = KelScoring_20::KelScoringConst;

std::string Text(double number) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.17g", number);
  return buffer;
}

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
    text += "<NumericPredictor name=\"" + FieldName(i) + "\" coefficient=\"" + Text(Coefficient(i, table)) + "\"/>\n";
  }
  return text;
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

std::string FieldName(int index) { return std::string("x").append(std::to_string(index)); }

double Coefficient(int index, int table) { return 0.25 + 0.125 * index - 0.0625 * table; }

std::string LinearRegression(int terms) {
  return Head(terms, kNumberTarget) + "<RegressionModel functionName=\"regression\">\n" + MiningSchema(terms) +
         "<RegressionTable intercept=\"1\">\n" + Predictors(terms, 0) +
         "</RegressionTable>\n</RegressionModel>\n</PMML>\n";
}

std::string MultinomialRegression(int terms) {
  std::string text = Head(terms, kCategoryTarget) +
                     "<RegressionModel functionName=\"classification\" normalizationMethod=\"softmax\">\n" +
                     MiningSchema(terms);
  const char* categories[] = {"low", "middle", "high"};
  for (int table = 0; table < 3; ++table) {
    text += std::string("<RegressionTable intercept=\"1\" targetCategory=\"") + categories[table] + "\">\n" +
            Predictors(terms, table) + "</RegressionTable>\n";
  }
  return text + "</RegressionModel>\n</PMML>\n";
}

std::string Tree20() {
  std::string text = Head(4, kNumberTarget) + "<TreeModel functionName=\"regression\">\n" + MiningSchema(4);
  AppendNode(text, 0, "<True/>");
  return text + "</TreeModel>\n</PMML>\n";
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
  for (const char* kind : {"MiningModel", "RegressionModel", "TreeModel"}) kinds.AddSetting(kind, "", true);
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
