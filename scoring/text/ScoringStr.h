#pragma once

#include <string>
#include <xercesc/util/XercesDefs.hpp>

#include "scoring/common/KelExport.h"

namespace KelScoring_20 {

/// Owner of one wide text of the XML parser: a null-terminated array of 16-bit code units.
///
///     ScoringStr name(attributes.getValue(u"name"));
///     std::string utf8 = name.toUTF8();
///
/// There are two empty states, a null array and one with only the terminator; `xc_str` and the comparisons tell them
/// apart. Lengths count code units, so a character outside the basic plane counts as two. Narrow text is widened in
/// the platform's local code page unless an operation names UTF-8. No operation reports a failure.
///
/// The XML platform must be up while a string holds text: its memory comes from there. A string belongs to one
/// thread at a time. Text given as a pointer may lie in the string's own array.
class KEL_EXPORT ScoringStr {
 public:
  ScoringStr() noexcept = default;
  ScoringStr(const XMLCh* text);
  ScoringStr(const char* text);
  ScoringStr(const std::string& text);
  ScoringStr(const ScoringStr& other);
  ~ScoringStr();

  // Assignment. A null source gives the null state.
  ScoringStr& operator=(const ScoringStr& other);
  ScoringStr& operator=(const XMLCh* text);
  ScoringStr& operator=(const char* text);
  ScoringStr& assign(const ScoringStr& other) { return *this = other; }
  ScoringStr& assign(const XMLCh* text) { return *this = text; }
  ScoringStr& assign(const char* text) { return *this = text; }
  /// The one character; 0 gives an array with only the terminator.
  ScoringStr& assign(XMLCh c);
  /// The text of UTF-8 bytes. Null for no bytes; malformed bytes end the text at the last complete block of 1000
  /// characters, and a zero byte ends the block in which it stands.
  ScoringStr& assignUTF8(const std::string& utf8);
  /// Back to the null state.
  ScoringStr& clear();

  /// The array, null included. It dies with the next change.
  [[nodiscard]] const XMLCh* xc_str() const noexcept { return fStr; }
  [[nodiscard]] bool empty() const { return !fStr || *fStr == 0; }
  [[nodiscard]] unsigned int length() const;
  /// A null and an empty text count as equal here.
  [[nodiscard]] bool equals(const XMLCh* text) const;
  /// False if either side is null, so two null strings are not equal.
  [[nodiscard]] bool equals(const ScoringStr& other) const { return *this == other; }
  [[nodiscard]] bool operator==(const ScoringStr& other) const;
  /// Whether `text` occurs; false if either side is null. An empty text occurs in every other string.
  [[nodiscard]] bool ContainsString(const XMLCh* text) const;
  /// The text as UTF-8, empty for both empty states.
  [[nodiscard]] std::string toUTF8() const;
  /// The decimal number that the whole text is, modulo 2 to the power of 32; 0 if any character is no digit.
  [[nodiscard]] unsigned int convertToInteger();

  // Appending. A null or empty text, and the character 0, change nothing.
  ScoringStr& append(const ScoringStr& other) { return append(other.xc_str()); }
  ScoringStr& append(const XMLCh* text);
  ScoringStr& append(XMLCh c);
  ScoringStr& append(const char* text);
  /// Replaces every occurrence of `from`, from left to right and without overlaps, by `to` (null: by nothing), and
  /// gives how many there were. Without any, or with a null or empty `from`, the string is not touched. A string of
  /// which nothing is left becomes null.
  unsigned int replaceSubstring(const XMLCh* from, const XMLCh* to);
  /// Removes up to `count` characters from the end. A string of which nothing is left is empty, not null.
  void truncateString(unsigned int count);

 private:
  /// Takes over an array, or null, that the parser's text functions made, and frees the old one.
  ScoringStr& Adopt(XMLCh* text);

  XMLCh* fStr = nullptr;
};

}  // namespace KelScoring_20
