#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "scoring/common/IKelSettingValue.h"
#include "scoring/common/KelExport.h"
#include "scoring/common/Value.h"

namespace KelXML_1_3 {

/// A setting's value that is a list. The forms for texts and for `Value` are made in the common component.
template <typename T>
class KelVecValue : public IKelSettingValue {
 public:
  KelVecValue() = default;
  explicit KelVecValue(std::vector<T> entries);
  ~KelVecValue() override;
  [[nodiscard]] IKelSettingValue* Clone() const override;
  /// Both comparisons are false with a value of another class; else the usual lexicographic order of the entries.
  bool operator==(const IKelSettingValue& other) const override;
  bool operator<(const IKelSettingValue& other) const override;
  [[nodiscard]] std::uint64_t ToSize() const override;
  /// Always the lowest finite double: a list has no number.
  [[nodiscard]] double ToDouble() const override;
  /// Tells the number of entries, not the entries.
  [[nodiscard]] std::string ToString() const override;
  [[nodiscard]] bool ToBool() const override;
  [[nodiscard]] std::int64_t ToLong() const override;
  [[nodiscard]] int GetType() const override;
  void Display() const override;

  std::vector<T> fValue;  ///< the entries, in order
};

extern template class KEL_EXPORT KelVecValue<std::string>;
extern template class KEL_EXPORT KelVecValue<KelCommon_1_3::Value>;

}  // namespace KelXML_1_3
