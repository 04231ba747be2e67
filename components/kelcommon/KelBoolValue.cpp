#include "components/kelcommon/KelBoolValue.h"

#include "scoring/common/KelDisplay.h"

namespace KelXML_1_3 {
namespace {

constexpr int kBoolType = 1;

}  // namespace

KelBoolValue::~KelBoolValue() = default;

IKelSettingValue* KelBoolValue::Clone() const { return new KelBoolValue(fValue); }

bool KelBoolValue::operator==(const IKelSettingValue& other) const {
  const auto* const value = dynamic_cast<const KelBoolValue*>(&other);
  return value != nullptr && fValue == value->fValue;
}

bool KelBoolValue::operator<(const IKelSettingValue& other) const {
  const auto* const value = dynamic_cast<const KelBoolValue*>(&other);
  return value != nullptr && !fValue && value->fValue;
}

std::uint64_t KelBoolValue::ToSize() const { return fValue ? 1 : 0; }

double KelBoolValue::ToDouble() const { return fValue ? 1.0 : 0.0; }

std::string KelBoolValue::ToString() const { return fValue ? "true" : "false"; }

bool KelBoolValue::ToBool() const { return fValue; }

std::int64_t KelBoolValue::ToLong() const { return fValue ? 1 : 0; }

int KelBoolValue::GetType() const { return kBoolType; }

void KelBoolValue::Display() const {
  KelDisplay_1_3::DisplayS("Setting Value Type", "Bool");
  KelDisplay_1_3::DisplayS("Setting value", ToString());
  KelDisplay_1_3::DisplayText(0, "\n");
}

}  // namespace KelXML_1_3
