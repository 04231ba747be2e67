#pragma once

#include <array>
#include <cstddef>

#include "components/keltransform/Cell.h"

namespace KelTransformNS {

/// The cells of a frame for the time of one call: on the stack up to `kInlineCells`, else in a buffer that this thread
/// keeps for the next call. So there is no allocation in the steady state. Storages of a thread end in the reverse
/// order of their beginning, as local variables do.
///
/// A frame whose programs make texts (`TextPool::HasMadeTexts`) says so, and ends the texts that were made since it
/// began. No cell, and no pointer of a cell, is used after that.
class KEL_EXPORT FrameStorage {
 public:
  static constexpr std::size_t kInlineCells = 128;

  enum Content {
    kMissing,       ///< every cell is missing at first
    kUninitialized  ///< the caller writes each cell before anything reads it
  };

  explicit FrameStorage(std::size_t size, Content content = kMissing, bool holdsMadeTexts = false)
      : fIsInline(size <= kInlineCells),
        fHoldsMadeTexts(holdsMadeTexts),
        fCells(fIsInline ? InlineCells() : BeginLargeFrame(size), size) {
    if (content == kMissing) SetAllMissing();
    if (fHoldsMadeTexts) fFirstMadeText = CountMadeTexts();
  }
  FrameStorage(const FrameStorage&) = delete;
  FrameStorage& operator=(const FrameStorage&) = delete;
  ~FrameStorage() {
    if (fHoldsMadeTexts) EndMadeTexts(fFirstMadeText);
    if (!fIsInline) EndLargeFrame();
  }

  [[nodiscard]] Frame Cells() const noexcept { return fCells; }

 private:
  static Cell* BeginLargeFrame(std::size_t size);
  static void EndLargeFrame() noexcept;
  static std::size_t CountMadeTexts();
  static void EndMadeTexts(std::size_t first) noexcept;

  // Cells hold nothing to construct or destroy, so bytes serve until a cell is written there.
  Cell* InlineCells() noexcept { return reinterpret_cast<Cell*>(fInline.data()); }
  void SetAllMissing() noexcept {
    for (Cell& cell : fCells) cell = Cell::Missing();
  }

  alignas(Cell) std::array<std::byte, kInlineCells * sizeof(Cell)> fInline;
  bool fIsInline;
  bool fHoldsMadeTexts;
  std::size_t fFirstMadeText = 0;
  Frame fCells;
};

}  // namespace KelTransformNS
