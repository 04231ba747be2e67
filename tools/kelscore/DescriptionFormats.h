#pragma once

#include <string>

#include "tools/kelscore/ModelDescription.h"

namespace kelscore {

/// The description for people: aligned columns, a part for each subject.
[[nodiscard]] std::string ToText(const ModelDescription& description);

/// The description for programs: one JSON object. What isn't known is left out; a missing bound is null.
[[nodiscard]] std::string ToJson(const ModelDescription& description);

}  // namespace kelscore
