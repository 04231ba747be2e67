#include "tools/kelscore/Agreement.h"

#include <algorithm>
#include <cmath>

#include "scoring/common/KelMV.h"
#include "tools/kelscore/CsvText.h"

namespace kelscore {
namespace {

using KelCommon_1_3::Value;

std::optional<double> NumberOf(const Value& value) {
  if (value.GetType() == Value::kNumber) return value.GetReal();
  return value.GetType() == Value::kText ? ReadNumber(value.Text()) : std::nullopt;
}

// The bounds belong to the range; of a negative number the upper one is the nearer to zero.
bool Agrees(double expected, double actual, const VerificationField& field) {
  if (std::fabs(expected) <= field.zeroThreshold && std::fabs(actual) <= field.zeroThreshold) return true;
  const auto [low, high] = std::minmax({expected * (1 - field.precision), expected * (1 + field.precision)});
  return low <= actual && actual <= high;
}

}  // namespace

bool IsNoValue(const Value& actual) {
  return actual.IsNull() ||
         (actual.GetType() == Value::kNumber && actual.GetReal() == KelCommon_1_3::KelMV::gMissingValue);
}

bool Agrees(const std::optional<std::string>& expected, const Value& actual, const VerificationField& field) {
  if (!expected || IsNoValue(actual)) return !expected && IsNoValue(actual);
  if (actual.GetType() == Value::kText && actual.Text() == *expected) return true;
  const std::optional<double> expectedNumber = ReadNumber(*expected);
  const std::optional<double> actualNumber = NumberOf(actual);
  return expectedNumber && actualNumber && Agrees(*expectedNumber, *actualNumber, field);
}

}  // namespace kelscore
