#include "components/kelcommon/NumberText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

namespace KelCommon_1_3 {
namespace {

// Between these magnitudes people expect plain digits.
constexpr double kPlainFrom = 1e-5;
constexpr double kPlainBelow = 1e16;

bool IsPlain(double number) {
  const double magnitude = std::fabs(number);
  return magnitude >= kPlainFrom && magnitude < kPlainBelow;
}

std::string_view TrimXmlSpace(std::string_view text) {
  constexpr std::string_view kSpace = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kSpace);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

// The digits behind the exponent's mark as a number, or one beyond every possible place when they are too many.
long Exponent(std::string_view digits) {
  constexpr long kBeyond = std::numeric_limits<long>::max() / 2;
  if (digits.starts_with('+')) digits.remove_prefix(1);
  long exponent = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), exponent);
  if (result.ec == std::errc()) return std::clamp(exponent, -kBeyond, kBeyond);
  return digits.starts_with('-') ? -kBeyond : kBeyond;
}

// Whether an unsigned number outside the range of doubles is too small rather than too large. Its decimal magnitude is
// hundreds away from zero, so a sum that is off by one tells the two apart.
bool IsTooSmall(std::string_view number) {
  const std::size_t mark = std::min(number.find_first_of("eE"), number.size());
  const std::string_view digits = number.substr(0, mark);
  const auto point = static_cast<long>(std::min(digits.find('.'), digits.size()));
  const auto firstDigit = static_cast<long>(digits.find_first_of("123456789"));
  const long exponent = mark < number.size() ? Exponent(number.substr(mark + 1)) : 0;
  return point - firstDigit + exponent < 0;
}

// `text` begins with a digit or a point, so none of the words that the conversion knows gets here.
std::optional<double> ParseUnsigned(std::string_view text) {
  double number = 0.0;
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number);
  if (result.ptr != end) return std::nullopt;
  if (result.ec == std::errc()) return number;
  if (result.ec == std::errc::result_out_of_range && IsTooSmall(text)) return 0.0;
  return std::nullopt;
}

bool BeginsNumber(std::string_view text) {
  return !text.empty() && (text.front() == '.' || (text.front() >= '0' && text.front() <= '9'));
}

}  // namespace

std::string NumberToText(double number) {
  NumberBuffer buffer;
  return std::string(NumberToText(number, buffer));
}

std::string_view NumberToText(double number, NumberBuffer& buffer) noexcept {
  char* const begin = buffer.data();
  char* const end = begin + buffer.size() - 1;
  const auto result =
      IsPlain(number) ? std::to_chars(begin, end, number, std::chars_format::fixed) : std::to_chars(begin, end, number);
  *result.ptr = '\0';
  return {begin, static_cast<std::size_t>(result.ptr - begin)};
}

std::optional<double> TextToNumber(std::string_view text) {
  text = TrimXmlSpace(text);
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  if (!BeginsNumber(text)) return std::nullopt;
  const std::optional<double> magnitude = ParseUnsigned(text);
  return negative && magnitude ? -*magnitude : magnitude;
}

}  // namespace KelCommon_1_3
