#pragma once

#include "components/keltransform/functions/Function.h"
#include "components/keltransform/text/RegularExpression.h"

namespace KelTransformNS {

// Functions with a regular expression. Invalid if the search is given up.

/// Whether a part of the first operand matches.
[[nodiscard]] Cell Matches(const RegularExpression& expression, const Operands& operands) noexcept;
/// The first operand with each match replaced by the second one.
[[nodiscard]] Cell ReplaceMatches(const RegularExpression& expression, const Operands& operands,
                                  const TextPool& pool) noexcept;

}  // namespace KelTransformNS
