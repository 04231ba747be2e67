#pragma once

#include "components/keltransform/functions/Function.h"

namespace KelTransformNS {

[[nodiscard]] inline const Function& FunctionOf(const Instruction& step) noexcept { return AllFunctions()[step.data]; }

/// The result of a function of numbers, which is NaN where the function has none.
[[nodiscard]] inline Cell ResultOf(double number) noexcept {
  return number == number ? Cell::Number(number) : Cell::Invalid();
}

/// The result for operands that aren't all values: invalid if one of them is, else missing if one of them is.
/// The operands come by value, so that they needn't stand in memory where all are values.
[[nodiscard]] Cell WithoutValues(Operands operands) noexcept;

[[nodiscard]] inline Cell EvaluateUnary(UnaryFunction function, const Cell& cell) noexcept {
  if (cell.state != Cell::kNumber) return cell.IsMissing() ? Cell::Missing() : Cell::Invalid();
  return ResultOf(function(cell.number));
}

[[nodiscard]] inline Cell EvaluateBinary(BinaryFunction function, const Operands& operands) noexcept {
  const Cell& left = operands[0];
  const Cell& right = operands[1];
  if (left.state != Cell::kNumber || right.state != Cell::kNumber) return WithoutValues(operands);
  return ResultOf(function(left.number, right.number));
}

/// Any other function.
[[nodiscard]] Cell EvaluateFunction(const Function& function, const Operands& operands, const TextPool& pool) noexcept;

}  // namespace KelTransformNS
