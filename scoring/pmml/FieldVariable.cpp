#include "scoring/pmml/FieldVariable.h"

#include "scoring/common/KelCatVar.h"
#include "scoring/common/KelDiagnostics.h"
#include "scoring/common/KelScoringConst.h"

namespace KelScoring_20 {

using KelCommon_1_3::KelDiagnostics;
using KelCommon_1_3::KelStatus;
using KelXML_1_3::IKelEncoder;
using KelXML_1_3::IKelVariable;
using KelXML_1_3::KelCatVar;
using KelXML_1_3::KelVarList;

namespace {

using KelXML_1_3::kCategoricalNumeric;
using KelXML_1_3::kCategoricalString;
using KelXML_1_3::kRoleNone;

/// Labels count only if each value has one; else there is no telling whose they are.
template <typename T>
int AddCategorical(KelVarList& list, const Field& field, const std::vector<T>& values) {
  if (values.empty()) {
    return list.AddCatVar(field.name, field.label, 0, field.isNumeric ? kCategoricalNumeric : kCategoricalString,
                          kRoleNone);
  }
  if (values.size() != field.validLabels.size()) return list.AddCatVar(field.name, field.label, values, kRoleNone);
  return list.AddCatVar(field.name, field.label, values, field.validLabels, kRoleNone);
}

int Add(KelVarList& list, const Field& field) {
  if (!field.isCategorical) {
    return list.AddContVar(field.name, field.label, field.intervalLow, field.intervalHigh, kRoleNone, false, -1);
  }
  return field.isNumeric ? AddCategorical(list, field, field.validNumbers)
                         : AddCategorical(list, field, field.validStrings);
}

/// Missing values and their labels pair up by position alone.
std::string MissingLabel(const Field& field, std::size_t index) {
  return index < field.missingLabels.size() ? field.missingLabels[index] : std::string();
}

void AddMissingValues(const Field& field, IKelEncoder& encoder) {
  for (std::size_t i = 0; i < field.missingNumbers.size(); ++i) {
    encoder.AddMissingNumber(field.missingNumbers[i], MissingLabel(field, i));
  }
  if (!field.isCategorical) return;  // a continuous field has no use for texts
  for (std::size_t i = 0; i < field.missingStrings.size(); ++i) {
    encoder.AddMissingString(field.missingStrings[i], MissingLabel(field, i));
  }
}

void Complete(const Field& field, IKelEncoder& encoder) {
  AddMissingValues(field, encoder);
  const bool usesRange = field.isNumeric || !field.isCategorical;
  if (usesRange && field.HasInvalidRange()) encoder.SetInvalidRange(field.invalidLow, field.invalidHigh);
}

/// The index of the true category of a flag, negative if there is none.
int FindTrueCategory(const Field& field, const IKelEncoder& encoder) {
  if (!field.flagTrueText) return -1;
  if (encoder.GetValueKind() != IKelEncoder::kNumericKind) {
    return static_cast<int>(encoder.EncodeString(*field.flagTrueText));
  }
  return field.flagTrueNumber ? static_cast<int>(encoder.EncodeNumber(*field.flagTrueNumber)) : -1;
}

void SetFlags(const Field& field, KelCatVar& variable) {
  const IKelEncoder* encoder = variable.GetEncoder();
  const int trueIndex = encoder ? FindTrueCategory(field, *encoder) : -1;
  if (trueIndex >= 0) variable.SetBinaryFlag(true, trueIndex);
  variable.SetOrdinalFlag(field.isOrdinal);
}

KelStatus Refuse(const Field& field) {
  KelDiagnostics::Report("Field \"" + field.name + "\" of the dictionary: its name is empty or stands there twice");
  return KelStatus(KelScoringConst::kVariableRefused, false);
}

}  // namespace

KelStatus AddVariable(KelVarList& list, Field field) {
  const int index = Add(list, field);
  if (index < 0) return Refuse(field);
  if (IKelEncoder* encoder = list.GetEncoderAt(index)) Complete(field, *encoder);
  IKelVariable* variable = list.GetVarAt(index);
  if (!variable) return Refuse(field);
  variable->SetStorageType(field.storageType);
  if (auto* categorical = dynamic_cast<KelCatVar*>(variable)) SetFlags(field, *categorical);
  if (field.format) variable->SetFormat(field.format.release());
  return KelStatus();
}

}  // namespace KelScoring_20
