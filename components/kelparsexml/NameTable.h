#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>

namespace KelXML_1_3 {

/// The distinct names of a document, numbered from 0.
class NameTable {
 public:
  using Id = std::uint32_t;

  /// The number of a name, which it gets if it is new. `guess` is the number that it probably has (any number will do):
  /// a good guess costs one comparison.
  Id Intern(const char16_t* name, Id guess);
  [[nodiscard]] const std::string& Get(Id id) const noexcept { return fNames[id]; }

 private:
  [[nodiscard]] bool Is(const char16_t* name, Id id) const noexcept;
  Id FindOrAdd(const char16_t* name);

  std::deque<std::string> fNames;
  std::unordered_map<std::string_view, Id> fIds;  // of texts in fNames
};

}  // namespace KelXML_1_3
