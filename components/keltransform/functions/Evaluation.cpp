#include "components/keltransform/functions/Evaluation.h"

#include <algorithm>
#include <new>
#include <vector>

namespace KelTransformNS {
namespace {

Cell Boolean(bool isTrue) noexcept { return Cell::Number(isTrue ? 1.0 : 0.0); }

bool AreAll(const Operands& operands, Cell::State state) noexcept {
  for (std::size_t index = 0; index < operands.Count(); ++index) {
    if (operands[index].state != state) return false;
  }
  return true;
}

bool IsAny(const Operands& operands, Cell::State state) noexcept {
  for (std::size_t index = 0; index < operands.Count(); ++index) {
    if (operands[index].state == state) return true;
  }
  return false;
}

Cell EvaluateTernary(TernaryFunction function, const Operands& operands) noexcept {
  if (!AreAll(operands, Cell::kNumber)) return WithoutValues(operands);
  return ResultOf(function(operands[0].number, operands[1].number, operands[2].number));
}

// Aggregates leave missing operands out. They have no value only if all are missing.
struct Joined {
  double result = 0.0;
  std::size_t count = 0;
};

Joined Join(const Operands& operands, BinaryFunction join) noexcept {
  Joined joined;
  for (std::size_t index = 0; index < operands.Count(); ++index) {
    const Cell& cell = operands[index];
    if (cell.IsMissing()) continue;
    joined.result = joined.count == 0 ? cell.number : join(joined.result, cell.number);
    ++joined.count;
  }
  return joined;
}

Cell EvaluateAggregate(BinaryFunction join, const Operands& operands) noexcept {
  const Joined joined = Join(operands, join);
  return joined.count == 0 ? Cell::Missing() : ResultOf(joined.result);
}

Cell EvaluateAverage(const Operands& operands) noexcept {
  const Joined sum = Join(operands, [](double left, double right) { return left + right; });
  return sum.count == 0 ? Cell::Missing() : ResultOf(sum.result / static_cast<double>(sum.count));
}

// Half of the sum of the two in the middle, if their count is even.
double MedianOf(std::vector<double>& numbers) {
  const auto middle = numbers.begin() + static_cast<std::ptrdiff_t>(numbers.size() / 2);
  std::nth_element(numbers.begin(), middle, numbers.end());
  if (numbers.size() % 2 != 0) return *middle;
  return (*std::max_element(numbers.begin(), middle) + *middle) / 2.0;
}

Cell EvaluateMedian(const Operands& operands) {
  thread_local std::vector<double> numbers;  // keeps its memory for the next record
  numbers.clear();
  for (std::size_t index = 0; index < operands.Count(); ++index) {
    if (!operands[index].IsMissing()) numbers.push_back(operands[index].number);
  }
  return numbers.empty() ? Cell::Missing() : ResultOf(MedianOf(numbers));
}

// Texts that the document knows are equal if their numbers in the pool are. One that it doesn't know may equal another
// of those.
bool AreEqual(const Cell& left, const Cell& right) noexcept {
  if (left.state != Cell::kText) return left.number == right.number;
  if (left.textId != right.textId) return false;
  if (left.textId != TextPool::kUnknown) return true;
  NumberBuffer leftBuffer;
  NumberBuffer rightBuffer;
  return TextOf(left, leftBuffer) == TextOf(right, rightBuffer);
}

// Texts in the order of their code points, which is that of UTF-8's bytes.
std::uint32_t Order(const Cell& left, const Cell& right) noexcept {
  if (AreEqual(left, right)) return kIsEqual;
  if (left.state != Cell::kText) return left.number < right.number ? kIsLess : kIsGreater;
  NumberBuffer leftBuffer;
  NumberBuffer rightBuffer;
  return TextOf(left, leftBuffer) < TextOf(right, rightBuffer) ? kIsLess : kIsGreater;
}

Cell EvaluateComparison(std::uint32_t accepted, const Operands& operands) noexcept {
  if (operands[0].state != operands[1].state || operands[0].state < Cell::kNumber) return WithoutValues(operands);
  if (accepted == kIsEqual) return Boolean(AreEqual(operands[0], operands[1]));
  return Boolean((accepted & Order(operands[0], operands[1])) != 0);
}

Cell EvaluateIsIn(bool whenFound, const Operands& operands) noexcept {
  if (IsAny(operands, Cell::kInvalid) || IsAny(operands, Cell::kMissing)) return WithoutValues(operands);
  for (std::size_t index = 1; index < operands.Count(); ++index) {
    if (AreEqual(operands[0], operands[index])) return Boolean(whenFound);
  }
  return Boolean(!whenFound);
}

// Three-valued: one "false" decides an "and" and one "true" an "or", whatever the others are.
Cell EvaluateLogic(double deciding, const Operands& operands) noexcept {
  for (std::size_t index = 0; index < operands.Count(); ++index) {
    const Cell& cell = operands[index];
    if (cell.state == Cell::kNumber && cell.number == deciding) return cell;
  }
  return AreAll(operands, Cell::kNumber) ? Cell::Number(1.0 - deciding) : WithoutValues(operands);
}

Cell EvaluateMakeText(TextFunction function, const Operands& operands, const TextPool& pool) {
  if (IsAny(operands, Cell::kInvalid) || IsAny(operands, Cell::kMissing)) return WithoutValues(operands);
  const TextArguments arguments(operands);
  return MadeTexts::OfThisThread().Make(pool, [&](TextSink& sink) { return function(arguments, sink); });
}

Cell EvaluateMeasure(TextMeasure measure, const Operands& operands) noexcept {
  if (operands[0].state != Cell::kText) return WithoutValues(operands);
  NumberBuffer buffer;
  return Cell::Number(measure(TextOf(operands[0], buffer)));
}

Cell Evaluate(const Function& function, const Operands& operands, const TextPool& pool) {
  switch (function.operation) {
    case OpCode::kTernary:
      return EvaluateTernary(function.ternary, operands);
    case OpCode::kAggregate:
      return IsAny(operands, Cell::kInvalid) ? Cell::Invalid() : EvaluateAggregate(function.binary, operands);
    case OpCode::kAverage:
      return IsAny(operands, Cell::kInvalid) ? Cell::Invalid() : EvaluateAverage(operands);
    case OpCode::kMedian:
      return IsAny(operands, Cell::kInvalid) ? Cell::Invalid() : EvaluateMedian(operands);
    case OpCode::kCompare:
      return EvaluateComparison(function.detail, operands);
    case OpCode::kIsIn:
      return EvaluateIsIn(function.detail != 0, operands);
    case OpCode::kLogic:
      return EvaluateLogic(static_cast<double>(function.detail), operands);
    case OpCode::kNot:
      return operands[0].state == Cell::kNumber ? Boolean(operands[0].number == 0.0) : WithoutValues(operands);
    case OpCode::kTestState:
      return Boolean((function.detail >> operands[0].state & 1U) != 0);
    case OpCode::kMakeText:
      return EvaluateMakeText(function.text, operands, pool);
    case OpCode::kMeasureText:
      return EvaluateMeasure(function.measure, operands);
    default:
      return Cell::Invalid();  // no other operation is compiled
  }
}

}  // namespace

Cell WithoutValues(Operands operands) noexcept {
  const bool isMissing = !IsAny(operands, Cell::kInvalid) && IsAny(operands, Cell::kMissing);
  return isMissing ? Cell::Missing() : Cell::Invalid();
}

// Only texts and medians that are larger than all before take memory. Without any left, there is no value.
Cell EvaluateFunction(const Function& function, const Operands& operands, const TextPool& pool) noexcept {
  try {
    return Evaluate(function, operands, pool);
  } catch (const std::bad_alloc&) {
    return Cell::Invalid();
  }
}

}  // namespace KelTransformNS
