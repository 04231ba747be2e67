#pragma once

#include "scoring/common/IKelSettingValue.h"

namespace KelXML_1_3 {

/// A setting's value that is true or false.
class KelBoolValue : public IKelSettingValue {
 public:
  explicit KelBoolValue(bool value) noexcept : fValue(value) {}
  ~KelBoolValue() override;

  [[nodiscard]] IKelSettingValue* Clone() const override;
  bool operator==(const IKelSettingValue& other) const override;
  bool operator<(const IKelSettingValue& other) const override;
  /// The conversions to numbers give 1 for true and 0 for false.
  [[nodiscard]] std::uint64_t ToSize() const override;
  [[nodiscard]] double ToDouble() const override;
  /// "true" or "false".
  [[nodiscard]] std::string ToString() const override;
  [[nodiscard]] bool ToBool() const override;
  [[nodiscard]] std::int64_t ToLong() const override;
  [[nodiscard]] int GetType() const override;
  void Display() const override;

 private:
  bool fValue;
};

}  // namespace KelXML_1_3
