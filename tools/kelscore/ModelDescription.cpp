#include "tools/kelscore/ModelDescription.h"

#include <algorithm>
#include <utility>

#include "scoring/common/KelCatVar.h"
#include "scoring/common/KelVarList.h"
#include "scoring/common/ValueRecord.h"
#include "tools/kelscore/LoadedModel.h"
#include "tools/kelscore/OutputLayout.h"

namespace kelscore {
namespace {

using KelCommon_1_3::ValueRecord;
using KelXML_1_3::IKelEncoder;
using KelXML_1_3::IKelVariable;
using KelXML_1_3::KelCatVar;
using KelXML_1_3::KelVarList;

std::string StorageName(int storageType) {
  static constexpr const char* kNames[] = {"", "integer", "real", "string", "date", "time", "dateTime"};
  return storageType > 0 && storageType < 7 ? kNames[storageType] : "";
}

std::string LevelOf(const IKelVariable& variable) {
  if (variable.GetMeasureLevel() == KelXML_1_3::kContinuous) return "continuous";
  const auto* categorical = dynamic_cast<const KelCatVar*>(&variable);
  if (categorical && categorical->GetBinaryFlag()) return "flag";
  return categorical && categorical->GetOrdinalFlag() ? "ordinal" : "categorical";
}

void AddCategories(const IKelVariable& variable, FieldDescription& field) {
  const IKelEncoder& encoder = *variable.GetEncoder();
  const std::vector<std::string>& labels = *encoder.GetValueLabels();
  for (int i = 0; i < encoder.GetValueCount(); ++i) {
    const std::string value = encoder.GetStringValueAt(i);
    const auto index = static_cast<std::size_t>(i);
    const std::string label = index < labels.size() && labels[index] != value ? labels[index] : "";
    field.categories.push_back({value, label});
  }
  field.categoryCount = variable.GetCategoryCount();
  const auto* categorical = dynamic_cast<const KelCatVar*>(&variable);
  if (categorical && categorical->GetBinaryFlag())
    field.flagTrueValue = encoder.GetStringValueAt(categorical->GetBinaryFlagTrueIndex());
}

FieldDescription DescribeField(const IKelVariable& variable, const DataFields& dataFields) {
  FieldDescription field;
  field.name = variable.GetName();
  if (variable.GetLabel() != field.name) field.label = variable.GetLabel();
  const auto declared = dataFields.find(field.name);
  if (declared != dataFields.end()) field.dataType = declared->second.dataType;
  if (field.dataType.empty()) field.dataType = StorageName(variable.GetStorageType());
  field.level = LevelOf(variable);
  if (field.level != "continuous") AddCategories(variable, field);
  double low = 0.0;
  double high = 0.0;
  if (variable.GetRange(low, high)) field.range.emplace(low, high);
  const IKelEncoder& encoder = *variable.GetEncoder();
  for (int i = 0; i < encoder.GetMissingCount(); ++i) {
    const std::string value = encoder.GetMissingStringAt(i);
    const std::string label = encoder.GetMissingLabelAt(i);
    field.missingValues.push_back({value, label != value ? label : ""});
  }
  return field;
}

void AddFields(const KelVarList& variables, const DataFields& dataFields, KelXML_1_3::VariableRole role,
               std::vector<FieldDescription>& fields) {
  for (int i = 0; i < variables.Size(); ++i) {
    const IKelVariable& variable = *variables.GetVarAt(i);
    const bool known = std::any_of(fields.begin(), fields.end(), [&variable](const FieldDescription& field) {
      return field.name == variable.GetName();
    });
    const bool wanted = RoleOf(variable, dataFields) == role && ComesFromHost(variable, dataFields);
    if (wanted && !known) fields.push_back(DescribeField(variable, dataFields));
  }
}

std::vector<OutputDescription> DescribeOutputs(const LoadedModel& model) {
  std::vector<OutputDescription> outputs;
  const ValueRecord announced = AnnouncedOutputs(model);
  for (const std::string& name : announced.Names(true)) {
    OutputLayout layout(announced, {name});
    layout.AddCategories(model.TargetCategories());
    outputs.push_back({name, layout.Columns()});
  }
  return outputs;
}

// A plug-in may change the variable list of a single model; a composite doesn't tell all of its members' lists.
void AddFieldsOfDocuments(const LoadedModel& loaded, ModelDescription& description) {
  for (const DocumentDescription& described : description.documents) {
    const ModelDocument& document = described.document;
    const KelVarList& variables = description.isComposite ? document.variables : loaded.Model().GetVarList();
    AddFields(variables, document.dataFields, KelXML_1_3::kRoleInput, description.inputs);
    AddFields(variables, document.dataFields, KelXML_1_3::kRoleTarget, description.targets);
    for (const std::string& name : document.derivedFields) {
      std::vector<std::string>& names = description.derivedFields;
      if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
    }
  }
}

std::vector<DocumentDescription> DescribeDocuments(const LoadedModel& loaded) {
  std::vector<DocumentDescription> documents;
  for (ModelDocument& document : loaded.ReadDocuments()) {
    const std::size_t index = documents.size();
    const Member member = index < loaded.Members().size() ? loaded.Members()[index] : Member();
    documents.push_back({member.id, member.key, std::move(document)});
  }
  return documents;
}

}  // namespace

ModelDescription Describe(const LoadedModel& loaded) {
  ModelDescription description;
  description.scorer = loaded.Model().GetModelType();
  description.documents = DescribeDocuments(loaded);
  description.isComposite = !loaded.Members().empty();
  description.splitFields = loaded.SplitFields();
  AddFieldsOfDocuments(loaded, description);
  description.outputs = DescribeOutputs(loaded);
  return description;
}

}  // namespace kelscore
