#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "scoring/common/IKelSettingValue.h"
#include "scoring/common/KelExport.h"
#include "scoring/common/KelVecValue.h"

namespace KelXML_1_3 {

template <typename T>
inline constexpr bool kTurnsIntoBool = std::is_arithmetic_v<T> || std::is_enum_v<T> ||
                                       std::is_same_v<T, KelCommon_1_3::Value> ||
                                       (std::is_pointer_v<T> && !std::is_convertible_v<T, const char*>);

/// One setting: a name with either a plain text or a value object, which it owns.
///
/// Copies share the value as it was given until a caller asks for it with `GetValue`: the members of a large ensemble
/// each have the host's settings, with its lists of files and identifiers. No caller sees that.
class KEL_EXPORT KelSetting {
 public:
  KelSetting(std::string name, std::string text, std::unique_ptr<IKelSettingValue> value);
  KelSetting(const KelSetting& other);
  KelSetting& operator=(const KelSetting& other);
  ~KelSetting();

  [[nodiscard]] const std::string& GetName() const noexcept { return fName; }
  /// The plain text; empty for a setting with a value object.
  [[nodiscard]] const std::string& GetText() const noexcept { return fText; }
  /// The value object, null for a plain text. The setting owns it; a change of it shows in this setting only.
  [[nodiscard]] IKelSettingValue* GetValue() const;
  /// The same for reading only. A later `GetValue` may give another, equal object.
  [[nodiscard]] const IKelSettingValue* ReadValue() const noexcept;

 private:
  std::string fName;
  std::string fText;
  std::shared_ptr<const IKelSettingValue> fGiven;               // never changes
  mutable std::atomic<IKelSettingValue*> fHandedOut = nullptr;  // owned; takes the place of what was given
};

/// Named settings in the order of their adding; a name may stand several times. Copies are deep.
///
/// One settings object belongs to one thread at a time; several threads may read one that none of them changes.
class KEL_EXPORT KelSettings {
 public:
  KelSettings();
  KelSettings(const KelSettings& other);
  KelSettings(KelSettings&&) noexcept;
  KelSettings& operator=(const KelSettings& other);
  KelSettings& operator=(KelSettings&&) noexcept;
  ~KelSettings();

  /// Adds a setting. With `replace` all settings of the name are removed first and the new one takes the place of
  /// the first of them; without, it is appended. Gives true. `value` may lie in this object.
  bool AddSetting(const std::string& name, const std::string& value, bool replace);
  bool AddSetting(const std::string& name, const char* value, bool replace);
  bool AddSetting(const std::string& name, bool value, bool replace);
  bool AddSetting(const std::string& name, const std::vector<std::string>& value, bool replace);
  bool AddSetting(const std::string& name, const KelVecValue<std::string>& value, bool replace);
  bool AddSetting(const std::string& name, const KelVecValue<KelCommon_1_3::Value>& value, bool replace);
  bool AddSetting(const std::string& name, const KelSettings& value, bool replace);
  /// No other number, enumeration or pointer, and no single value: it would silently become a bool.
  template <typename T, typename = std::enable_if_t<kTurnsIntoBool<T>>>
  bool AddSetting(const std::string& name, T value, bool replace) = delete;

  /// Fills `names` with the distinct names in the order of their first adding.
  void GetSettingNames(std::vector<std::string>& names) const;
  /// All settings of the name, in order. They belong to this object and live until it changes.
  [[nodiscard]] std::vector<KelSetting*> GetSettingByName(const std::string& name) const;

  /// The first setting of the name whose value is of the wanted kind; false leaves `value` unchanged.
  bool GetSettingValByName(const std::string& name, std::string& value) const;
  bool GetSettingValByName(const std::string& name, std::vector<std::string>& value) const;
  /// Reads a bool, and the texts "true" and "false".
  bool GetSettingValByName(const std::string& name, bool& value) const;
  bool GetSettingValByName(const std::string& name, KelSettings& value) const;
  bool GetSettingValByName(const std::string& name, KelVecValue<KelCommon_1_3::Value>& value) const;

 private:
  bool Insert(std::unique_ptr<KelSetting> setting, bool replace);
  void RemoveGaps();

  std::vector<std::unique_ptr<KelSetting>> fSettings;
  std::map<std::string, std::vector<std::size_t>> fPositions;  // name -> positions in fSettings, ascending
};

}  // namespace KelXML_1_3
