#include "components/kelparsexml/DocumentEncoding.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace KelXML_1_3 {
namespace {
using namespace std::string_view_literals;

constexpr std::string_view kOtherEncoding = "its encoding is not UTF-8, UTF-16, US-ASCII, ISO-8859-x or windows-125x";

// Beginnings of texts in UTF-32 and UCS-4 in any order (byte order mark, or '<' in four bytes), and of an XML
// declaration in EBCDIC. The one of UTF-32 in little order begins like that of UTF-16, so these are tried first.
constexpr std::array kRefusedBeginnings = {"\0\0\xFE\xFF"sv, "\xFF\xFE\0\0"sv, "\0\0\0<"sv,         "<\0\0\0"sv,
                                           "\0\0<\0"sv,      "\0<\0\0"sv,      "\x4C\x6F\xA7\x94"sv};

struct Beginning {
  std::string_view bytes;
  UnitKind units;
};
// Without a byte order mark, the parser takes a text for UTF-16 if it begins with an XML declaration.
constexpr std::array kUtf16Beginnings = {
    Beginning{"\xFE\xFF"sv, UnitKind::kUtf16Big}, Beginning{"\xFF\xFE"sv, UnitKind::kUtf16Little},
    Beginning{"\0<\0?\0x\0m\0l\0 "sv, UnitKind::kUtf16Big}, Beginning{"<\0?\0x\0m\0l\0 \0"sv, UnitKind::kUtf16Little}};

constexpr std::string_view kSpace = " \t\r\n";

std::optional<UnitKind> FindUnits(std::string_view bytes) {
  const auto begins = [bytes](std::string_view beginning) { return bytes.starts_with(beginning); };
  if (std::any_of(kRefusedBeginnings.begin(), kRefusedBeginnings.end(), begins)) return std::nullopt;
  for (const Beginning& beginning : kUtf16Beginnings) {
    if (bytes.starts_with(beginning.bytes)) return beginning.units;
  }
  if (begins("\0<"sv) || begins("<\0"sv)) return std::nullopt;
  return UnitKind::kBytes;
}

// The text as ASCII, '?' for every other character, without a byte order mark.
std::string Narrow(std::string_view bytes, UnitKind units) {
  if (units == UnitKind::kBytes) return std::string(bytes.substr(bytes.starts_with("\xEF\xBB\xBF") ? 3 : 0));
  const std::size_t low = units == UnitKind::kUtf16Big ? 1 : 0;
  std::string text;
  text.reserve(bytes.size() / 2);
  for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
    const char unit = bytes[at + low];
    text += bytes[at + 1 - low] == 0 && static_cast<unsigned char>(unit) < 0x80 ? unit : '?';
  }
  const bool hasMark = bytes.starts_with("\xFE\xFF") || bytes.starts_with("\xFF\xFE");
  return hasMark ? text.substr(1) : text;
}

void SkipSpace(std::string_view& text) { text.remove_prefix(std::min(text.find_first_not_of(kSpace), text.size())); }

/// Takes `name = "value"` from the front of `text` and gives the value; nothing if the text doesn't begin so.
std::optional<std::string_view> TakeValue(std::string_view& text, std::string_view& name) {
  const std::size_t nameLength = std::min(text.find_first_of(" \t\r\n="), text.size());
  name = text.substr(0, nameLength);
  text.remove_prefix(nameLength);
  SkipSpace(text);
  if (!text.starts_with('=')) return std::nullopt;
  text.remove_prefix(1);
  SkipSpace(text);
  if (!text.starts_with('"') && !text.starts_with('\'')) return std::nullopt;
  const std::size_t close = text.find(text.front(), 1);
  if (close == std::string_view::npos) return std::nullopt;
  const std::string_view value = text.substr(1, close - 1);
  text.remove_prefix(close + 1);
  return value;
}

std::string Upper(std::string_view text) {
  std::string upper(text);
  for (char& c : upper) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return upper;
}

bool IsNumbered(std::string_view name, std::string_view prefix, std::size_t maxDigits) {
  if (!name.starts_with(prefix)) return false;
  name.remove_prefix(prefix.size());
  return !name.empty() && name.size() <= maxDigits && name.find_first_not_of("0123456789") == std::string_view::npos;
}

bool IsByteEncoding(std::string_view name) {
  constexpr std::array kNames = {"UTF-8"sv, "UTF8"sv, "US-ASCII"sv, "ASCII"sv, "LATIN1"sv};
  if (std::find(kNames.begin(), kNames.end(), name) != kNames.end()) return true;
  constexpr std::array kLatin = {"ISO-8859-"sv, "ISO_8859-"sv, "ISO8859-"sv};
  const auto isOf = [name](std::string_view prefix) { return IsNumbered(name, prefix, 2); };
  return std::any_of(kLatin.begin(), kLatin.end(), isOf) || IsNumbered(name, "WINDOWS-125", 1) ||
         IsNumbered(name, "CP125", 1);
}

/// Whether the parser goes on with `units` when it is told this name. The plain names of UTF-16 leave it with what it
/// found out before, even if that was UTF-8; every other name makes it change, whatever the bytes are.
bool Fits(std::string_view name, UnitKind units) {
  if (name == "UTF-16" || name == "UTF16") return true;
  if (name == "UTF-16LE") return units == UnitKind::kUtf16Little;
  if (name == "UTF-16BE") return units == UnitKind::kUtf16Big;
  return units == UnitKind::kBytes;
}

std::string JudgeName(std::string_view name, UnitKind units) {
  const std::string upper = Upper(name);
  const bool isKnown =
      IsByteEncoding(upper) || upper == "UTF-16" || upper == "UTF16" || upper == "UTF-16LE" || upper == "UTF-16BE";
  const std::string quoted = "encoding=\"" + std::string(name.substr(0, 40)) + "\": ";
  if (!isKnown) return quoted + std::string(kOtherEncoding);
  if (!Fits(upper, units)) return quoted + "the document's bytes are in another encoding";
  return {};
}

// Any departure from the grammar is refused: the parser must not read a name here that wasn't seen.
std::string JudgeDeclaration(std::string_view content, UnitKind units) {
  for (;;) {
    const std::size_t before = content.size();
    SkipSpace(content);
    if (content.empty()) return {};
    std::string_view name;
    const std::optional<std::string_view> value =
        content.size() < before ? TakeValue(content, name) : std::optional<std::string_view>();
    if (!value) return "the XML declaration is malformed";
    if (name != "encoding") continue;
    if (std::string refusal = JudgeName(*value, units); !refusal.empty()) return refusal;
  }
}

std::string JudgeStart(std::string_view text, UnitKind units, bool isWhole) {
  constexpr std::string_view kOpening = "<?xml";
  if (!text.starts_with(kOpening)) return {};
  text.remove_prefix(kOpening.size());
  if (text.empty() || kSpace.find(text.front()) == std::string_view::npos) return {};
  const std::size_t end = text.find("?>");
  if (end != std::string_view::npos) return JudgeDeclaration(text.substr(0, end), units);
  return isWhole ? std::string() : "the XML declaration is too long";
}
}  // namespace

DocumentEncoding ReadDocumentEncoding(const unsigned char* bytes, std::size_t size, bool isWhole) {
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  const std::optional<UnitKind> units = FindUnits(text);
  if (!units) return {UnitKind::kBytes, std::string(kOtherEncoding)};
  return {*units, JudgeStart(Narrow(text, *units), *units, isWhole)};
}

}  // namespace KelXML_1_3
