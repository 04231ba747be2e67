#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "components/keltransform/Cell.h"
#include "plugins/torvane/fields/FieldScope.h"
#include "plugins/torvane/fields/ValueSets.h"

namespace Torvane {

/// The three values of a predicate: a comparison with a missing value is unknown.
enum class Truth : std::uint8_t { kFalse, kTrue, kUnknown };

enum class TestKind : std::uint8_t {
  kLess,
  kLessOrEqual,
  kGreater,
  kGreaterOrEqual,
  kNumberEqual,
  kNumberNotEqual,
  kTextEqual,
  kTextNotEqual,
  kIsMissing,
  kIsNotMissing,
  kInNumbers,
  kNotInNumbers,
  kInTexts,
  kNotInTexts,
  kRankBelow,  ///< the rank of an ordinal value, compared with `number`
  kRankFrom,
  kAlways,
  kNever,
  kCompound,
};

/// One compiled predicate; what doesn't fit in here stands in the `PredicateTable` that it was compiled for.
struct Test {
  double number = 0.0;        ///< what a number is compared with
  std::uint32_t slot = 0;     ///< of the field
  std::uint32_t operand = 0;  ///< number of the text, set, table of ranks or compound predicate
  TestKind kind = TestKind::kNever;
};

/// The sets and compound predicates of one model. Immutable once compiled; evaluation allocates nothing (but for
/// predicates nested deeper than any producer writes them, and then once per thread).
class PredicateTable {
 public:
  /// `surrogateUsed` becomes true if a surrogate predicate took its value from another than its first child.
  [[nodiscard]] Truth Evaluate(const Test& test, const KelTransformNS::Cell* frame, bool& surrogateUsed) const {
    using Cell = KelTransformNS::Cell;
    const Cell& cell = frame[test.slot];
    switch (test.kind) {
      case TestKind::kLess:
        return cell.state == Cell::kNumber ? Known(cell.number < test.number) : Truth::kUnknown;
      case TestKind::kLessOrEqual:
        return cell.state == Cell::kNumber ? Known(cell.number <= test.number) : Truth::kUnknown;
      case TestKind::kGreater:
        return cell.state == Cell::kNumber ? Known(cell.number > test.number) : Truth::kUnknown;
      case TestKind::kGreaterOrEqual:
        return cell.state == Cell::kNumber ? Known(cell.number >= test.number) : Truth::kUnknown;
      case TestKind::kNumberEqual:
        return cell.state == Cell::kNumber ? Known(cell.number == test.number) : Truth::kUnknown;
      case TestKind::kNumberNotEqual:
        return cell.state == Cell::kNumber ? Known(cell.number != test.number) : Truth::kUnknown;
      case TestKind::kTextEqual:
        return cell.state == Cell::kText ? Known(cell.textId == test.operand) : Truth::kUnknown;
      case TestKind::kTextNotEqual:
        return cell.state == Cell::kText ? Known(cell.textId != test.operand) : Truth::kUnknown;
      case TestKind::kAlways:
        return Truth::kTrue;
      case TestKind::kNever:
        return Truth::kFalse;
      case TestKind::kCompound:
        return EvaluateCompound(fCompounds[test.operand], frame, surrogateUsed);
      default:
        return EvaluateRare(test, cell);
    }
  }

 private:
  friend class PredicateCompiler;

  enum class Connective : std::uint8_t { kAnd, kOr, kXor, kSurrogate };
  enum class StepKind : std::uint8_t { kOpen, kTest, kClose };

  // Compound predicates are flat: an opening, the tests and compounds inside, a closing.
  struct Step {
    StepKind kind;
    Connective connective = Connective::kAnd;  // of an opening
    std::uint32_t index = 0;                   // of an opening: the step of its closing; of a test: the test
  };
  struct Compound {
    std::uint32_t firstStep;
    std::uint32_t endStep;
    std::uint32_t depth;  // of nested openings
  };
  struct Level {
    std::uint32_t open;
    std::uint32_t childCount;
    Truth value;
  };

  static Truth Known(bool value) noexcept { return static_cast<Truth>(value); }
  static Truth Start(Connective connective) noexcept;
  static bool IsDecided(Connective connective, Truth value) noexcept;
  static void Fold(Connective connective, Level& level, Truth child, bool& surrogateUsed) noexcept;
  [[nodiscard]] Truth EvaluateRank(const Test& test, const KelTransformNS::Cell& cell) const noexcept;
  [[nodiscard]] Truth EvaluateRare(const Test& test, const KelTransformNS::Cell& cell) const noexcept;
  [[nodiscard]] Truth EvaluateCompound(const Compound& compound, const KelTransformNS::Cell* frame,
                                       bool& surrogateUsed) const;
  [[nodiscard]] Truth RunSteps(const Compound& compound, const KelTransformNS::Cell* frame, Level* levels,
                               bool& surrogateUsed) const;

  std::vector<TextSet> fTextSets;
  std::vector<NumberSet> fNumberSets;
  std::vector<ValueRanks> fRanks;  // one per ordinal field
  std::vector<Test> fTests;        // inside compound predicates
  std::vector<Step> fSteps;
  std::vector<Compound> fCompounds;
};

/// Compiles predicate elements of one model into a table.
class PredicateCompiler {
 public:
  PredicateCompiler(FieldScope& scope, PredicateTable& table) : fScope(scope), fTable(table) {}

  /// Whether an element is a predicate.
  [[nodiscard]] static bool IsPredicate(const Element& element) noexcept;
  /// The one predicate among the children of an element. Throws if there are none or two.
  [[nodiscard]] static Element FindIn(const Element& parent);
  /// Throws `PmmlError` for an unknown field, operator or element, a missing or impossible value.
  Test Compile(const Element& predicate);

 private:
  using Connective = PredicateTable::Connective;

  Test CompileLeaf(const Element& predicate);
  Test CompileSimple(const Element& predicate);
  Test CompileComparison(const Element& predicate, const Field& field, TestKind kind);
  Test CompileOrdinal(const Element& predicate, const Field& field, TestKind kind, std::string_view value);
  Test CompileSet(const Element& predicate);
  std::uint32_t RanksOf(const Field& field);
  Test CompileCompound(const Element& predicate);
  std::uint32_t OpenCompound(const Element& compound);

  FieldScope& fScope;
  PredicateTable& fTable;
  std::unordered_map<std::uint32_t, std::uint32_t> fRanksBySlot;
};

}  // namespace Torvane
