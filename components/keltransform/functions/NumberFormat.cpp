#include "components/keltransform/functions/NumberFormat.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <locale.h>
#include <optional>

namespace KelTransformNS {
namespace {

// A document's pattern never reaches printf. It is taken apart, and what is printed follows a pattern of our own.
constexpr int kMaxWidth = 200;  // and precision
constexpr std::string_view kFlags = "-+ 0#";
constexpr std::string_view kIntegers = "diuoxX";
constexpr std::string_view kReals = "fFeEgG";
constexpr std::string_view kLengths = "hlL";  // of a C type, which says nothing here

struct Conversion {
  std::string_view flags;
  int width = 0;
  int precision = -1;  // none
  char letter = 0;
};

// A pattern: the text before the conversion, the conversion, and the text after it, in which "%%" stands for '%'.
struct Pattern {
  std::string_view before;
  Conversion conversion;
  std::string_view after;
};

// The place of the first conversion in a text, or its end; "%%" is none.
std::size_t FindConversion(std::string_view text) {
  for (std::size_t index = 0; index < text.size(); ++index) {
    if (text[index] != '%') continue;
    if (!text.substr(index + 1).starts_with('%')) return index;
    ++index;
  }
  return text.size();
}

std::string_view TakeAnyOf(std::string_view characters, std::string_view& text) {
  const std::string_view taken = text.substr(0, std::min(text.find_first_not_of(characters), text.size()));
  text.remove_prefix(taken.size());
  return taken;
}

// A number up to `kMaxWidth`; no digits are 0.
bool TakeCount(std::string_view& text, int& count) {
  count = 0;
  for (const char digit : TakeAnyOf("0123456789", text)) {
    count = count * 10 + (digit - '0');
    if (count > kMaxWidth) return false;
  }
  return true;
}

// Takes the conversion whose '%' has been taken.
bool TakeConversion(std::string_view& text, Conversion& conversion) {
  conversion.flags = TakeAnyOf(kFlags, text);
  if (!TakeCount(text, conversion.width)) return false;
  if (text.starts_with('.')) {
    text.remove_prefix(1);
    if (!TakeCount(text, conversion.precision)) return false;
  }
  (void)TakeAnyOf(kLengths, text);
  if (text.empty()) return false;
  conversion.letter = text.front();
  text.remove_prefix(1);
  return kIntegers.find(conversion.letter) != std::string_view::npos ||
         kReals.find(conversion.letter) != std::string_view::npos;
}

std::optional<Pattern> ParsePattern(std::string_view text) {
  Pattern pattern;
  const std::size_t begin = FindConversion(text);
  if (begin == text.size()) return std::nullopt;
  pattern.before = text.substr(0, begin);
  text.remove_prefix(begin + 1);
  if (!TakeConversion(text, pattern.conversion)) return std::nullopt;
  pattern.after = text;
  return FindConversion(text) == text.size() ? std::optional(pattern) : std::nullopt;
}

// A conversion as printf takes it, with the length of `long long` for integers.
class PrintfPattern {
 public:
  explicit PrintfPattern(const Conversion& conversion) {
    Put('%');
    for (const char flag : kFlags) {
      if (conversion.flags.find(flag) != std::string_view::npos && HasMeaning(flag, conversion.letter)) Put(flag);
    }
    Put('*');
    Put('.');
    Put('*');
    if (kIntegers.find(conversion.letter) != std::string_view::npos) Put("ll");
    Put(conversion.letter);
  }
  [[nodiscard]] const char* Text() const noexcept { return fText.data(); }

 private:
  // printf leaves it undefined what an alternative form of a decimal integer is.
  static bool HasMeaning(char flag, char letter) {
    return flag != '#' || std::string_view("diu").find(letter) == std::string_view::npos;
  }

  void Put(char character) { fText[fSize++] = character; }
  void Put(std::string_view text) {
    for (const char character : text) Put(character);
  }

  std::array<char, 16> fText{};
  std::size_t fSize = 0;
};

// This thread prints in the C locale while such an object lives, whatever locale the host has set.
class CLocale {
 public:
  CLocale() : fBefore(uselocale(Own())) {}
  CLocale(const CLocale&) = delete;
  CLocale& operator=(const CLocale&) = delete;
  ~CLocale() { uselocale(fBefore); }

 private:
  static locale_t Own() {
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
    return locale;
  }

  locale_t fBefore;
};

// The longest is the largest double with all its places before and after the point.
using PrintBuffer = std::array<char, 1024>;

template <typename Number>
std::string_view Print(const Conversion& conversion, Number number, PrintBuffer& buffer) {
  const CLocale locale;
  const PrintfPattern pattern(conversion);
  const int size =
      std::snprintf(buffer.data(), buffer.size(), pattern.Text(), conversion.width, conversion.precision, number);
  return {buffer.data(), static_cast<std::size_t>(size)};
}

void PutLiteral(std::string_view text, TextSink& result) {
  for (std::size_t index = 0; index < text.size(); ++index) {
    result.Append(text[index]);
    if (text[index] == '%') ++index;
  }
}

bool PutNumber(const Conversion& conversion, double number, TextSink& result) {
  constexpr double kTooLarge = 9223372036854775808.0;  // 2^63
  PrintBuffer buffer;
  if (kReals.find(conversion.letter) != std::string_view::npos) {
    result.Append(Print(conversion, number, buffer));
    return true;
  }
  const double whole = std::trunc(number);
  const bool isSigned = conversion.letter == 'd' || conversion.letter == 'i';
  if (!(std::fabs(whole) < kTooLarge) || (!isSigned && whole < 0.0)) return false;
  result.Append(Print(conversion, static_cast<long long>(whole), buffer));
  return true;
}

}  // namespace

bool FormatNumber(const TextArguments& arguments, TextSink& result) {
  NumberBuffer buffer;
  const std::optional<Pattern> pattern = ParsePattern(arguments.Text(1, buffer));
  if (!pattern) return false;
  PutLiteral(pattern->before, result);
  const bool isPrinted = PutNumber(pattern->conversion, arguments.Number(0), result);
  PutLiteral(pattern->after, result);
  return isPrinted;
}

bool IsNumberPattern(std::string_view pattern) { return ParsePattern(pattern).has_value(); }

}  // namespace KelTransformNS
