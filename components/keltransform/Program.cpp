#include "components/keltransform/Program.h"

#include <algorithm>

#include "components/keltransform/Code.h"
#include "components/keltransform/Conversion.h"

namespace KelTransformNS {
namespace {

// The operands of one instruction.
class Operands {
 public:
  Operands(const Operand* first, const Cell* slots, const Cell* constants) noexcept
      : fFirst(first), fBases{slots, constants} {}

  const Cell& operator[](std::size_t index) const noexcept {
    const Operand operand = fFirst[index];
    return fBases[operand.IsConstant() ? 1 : 0][operand.Index()];
  }

 private:
  const Operand* fFirst;
  const Cell* fBases[2];
};

Cell Compare(const Comparison& comparison, const Cell& cell) noexcept {
  if (cell.IsMissing()) return comparison.whenMissing;
  if (cell.IsInvalid()) return cell;
  const Cell& literal = comparison.literal;
  const bool isEqual = cell.state == literal.state &&
                       (cell.state == Cell::kText ? cell.textId == literal.textId : cell.number == literal.number);
  return Cell::Number(isEqual ? 1.0 : 0.0);
}

Cell RoundToFloat(const Cell& cell) noexcept {
  return cell.state == Cell::kNumber ? Cell::Number(static_cast<double>(static_cast<float>(cell.number))) : cell;
}

Cell Execute(const Instruction& step, const Operands& operands, const Tables& tables) noexcept {
  switch (step.operation) {
    case OpCode::kCopy:
      return operands[0];
    case OpCode::kReplaceMissing:
      return operands[0].IsMissing() ? operands[1] : operands[0];
    case OpCode::kRoundToFloat:
      return RoundToFloat(operands[0]);
    case OpCode::kConvert:
      return Convert(operands[0], step.from, step.to, *tables.pool);
    case OpCode::kNormContinuous:
      return tables.normContinuous.Evaluate(step.data, operands[0]);
    case OpCode::kEquals:
      return Compare(tables.comparisons[step.data], operands[0]);
    case OpCode::kDiscretize:
      return tables.discretize.Evaluate(step.data, operands[0]);
    case OpCode::kMapValues:
      return tables.mapValues.Evaluate(step.data, [&](std::size_t column) -> const Cell& { return operands[column]; });
  }
  return Cell::Invalid();  // no other operation is compiled
}

}  // namespace

Program::Program() = default;
Program::Program(Program&&) noexcept = default;
Program& Program::operator=(Program&&) noexcept = default;
Program::~Program() = default;

void Program::Run(Frame frame) const noexcept {
  if (!fCode) return;
  const Tables& tables = *fCode->tables;
  const Operand* const operands = fCode->operands.data();
  for (const Instruction& step : fCode->instructions) {
    const Operands own(operands + step.firstOperand, frame.data(), tables.constants.data());
    SetCell(frame[step.result], [&] { return Execute(step, own, tables); });
  }
}

bool Program::IsEmpty() const noexcept { return !fCode || fCode->instructions.empty(); }

Program Program::Select(std::vector<bool>& needed) const {
  Program selected;
  if (!fCode) return selected;
  selected.fCode = std::make_unique<Code>(Code{{}, fCode->operands, fCode->tables});
  std::vector<Instruction>& kept = selected.fCode->instructions;
  // Backwards: whoever reads a slot has marked it when we come to the instruction that writes it.
  for (auto step = fCode->instructions.rbegin(); step != fCode->instructions.rend(); ++step) {
    if (!needed[step->result]) continue;
    kept.push_back(*step);
    for (std::size_t index = 0; index < step->operandCount; ++index) {
      const Operand operand = fCode->operands[step->firstOperand + index];
      if (!operand.IsConstant()) needed[operand.Index()] = true;
    }
  }
  std::reverse(kept.begin(), kept.end());
  return selected;
}

}  // namespace KelTransformNS
