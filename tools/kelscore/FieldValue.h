#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "scoring/common/Value.h"
#include "tools/kelscore/ModelField.h"

namespace kelscore {

/// Turns the text of a field into its value; false, and the value unchanged, if the field can't have that text.
/// `markers` are texts that may stand for a number. `scratch` is a buffer that the caller keeps, so that texts don't
/// allocate.
[[nodiscard]] bool ReadFieldValue(FieldKind kind, const std::vector<std::string>& markers, std::string_view text,
                                  KelCommon_1_3::Value& value, std::string& scratch);

}  // namespace kelscore
