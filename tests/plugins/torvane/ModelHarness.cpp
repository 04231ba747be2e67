#include "tests/plugins/torvane/ModelHarness.h"

#include <gtest/gtest.h>
#include <sstream>

#include "scoring/common/IKelScoreParser.h"
#include "scoring/common/KelDiagnostics.h"
#include "tests/support/XmlPlatform.h"

extern "C" KelScoring_20::IKelScoreParser* GetScoreParser();

namespace TorvaneTest {
namespace {

[[maybe_unused]] const auto* const kPlatform = KelTest::XmlPlatform::KeepUp();

// The kind whose element comes first: another one may stand inside it.
std::string FindKind(const std::string& text) {
  std::string first;
  std::size_t position = std::string::npos;
  for (const char* kind :
       {"ClusteringModel", "GeneralRegressionModel", "MiningModel", "NaiveBayesModel", "NearestNeighborModel",
        "NeuralNetwork", "RegressionModel", "RuleSetModel", "SupportVectorMachineModel", "TreeModel"}) {
    const std::size_t found = text.find(std::string(1, '<').append(kind));
    if (found >= position) continue;
    position = found;
    first = kind;
  }
  return first;
}

}  // namespace

std::string Document::AllDeclarations() {
  return R"(<DataField name="x" optype="continuous" dataType="double"/>
<DataField name="n" optype="continuous" dataType="integer"/>
<DataField name="f" optype="continuous" dataType="float"/>
<DataField name="s" optype="categorical" dataType="string"><Value value="a"/><Value value="b"/><Value value="c"/></DataField>
<DataField name="b" optype="categorical" dataType="boolean"/>
<DataField name="o" optype="ordinal" dataType="string"><Value value="low"/><Value value="mid"/><Value value="high"/></DataField>
<DataField name="y" optype="categorical" dataType="string"><Value value="yes"/><Value value="no" displayValue="rather not"/><Value value="maybe"/></DataField>
<DataField name="t" optype="continuous" dataType="double"/>)";
}

std::string Document::AllFields(const std::string& attributesOfX) {
  return "<MiningField name=\"x\" " + attributesOfX + R"(/><MiningField name="n"/><MiningField name="f"/>
<MiningField name="s"/><MiningField name="b"/><MiningField name="o"/>)";
}

std::string Document::Text() const {
  const std::string target = function == "regression" ? "t" : "y";
  return "<PMML version=\"" + version + "\"><Header/>\n<DataDictionary>" + dictionary + "</DataDictionary>\n" +
         transformations + "<" + kind + " functionName=\"" + function + "\" " + attributes + ">\n<MiningSchema>" +
         schema + "<MiningField name=\"" + target + "\" usageType=\"predicted\"/></MiningSchema>\n" + body + "</" +
         kind + "></PMML>";
}

Document Identity(const std::string& field) {
  return {.kind = "RegressionModel",
          .function = "regression",
          .body = "<RegressionTable intercept=\"0\"><NumericPredictor name=\"" + field +
                  "\" coefficient=\"1\"/></RegressionTable>"};
}

Scorer TryLoad(const std::string& text, bool needsDerived) {
  Scorer loaded;
  loaded.settings = std::make_unique<KelXML_1_3::KelSettings>();
  loaded.settings->AddSetting("scoring_modelType", FindKind(text), true);
  if (needsDerived) loaded.settings->AddSetting("scoring_needDerivedPredictor", true, true);
  KelXML_1_3::KelVarList varList;
  std::istringstream stream(text);
  const std::unique_ptr<KelScoring_20::IKelScoreParser> parser(GetScoreParser());
  KelCommon_1_3::KelDiagnostics::Clear();
  loaded.scorer.reset(parser->CreateScorer(*loaded.settings, varList, stream));
  loaded.reason = KelCommon_1_3::KelDiagnostics::Last();
  return loaded;
}

Scorer Load(const Document& document, bool needsDerived) {
  Scorer loaded = TryLoad(document.Text(), needsDerived);
  if (!loaded.scorer) throw std::runtime_error("refused: " + loaded.reason);
  return loaded;
}

std::string ReasonOf(const Document& document) {
  const Scorer loaded = TryLoad(document.Text());
  EXPECT_EQ(loaded.scorer, nullptr);
  return loaded.reason;
}

ValueRecord Scorer::Score(std::initializer_list<std::pair<const char*, Value>> fields) const {
  return Score(Record(fields));
}

ValueRecord Scorer::Score(const ValueRecord& in) const {
  ValueRecord out(2);
  EXPECT_TRUE(scorer->Scorable(out).IsOK());
  const auto status = scorer->Score(in, out);
  EXPECT_TRUE(status.IsOK()) << status.GetErrorCode();
  return out;
}

Value Scorer::Predict(std::initializer_list<std::pair<const char*, Value>> fields) const {
  const ValueRecord out = Score(fields);
  return out.At(out.IndexOf("prediction"));
}

ValueRecord Record(std::initializer_list<std::pair<const char*, Value>> fields) {
  ValueRecord record(2);
  for (const auto& [name, value] : fields) record.Add(name, value);
  return record;
}

std::string Shown(const ValueRecord& record, const std::string& name) {
  const Value& value = record.At(record.IndexOf(name));
  return value.IsNull() ? "null" : value.GetString();
}

double Probability(const ValueRecord& out, const std::string& category) {
  const ValueRecord* members = out.At(out.IndexOf("probcategory")).Members();
  EXPECT_NE(members, nullptr);
  return members == nullptr ? -1.0 : Number(*members, category);
}

double Number(const ValueRecord& record, const std::string& name) {
  const Value& value = record.At(record.IndexOf(name));
  EXPECT_EQ(value.GetType(), Value::kNumber) << name;
  return value.GetReal();
}

}  // namespace TorvaneTest
