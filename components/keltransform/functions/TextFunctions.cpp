#include "components/keltransform/functions/TextFunctions.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <unicode/ucasemap.h>

namespace KelTransformNS {
namespace {

struct CloseCaseMap {
  void operator()(UCaseMap* map) const noexcept { ucasemap_close(map); }
};

// The rules of no language in particular, whatever the host's is.
const UCaseMap* LanguageNeutral() {
  static const std::unique_ptr<UCaseMap, CloseCaseMap> map = [] {
    UErrorCode code = U_ZERO_ERROR;
    return std::unique_ptr<UCaseMap, CloseCaseMap>(ucasemap_open("", 0, &code));
  }();
  return map.get();
}

using MapCase = decltype(&ucasemap_utf8ToUpper);

// Writes into what memory the text has already; a second try has all that the first one asked for.
bool MapTo(MapCase mapCase, std::string_view from, TextSink& result) {
  if (LanguageNeutral() == nullptr || from.size() > MadeTexts::kMaxBytes) return false;
  std::string& text = result.Text();
  UErrorCode code = U_BUFFER_OVERFLOW_ERROR;
  std::size_t size = from.size();
  for (int attempt = 0; attempt < 2 && code == U_BUFFER_OVERFLOW_ERROR; ++attempt) {
    if (!result.Take(size)) return false;
    text.resize(size);
    code = U_ZERO_ERROR;
    size = static_cast<std::size_t>(mapCase(LanguageNeutral(), text.data(), static_cast<std::int32_t>(text.size()),
                                            from.data(), static_cast<std::int32_t>(from.size()), &code));
    if (code == U_BUFFER_OVERFLOW_ERROR) text.clear();
  }
  text.resize(size);
  return U_SUCCESS(code) != 0;
}

bool BeginsCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }

// The rest of a text after `count` of its characters.
std::string_view SkipCharacters(std::string_view text, double count) {
  std::size_t index = 0;
  for (; index < text.size(); ++index) {
    if (BeginsCharacter(text[index]) && count-- < 1.0) break;
  }
  return text.substr(index);
}

bool IsWholeFrom(double lowest, double number) { return number >= lowest && number == std::trunc(number); }

}  // namespace

bool Uppercase(const TextArguments& arguments, TextSink& result) {
  NumberBuffer buffer;
  return MapTo(ucasemap_utf8ToUpper, arguments.Text(0, buffer), result);
}

bool Lowercase(const TextArguments& arguments, TextSink& result) {
  NumberBuffer buffer;
  return MapTo(ucasemap_utf8ToLower, arguments.Text(0, buffer), result);
}

bool Substring(const TextArguments& arguments, TextSink& result) {
  NumberBuffer buffer;
  const double start = arguments.Number(1);
  const double length = arguments.Number(2);
  if (!IsWholeFrom(1.0, start) || !IsWholeFrom(0.0, length)) return false;
  const std::string_view rest = SkipCharacters(arguments.Text(0, buffer), start - 1.0);
  result.Append(rest.substr(0, rest.size() - SkipCharacters(rest, length).size()));
  return true;
}

bool TrimBlanks(const TextArguments& arguments, TextSink& result) {
  constexpr std::string_view kBlanks = " \t\r\n";
  NumberBuffer buffer;
  const std::string_view text = arguments.Text(0, buffer);
  const std::size_t first = std::min(text.find_first_not_of(kBlanks), text.size());
  result.Append(text.substr(first, text.find_last_not_of(kBlanks) - first + 1));
  return true;
}

bool Concatenate(const TextArguments& arguments, TextSink& result) {
  for (std::size_t index = 0; index < arguments.Count(); ++index) {
    NumberBuffer buffer;
    result.Append(arguments.Text(index, buffer));
  }
  return true;
}

double CountCharacters(std::string_view text) {
  return static_cast<double>(std::count_if(text.begin(), text.end(), BeginsCharacter));
}

}  // namespace KelTransformNS
