#pragma once

#include <cstddef>
#include <cstdint>

#include "components/keltransform/Cell.h"

namespace KelTransformNS {

/// Where an instruction finds an operand: a slot of the frame or a constant of the program.
class Operand {
 public:
  static Operand Slot(std::uint32_t slot) noexcept { return Operand(slot); }
  static Operand Constant(std::uint32_t index) noexcept { return Operand(index | kConstantBit); }
  [[nodiscard]] bool IsConstant() const noexcept { return (fCode & kConstantBit) != 0; }
  [[nodiscard]] std::uint32_t Index() const noexcept { return fCode & ~kConstantBit; }

 private:
  static constexpr std::uint32_t kConstantBit = 0x80000000U;
  explicit Operand(std::uint32_t code) noexcept : fCode(code) {}
  std::uint32_t fCode;
};

/// The cells that one instruction works on.
class Operands {
 public:
  Operands(const Operand* first, std::size_t count, const Cell* slots, const Cell* constants) noexcept
      : fFirst(first), fCount(count), fSlots(slots), fConstants(constants) {}

  [[nodiscard]] std::size_t Count() const noexcept { return fCount; }
  [[nodiscard]] const Cell& operator[](std::size_t index) const noexcept {
    const Operand operand = fFirst[index];
    return (operand.IsConstant() ? fConstants : fSlots)[operand.Index()];
  }

 private:
  const Operand* fFirst;
  std::size_t fCount;
  const Cell* fSlots;
  const Cell* fConstants;
};

}  // namespace KelTransformNS
