#pragma once

#include <string>

#include "tools/kelscore/Verifier.h"

namespace kelscore {

/// The report for people: a line for each difference, and a last one that sums up.
[[nodiscard]] std::string ToText(const VerificationReport& report);

/// The report for programs: one JSON object. What has no value is null.
[[nodiscard]] std::string ToJson(const VerificationReport& report);

}  // namespace kelscore
