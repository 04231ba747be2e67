#include "components/kelcommon/Encoders.h"

#include <cmath>
#include <optional>

#include "components/kelcommon/NumberText.h"
#include "scoring/common/KelMV.h"

namespace KelXML_1_3 {

using KelCommon_1_3::KelMV;
using KelCommon_1_3::NumberToText;
using KelCommon_1_3::TextToNumber;

namespace {

constexpr double kNoCategory = -1.0;

std::string TextOf(const double* number) { return number != nullptr ? NumberToText(*number) : std::string(); }

std::string TextOf(const std::string* text) { return text != nullptr ? *text : std::string(); }

}  // namespace

BaseEncoder::~BaseEncoder() = default;

void BaseEncoder::SetBinLabels(const std::vector<std::string>& labels) { fBinLabels = labels; }

const std::vector<std::string>& BaseEncoder::GetBinLabels() const { return fBinLabels; }

void BaseEncoder::SetInvalidRange(double low, double high) {
  fHasInvalidRange = true;
  fInvalidLow = low;
  fInvalidHigh = high;
}

bool BaseEncoder::GetInvalidRange(double& low, double& high) const {
  if (!fHasInvalidRange) return false;
  low = fInvalidLow;
  high = fInvalidHigh;
  return true;
}

template <typename Entry>
int ListEncoder<Entry>::GetValueCount() const {
  return fValues.Size();
}

template <typename Entry>
std::string ListEncoder<Entry>::GetStringValueAt(int index) const {
  return TextOf(fValues.At(index));
}

template <typename Entry>
const std::vector<std::string>* ListEncoder<Entry>::GetValueLabels() const {
  return &fValues.Labels();
}

template <typename Entry>
int ListEncoder<Entry>::GetMissingCount() const {
  return fMissing.Size();
}

template <typename Entry>
std::string ListEncoder<Entry>::GetMissingStringAt(int index) const {
  return TextOf(fMissing.At(index));
}

template <typename Entry>
std::string ListEncoder<Entry>::GetMissingLabelAt(int index) const {
  const std::vector<std::string>& labels = fMissing.Labels();
  const auto position = static_cast<std::size_t>(index);
  return index >= 0 && position < labels.size() ? labels[position] : std::string();
}

template class ListEncoder<double>;
template class ListEncoder<std::string>;

std::unique_ptr<BaseEncoder> NumericEncoder::Clone() const { return std::make_unique<NumericEncoder>(*this); }

int NumericEncoder::GetValueKind() const { return kNumericKind; }

void NumericEncoder::AddStringValue(const std::string& /*value*/, const std::string& /*label*/) {}

void NumericEncoder::AddNumericValue(double value, const std::string& label) {
  if (!std::isnan(value) && value != KelMV::gMissingValue) fValues.Add(value, label);
}

double NumericEncoder::EncodeString(const std::string& value) const {
  const std::optional<double> number = TextToNumber(value);
  return number ? EncodeNumber(*number) : kNoCategory;
}

double NumericEncoder::EncodeNumber(double value) const { return fValues.Find(value).value_or(kNoCategory); }

bool NumericEncoder::IsMissingString(const std::string& value) const {
  const std::optional<double> number = TextToNumber(value);
  return number && IsMissingNumber(*number);
}

bool NumericEncoder::IsMissingNumber(double value) const { return fMissing.Find(value).has_value(); }

double NumericEncoder::GetNumericValueAt(int index) const {
  const double* const value = fValues.At(index);
  return value != nullptr ? *value : KelMV::gMissingValue;
}

void NumericEncoder::AddMissingNumber(double value, const std::string& label) { fMissing.Add(value, label); }

void NumericEncoder::AddMissingString(const std::string& /*value*/, const std::string& /*label*/) {}

std::unique_ptr<BaseEncoder> StringEncoder::Clone() const { return std::make_unique<StringEncoder>(*this); }

int StringEncoder::GetValueKind() const { return kStringKind; }

void StringEncoder::AddStringValue(const std::string& value, const std::string& label) { fValues.Add(value, label); }

void StringEncoder::AddNumericValue(double /*value*/, const std::string& /*label*/) {}

double StringEncoder::EncodeString(const std::string& value) const { return fValues.Find(value).value_or(kNoCategory); }

double StringEncoder::EncodeNumber(double /*value*/) const { return kNoCategory; }

bool StringEncoder::IsMissingString(const std::string& value) const { return fMissing.Find(value).has_value(); }

bool StringEncoder::IsMissingNumber(double /*value*/) const { return false; }

double StringEncoder::GetNumericValueAt(int index) const {
  return TextToNumber(GetStringValueAt(index)).value_or(KelMV::gMissingValue);
}

void StringEncoder::AddMissingNumber(double /*value*/, const std::string& /*label*/) {}

void StringEncoder::AddMissingString(const std::string& value, const std::string& label) { fMissing.Add(value, label); }

}  // namespace KelXML_1_3
