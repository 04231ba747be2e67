#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>

#include "components/kelparsexml/ElementTree.h"
#include "components/kelparsexml/Lexical.h"

namespace KelXML_1_3 {
namespace {
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Beyond every place that a digit of a text can have, and far from overflow.
constexpr std::int64_t kLargestExponent = std::numeric_limits<std::int64_t>::max() / 2;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// For a decimal number that is out of a double's range: whether it is far above it, not far below. The power of ten of
// its first digit that isn't 0 decides.
bool IsHuge(std::string_view number) {
  const std::size_t exponentMark = std::min(number.find_first_of("eE"), number.size());
  const std::string_view digits = number.substr(0, exponentMark);
  const std::size_t firstDigit = digits.find_first_of("123456789");
  const std::size_t point = std::min(digits.find('.'), digits.size());
  if (firstDigit == std::string_view::npos) return false;
  std::int64_t exponent = 0;
  if (exponentMark < number.size()) {
    std::string_view text = number.substr(exponentMark + 1);
    if (text.starts_with('+')) text.remove_prefix(1);
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), exponent);
    if (error == std::errc::result_out_of_range) return !text.starts_with('-');
    exponent = std::clamp(exponent, -kLargestExponent, kLargestExponent);
  }
  return static_cast<std::int64_t>(point) - static_cast<std::int64_t>(firstDigit) + exponent > 0;
}

// Digits, a point and an exponent, without a sign. What `from_chars` knows beyond them ("inf", "nan(...)") is no
// number.
std::optional<double> ParseUnsigned(std::string_view text) {
  const bool isDecimal = !text.empty() && (IsDigit(text[0]) || (text.size() > 1 && text[0] == '.' && IsDigit(text[1])));
  if (!isDecimal) return std::nullopt;
  double number = 0;
  const char* const textEnd = text.data() + text.size();
  const auto [end, error] = std::from_chars(text.data(), textEnd, number);
  if (end != textEnd) return std::nullopt;
  if (error == std::errc::result_out_of_range) return IsHuge(text) ? kInfinity : 0.0;
  return error == std::errc() ? std::optional(number) : std::nullopt;
}
}  // namespace

// A number beyond the range of a double becomes the nearest that there is, an infinity or 0, as XML Schema has it.
std::optional<double> ParsePmmlNumber(std::string_view text) {
  text = TrimXmlSpace(text);
  if (text == "NaN") return std::numeric_limits<double>::quiet_NaN();
  const bool isNegative = text.starts_with('-');
  if (isNegative || text.starts_with('+')) text.remove_prefix(1);
  const std::optional<double> number =
      text == "INF" || text == "Infinity" ? std::optional(kInfinity) : ParseUnsigned(text);
  return number && isNegative ? -*number : number;
}

}  // namespace KelXML_1_3
