#include "components/kelparsexml/Utf8.h"

#include <cstdint>

namespace KelXML_1_3 {
namespace {
constexpr char32_t kReplacement = 0xFFFD;

// The character at `at`, which moves behind it.
char32_t TakeCharacter(const char16_t*& at, const char16_t* end) {
  const char16_t unit = *at++;
  if (IsLowSurrogate(unit)) return kReplacement;
  if (!IsHighSurrogate(unit)) return unit;
  if (at == end || !IsLowSurrogate(*at)) return kReplacement;
  return 0x10000 + ((static_cast<char32_t>(unit) - 0xD800) << 10) + (static_cast<char32_t>(*at++) - 0xDC00);
}

char* Write(char32_t character, char* to) {
  const auto put = [&to](char32_t byte) { *to++ = static_cast<char>(static_cast<std::uint8_t>(byte)); };
  if (character < 0x80) {
    put(character);
  } else if (character < 0x800) {
    put(0xC0 | character >> 6);
    put(0x80 | (character & 0x3F));
  } else if (character < 0x10000) {
    put(0xE0 | character >> 12);
    put(0x80 | (character >> 6 & 0x3F));
    put(0x80 | (character & 0x3F));
  } else {
    put(0xF0 | character >> 18);
    put(0x80 | (character >> 12 & 0x3F));
    put(0x80 | (character >> 6 & 0x3F));
    put(0x80 | (character & 0x3F));
  }
  return to;
}
}  // namespace

// Almost every text is ASCII, so it is copied as such first, many units at a time.
char* WriteUtf8(const char16_t* text, std::size_t size, char* to) noexcept {
  unsigned bits = 0;
  for (std::size_t i = 0; i < size; ++i) {
    bits |= text[i];
    to[i] = static_cast<char>(text[i]);
  }
  if (bits < 0x80) return to + size;
  const char16_t* const end = text + size;
  while (text != end) {
    if (*text < 0x80) {
      *to++ = static_cast<char>(*text++);
    } else {
      to = Write(TakeCharacter(text, end), to);
    }
  }
  return to;
}

std::size_t Utf8Size(const char16_t* text, std::size_t size) noexcept {
  std::size_t bytes = 0;
  char character[4];
  for (const char16_t *at = text, *const end = text + size; at != end;) {
    bytes += static_cast<std::size_t>(Write(TakeCharacter(at, end), character) - character);
  }
  return bytes;
}

void AppendUtf8(std::string& to, const char16_t* text, std::size_t size) {
  const std::size_t before = to.size();
  to.resize(before + size * kMaxUtf8PerUnit);
  to.resize(static_cast<std::size_t>(WriteUtf8(text, size, to.data() + before) - to.data()));
}

std::string ToUtf8(const char16_t* text) {
  std::string utf8;
  if (text != nullptr) AppendUtf8(utf8, text, LengthOf(text));
  return utf8;
}

std::string_view CutUtf8(std::string_view text, std::size_t maxBytes) noexcept {
  if (text.size() <= maxBytes) return text;
  while (maxBytes > 0 && (static_cast<unsigned char>(text[maxBytes]) & 0xC0) == 0x80) --maxBytes;
  return text.substr(0, maxBytes);
}

}  // namespace KelXML_1_3
