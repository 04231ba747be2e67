#pragma once

#include <vector>

#include "components/keltransform/expressions/Arguments.h"

namespace KelTransformNS {

// Arguments that say how a text is made or searched.

/// Checks the pattern of a function that formats, if it stands in the document. Throws an error about it.
void CheckFormat(const Function& function, const std::vector<Argument>& arguments, const CodeBuilder& code);

[[nodiscard]] bool TakesRegularExpression(const Function& function) noexcept;
/// The call of such a function. Its pattern is compiled now, so it must be a constant. Throws an error about the
/// argument that isn't as it must be.
[[nodiscard]] CompiledValue EmitPatternFunction(const Function& function, const std::vector<Argument>& arguments,
                                                CodeBuilder& code);

}  // namespace KelTransformNS
