#include "components/keltransform/Program.h"

#include <algorithm>
#include <cmath>

#include "components/keltransform/Code.h"
#include "components/keltransform/Conversion.h"
#include "components/keltransform/functions/Evaluation.h"
#include "components/keltransform/functions/Numbers.h"
#include "components/keltransform/functions/PatternFunctions.h"

namespace KelTransformNS {
namespace {

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

// By its slot every operand is computed already, so choosing one is all there is to do: no function has side effects.
Cell Choose(const Operands& operands) noexcept {
  const Cell& condition = operands[0];
  if (condition.state != Cell::kNumber) return condition;
  if (condition.number != 0.0) return operands[1];
  return operands.Count() > 2 ? operands[2] : Cell::Missing();
}

Cell ReplaceIfAnyMissing(const Operands& operands) noexcept {
  bool isAnyMissing = false;
  for (std::size_t index = 2; index < operands.Count(); ++index) {
    if (operands[index].IsInvalid()) return operands[0];
    isAnyMissing = isAnyMissing || operands[index].IsMissing();
  }
  return operands[isAnyMissing ? 1 : 0];
}

Cell Truncate(const Cell& cell) noexcept {
  return cell.state == Cell::kNumber ? Cell::Number(std::trunc(cell.number)) : cell;
}

// The four operations of arithmetic, which are most of what documents compute, without a call.
template <typename Operation>
inline Cell Compute(const Operands& operands, const Operation& operation) noexcept {
  const Cell& left = operands[0];
  const Cell& right = operands[1];
  if (left.state != Cell::kNumber || right.state != Cell::kNumber) return WithoutValues(operands);
  return ResultOf(operation(left.number, right.number));
}

// Part of the loop in `Run`: a call for each step would cost as much as the step.
[[gnu::always_inline]] inline Cell ExecuteStep(const Instruction& step, const Operands& operands,
                                               const Tables& tables) noexcept {
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
    case OpCode::kTextIndex:
      return tables.textIndex.Evaluate(step.data, operands[0]);
    case OpCode::kReplaceIfAnyMissing:
      return ReplaceIfAnyMissing(operands);
    case OpCode::kInvalidToMissing:
      return operands[0].IsInvalid() ? Cell::Missing() : operands[0];
    case OpCode::kTruncate:
      return Truncate(operands[0]);
    case OpCode::kIf:
      return Choose(operands);
    case OpCode::kAdd:
      return Compute(operands, [](double left, double right) { return left + right; });
    case OpCode::kSubtract:
      return Compute(operands, [](double left, double right) { return left - right; });
    case OpCode::kMultiply:
      return Compute(operands, [](double left, double right) { return left * right; });
    case OpCode::kDivide:
      return Compute(operands, Quotient);
    case OpCode::kUnary:
      return EvaluateUnary(FunctionOf(step).unary, operands[0]);
    case OpCode::kBinary:
      return EvaluateBinary(FunctionOf(step).binary, operands);
    case OpCode::kMatches:
      return Matches(*tables.patterns[step.data], operands);
    case OpCode::kReplace:
      return ReplaceMatches(*tables.patterns[step.data], operands, *tables.pool);
    default:
      return EvaluateFunction(FunctionOf(step), operands, *tables.pool);
  }
}

}  // namespace

Cell Execute(const Instruction& step, const Operands& operands, const Tables& tables) noexcept {
  return ExecuteStep(step, operands, tables);
}

Program::Program() = default;
Program::Program(Program&&) noexcept = default;
Program& Program::operator=(Program&&) noexcept = default;
Program::~Program() = default;

void Program::Run(Frame frame) const noexcept {
  if (!fCode) return;
  const Tables& tables = *fCode->tables;
  const Operand* const operands = fCode->operands.data();
  Operands own(operands, 0, frame.data(), tables.constants.data());
  for (const Instruction& step : fCode->instructions) {
    own.MoveTo(operands + step.firstOperand, step.operandCount);
    SetCell(frame[step.result], [&] { return ExecuteStep(step, own, tables); });
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
