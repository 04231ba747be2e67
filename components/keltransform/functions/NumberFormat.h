#pragma once

#include "components/keltransform/functions/Function.h"

namespace KelTransformNS {

/// A number by a pattern of C's printf, in the C locale: flags, width, precision, one of d i u o x X f F e E g G, and
/// text around it. An integer conversion drops the fraction. No value for a pattern that has another conversion, none,
/// or several, or for a number that an integer conversion can't show.
[[nodiscard]] bool FormatNumber(const TextArguments& arguments, TextSink& result);
/// Whether a pattern is one of those.
[[nodiscard]] bool IsNumberPattern(std::string_view pattern);

}  // namespace KelTransformNS
