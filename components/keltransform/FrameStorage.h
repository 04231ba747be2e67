#pragma once

#include <array>
#include <cstddef>

#include "components/keltransform/Cell.h"

namespace KelTransformNS {

/// The cells of a frame for the time of one call: on the stack up to `kInlineCells`, else in a buffer that this thread
/// keeps for the next call. So there is no allocation in the steady state. Storages of a thread end in the reverse
/// order of their beginning, as local variables do.
class KEL_EXPORT FrameStorage {
 public:
  static constexpr std::size_t kInlineCells = 128;

  enum Content {
    kMissing,       ///< every cell is missing at first
    kUninitialized  ///< the caller writes each cell before anything reads it
  };

  explicit FrameStorage(std::size_t size, Content content = kMissing)
      : fIsInline(size <= kInlineCells), fCells(fIsInline ? InlineCells() : BeginLargeFrame(size), size) {
    if (content == kMissing) SetAllMissing();
  }
  FrameStorage(const FrameStorage&) = delete;
  FrameStorage& operator=(const FrameStorage&) = delete;
  ~FrameStorage() {
    if (!fIsInline) EndLargeFrame();
  }

  [[nodiscard]] Frame Cells() const noexcept { return fCells; }

 private:
  static Cell* BeginLargeFrame(std::size_t size);
  static void EndLargeFrame() noexcept;

  // Cells hold nothing to construct or destroy, so bytes serve until a cell is written there.
  Cell* InlineCells() noexcept { return reinterpret_cast<Cell*>(fInline.data()); }
  void SetAllMissing() noexcept {
    for (Cell& cell : fCells) cell = Cell::Missing();
  }

  alignas(Cell) std::array<std::byte, kInlineCells * sizeof(Cell)> fInline;
  bool fIsInline;
  Frame fCells;
};

}  // namespace KelTransformNS
