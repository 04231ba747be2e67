#pragma once

#include <cstddef>
#include <memory>
#include <vector>

namespace KelXML_1_3 {

/// An array that grows at its end without moving what it holds: growth costs no copy, and never two generations at a
/// time. What is cut off leaves its memory to what comes next. For plain records.
template <class T>
class ChunkedArray {
 public:
  [[nodiscard]] std::size_t size() const noexcept { return fSize; }
  T& operator[](std::size_t index) noexcept { return fChunks[index / kChunk][index % kChunk]; }
  const T& operator[](std::size_t index) const noexcept { return fChunks[index / kChunk][index % kChunk]; }

  T& Append(const T& record) {
    if (fSize == fChunks.size() * kChunk) fChunks.push_back(std::make_unique_for_overwrite<T[]>(kChunk));
    T& place = (*this)[fSize++];
    place = record;
    return place;
  }

  void Truncate(std::size_t size) noexcept { fSize = size; }

 private:
  // About 10 KiB: small enough for small documents.
  static constexpr std::size_t kChunk = 512;

  std::vector<std::unique_ptr<T[]>> fChunks;
  std::size_t fSize = 0;
};

}  // namespace KelXML_1_3
