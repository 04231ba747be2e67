#pragma once

#include <cstdint>

namespace KelTransformNS {

/// Hands out the slots of a frame, from 0 on. Compilers that share a counter compile programs which run over one frame,
/// as the models of an ensemble do.
class SlotCounter {
 public:
  SlotCounter() = default;
  SlotCounter(const SlotCounter&) = delete;
  SlotCounter& operator=(const SlotCounter&) = delete;

  [[nodiscard]] std::uint32_t NewSlot() noexcept { return fCount++; }
  /// The size that a frame needs.
  [[nodiscard]] std::uint32_t Count() const noexcept { return fCount; }

 private:
  std::uint32_t fCount = 0;
};

}  // namespace KelTransformNS
