#include "scoring/common/KelVecValue.h"

#include <algorithm>
#include <utility>

#include "scoring/common/KelDisplay.h"
#include "scoring/common/KelMV.h"

namespace KelXML_1_3 {
namespace {

constexpr int kVectorType = 2;

// -1, 0 or 1 in lexicographic order; a list that begins another one is the lesser.
template <typename T>
int Compare(const std::vector<T>& left, const std::vector<T>& right) {
  if (&left == &right) return 0;
  const std::size_t common = std::min(left.size(), right.size());
  for (std::size_t i = 0; i < common; ++i) {
    if (left[i] < right[i]) return -1;
    if (right[i] < left[i]) return 1;
  }
  if (left.size() == right.size()) return 0;
  return left.size() < right.size() ? -1 : 1;
}

}  // namespace

template <typename T>
KelVecValue<T>::KelVecValue(std::vector<T> entries) : fValue(std::move(entries)) {}

template <typename T>
KelVecValue<T>::~KelVecValue() = default;

template <typename T>
IKelSettingValue* KelVecValue<T>::Clone() const {
  return new KelVecValue(fValue);
}

template <typename T>
bool KelVecValue<T>::operator==(const IKelSettingValue& other) const {
  const auto* const list = dynamic_cast<const KelVecValue*>(&other);
  return list != nullptr && Compare(fValue, list->fValue) == 0;
}

template <typename T>
bool KelVecValue<T>::operator<(const IKelSettingValue& other) const {
  const auto* const list = dynamic_cast<const KelVecValue*>(&other);
  return list != nullptr && Compare(fValue, list->fValue) < 0;
}

template <typename T>
std::uint64_t KelVecValue<T>::ToSize() const {
  return fValue.size();
}

template <typename T>
double KelVecValue<T>::ToDouble() const {
  return KelCommon_1_3::KelMV::gMissingValue;
}

template <typename T>
std::string KelVecValue<T>::ToString() const {
  return "Vector Value: Length of vector = " + std::to_string(fValue.size()) + '\n';
}

template <typename T>
bool KelVecValue<T>::ToBool() const {
  return !fValue.empty();
}

// Through 32 bits, as lists have always been counted for this.
template <typename T>
std::int64_t KelVecValue<T>::ToLong() const {
  return static_cast<std::int32_t>(fValue.size());
}

template <typename T>
int KelVecValue<T>::GetType() const {
  return kVectorType;
}

template <typename T>
void KelVecValue<T>::Display() const {
  KelDisplay_1_3::DisplayS("Setting Value Type", "Vector");
  KelDisplay_1_3::DisplayI("Total number of setting value", static_cast<std::int32_t>(fValue.size()));
  KelDisplay_1_3::DisplayText(0, "\n");
}

template class KelVecValue<std::string>;
template class KelVecValue<KelCommon_1_3::Value>;

}  // namespace KelXML_1_3
