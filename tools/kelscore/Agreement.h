#pragma once

#include <optional>
#include <string>

#include "scoring/common/Value.h"
#include "tools/kelscore/Verification.h"

namespace kelscore {

/// Whether a model's result is what a verification row expects: no value for none; a number within
/// `expected` * (1 ± precision), or next to zero as expected; a text as it stands. Where both are numbers they are
/// compared as such, also when the result is a text.
[[nodiscard]] bool Agrees(const std::optional<std::string>& expected, const KelCommon_1_3::Value& actual,
                          const VerificationField& field);

/// Whether a result counts as no value: null, or the library's mark of a missing number.
[[nodiscard]] bool IsNoValue(const KelCommon_1_3::Value& actual);

}  // namespace kelscore
