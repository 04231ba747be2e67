#include "plugins/torvane/predicates/Predicate.h"

#include <algorithm>
#include <array>

#include "components/kelparsexml/PmmlArray.h"

namespace Torvane {

using KelTransformNS::Cell;
using KelTransformNS::OpType;

// --- Evaluation ---

Truth PredicateTable::EvaluateRare(const Test& test, const Cell& cell) const noexcept {
  if (test.kind == TestKind::kIsMissing) return Known(cell.IsMissing());
  if (test.kind == TestKind::kIsNotMissing) return Known(!cell.IsMissing());
  if (cell.state != Cell::kNumber && cell.state != Cell::kText) return Truth::kUnknown;
  switch (test.kind) {
    case TestKind::kInNumbers:
      return Known(fNumberSets[test.operand].Contains(cell.number));
    case TestKind::kNotInNumbers:
      return Known(!fNumberSets[test.operand].Contains(cell.number));
    case TestKind::kInTexts:
      return Known(fTextSets[test.operand].Contains(cell.textId));
    case TestKind::kNotInTexts:
      return Known(!fTextSets[test.operand].Contains(cell.textId));
    default:
      return EvaluateRank(test, cell);
  }
}

// A value that the field doesn't list has no rank and lies on neither side of anything.
Truth PredicateTable::EvaluateRank(const Test& test, const Cell& cell) const noexcept {
  const ValueRanks& ranks = fRanks[test.operand];
  const std::optional<std::uint32_t> rank =
      cell.state == Cell::kText ? ranks.OfText(cell.textId) : ranks.OfNumber(cell.number);
  if (!rank) return Truth::kFalse;
  return Known((*rank < test.number) == (test.kind == TestKind::kRankBelow));
}

Truth PredicateTable::EvaluateCompound(const Compound& compound, const Cell* frame, bool& surrogateUsed) const {
  constexpr std::size_t kUsualDepth = 32;
  if (compound.depth <= kUsualDepth) {
    std::array<Level, kUsualDepth> levels;
    return RunSteps(compound, frame, levels.data(), surrogateUsed);
  }
  thread_local std::vector<Level> levels;
  if (levels.size() < compound.depth) levels.resize(compound.depth);
  return RunSteps(compound, frame, levels.data(), surrogateUsed);
}

// The values of the open compounds stand in `levels`. A compound whose value can't change any more is left at once.
Truth PredicateTable::RunSteps(const Compound& compound, const Cell* frame, Level* levels, bool& surrogateUsed) const {
  Level* top = levels - 1;
  for (std::uint32_t at = compound.firstStep; at < compound.endStep; ++at) {
    const Step& step = fSteps[at];
    if (step.kind == StepKind::kOpen) {
      *++top = {at, 0, Start(step.connective)};
      continue;
    }
    Truth child;
    if (step.kind == StepKind::kTest) {
      child = Evaluate(fTests[step.index], frame, surrogateUsed);
    } else {
      child = top->value;
      if (top == levels) return child;
      --top;
    }
    const Step& open = fSteps[top->open];
    Fold(open.connective, *top, child, surrogateUsed);
    if (IsDecided(open.connective, top->value)) at = open.index - 1;
  }
  return Truth::kUnknown;  // not reached: the last step closes the first
}

Truth PredicateTable::Start(Connective connective) noexcept {
  switch (connective) {
    case Connective::kAnd:
      return Truth::kTrue;
    case Connective::kSurrogate:
      return Truth::kUnknown;
    default:
      return Truth::kFalse;
  }
}

bool PredicateTable::IsDecided(Connective connective, Truth value) noexcept {
  switch (connective) {
    case Connective::kAnd:
      return value == Truth::kFalse;
    case Connective::kOr:
      return value == Truth::kTrue;
    case Connective::kXor:
      return value == Truth::kUnknown;
    default:
      return value != Truth::kUnknown;
  }
}

// and: false wins over unknown, unknown over true. or: true over unknown over false. xor: unknown over all, else true
// for an odd number of true children. surrogate: the first child that is known.
void PredicateTable::Fold(Connective connective, Level& level, Truth child, bool& surrogateUsed) noexcept {
  const bool isFirst = level.childCount++ == 0;
  switch (connective) {
    case Connective::kAnd:
    case Connective::kOr:
      if (child != Start(connective) && level.value != Truth::kUnknown) level.value = child;
      if (IsDecided(connective, child)) level.value = child;
      return;
    case Connective::kXor:
      if (child == Truth::kUnknown) {
        level.value = child;
      } else if (child == Truth::kTrue) {
        level.value = level.value == Truth::kTrue ? Truth::kFalse : Truth::kTrue;
      }
      return;
    case Connective::kSurrogate:
      level.value = child;
      if (!isFirst && child != Truth::kUnknown) surrogateUsed = true;
      return;
  }
}

// --- Compilation ---

namespace {

constexpr Word<TestKind> kOperators[] = {
    {"equal", TestKind::kNumberEqual},   {"notEqual", TestKind::kNumberNotEqual},
    {"lessThan", TestKind::kLess},       {"lessOrEqual", TestKind::kLessOrEqual},
    {"greaterThan", TestKind::kGreater}, {"greaterOrEqual", TestKind::kGreaterOrEqual},
    {"isMissing", TestKind::kIsMissing}, {"isNotMissing", TestKind::kIsNotMissing},
};
constexpr Word<bool> kSetOperators[] = {{"isIn", true}, {"isNotIn", false}};

bool IsOrdering(TestKind kind) {
  return kind == TestKind::kLess || kind == TestKind::kLessOrEqual || kind == TestKind::kGreater ||
         kind == TestKind::kGreaterOrEqual;
}

Element NextPredicate(Element element) {
  while (element && IsIgnorable(element)) element = element.NextSibling();
  return element;
}

template <typename T>
std::uint32_t IndexOfLast(const std::vector<T>& items) {
  return static_cast<std::uint32_t>(items.size() - 1);
}

}  // namespace

bool PredicateCompiler::IsPredicate(const Element& element) noexcept {
  constexpr std::string_view kNames[] = {"SimplePredicate", "SimpleSetPredicate", "CompoundPredicate", "True", "False"};
  return std::find(std::begin(kNames), std::end(kNames), element.Name()) != std::end(kNames);
}

Test PredicateCompiler::Compile(const Element& predicate) {
  return predicate.Is("CompoundPredicate") ? CompileCompound(predicate) : CompileLeaf(predicate);
}

Element PredicateCompiler::FindIn(const Element& parent) {
  Element predicate;
  for (Element child = parent.FirstChild(); child; child = child.NextSibling()) {
    if (!IsPredicate(child)) continue;
    if (predicate) throw child.Error("is a second predicate of its <" + std::string(parent.Name()) + ">");
    predicate = child;
  }
  if (!predicate) throw parent.Error("has no predicate");
  return predicate;
}

Test PredicateCompiler::CompileLeaf(const Element& predicate) {
  if (predicate.Is("SimplePredicate")) return CompileSimple(predicate);
  if (predicate.Is("SimpleSetPredicate")) return CompileSet(predicate);
  Test test;
  test.kind = predicate.Is("True") ? TestKind::kAlways : TestKind::kNever;
  if (test.kind == TestKind::kNever && !predicate.Is("False")) throw predicate.Error("is no predicate");
  RefuseUnknownChildren(predicate, {});
  return test;
}

Test PredicateCompiler::CompileSimple(const Element& predicate) {
  RefuseUnknownChildren(predicate, {});
  const Field& field = fScope.Resolve(predicate.Required("field"), predicate);
  const TestKind kind = ReadRequiredWord(predicate, "operator", kOperators);
  if (kind != TestKind::kIsMissing && kind != TestKind::kIsNotMissing) {
    return CompileComparison(predicate, field, kind);
  }
  Test test;
  test.slot = field.slot;
  test.kind = kind;
  return test;
}

Test PredicateCompiler::CompileComparison(const Element& predicate, const Field& field, TestKind kind) {
  const std::string_view value = predicate.Required("value");
  const bool isText = KelTransformNS::IsText(field.dataType);
  if (IsOrdering(kind) && field.opType == OpType::kOrdinal && !field.order.empty()) {
    return CompileOrdinal(predicate, field, kind, value);
  }
  if (IsOrdering(kind) && isText) {
    throw predicate.AttributeError(
        "operator", "needs an order, which field " + Quoted(predicate.Required("field")) + " of texts doesn't have");
  }
  const Cell comparand = ReadComparand(predicate, "value", value, field.dataType, fScope.Pool());
  Test test;
  test.slot = field.slot;
  test.kind = kind;
  test.number = comparand.number;
  if (isText) {
    test.operand = comparand.textId;
    test.kind = kind == TestKind::kNumberEqual ? TestKind::kTextEqual : TestKind::kTextNotEqual;
  }
  return test;
}

// The order of an ordinal field is that of its listed values, whatever they look like: "loud" is below "insane".
Test PredicateCompiler::CompileOrdinal(const Element& predicate, const Field& field, TestKind kind,
                                       std::string_view value) {
  Test test;
  test.slot = field.slot;
  test.operand = RanksOf(field);
  const Cell literal = ReadComparand(predicate, "value", value, field.dataType, fScope.Pool());
  const ValueRanks& ranks = fTable.fRanks[test.operand];
  const std::optional<std::uint32_t> rank =
      literal.state == Cell::kText ? ranks.OfText(literal.textId) : ranks.OfNumber(literal.number);
  if (!rank) throw predicate.AttributeError("value", "isn't among the values of the ordinal field");
  const bool isBelow = kind == TestKind::kLess || kind == TestKind::kLessOrEqual;
  const bool isNext = kind == TestKind::kLessOrEqual || kind == TestKind::kGreater;
  test.kind = isBelow ? TestKind::kRankBelow : TestKind::kRankFrom;
  test.number = *rank + (isNext ? 1.0 : 0.0);
  return test;
}

std::uint32_t PredicateCompiler::RanksOf(const Field& field) {
  const auto [known, isNew] = fRanksBySlot.emplace(field.slot, fTable.fRanks.size());
  if (!isNew) return known->second;
  ValueRanks& ranks = fTable.fRanks.emplace_back();
  for (std::size_t rank = 0; rank < field.order.size(); ++rank) {
    const std::optional<Cell> literal = FindComparand(field.order[rank], field.dataType, fScope.Pool());
    if (!literal) continue;
    literal->state == Cell::kText ? ranks.AddText(literal->textId, static_cast<std::uint32_t>(rank))
                                  : ranks.AddNumber(literal->number, static_cast<std::uint32_t>(rank));
  }
  ranks.Seal();
  return known->second;
}

Test PredicateCompiler::CompileSet(const Element& predicate) {
  RefuseUnknownChildren(predicate, {"Array"});
  const Field& field = fScope.Resolve(predicate.Required("field"), predicate);
  const bool isIn = ReadRequiredWord(predicate, "booleanOperator", kSetOperators);
  TextSet texts;
  NumberSet numbers;
  const Element array = predicate.RequiredChild("Array");
  if (array.Next("Array")) throw array.Next("Array").Error("is a second array of its predicate");
  for (const std::string& text : KelXML_1_3::ReadStringArray(array, KelXML_1_3::ArrayCount::kIgnored)) {
    const Cell literal = ReadComparand(predicate, "value", text, field.dataType, fScope.Pool());
    literal.state == Cell::kText ? texts.Add(literal.textId) : numbers.Add(literal.number);
  }
  Test test;
  test.slot = field.slot;
  if (KelTransformNS::IsText(field.dataType)) {
    texts.Seal();
    fTable.fTextSets.push_back(std::move(texts));
    test.operand = IndexOfLast(fTable.fTextSets);
    test.kind = isIn ? TestKind::kInTexts : TestKind::kNotInTexts;
  } else {
    numbers.Seal();
    fTable.fNumberSets.push_back(std::move(numbers));
    test.operand = IndexOfLast(fTable.fNumberSets);
    test.kind = isIn ? TestKind::kInNumbers : TestKind::kNotInNumbers;
  }
  return test;
}

std::uint32_t PredicateCompiler::OpenCompound(const Element& compound) {
  static constexpr Word<Connective> kConnectives[] = {{"and", Connective::kAnd},
                                                      {"or", Connective::kOr},
                                                      {"xor", Connective::kXor},
                                                      {"surrogate", Connective::kSurrogate}};
  const Connective connective = ReadRequiredWord(compound, "booleanOperator", kConnectives);
  if (!NextPredicate(compound.FirstChild())) throw compound.Error("holds no predicate");
  fTable.fSteps.push_back({PredicateTable::StepKind::kOpen, connective, 0});
  return IndexOfLast(fTable.fSteps);
}

// Documents nest predicates thousands deep to exhaust the stack, so the compounds that are open stand in a list.
Test PredicateCompiler::CompileCompound(const Element& predicate) {
  struct Open {
    std::uint32_t step;
    Element next;
  };
  PredicateTable::Compound compound{static_cast<std::uint32_t>(fTable.fSteps.size()), 0, 0};
  std::vector<Open> open;
  const auto enter = [&](const Element& element) {
    const std::uint32_t step = OpenCompound(element);
    open.push_back({step, NextPredicate(element.FirstChild())});
    compound.depth = std::max(compound.depth, static_cast<std::uint32_t>(open.size()));
  };
  enter(predicate);
  while (!open.empty()) {
    const Element child = open.back().next;
    if (!child) {
      fTable.fSteps.push_back({PredicateTable::StepKind::kClose});
      fTable.fSteps[open.back().step].index = IndexOfLast(fTable.fSteps);
      open.pop_back();
      continue;
    }
    open.back().next = NextPredicate(child.NextSibling());
    if (child.Is("CompoundPredicate")) {
      enter(child);
    } else {
      fTable.fTests.push_back(CompileLeaf(child));
      fTable.fSteps.push_back({PredicateTable::StepKind::kTest, Connective::kAnd, IndexOfLast(fTable.fTests)});
    }
  }
  compound.endStep = static_cast<std::uint32_t>(fTable.fSteps.size());
  fTable.fCompounds.push_back(compound);
  Test test;
  test.operand = IndexOfLast(fTable.fCompounds);
  test.kind = TestKind::kCompound;
  return test;
}

}  // namespace Torvane
