#include "scoring/model/SplitKeyIndex.h"

#include <cmath>
#include <functional>
#include <string_view>

namespace KelScoring_20 {

using KelCommon_1_3::Value;

namespace {

// Equal values have equal hashes. NaN is one value, whatever its bits; of composite values, which nobody splits by,
// all have one.
std::size_t HashOf(const Value& value) {
  if (value.GetType() == Value::kText) return std::hash<std::string_view>()(value.Text());
  if (value.GetType() != Value::kNumber) return value.GetType();
  const double number = value.GetReal();
  return std::isnan(number) ? 1 : std::hash<double>()(number);
}

std::size_t Combine(std::size_t hash, const Value& value) {
  constexpr std::size_t kOddNumber = 0x9E3779B97F4A7C15U;
  return (hash ^ HashOf(value)) * kOddNumber;
}

}  // namespace

std::size_t SplitKeyIndex::Hash::operator()(const Key* key) const {
  std::size_t hash = 0;
  for (const Value& value : *key) hash = Combine(hash, value);
  return hash;
}

std::size_t SplitKeyIndex::Hash::operator()(const View& view) const {
  std::size_t hash = 0;
  for (const std::int32_t position : view.positions) hash = Combine(hash, view.record.At(position));
  return hash;
}

bool SplitKeyIndex::Equal::operator()(const View& view, const Key* key) const {
  if (view.positions.size() != key->size()) return false;
  for (std::size_t i = 0; i < key->size(); ++i) {
    if (!(view.record.At(view.positions[i]) == (*key)[i])) return false;
  }
  return true;
}

}  // namespace KelScoring_20
