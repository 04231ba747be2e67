#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace KelCommon_1_3 {

/// The shortest text that reads back as `number`: plain digits for ordinary magnitudes, an exponent for others.
[[nodiscard]] std::string NumberToText(double number);

/// The finite decimal number that the whole text is; white space of XML around it and a leading plus are allowed.
/// Nothing for any other text: words such as "inf" and "nan", hexadecimal digits, a number too large for a double.
/// A number too small for a double is 0.
[[nodiscard]] std::optional<double> TextToNumber(std::string_view text);

}  // namespace KelCommon_1_3
