#pragma once

#include <string_view>

#include "components/kelcommon/NumberText.h"

namespace KelTransformNS {

using KelCommon_1_3::NumberBuffer;

/// The shortest text that reads back as `number`, in `buffer`, ending with a null character. The same text as that of a
/// record's number value, but that -0 is "0", since the two are one category. Allocates nothing.
[[nodiscard]] inline std::string_view ShortestText(double number, NumberBuffer& buffer) noexcept {
  return KelCommon_1_3::NumberToText(number == 0.0 ? 0.0 : number, buffer);
}

}  // namespace KelTransformNS
