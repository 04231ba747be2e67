#pragma once

#include <cstdint>
#include <string>

#include "scoring/common/KelExport.h"

namespace KelXML_1_3 {

/// The value of a setting that is more than a plain text. The order of the virtual operations is fixed.
class KEL_EXPORT IKelSettingValue {
 public:
  virtual ~IKelSettingValue();
  /// A deep copy; the caller owns it.
  [[nodiscard]] virtual IKelSettingValue* Clone() const = 0;
  virtual bool operator==(const IKelSettingValue& other) const = 0;
  virtual bool operator<(const IKelSettingValue& other) const = 0;
  [[nodiscard]] virtual std::uint64_t ToSize() const = 0;
  [[nodiscard]] virtual double ToDouble() const = 0;
  [[nodiscard]] virtual std::string ToString() const = 0;
  [[nodiscard]] virtual bool ToBool() const = 0;
  [[nodiscard]] virtual std::int64_t ToLong() const = 0;
  /// The type code: 1 a bool, 2 a vector, 3 nested settings.
  [[nodiscard]] virtual int GetType() const = 0;
  /// Writes the value through the display functions of `KelDisplay.h`.
  virtual void Display() const = 0;
};

}  // namespace KelXML_1_3
