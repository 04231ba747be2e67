#pragma once

#include <algorithm>
#include <string>
#include <utility>

#include "tools/kelscore/ByteSource.h"

namespace kelscore {

/// A text that comes in pieces of a chosen size, as a pipe or a block boundary would cut it.
class TextSource : public ByteSource {
 public:
  explicit TextSource(std::string text, std::size_t pieceSize = std::string::npos)
      : fText(std::move(text)), fPieceSize(pieceSize) {}

  std::size_t Read(char* buffer, std::size_t size) override {
    const std::size_t count = std::min({size, fPieceSize, fText.size() - fPosition});
    std::copy_n(fText.data() + fPosition, count, buffer);
    fPosition += count;
    return count;
  }
  [[nodiscard]] const std::string& Name() const override { return fName; }

 private:
  std::string fName = "data.csv";
  std::string fText;
  std::size_t fPieceSize;
  std::size_t fPosition = 0;
};

}  // namespace kelscore
