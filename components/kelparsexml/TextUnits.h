#pragma once

#include <bit>

namespace KelXML_1_3 {

// The code units in which the gate reads a document. ASCII characters are one unit in each of them, and no unit of
// another character looks like one. `Of` gives an ASCII character as the unit looks when it is read from memory.

/// UTF-8, US-ASCII, ISO-8859-x, windows-125x.
struct ByteUnits {
  using Unit = unsigned char;
  static constexpr Unit Of(char ascii) { return static_cast<Unit>(ascii); }
};

template <std::endian kOrder>
struct Utf16Units {
  using Unit = char16_t;
  static constexpr Unit Of(char ascii) {
    const auto unit = static_cast<unsigned char>(ascii);
    return static_cast<Unit>(kOrder == std::endian::native ? unit : unit << 8);
  }
};
using Utf16LittleUnits = Utf16Units<std::endian::little>;
using Utf16BigUnits = Utf16Units<std::endian::big>;

}  // namespace KelXML_1_3
