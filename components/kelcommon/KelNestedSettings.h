#pragma once

#include <memory>

#include "scoring/common/IKelSettingValue.h"
#include "scoring/common/KelSettings.h"

namespace KelXML_1_3 {

/// A setting's value that is settings itself: a copy that never changes, which the copies of this value share. So the
/// members of a large composite, each with its own copy of the host's settings, don't each copy the description of all
/// members.
class KelNestedSettings : public IKelSettingValue {
 public:
  explicit KelNestedSettings(KelSettings settings);
  ~KelNestedSettings() override;

  [[nodiscard]] const KelSettings& GetSettings() const noexcept { return *fSettings; }

  [[nodiscard]] IKelSettingValue* Clone() const override;
  /// Both comparisons go through the distinct names in order, and through the settings of each name in order: by text
  /// first, then by kind of value, then by value.
  bool operator==(const IKelSettingValue& other) const override;
  bool operator<(const IKelSettingValue& other) const override;
  /// The number of distinct names.
  [[nodiscard]] std::uint64_t ToSize() const override;
  /// The mark of a missing number.
  [[nodiscard]] double ToDouble() const override;
  /// Tells the number of distinct names, not the settings.
  [[nodiscard]] std::string ToString() const override;
  /// Whether there is any setting.
  [[nodiscard]] bool ToBool() const override;
  [[nodiscard]] std::int64_t ToLong() const override;
  [[nodiscard]] int GetType() const override;
  void Display() const override;

 private:
  std::shared_ptr<const KelSettings> fSettings;
};

}  // namespace KelXML_1_3
