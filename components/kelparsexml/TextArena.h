#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace KelXML_1_3 {

/// Keeps many texts as UTF-8, tightly packed, and names each with 32 bits. Nothing moves when it grows. 0 is the empty
/// text.
class TextArena {
 public:
  using Ref = std::uint32_t;

  TextArena();

  /// Both throw `PmmlError` when the arena is full, which is after 1 to 4 GiB.
  Ref Add(const char16_t* text);  // ends with 0
  Ref Add(std::string_view utf8);
  [[nodiscard]] std::string_view Get(Ref ref) const noexcept;

 private:
  Ref AddLong(const char16_t* text);
  // Room for a text, and the name that it will have.
  struct Place {
    char* at;
    Ref ref;
  };
  Place Reserve(std::size_t bytes);
  Place ReserveLong(std::size_t size);
  std::size_t AddChunk(std::size_t bytes);

  std::vector<std::unique_ptr<char[]>> fChunks;
  std::size_t fOpen = 0;    // the chunk that is being filled; long texts have one to themselves
  std::size_t fFilled = 0;  // bytes of it
  std::size_t fSize = 0;    // its bytes in all
};

}  // namespace KelXML_1_3
