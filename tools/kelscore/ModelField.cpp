#include "tools/kelscore/ModelField.h"

#include <unordered_set>

namespace kelscore {
namespace {

using KelXML_1_3::IKelVariable;
using KelXML_1_3::kCategoricalString;
using KelXML_1_3::KelVarList;
using KelXML_1_3::kRoleInput;

constexpr int kStringStorage = 3;

// The variable list counts these among the numbers, yet a table holds them as text: true, 2024-02-29, 23:59:59.
bool IsWrittenAsText(const std::string& dataType) {
  return dataType == "boolean" || dataType == "date" || dataType == "time" || dataType == "dateTime" ||
         dataType.starts_with("dateDaysSince") || dataType.starts_with("dateTimeSecondsSince") ||
         dataType == "timeSeconds";
}

FieldKind KindOf(const IKelVariable& variable, const DataTypes& dataTypes) {
  if (variable.GetMeasureLevel() == kCategoricalString || variable.GetStorageType() == kStringStorage)
    return FieldKind::kText;
  const auto dataType = dataTypes.find(variable.GetName());
  if (dataType != dataTypes.end() && IsWrittenAsText(dataType->second)) return FieldKind::kNumberOrText;
  // A fault in a field that nobody looks at is no reason to refuse a row.
  return variable.GetVariableRole() == kRoleInput ? FieldKind::kNumber : FieldKind::kNumberOrText;
}

}  // namespace

std::vector<ModelField> ModelFields(const KelVarList& variables, const DataTypes& dataTypes) {
  std::vector<ModelField> fields;
  for (int i = 0; i < variables.Size(); ++i) {
    const IKelVariable& variable = *variables.GetVarAt(i);
    if (!dataTypes.empty() && !dataTypes.contains(variable.GetName())) continue;
    fields.push_back({variable.GetName(), KindOf(variable, dataTypes), variable.GetVariableRole() == kRoleInput});
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
