#include "tools/kelscore/CsvText.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace kelscore {
namespace {

constexpr std::string_view kWhiteSpace = " \t\r\n";
constexpr std::size_t kLongestQuoted = 60;

std::string_view Trimmed(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(kWhiteSpace);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(kWhiteSpace) - begin + 1);
}

void AppendVisible(std::string& to, char character) {
  static constexpr char kDigits[] = "0123456789abcdef";
  const auto code = static_cast<unsigned char>(character);
  if (character == '\n') {
    to += "\\n";
  } else if (character == '\r') {
    to += "\\r";
  } else if (character == '\t') {
    to += "\\t";
  } else if (code < 0x20 || code == 0x7f) {
    to.append("\\x").append(1, kDigits[code >> 4U]).append(1, kDigits[code & 15U]);
  } else {
    to += character;
  }
}

}  // namespace

std::optional<double> ReadNumber(std::string_view text) {
  text = Trimmed(text);
  // A plus sign is usual in tables, though from_chars doesn't take it.
  if (text.size() > 1 && text.front() == '+' && text[1] != '-') text.remove_prefix(1);
  double number = 0.0;
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || rest != end || !std::isfinite(number)) return std::nullopt;
  return number;
}

void AppendNumber(std::string& to, double number) {
  char buffer[32];
  const auto [end, error] = std::to_chars(buffer, buffer + sizeof buffer, number);
  to.append(buffer, end);
}

void AppendField(std::string& to, std::string_view field, char delimiter) {
  const char special[] = {delimiter, '"', '\r', '\n'};
  if (field.find_first_of(std::string_view(special, sizeof special)) == std::string_view::npos) {
    to.append(field);
    return;
  }
  to.push_back('"');
  for (const char character : field) {
    if (character == '"') to.push_back('"');
    to.push_back(character);
  }
  to.push_back('"');
}

std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  std::size_t size = std::min(text.size(), kLongestQuoted);
  // Not in the middle of a UTF-8 sequence.
  while (size < text.size() && size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0U) == 0x80U) --size;
  for (const char character : text.substr(0, size)) AppendVisible(quoted, character);
  return quoted + (size < text.size() ? "...\"" : "\"");
}

}  // namespace kelscore
