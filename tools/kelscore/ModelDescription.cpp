#include "tools/kelscore/ModelDescription.h"

#include <algorithm>
#include <fstream>

#include "scoring/common/KelCatVar.h"
#include "scoring/common/KelScoringConst.h"
#include "scoring/common/KelSettings.h"
#include "scoring/common/KelTransformation.h"
#include "scoring/common/KelVarList.h"
#include "scoring/common/ValueRecord.h"
#include "scoring/factory/ScoringModelAttr.h"
#include "scoring/factory/ScoringScorerFactory.h"
#include "tools/kelscore/LoadedModel.h"
#include "tools/kelscore/OutputLayout.h"

namespace kelscore {
namespace {

using KelCommon_1_3::ValueRecord;
using KelScoring_20::ScoringModel;
using KelScoring_20::ScoringModelAttr;
using KelScoring_20::ScoringScorerFactory;
using KelXML_1_3::IKelEncoder;
using KelXML_1_3::IKelVariable;
using KelXML_1_3::KelCatVar;
using KelXML_1_3::KelVarList;
namespace Const = KelScoring_20::KelScoringConst;

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

FieldDescription DescribeField(const IKelVariable& variable, const DataTypes& dataTypes) {
  FieldDescription field;
  field.name = variable.GetName();
  if (variable.GetLabel() != field.name) field.label = variable.GetLabel();
  const auto dataType = dataTypes.find(field.name);
  field.dataType = dataType != dataTypes.end() && !dataType->second.empty() ? dataType->second
                                                                            : StorageName(variable.GetStorageType());
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

// Derived fields, which the host doesn't give, may stand in the variable list, too.
std::vector<FieldDescription> DescribeFields(const LoadedModel& model, KelXML_1_3::VariableRole role) {
  std::vector<FieldDescription> fields;
  const KelVarList& variables = model.Model().GetVarList();
  const DataTypes& dataFields = model.DataFields();
  for (int i = 0; i < variables.Size(); ++i) {
    const IKelVariable& variable = *variables.GetVarAt(i);
    const bool fromHost = dataFields.empty() || dataFields.contains(variable.GetName());
    if (variable.GetVariableRole() == role && fromHost) fields.push_back(DescribeField(variable, dataFields));
  }
  return fields;
}

std::vector<OutputDescription> DescribeOutputs(const LoadedModel& model) {
  std::vector<OutputDescription> outputs;
  const ValueRecord announced = AnnouncedOutputs(model);
  for (const std::string& name : announced.Names(true)) {
    OutputLayout layout(announced, {name});
    layout.AddCategories(TargetCategories(model.Model()));
    outputs.push_back({name, layout.Columns()});
  }
  return outputs;
}

std::vector<std::string> DerivedFields(const ScoringModel& model) {
  if (!model.GetTransformation()) return model.GetDerivedFields();
  ValueRecord derived;
  model.GetTransformation()->GetDerivedVariableInfo(derived, false);
  return derived.Names(true);
}

// The head of the document, as far as a model doesn't keep it.
void AddHead(const LoadedModel& model, ModelDescription& description) {
  std::vector<std::string> elements;
  ScoringScorerFactory::GetModelNames(elements, model.Model().GetSettings());
  std::ifstream document(model.Path(), std::ios::binary);
  ScoringModelAttr head;
  if (!ScoringScorerFactory::GetModelAttr(document, elements, head, "UTF-8").IsOK()) return;
  description.name = head.modelName;
  description.function = head.functionName;
  description.pmmlVersion = head.version;
  description.ensembleMethod = head.multipleModelMethod;
}

}  // namespace

ModelDescription Describe(const LoadedModel& loaded) {
  const ScoringModel& model = loaded.Model();
  ModelDescription description;
  description.file = loaded.Path();
  AddHead(loaded, description);
  description.element = model.GetSubType();
  description.id = model.GetModelID();
  description.algorithm = model.GetAlgName();
  description.application = model.GetAppName();
  description.applicationVersion = model.GetAppVersion();
  description.scorer = model.GetModelType();
  description.inputs = DescribeFields(loaded, KelXML_1_3::kRoleInput);
  description.targets = DescribeFields(loaded, KelXML_1_3::kRoleTarget);
  description.outputs = DescribeOutputs(loaded);
  description.derivedFields = DerivedFields(model);
  return description;
}

}  // namespace kelscore
