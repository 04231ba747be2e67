#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "components/kelcommon/Hashing.h"

namespace KelXML_1_3 {

/// The distinct names of a document, numbered from 0.
class NameTable {
 public:
  using Id = std::uint32_t;

  /// The number of a name, which it gets if it is new. `guess` is the number that it probably has (any number will do):
  /// a good guess costs one comparison.
  Id Intern(const char16_t* name, Id guess);
  [[nodiscard]] std::string_view Get(Id id) const noexcept { return fNames[id]; }
  /// Whether that is the name's number. False for any number if the name isn't ASCII.
  [[nodiscard]] bool Is(const char16_t* name, Id id) const noexcept {
    if (id >= fNames.size()) return false;
    for (const char c : fNames[id]) {
      const auto byte = static_cast<unsigned char>(c);
      if (*name++ != byte || byte >= 0x80) return false;
    }
    return *name == 0;
  }

 private:
  Id FindOrAdd(const char16_t* name);

  std::deque<std::string> fTexts;
  std::vector<std::string_view> fNames;                                    // of fTexts, by number
  std::unordered_map<std::string_view, Id, KelCommon_1_3::NameHash> fIds;  // of fTexts
};

}  // namespace KelXML_1_3
