#pragma once

#include <array>
#include <string_view>

namespace KelTransformNS {

/// Room for any number's shortest text.
using NumberBuffer = std::array<char, 32>;

/// The shortest text that reads back as `number`, in `buffer`, ending with a null character. The same text as that of a
/// record's number value, but that -0 is "0", since the two are one category. Allocates nothing.
[[nodiscard]] std::string_view ShortestText(double number, NumberBuffer& buffer) noexcept;

}  // namespace KelTransformNS
