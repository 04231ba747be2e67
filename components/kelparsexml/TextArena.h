#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace KelXML_1_3 {

/// Keeps many texts as UTF-8, tightly packed, and names each with 32 bits. Nothing moves when it grows. 0 is the empty
/// text. What is cut off leaves its memory to what comes next.
class TextArena {
 public:
  using Ref = std::uint32_t;

  TextArena();

  /// Both throw `PmmlError` when the arena is full, which is after 1 to 4 GiB.
  Ref Add(const char16_t* text);  // ends with 0
  Ref Add(std::string_view utf8);
  [[nodiscard]] std::string_view Get(Ref ref) const noexcept;

  /// How far the arena is filled.
  struct Mark {
    std::size_t chunks;
    std::size_t open;
    std::size_t filled;
  };
  [[nodiscard]] Mark End() const noexcept { return {fChunks.size(), fOpen, fFilled}; }
  /// Drops the texts that were added since `End` gave the mark.
  void Truncate(const Mark& mark);

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

  struct Chunk {
    std::unique_ptr<char[]> bytes;
    std::size_t size;
  };
  std::vector<Chunk> fChunks;
  std::vector<Chunk> fSpare;  // chunks of the usual size that were cut off
  std::size_t fOpen = 0;      // the chunk that is being filled; long texts have one to themselves
  std::size_t fFilled = 0;    // bytes of it
};

}  // namespace KelXML_1_3
