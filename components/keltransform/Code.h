#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "components/keltransform/Cell.h"
#include "components/keltransform/Program.h"
#include "components/keltransform/expressions/DiscretizeTable.h"
#include "components/keltransform/expressions/MapValuesTable.h"
#include "components/keltransform/expressions/NormContinuousTable.h"

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

enum class OpCode : std::uint8_t {
  kCopy,            ///< the operand as it stands
  kReplaceMissing,  ///< a missing operand becomes the constant `data`
  kRoundToFloat,    ///< a number in single precision
  kConvert,         ///< from one data type to another, see `Instruction::from`
  kNormContinuous,  ///< the entry `data` of the table
  kEquals,          ///< the entry `data` of `Tables::comparisons`
  kDiscretize,      ///< the entry `data` of the table
  kMapValues,       ///< the entry `data` of the table; `operandCount` operands from `Code::operands[first]` on
};

/// One step: computes a cell from operands and puts it into a slot that no other instruction writes.
struct Instruction {
  std::uint32_t result;        ///< the slot
  std::uint32_t firstOperand;  ///< in `Code::operands`
  std::uint32_t operandCount;  ///< from there on
  std::uint32_t data = 0;      ///< what else the operation needs, as it says
  OpCode operation;
  DataType from{};  ///< of `kConvert`
  DataType to{};    ///< of `kConvert`
};

/// A comparison with a literal: 1 if the operand equals it, else 0. Text operands compare by the pool's numbers.
struct Comparison {
  Cell literal;
  Cell whenMissing;
};

/// What the instructions of a program refer to. Immutable once compiled, and shared by the programs selected from it.
struct Tables {
  const TextPool* pool = nullptr;
  std::vector<Cell> constants;
  std::vector<Comparison> comparisons;
  NormContinuousTable normContinuous;
  DiscretizeTable discretize;
  MapValuesTable mapValues;
};

struct Program::Code {
  std::vector<Instruction> instructions;
  std::vector<Operand> operands;
  std::shared_ptr<const Tables> tables;
};

}  // namespace KelTransformNS
