#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace KelXML_1_3 {

/// The most bytes that a unit of UTF-16 becomes.
constexpr std::size_t kMaxUtf8PerUnit = 3;

/// The length of a text that ends with 0.
inline std::size_t LengthOf(const char16_t* text) noexcept {
  const char16_t* end = text;
  while (*end != 0) ++end;
  return static_cast<std::size_t>(end - text);
}

/// Writes `size` units as UTF-8 to `to`, which has room for `kMaxUtf8PerUnit` bytes for each. Gives the end of what it
/// wrote. A surrogate without its other half becomes U+FFFD.
char* WriteUtf8(const char16_t* text, std::size_t size, char* to) noexcept;
/// How many bytes that is.
std::size_t Utf8Size(const char16_t* text, std::size_t size) noexcept;

void AppendUtf8(std::string& to, const char16_t* text, std::size_t size);
std::string ToUtf8(const char16_t* text);

inline bool IsLowSurrogate(char16_t unit) noexcept { return unit >= 0xDC00 && unit < 0xE000; }
inline bool IsHighSurrogate(char16_t unit) noexcept { return unit >= 0xD800 && unit < 0xDC00; }

/// Not longer than `maxBytes`, and no character is cut.
std::string_view CutUtf8(std::string_view text, std::size_t maxBytes) noexcept;

}  // namespace KelXML_1_3
