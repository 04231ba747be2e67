#include "components/keltransform/FrameStorage.h"

#include <type_traits>
#include <vector>

#include "components/keltransform/MadeTexts.h"

namespace KelTransformNS {
namespace {

static_assert(std::is_trivially_copyable_v<Cell> && std::is_trivially_destructible_v<Cell>);

// One buffer for each large frame that is open on this thread, the outermost first.
struct LargeFrames {
  std::vector<std::vector<Cell>> buffers;
  std::size_t open = 0;
};

LargeFrames& OwnFrames() {
  thread_local LargeFrames frames;
  return frames;
}

}  // namespace

Cell* FrameStorage::BeginLargeFrame(std::size_t size) {
  LargeFrames& frames = OwnFrames();
  if (frames.open == frames.buffers.size()) frames.buffers.emplace_back();
  std::vector<Cell>& buffer = frames.buffers[frames.open];
  if (buffer.size() < size) buffer.resize(size);
  ++frames.open;
  return buffer.data();
}

void FrameStorage::EndLargeFrame() noexcept { --OwnFrames().open; }

std::size_t FrameStorage::CountMadeTexts() { return MadeTexts::OfThisThread().Mark(); }

void FrameStorage::EndMadeTexts(std::size_t first) noexcept { MadeTexts::OfThisThread().ReleaseTo(first); }

}  // namespace KelTransformNS
