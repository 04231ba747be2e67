#pragma once

#include <string>
#include <string_view>

namespace KelTransformNS {

// Regular expressions and case folding work on UTF-16. Malformed text becomes U+FFFD.

/// The text in `result`, which keeps its memory for the next one.
void ToUtf16(std::string_view text, std::u16string& result);
/// The same the other way.
void ToUtf8(std::u16string_view text, std::string& result);
/// Appends the text without differences of case, by the rules of no language in particular.
void AppendFolded(std::u16string_view text, std::u16string& result);

}  // namespace KelTransformNS
