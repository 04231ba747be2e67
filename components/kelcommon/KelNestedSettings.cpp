#include "components/kelcommon/KelNestedSettings.h"

#include <algorithm>
#include <utility>

#include "scoring/common/KelDisplay.h"
#include "scoring/common/KelMV.h"

namespace KelXML_1_3 {
namespace {

constexpr int kNestedType = 3;

std::vector<std::string> NamesOf(const KelSettings& settings) {
  std::vector<std::string> names;
  settings.GetSettingNames(names);
  return names;
}

int Sign(bool less, bool greater) { return less ? -1 : (greater ? 1 : 0); }

int CompareValues(const IKelSettingValue* left, const IKelSettingValue* right) {
  const int leftType = left != nullptr ? left->GetType() : 0;
  const int rightType = right != nullptr ? right->GetType() : 0;
  if (leftType != rightType || left == nullptr || right == nullptr) {
    return Sign(leftType < rightType, rightType < leftType);
  }
  return Sign(*left < *right, *right < *left);
}

// -1, 0 or 1.
int CompareSettings(const KelSetting& left, const KelSetting& right) {
  if (const int texts = left.GetText().compare(right.GetText()); texts != 0) return texts < 0 ? -1 : 1;
  return CompareValues(left.ReadValue(), right.ReadValue());
}

int CompareOfOneName(const std::string& name, const KelSettings& left, const KelSettings& right) {
  const std::vector<KelSetting*> ours = left.GetSettingByName(name);
  const std::vector<KelSetting*> theirs = right.GetSettingByName(name);
  const std::size_t common = std::min(ours.size(), theirs.size());
  for (std::size_t i = 0; i < common; ++i) {
    if (const int order = CompareSettings(*ours[i], *theirs[i]); order != 0) return order;
  }
  return Sign(ours.size() < theirs.size(), theirs.size() < ours.size());
}

int Compare(const KelSettings& left, const KelSettings& right) {
  const std::vector<std::string> names = NamesOf(left);
  const std::vector<std::string> otherNames = NamesOf(right);
  if (names != otherNames) return names < otherNames ? -1 : 1;
  for (const std::string& name : names) {
    if (const int order = CompareOfOneName(name, left, right); order != 0) return order;
  }
  return 0;
}

}  // namespace

KelNestedSettings::KelNestedSettings(KelSettings settings)
    : fSettings(std::make_shared<const KelSettings>(std::move(settings))) {}

KelNestedSettings::~KelNestedSettings() = default;

IKelSettingValue* KelNestedSettings::Clone() const { return new KelNestedSettings(*this); }

bool KelNestedSettings::operator==(const IKelSettingValue& other) const {
  const auto* const nested = dynamic_cast<const KelNestedSettings*>(&other);
  return nested != nullptr && Compare(*fSettings, *nested->fSettings) == 0;
}

bool KelNestedSettings::operator<(const IKelSettingValue& other) const {
  const auto* const nested = dynamic_cast<const KelNestedSettings*>(&other);
  return nested != nullptr && Compare(*fSettings, *nested->fSettings) < 0;
}

std::uint64_t KelNestedSettings::ToSize() const { return NamesOf(*fSettings).size(); }

double KelNestedSettings::ToDouble() const { return KelCommon_1_3::KelMV::gMissingValue; }

std::string KelNestedSettings::ToString() const {
  return "Settings Value: Number of names = " + std::to_string(ToSize()) + '\n';
}

bool KelNestedSettings::ToBool() const { return ToSize() != 0; }

std::int64_t KelNestedSettings::ToLong() const { return static_cast<std::int64_t>(ToSize()); }

int KelNestedSettings::GetType() const { return kNestedType; }

void KelNestedSettings::Display() const {
  KelDisplay_1_3::DisplayS("Setting Value Type", "Settings");
  KelDisplay_1_3::DisplayI("Total number of setting names", static_cast<int>(ToSize()));
  KelDisplay_1_3::DisplayText(0, "\n");
}

}  // namespace KelXML_1_3
