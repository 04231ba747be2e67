#include "tests/corpus/CorpusCase.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string_view>

#include "scoring/common/KelDiagnostics.h"
#include "scoring/common/KelScoringConst.h"
#include "scoring/common/KelSettings.h"
#include "scoring/common/KelVarList.h"
#include "scoring/factory/ScoringFactory.h"

namespace CorpusTest {

using KelCommon_1_3::KelDiagnostics;
using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;
using KelScoring_20::ScoringFactory;
using KelXML_1_3::KelSettings;

namespace {

namespace Const = KelScoring_20::KelScoringConst;

std::vector<std::string> SplitAtSemicolons(const std::string& text) {
  std::vector<std::string> parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, ';');) parts.push_back(part);
  return parts;
}

std::optional<double> AsNumber(const std::string& text) {
  double number = 0.0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

std::vector<CorpusCase> ReadManifest() {
  const std::string path = CorpusFolder() + "/manifest.csv";
  if (!std::filesystem::exists(path)) return {};
  const CsvTable manifest = CsvTable::Read(path);
  std::vector<CorpusCase> cases;
  for (const auto& row : manifest.rows) {
    cases.push_back({row[manifest.Column("case")], row[manifest.Column("model_kind")],
                     SplitAtSemicolons(row[manifest.Column("target_field")]),
                     AsNumber(row[manifest.Column("tolerance")]).value()});
  }
  return cases;
}

KelSettings HostSettings() {
  KelSettings kinds;
  for (const char* kind : {"MiningModel", "AssociationModel", "ClusteringModel", "GeneralRegressionModel",
                           "NaiveBayesModel", "NeuralNetwork", "RegressionModel", "RuleSetModel", "SequenceModel",
                           "SupportVectorMachineModel", "TextModel", "TimeSeriesModel", "TreeModel", "BayesNetModel",
                           "NearestNeighborModel", "Scorecard", "AnomalyDetectionModel"}) {
    kinds.AddSetting(kind, "", true);
  }
  KelSettings plugIns;
  plugIns.AddSetting(Const::kDefaultPlugIn, KEL_PLUGIN, true);
  KelSettings settings;
  settings.AddSetting(Const::kSettingModelDll, kinds, true);
  settings.AddSetting(Const::kSettingScoringDll, plugIns, true);
  return settings;
}

// A column "@affinity" asks for the feature of that name. Where the document has no outputs of its own, it gets one.
std::string WithFeatures(std::string document, const std::vector<std::string>& columns) {
  std::string fields;
  for (const std::string& column : columns) {
    if (column.starts_with("@")) {
      fields += "<OutputField name=\"" + column + "\" feature=\"" + column.substr(1) + "\"/>";
    }
  }
  constexpr std::string_view kSchemaEnd = "</MiningSchema>";
  const std::size_t schemaEnd = document.find(kSchemaEnd);
  if (fields.empty() || schemaEnd == std::string::npos || document.find("<Output>") != std::string::npos) {
    return document;
  }
  return document.insert(schemaEnd + kSchemaEnd.size(), "<Output>" + fields + "</Output>");
}

// "name(argument)" gives the argument.
std::optional<std::string> ArgumentOf(const std::string& name, const std::string& column) {
  if (!column.starts_with(name + "(") || !column.ends_with(")")) return std::nullopt;
  return column.substr(name.size() + 1, column.size() - name.size() - 2);
}

}  // namespace

void PrintTo(const CorpusCase& corpusCase, std::ostream* stream) { *stream << corpusCase.name; }

std::string CorpusFolder() {
  const char* folder = std::getenv("KELSCORING_CORPUS");
  return folder != nullptr ? folder : KEL_CORPUS_DIR;
}

const std::vector<CorpusCase>& AllCases() {
  static const std::vector<CorpusCase> cases = ReadManifest();
  return cases;
}

Loaded Load(const std::string& path, const std::vector<std::string>& columns) {
  static ScoringFactory keepsPlatformUp;
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  std::istringstream document(WithFeatures(text.str(), columns));
  KelSettings settings = HostSettings();
  KelDiagnostics::Clear();
  ScoringFactory factory;
  factory.CreateScoringModel(settings, document);
  Loaded loaded;
  loaded.code = factory.GetStatus().GetErrorCode();
  loaded.reason = KelDiagnostics::Last();
  loaded.model.reset(factory.Detach());
  return loaded;
}

InputRecord::InputRecord(const CsvTable& table, const KelXML_1_3::KelVarList& variables)
    : fRecord(static_cast<int>(table.header.size())) {
  for (const std::string& name : table.header) {
    const auto* variable = variables.GetVariable(name);
    fNumeric.push_back(variable != nullptr && variable->GetEncoder()->GetValueKind() == 2);
    fRecord.Add(name, Value::NULL_VALUE);
  }
}

ValueRecord& InputRecord::Fill(const std::vector<std::string>& row) {
  for (std::size_t i = 0; i < row.size(); ++i) {
    Value& value = fRecord[static_cast<int>(i)];
    if (row[i].empty()) {
      value.SetNull();
    } else if (const auto number = AsNumber(row[i]); fNumeric[i] && number) {
      value = *number;
    } else {
      value = row[i];
    }
  }
  return fRecord;
}

ExpectedColumn FindColumn(const std::string& column, const CorpusCase& corpusCase, const ValueRecord& offered) {
  // Of several targets the first one is the prediction, the others stand under their own names.
  if (corpusCase.targetFields.size() > 1 && offered.Contains(column)) return {column, ""};
  for (const std::string& target : corpusCase.targetFields) {
    if (column == target) return {Const::kOutputPrediction, ""};
  }
  if (offered.Contains(column)) return {column, ""};
  if (const auto category = ArgumentOf("probability", column)) return {Const::kOutputProbCategory, *category};
  if (column == "@predictedValue") return {Const::kOutputPrediction, ""};
  if (column == "@probability") return {Const::kOutputProbability, ""};
  if (column == "@confidence") return {Const::kOutputConfidence, ""};
  for (const char* key : {Const::kOutputTreeNodeid, Const::kOutputRulesetIdfire}) {
    if (column == "@entityId" && offered.Contains(key)) return {key, ""};
  }
  throw std::runtime_error("the model offers nothing for the column " + column);
}

const Value& Lookup(const ExpectedColumn& column, const ValueRecord& out) {
  const Value& value = out.At(out.IndexOf(column.output));
  if (column.member.empty()) return value;
  const ValueRecord* members = value.Members();
  return members == nullptr ? Value::NULL_VALUE : members->At(members->IndexOf(column.member));
}

namespace {

// A list is shown as its texts, as JSON does; a composite value is one.
std::string AsList(const ValueRecord& members) {
  std::string list = "[";
  for (int i = 0; i < members.Size(); ++i) {
    list += (i == 0 ? "\"" : ", \"") + members.At(i).GetString() + "\"";
  }
  return list + "]";
}

}  // namespace

std::string Difference(const std::string& expected, const Value& actual, double tolerance) {
  if (const ValueRecord* members = actual.Members()) {
    const std::string list = AsList(*members);
    return list == expected ? "" : "expected " + expected + ", got " + list;
  }
  const std::string message = "expected \"" + expected + "\", got \"" + actual.GetString() + "\"";
  if (expected.empty() || actual.IsNull()) return expected.empty() && actual.IsNull() ? "" : message;
  if (actual.GetType() != Value::kNumber) return actual.GetString() == expected ? "" : message;
  const auto number = AsNumber(expected);
  if (!number) return message;
  const double allowed = tolerance * std::max(1.0, std::fabs(*number));
  return std::fabs(actual.GetReal() - *number) <= allowed ? "" : message;
}

}  // namespace CorpusTest
