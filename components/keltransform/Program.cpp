#include "components/keltransform/Program.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <span>
#include <tuple>
#include <unordered_map>
#include <utility>

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

// The result, its replacement, then the arguments. An invalid argument keeps the replacement out only if it makes the
// result invalid: that of a branch that isn't chosen has no say.
Cell ReplaceIfAnyMissing(const Operands& operands) noexcept {
  bool isAnyMissing = false;
  bool isAnyInvalid = false;
  for (std::size_t index = 2; index < operands.Count(); ++index) {
    isAnyMissing = isAnyMissing || operands[index].IsMissing();
    isAnyInvalid = isAnyInvalid || operands[index].IsInvalid();
  }
  const bool isReplaced = isAnyMissing && !(isAnyInvalid && operands[0].IsInvalid());
  return operands[isReplaced ? 1 : 0];
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

}  // namespace

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

namespace {

// A program's code at work on one frame.
class Execution {
 public:
  Execution(const Instruction* steps, const Operand* operands, const Tables& tables, Cell* slots) noexcept
      : fSteps(steps), fOperands(operands), fTables(tables), fSlots(slots) {}

  // The operations that documents repeat most have a loop of their own: a call would cost as much as the step.
  void Run(OpCode operation, std::uint32_t begin, std::uint32_t end) const noexcept {
    const std::span<const Instruction> steps(fSteps + begin, fSteps + end);
    switch (operation) {
      case OpCode::kAdd:
        return ComputeAll(steps, [](double left, double right) { return left + right; });
      case OpCode::kSubtract:
        return ComputeAll(steps, [](double left, double right) { return left - right; });
      case OpCode::kMultiply:
        return ComputeAll(steps, [](double left, double right) { return left * right; });
      case OpCode::kDivide:
        return ComputeAll(steps, Quotient);
      case OpCode::kNormContinuous:
        return NormalizeAll(steps);
      default:
        ExecuteAll(steps);
    }
  }

 private:
  void ExecuteAll(std::span<const Instruction> steps) const noexcept {
    for (const Instruction& step : steps) {
      SetCell(fSlots[step.result], [&] { return Execute(step, OperandsOf(step), fTables); });
    }
  }

  template <typename Operation>
  void ComputeAll(std::span<const Instruction> steps, const Operation& operation) const noexcept {
    for (const Instruction& step : steps) {
      SetCell(fSlots[step.result], [&] { return Compute(OperandsOf(step), operation); });
    }
  }

  void NormalizeAll(std::span<const Instruction> steps) const noexcept {
    for (const Instruction& step : steps) {
      SetCell(fSlots[step.result], [&] { return fTables.normContinuous.Evaluate(step.data, OperandsOf(step)[0]); });
    }
  }

  [[nodiscard]] Operands OperandsOf(const Instruction& step) const noexcept {
    return {fOperands + step.firstOperand, step.operandCount, fSlots, fTables.constants.data()};
  }

  const Instruction* fSteps;
  const Operand* fOperands;
  const Tables& fTables;
  Cell* fSlots;
};

// How many instructions must run one after the other before each of them can.
std::vector<std::uint32_t> DepthsOf(const std::vector<Instruction>& steps, const std::vector<Operand>& operands) {
  std::unordered_map<std::uint32_t, std::uint32_t> depthOfSlot;
  std::vector<std::uint32_t> depths;
  depths.reserve(steps.size());
  for (const Instruction& step : steps) {
    std::uint32_t depth = 0;
    for (std::size_t index = 0; index < step.operandCount; ++index) {
      const Operand operand = operands[step.firstOperand + index];
      if (operand.IsConstant()) continue;
      const auto writer = depthOfSlot.find(operand.Index());
      if (writer != depthOfSlot.end()) depth = std::max(depth, writer->second + 1);
    }
    depthOfSlot.emplace(step.result, depth);
    depths.push_back(depth);
  }
  return depths;
}

// Instructions of the same depth need nothing of each other, so those of one operation may follow each other.
std::vector<Instruction> GroupedByOperation(const std::vector<Instruction>& steps,
                                            const std::vector<Operand>& operands) {
  const std::vector<std::uint32_t> depths = DepthsOf(steps, operands);
  std::vector<std::uint32_t> order(steps.size());
  std::iota(order.begin(), order.end(), 0U);
  std::sort(order.begin(), order.end(), [&](std::uint32_t left, std::uint32_t right) {
    return std::tuple(depths[left], steps[left].operation, left) <
           std::tuple(depths[right], steps[right].operation, right);
  });
  std::vector<Instruction> grouped;
  grouped.reserve(steps.size());
  for (const std::uint32_t index : order) grouped.push_back(steps[index]);
  return grouped;
}

}  // namespace

Program::Code::Code(const std::vector<Instruction>& steps, std::vector<Operand> operandsOfSteps,
                    std::shared_ptr<const Tables> tablesOfSteps)
    : instructions(GroupedByOperation(steps, operandsOfSteps)),
      operands(std::move(operandsOfSteps)),
      tables(std::move(tablesOfSteps)) {
  for (std::uint32_t index = 0; index < instructions.size(); ++index) {
    const OpCode operation = instructions[index].operation;
    if (batches.empty() || batches.back().operation != operation) batches.push_back({operation, index});
    ++batches.back().end;
  }
}

Program::Program() = default;
Program::Program(Program&&) noexcept = default;
Program& Program::operator=(Program&&) noexcept = default;
Program::~Program() = default;

void Program::Run(Frame frame) const noexcept {
  if (!fCode) return;
  const Execution execution(fCode->instructions.data(), fCode->operands.data(), *fCode->tables, frame.data());
  std::uint32_t begin = 0;
  for (const Code::Batch& batch : fCode->batches) {
    execution.Run(batch.operation, begin, batch.end);
    begin = batch.end;
  }
}

bool Program::IsEmpty() const noexcept { return !fCode || fCode->instructions.empty(); }

Program Program::Select(std::vector<bool>& needed) const {
  Program selected;
  if (!fCode) return selected;
  std::vector<Instruction> kept;
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
  selected.fCode = std::make_unique<Code>(std::move(kept), fCode->operands, fCode->tables);
  return selected;
}

}  // namespace KelTransformNS
