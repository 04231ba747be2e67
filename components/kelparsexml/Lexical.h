#pragma once

#include <algorithm>
#include <string_view>

namespace KelXML_1_3 {

inline constexpr std::string_view kXmlSpace = " \t\r\n";

inline bool IsXmlSpace(char c) noexcept { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

/// Without the XML white space around it.
inline std::string_view TrimXmlSpace(std::string_view text) noexcept {
  text.remove_prefix(std::min(text.find_first_not_of(kXmlSpace), text.size()));
  return text.substr(0, text.find_last_not_of(kXmlSpace) + 1);
}

}  // namespace KelXML_1_3
