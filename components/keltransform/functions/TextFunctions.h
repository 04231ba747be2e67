#pragma once

#include "components/keltransform/functions/Function.h"

namespace KelTransformNS {

// Texts are UTF-8; a character is a code point.

[[nodiscard]] bool Uppercase(const TextArguments& arguments, TextSink& result);
[[nodiscard]] bool Lowercase(const TextArguments& arguments, TextSink& result);
/// (text, start from 1, length): what is there of it. No value for a start below 1, a negative length, or a fraction.
[[nodiscard]] bool Substring(const TextArguments& arguments, TextSink& result);
/// Without blanks, tabs and line ends at either end.
[[nodiscard]] bool TrimBlanks(const TextArguments& arguments, TextSink& result);
[[nodiscard]] bool Concatenate(const TextArguments& arguments, TextSink& result);
[[nodiscard]] double CountCharacters(std::string_view text);

}  // namespace KelTransformNS
