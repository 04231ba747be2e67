#pragma once

#include <cstdint>
#include <optional>

#include "components/keltransform/Cell.h"
#include "scoring/common/Value.h"
#include "scoring/common/ValueRecord.h"

namespace KelTransformNS {

/// What an "Aggregate" makes of the values of a group. The order is that of the names in a document.
enum class GroupFunction : std::uint8_t { kCount, kSum, kAverage, kMin, kMax };

/// Joins the values of a group one after the other. Missing ones are left out; an invalid one makes the result invalid.
class GroupJoiner {
 public:
  explicit GroupJoiner(GroupFunction function) noexcept : fFunction(function) {}

  void Add(const Cell& cell) noexcept {
    if (cell.IsMissing()) return;
    fIsInvalid = fIsInvalid || cell.IsInvalid();
    fResult = fCount == 0 ? cell.number : Joined(cell.number);
    ++fCount;
  }
  /// Of a group without values the count is 0, and everything else is missing.
  [[nodiscard]] Cell Result() const noexcept {
    if (fIsInvalid) return Cell::Invalid();
    if (fFunction == GroupFunction::kCount) return Cell::Number(static_cast<double>(fCount));
    if (fCount == 0) return Cell::Missing();
    const double result = fFunction == GroupFunction::kAverage ? fResult / static_cast<double>(fCount) : fResult;
    return result == result ? Cell::Number(result) : Cell::Invalid();  // both infinities have no sum
  }

 private:
  [[nodiscard]] double Joined(double number) const noexcept {
    switch (fFunction) {
      case GroupFunction::kMin:
        return number < fResult ? number : fResult;
      case GroupFunction::kMax:
        return number > fResult ? number : fResult;
      default:
        return fResult + number;
    }
  }

  GroupFunction fFunction;
  bool fIsInvalid = false;
  std::size_t fCount = 0;
  double fResult = 0.0;
};

/// Joins the values that a record holds for a field: the members of a composite value in their order, or else the one
/// value. `read` gives the cell of each. Allocates nothing.
template <typename Read>
[[nodiscard]] Cell JoinGroup(const KelCommon_1_3::Value& value, GroupFunction function, const Read& read) noexcept {
  GroupJoiner joiner(function);
  if (const KelCommon_1_3::ValueRecord* const members = value.Members()) {
    for (const KelCommon_1_3::Value& member : members->Values()) joiner.Add(read(member));
  } else {
    joiner.Add(read(value));
  }
  return joiner.Result();
}

}  // namespace KelTransformNS
