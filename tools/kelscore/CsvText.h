#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kelscore {

/// The finite number that the whole text is, white space around it allowed; none if it is no such number. The host's
/// locale doesn't matter.
[[nodiscard]] std::optional<double> ReadNumber(std::string_view text);

/// Appends the shortest text that reads back as the same number.
void AppendNumber(std::string& to, double number);

/// Appends a field, in quotes if it needs them. A comma needs none when the delimiter is another character.
void AppendField(std::string& to, std::string_view field, char delimiter);

/// The text in double quotes for a message: line breaks and other control characters as \n, \t or \x1f, and a long
/// text cut with "...", so that a message stays one line.
[[nodiscard]] std::string Quoted(std::string_view text);

}  // namespace kelscore
