#include "tools/kelscore/ModelField.h"

#include <unordered_set>

namespace kelscore {
namespace {

using KelXML_1_3::IKelVariable;
using KelXML_1_3::kCategoricalString;
using KelXML_1_3::KelVarList;
using KelXML_1_3::kRoleInput;
using KelXML_1_3::VariableRole;

constexpr int kStringStorage = 3;

// The variable list counts these among the numbers, yet a table holds them as text: true, 2024-02-29, 23:59:59.
bool IsWrittenAsText(const std::string& dataType) {
  return dataType == "boolean" || dataType == "date" || dataType == "time" || dataType == "dateTime" ||
         dataType.starts_with("dateDaysSince") || dataType.starts_with("dateTimeSecondsSince") ||
         dataType == "timeSeconds";
}

FieldKind KindOf(const IKelVariable& variable, const DataFields& dataFields) {
  if (variable.GetMeasureLevel() == kCategoricalString || variable.GetStorageType() == kStringStorage)
    return FieldKind::kText;
  const auto declared = dataFields.find(variable.GetName());
  if (declared != dataFields.end() && IsWrittenAsText(declared->second.dataType)) return FieldKind::kNumberOrText;
  // A fault in a field that nobody looks at is no reason to refuse a row.
  return RoleOf(variable, dataFields) == kRoleInput ? FieldKind::kNumber : FieldKind::kNumberOrText;
}

}  // namespace

bool IsTarget(const DataField& field) { return field.usageType == "predicted" || field.usageType == "target"; }

VariableRole RoleOf(const IKelVariable& variable, const DataFields& dataFields) {
  const auto declared = dataFields.find(variable.GetName());
  if (declared == dataFields.end()) return variable.GetVariableRole();
  if (IsTarget(declared->second)) return KelXML_1_3::kRoleTarget;
  const std::string& usage = declared->second.usageType;
  if (usage == "supplementary" || usage == "frequencyWeight" || usage == "analysisWeight") return KelXML_1_3::kRoleNone;
  return variable.GetVariableRole();
}

bool ComesFromHost(const IKelVariable& variable, const DataFields& dataFields) {
  return dataFields.empty() || dataFields.contains(variable.GetName());
}

std::vector<ModelField> ModelFields(const KelVarList& variables, const DataFields& dataFields) {
  std::vector<ModelField> fields;
  for (int i = 0; i < variables.Size(); ++i) {
    const IKelVariable& variable = *variables.GetVarAt(i);
    if (!ComesFromHost(variable, dataFields)) continue;
    const bool needed = RoleOf(variable, dataFields) == kRoleInput;
    const auto declared = dataFields.find(variable.GetName());
    fields.push_back({variable.GetName(), KindOf(variable, dataFields), needed,
                      declared == dataFields.end() ? std::vector<std::string>() : declared->second.markers});
  }
  return fields;
}

std::vector<ModelField> FieldsOfTable(const std::vector<std::string>& header) {
  std::vector<ModelField> fields;
  for (const std::string& name : header) {
    if (!name.empty()) fields.push_back({name, FieldKind::kNumberOrText, false});
  }
  return fields;
}

}  // namespace kelscore
