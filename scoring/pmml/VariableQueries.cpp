// The questions on variables that `ScoringPMMLParser` answers without an object.

#include "scoring/common/KelMV.h"
#include "scoring/pmml/ScoringPMMLParser.h"

namespace KelScoring_20 {

using KelCommon_1_3::KelMV;
using KelCommon_1_3::Value;
using KelXML_1_3::IKelEncoder;
using KelXML_1_3::IKelVariable;
using KelXML_1_3::KelVarList;

namespace {

using KelXML_1_3::kCategoricalNumeric;
using KelXML_1_3::kCategoricalString;

bool IsOfNumbers(const IKelVariable& var) { return var.GetMeasureLevel() != kCategoricalString; }

bool IsCategorical(const IKelVariable& var) {
  return var.GetMeasureLevel() == kCategoricalNumeric || var.GetMeasureLevel() == kCategoricalString;
}

/// The encoder of a categorical variable; null for any other and for null.
const IKelEncoder* CategoryEncoder(const IKelVariable* var) {
  return var && IsCategorical(*var) ? var->GetEncoder() : nullptr;
}

Value CategoryAt(const IKelVariable& var, const IKelEncoder& encoder, int index) {
  return IsOfNumbers(var) ? Value(encoder.GetNumericValueAt(index)) : Value(encoder.GetStringValueAt(index));
}

/// A text of a string variable is never taken for the missing mark.
bool IsMissingMark(const IKelVariable& var, const Value& value) {
  return IsOfNumbers(var) && value.GetReal() == KelMV::gMissingValue;
}

bool IsDeclaredMissing(const IKelEncoder& encoder, const Value& value) {
  return encoder.GetValueKind() == IKelEncoder::kStringKind ? encoder.IsMissingString(value.GetString())
                                                            : encoder.IsMissingNumber(value.GetReal());
}

bool IsKnownCategory(const IKelVariable& var, const IKelEncoder& encoder, const Value& value) {
  const double code =
      IsOfNumbers(var) ? encoder.EncodeNumber(value.GetReal()) : encoder.EncodeString(value.GetString());
  return code != -1.0;
}

}  // namespace

std::vector<const IKelVariable*> ScoringPMMLParser::GetTargetVars(const KelVarList& list) {
  std::vector<const IKelVariable*> targets;
  for (const int index : list.GetTargetIndices()) {
    if (const IKelVariable* target = list.GetVarAt(index)) targets.push_back(target);
  }
  return targets;
}

std::vector<Value> ScoringPMMLParser::GetValues(const IKelVariable* var) {
  std::vector<Value> values;
  const IKelEncoder* encoder = CategoryEncoder(var);
  const int count = encoder ? encoder->GetValueCount() : 0;
  values.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) values.push_back(CategoryAt(*var, *encoder, i));
  return values;
}

std::vector<std::pair<Value, std::string>> ScoringPMMLParser::GetValueLabels(const IKelVariable* var) {
  std::vector<std::pair<Value, std::string>> pairs;
  const IKelEncoder* encoder = CategoryEncoder(var);
  const int count = encoder ? encoder->GetValueCount() : 0;
  const bool usesLabels = encoder && count == var->GetCategoryCount();
  const std::vector<std::string>* labels = usesLabels ? encoder->GetValueLabels() : nullptr;
  pairs.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    const auto position = static_cast<std::size_t>(i);
    const bool hasLabel = labels && position < labels->size() && !(*labels)[position].empty();
    pairs.emplace_back(CategoryAt(*var, *encoder, i), hasLabel ? (*labels)[position] : encoder->GetStringValueAt(i));
  }
  return pairs;
}

// A plain search, which the declared missing values don't affect.
bool ScoringPMMLParser::IsValidCatValue(const IKelVariable* var, const Value& value) {
  const IKelEncoder* encoder = CategoryEncoder(var);
  if (!encoder) return false;
  const Value wanted = IsOfNumbers(*var) ? Value(value.GetReal()) : Value(value.GetString());
  const int count = encoder->GetValueCount();
  for (int i = 0; i < count; ++i) {
    if (CategoryAt(*var, *encoder, i) == wanted) return true;
  }
  return false;
}

bool ScoringPMMLParser::IsMissingValue(const IKelVariable* var, const Value& value) {
  if (!var || value.IsNull() || IsMissingMark(*var, value)) return true;
  const IKelEncoder* encoder = var->GetEncoder();
  return encoder && IsDeclaredMissing(*encoder, value);
}

bool ScoringPMMLParser::IsValidValue(const IKelVariable* var, const Value& value) {
  if (IsMissingValue(var, value)) return false;
  const IKelEncoder* encoder = var->GetEncoder();
  if (encoder && IsCategorical(*var)) return IsKnownCategory(*var, *encoder, value);
  return !IsOfNumbers(*var) || value.GetType() == Value::kNumber;
}

bool ScoringPMMLParser::IsFlagVariable(const IKelVariable* var) {
  return var && IsCategorical(*var) && var->GetCategoryCount() == 2;
}

}  // namespace KelScoring_20
