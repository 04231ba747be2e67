#include "scoring/pmml/StrictNumber.h"

#include <cstdlib>
#include <locale.h>
#include <string>
#include <string_view>

namespace KelScoring_20 {
namespace {

/// The first and the last position of a character in a text, -1 if it does not occur.
struct Occurrences {
  Occurrences(const std::string& text, char c) {
    const std::size_t firstFound = text.find(c);
    if (firstFound == std::string::npos) return;
    first = static_cast<int>(firstFound);
    last = static_cast<int>(text.rfind(c));
  }
  [[nodiscard]] bool Any() const { return first >= 0; }
  [[nodiscard]] bool AtMostOne() const { return first == last; }

  int first = -1;
  int last = -1;
};

/// Copies the text if it isn't empty and consists of digits and the given other characters only.
bool CopyNumberText(const XMLCh* text, std::string_view others, std::string& number) {
  for (; *text; ++text) {
    const char c = *text < 0x80 ? static_cast<char>(*text) : '?';
    const bool isDigit = c >= '0' && c <= '9';
    if (!isDigit && others.find(c) == std::string_view::npos) return false;
    number.push_back(c);
  }
  return !number.empty();
}

// Of an exponent mark, at most one, with something on both sides.
bool IsExponentWellPlaced(const Occurrences& mark, int end) {
  return !mark.Any() || (mark.AtMostOne() && mark.first != 0 && mark.first != end);
}

// Only the last sign is looked at when there is an exponent: one in the middle of the mantissa passes, and the
// conversion stops there.
bool IsSignWellPlaced(const Occurrences& sign, const Occurrences& e, const Occurrences& E, int end) {
  if (!sign.Any()) return true;
  const bool hasExponent = e.Any() || E.Any();
  if (!hasExponent && (!sign.AtMostOne() || sign.last != 0)) return false;
  if (sign.last == end) return false;
  return sign.last == 0 || sign.last == e.first + 1 || sign.last == E.first + 1;
}

// A point stands in front of the exponent and has something behind it that isn't the exponent.
bool IsPointWellPlaced(const Occurrences& point, const Occurrences& e, const Occurrences& E, int end) {
  if (!point.Any()) return true;
  if (!point.AtMostOne() || point.last == end) return false;
  const auto isInFront = [&](const Occurrences& mark) { return !mark.Any() || point.last + 1 < mark.first; };
  return isInFront(e) && isInFront(E);
}

bool IsDoubleWellFormed(const std::string& text) {
  const int end = static_cast<int>(text.size()) - 1;
  const Occurrences e(text, 'e');
  const Occurrences E(text, 'E');
  return IsExponentWellPlaced(e, end) && IsExponentWellPlaced(E, end) && !(e.Any() && E.Any()) &&
         IsSignWellPlaced(Occurrences(text, '-'), e, E, end) && IsSignWellPlaced(Occurrences(text, '+'), e, E, end) &&
         IsPointWellPlaced(Occurrences(text, '.'), e, E, end);
}

bool IsIntSignWellPlaced(const Occurrences& sign, int end) {
  return !sign.Any() || (sign.AtMostOne() && sign.last == 0 && sign.last != end);
}

bool IsIntWellFormed(const std::string& text) {
  const int end = static_cast<int>(text.size()) - 1;
  return IsIntSignWellPlaced(Occurrences(text, '-'), end) && IsIntSignWellPlaced(Occurrences(text, '+'), end);
}

/// `atof` without the host's locale, which could take the point for the end of the number.
double ConvertInCLocale(const std::string& text) {
  static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
  return strtod_l(text.c_str(), nullptr, cLocale);
}

}  // namespace

bool ReadStrictInt(const XMLCh* text, int& value) {
  std::string number;
  if (!CopyNumberText(text, "-+", number) || !IsIntWellFormed(number)) return false;
  value = static_cast<int>(std::strtol(number.c_str(), nullptr, 10));  // what `atoi` does, defined on overflow too
  return true;
}

bool ReadStrictDouble(const XMLCh* text, double& value) {
  std::string number;
  if (!CopyNumberText(text, ".eE-+", number) || !IsDoubleWellFormed(number)) return false;
  value = ConvertInCLocale(number);
  return true;
}

}  // namespace KelScoring_20
