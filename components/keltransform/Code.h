#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "components/keltransform/Cell.h"
#include "components/keltransform/Operands.h"
#include "components/keltransform/Program.h"
#include "components/keltransform/expressions/DiscretizeTable.h"
#include "components/keltransform/expressions/MapValuesTable.h"
#include "components/keltransform/expressions/NormContinuousTable.h"
#include "components/keltransform/expressions/TextIndexTable.h"
#include "components/keltransform/text/RegularExpression.h"

namespace KelTransformNS {

enum class OpCode : std::uint8_t {
  kCopy,            ///< the operand as it stands
  kReplaceMissing,  ///< a missing operand becomes the constant `data`
  kRoundToFloat,    ///< a number in single precision
  kConvert,         ///< from one data type to another, see `Instruction::from`
  kNormContinuous,  ///< the entry `data` of the table
  kEquals,          ///< the entry `data` of `Tables::comparisons`
  kDiscretize,      ///< the entry `data` of the table
  kTextIndex,       ///< the entry `data` of the table
  kMapValues,       ///< the entry `data` of the table; `operandCount` operands from `Code::operands[first]` on

  // What surrounds a function.
  kReplaceIfAnyMissing,  ///< the first operand; the second one if any of the others is missing and none is invalid
  kInvalidToMissing,     ///< an invalid operand becomes missing
  kTruncate,             ///< a number without its fraction
  kIf,  ///< the second operand if the first one is true, the third one, if there is one, if it is false

  kAdd,       ///< of two numbers
  kSubtract,  ///< of two numbers
  kMultiply,  ///< of two numbers
  kDivide,    ///< of two numbers

  // The function `data` of the table of functions. What its `detail` says:
  kUnary,
  kBinary,
  kTernary,
  kAggregate,  ///< joins all numbers by the binary function
  kAverage,
  kMedian,
  kCompare,  ///< accepts the results of a comparison: `kIsLess`, `kIsEqual`, `kIsGreater`
  kIsIn,     ///< is 1 if the first operand equals another one, else the opposite
  kLogic,    ///< is the value that decides alone: 0 of "and", 1 of "or"
  kNot,
  kTestState,  ///< has the bits of the states that it accepts
  kMakeText,
  kMeasureText,

  // Functions with the regular expression `data` of `Tables::patterns`.
  kMatches,  ///< whether a part of the first operand matches
  kReplace,  ///< the first operand with its matches replaced by the second one
};

inline constexpr std::uint32_t kIsLess = 1;
inline constexpr std::uint32_t kIsEqual = 2;
inline constexpr std::uint32_t kIsGreater = 4;

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
  TextIndexTable textIndex;
  std::vector<std::unique_ptr<const RegularExpression>> patterns;
};

/// What an instruction gives. Any text that it makes lives as `MadeTexts` says.
[[nodiscard]] Cell Execute(const Instruction& step, const Operands& operands, const Tables& tables) noexcept;

struct Program::Code {
  /// Instructions of one operation that follow each other.
  struct Batch {
    OpCode operation;
    std::uint32_t end;  ///< the instruction after the last one; the first one is the end of the batch before
  };

  Code(const std::vector<Instruction>& steps, std::vector<Operand> operandsOfSteps,
       std::shared_ptr<const Tables> tablesOfSteps);

  std::vector<Instruction> instructions;  ///< in an order in which what is used comes before what uses it
  std::vector<Batch> batches;
  std::vector<Operand> operands;
  std::shared_ptr<const Tables> tables;
};

}  // namespace KelTransformNS
