#include "plugins/torvane/models/EntityIds.h"

#include <charconv>

namespace Torvane {

using KelCommon_1_3::Value;

namespace {

constexpr std::size_t kLongestNumber = 10;

// The number that a text writes in its shortest form.
std::optional<std::uint32_t> CanonicalNumber(std::string_view text) {
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool isWhole = error == std::errc() && end == text.data() + text.size() && text[0] != '+';
  return isWhole && (text[0] != '0' || text.size() == 1) ? std::optional(number) : std::nullopt;
}

void WriteNumber(std::uint32_t number, Value& value) {
  char text[kLongestNumber + 1];
  *std::to_chars(text, text + kLongestNumber, number).ptr = '\0';
  value = text;
}

}  // namespace

void EntityIds::Assign(const std::vector<std::optional<std::string_view>>& ids) {
  fNumbers.reserve(ids.size());
  for (const std::optional<std::string_view>& id : ids) {
    const auto position = static_cast<std::uint32_t>(fNumbers.size() + 1);
    const std::optional<std::uint32_t> number = id ? CanonicalNumber(*id) : position;
    if (!number) break;
    fNumbers.push_back(*number);
  }
  if (fNumbers.size() == ids.size()) return DropConsecutive();
  fNumbers = {};
  for (std::size_t i = 0; i < ids.size(); ++i) {
    fTexts += ids[i] ? std::string(*ids[i]) : std::to_string(i + 1);
    fEnds.push_back(static_cast<std::uint32_t>(fTexts.size()));
  }
  fTexts.shrink_to_fit();
  fEnds.shrink_to_fit();
}

void EntityIds::DropConsecutive() {
  fFirst = fNumbers.empty() ? 0 : fNumbers[0];
  for (std::uint32_t entity = 0; entity < fNumbers.size(); ++entity) {
    if (fNumbers[entity] != fFirst + entity) return;
  }
  fNumbers = {};
}

void EntityIds::Write(std::uint32_t entity, Value& value) const {
  if (!fNumbers.empty()) return WriteNumber(fNumbers[entity], value);
  if (fEnds.empty()) return WriteNumber(fFirst + entity, value);
  const std::uint32_t begin = entity == 0 ? 0 : fEnds[entity - 1];
  thread_local std::string text;  // keeps its buffer, as the value does
  text.assign(fTexts, begin, fEnds[entity] - begin);
  value = text;
}

}  // namespace Torvane
