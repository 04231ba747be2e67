#include "scoring/common/KelSettings.h"

#include <algorithm>
#include <utility>

#include "components/kelcommon/KelBoolValue.h"
#include "components/kelcommon/KelNestedSettings.h"

namespace KelXML_1_3 {

using KelCommon_1_3::Value;

namespace {

std::unique_ptr<KelSetting> TextSetting(const std::string& name, const std::string& text) {
  return std::make_unique<KelSetting>(name, text, nullptr);
}

template <typename V, typename T>
std::unique_ptr<KelSetting> ValueSetting(const std::string& name, const T& value) {
  return std::make_unique<KelSetting>(name, std::string(), std::make_unique<V>(value));
}

// The value object of a setting if it is of the class V, else null.
template <typename V>
const V* ValueAs(const KelSetting& setting) {
  return dynamic_cast<const V*>(setting.ReadValue());
}

bool ReadBool(const KelSetting& setting, bool& value) {
  if (const auto* const object = ValueAs<KelBoolValue>(setting)) {
    value = object->ToBool();
    return true;
  }
  const bool isTrue = setting.GetText() == "true";
  if (!isTrue && setting.GetText() != "false") return false;
  value = isTrue;
  return true;
}

}  // namespace

KelSetting::KelSetting(std::string name, std::string text, std::unique_ptr<IKelSettingValue> value)
    : fName(std::move(name)), fText(std::move(text)), fGiven(std::move(value)) {}

// Whoever was handed a value may change it, so that one is copied.
KelSetting::KelSetting(const KelSetting& other) : fName(other.fName), fText(other.fText), fGiven(other.fGiven) {
  if (const IKelSettingValue* const changeable = other.fHandedOut.load()) fGiven.reset(changeable->Clone());
}

KelSetting& KelSetting::operator=(const KelSetting& other) {
  KelSetting copy(other);
  fName.swap(copy.fName);
  fText.swap(copy.fText);
  fGiven.swap(copy.fGiven);
  delete fHandedOut.exchange(nullptr);
  return *this;
}

KelSetting::~KelSetting() { delete fHandedOut.load(); }

// Several threads may read one setting, and each of them may be the first to ask.
IKelSettingValue* KelSetting::GetValue() const {
  IKelSettingValue* handedOut = fHandedOut.load();
  if (handedOut != nullptr || fGiven == nullptr) return handedOut;
  std::unique_ptr<IKelSettingValue> mine(fGiven->Clone());
  return fHandedOut.compare_exchange_strong(handedOut, mine.get()) ? mine.release() : handedOut;
}

const IKelSettingValue* KelSetting::ReadValue() const noexcept {
  const IKelSettingValue* const handedOut = fHandedOut.load();
  return handedOut != nullptr ? handedOut : fGiven.get();
}

KelSettings::KelSettings() = default;

KelSettings::KelSettings(const KelSettings& other) : fPositions(other.fPositions) {
  fSettings.reserve(other.fSettings.size());
  for (const auto& setting : other.fSettings) fSettings.push_back(std::make_unique<KelSetting>(*setting));
}

KelSettings::KelSettings(KelSettings&&) noexcept = default;

// By way of a copy, because `other` may lie in a setting of this object.
KelSettings& KelSettings::operator=(const KelSettings& other) { return *this = KelSettings(other); }

KelSettings& KelSettings::operator=(KelSettings&& other) noexcept {
  KelSettings taken(std::move(other));
  fSettings.swap(taken.fSettings);
  fPositions.swap(taken.fPositions);
  return *this;
}

KelSettings::~KelSettings() = default;

bool KelSettings::AddSetting(const std::string& name, const std::string& value, bool replace) {
  return Insert(TextSetting(name, value), replace);
}

bool KelSettings::AddSetting(const std::string& name, const char* value, bool replace) {
  return Insert(TextSetting(name, value), replace);
}

bool KelSettings::AddSetting(const std::string& name, bool value, bool replace) {
  return Insert(ValueSetting<KelBoolValue>(name, value), replace);
}

bool KelSettings::AddSetting(const std::string& name, const std::vector<std::string>& value, bool replace) {
  return Insert(ValueSetting<KelVecValue<std::string>>(name, value), replace);
}

bool KelSettings::AddSetting(const std::string& name, const KelVecValue<std::string>& value, bool replace) {
  return Insert(ValueSetting<KelVecValue<std::string>>(name, value), replace);
}

bool KelSettings::AddSetting(const std::string& name, const KelVecValue<Value>& value, bool replace) {
  return Insert(ValueSetting<KelVecValue<Value>>(name, value), replace);
}

bool KelSettings::AddSetting(const std::string& name, const KelSettings& value, bool replace) {
  return Insert(ValueSetting<KelNestedSettings>(name, value), replace);
}

// `setting` has its own copies of everything, so nothing that is removed here is needed any more.
bool KelSettings::Insert(std::unique_ptr<KelSetting> setting, bool replace) {
  std::vector<std::size_t>& positions = fPositions[setting->GetName()];
  if (positions.empty() || !replace) {
    const std::size_t position = fSettings.size();
    fSettings.push_back(nullptr);  // what can fail comes first, so that list and index stay in step
    try {
      positions.push_back(position);
    } catch (...) {
      fSettings.pop_back();
      throw;
    }
    fSettings.back() = std::move(setting);
    return true;
  }
  const bool hadSeveral = positions.size() > 1;
  for (std::size_t i = 1; i < positions.size(); ++i) fSettings[positions[i]].reset();
  fSettings[positions.front()] = std::move(setting);
  if (hadSeveral) RemoveGaps();
  return true;
}

void KelSettings::RemoveGaps() {
  fSettings.erase(std::remove(fSettings.begin(), fSettings.end(), nullptr), fSettings.end());
  fPositions.clear();
  for (std::size_t i = 0; i < fSettings.size(); ++i) fPositions[fSettings[i]->GetName()].push_back(i);
}

void KelSettings::GetSettingNames(std::vector<std::string>& names) const {
  names.clear();
  for (std::size_t i = 0; i < fSettings.size(); ++i) {
    const std::string& name = fSettings[i]->GetName();
    if (fPositions.at(name).front() == i) names.push_back(name);
  }
}

std::vector<KelSetting*> KelSettings::GetSettingByName(const std::string& name) const {
  std::vector<KelSetting*> settings;
  if (const auto entry = fPositions.find(name); entry != fPositions.end()) {
    for (const std::size_t position : entry->second) settings.push_back(fSettings[position].get());
  }
  return settings;
}

bool KelSettings::GetSettingValByName(const std::string& name, std::string& value) const {
  for (const KelSetting* const setting : GetSettingByName(name)) {
    if (setting->ReadValue() != nullptr) continue;
    value = setting->GetText();
    return true;
  }
  return false;
}

bool KelSettings::GetSettingValByName(const std::string& name, std::vector<std::string>& value) const {
  for (const KelSetting* const setting : GetSettingByName(name)) {
    if (const auto* const list = ValueAs<KelVecValue<std::string>>(*setting)) {
      value = list->fValue;
      return true;
    }
  }
  return false;
}

bool KelSettings::GetSettingValByName(const std::string& name, bool& value) const {
  const std::vector<KelSetting*> settings = GetSettingByName(name);
  return std::any_of(settings.begin(), settings.end(),
                     [&value](const KelSetting* setting) { return ReadBool(*setting, value); });
}

bool KelSettings::GetSettingValByName(const std::string& name, KelSettings& value) const {
  for (const KelSetting* const setting : GetSettingByName(name)) {
    if (const auto* const nested = ValueAs<KelNestedSettings>(*setting)) {
      value = nested->GetSettings();
      return true;
    }
  }
  return false;
}

bool KelSettings::GetSettingValByName(const std::string& name, KelVecValue<Value>& value) const {
  for (const KelSetting* const setting : GetSettingByName(name)) {
    if (const auto* const list = ValueAs<KelVecValue<Value>>(*setting)) {
      value.fValue = list->fValue;
      return true;
    }
  }
  return false;
}

}  // namespace KelXML_1_3
