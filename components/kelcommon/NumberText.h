#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "scoring/common/KelExport.h"

namespace KelCommon_1_3 {

/// Room for any number's shortest text and a null character.
using NumberBuffer = std::array<char, 32>;

/// The shortest text that reads back as `number`: plain digits for ordinary magnitudes, an exponent for others.
[[nodiscard]] std::string NumberToText(double number);
/// The same in `buffer`, ending with a null character there. Allocates nothing.
[[nodiscard]] KEL_EXPORT std::string_view NumberToText(double number, NumberBuffer& buffer) noexcept;

/// The finite decimal number that the whole text is; white space of XML around it and a leading plus are allowed.
/// Nothing for any other text: words such as "inf" and "nan", hexadecimal digits, a number too large for a double.
/// A number too small for a double is 0.
[[nodiscard]] std::optional<double> TextToNumber(std::string_view text);

}  // namespace KelCommon_1_3
