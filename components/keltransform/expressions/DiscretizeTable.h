#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "components/keltransform/Cell.h"
#include "components/keltransform/DataDictionary.h"

namespace KelTransformNS {

/// The discretizations of a program, their bins side by side.
class DiscretizeTable {
 public:
  struct Bin {
    Interval interval;
    Cell result;
  };

  /// Gives the number of the entry.
  std::uint32_t Append(const std::vector<Bin>& bins, const Cell& whenMissing, const Cell& otherwise) {
    fEntries.push_back({fBins.size(), bins.size(), whenMissing, otherwise, CanBeSearched(bins)});
    fBins.insert(fBins.end(), bins.begin(), bins.end());
    return static_cast<std::uint32_t>(fEntries.size() - 1);
  }

  /// The result of the first bin that holds the input. Without bins an input of any kind gets the default.
  [[nodiscard]] Cell Evaluate(std::uint32_t index, const Cell& input) const noexcept {
    const Entry& entry = fEntries[index];
    if (input.IsMissing()) return entry.whenMissing;
    if (input.IsInvalid()) return input;
    const Bin* const first = fBins.data() + entry.firstBin;
    const Bin* const last = first + entry.binCount;
    const Bin* const bin = entry.canBeSearched ? Search(first, last, input.number) : Scan(first, last, input.number);
    return bin == last ? entry.otherwise : bin->result;
  }

 private:
  static constexpr std::size_t kFewBins = 8;  // are scanned as fast as they are searched

  struct Entry {
    std::size_t firstBin;
    std::size_t binCount;
    Cell whenMissing;
    Cell otherwise;
    bool canBeSearched;
  };

  // Whether no bin is empty, the bins lie in ascending order, and none shares a number with another. Then at most one
  // holds a number, in whatever order they are tried.
  static bool CanBeSearched(const std::vector<Bin>& bins) noexcept {
    const auto isEmpty = [](const Bin& bin) { return bin.interval.left == bin.interval.right && !IsClosed(bin); };
    const auto isNotBefore = [](const Bin& left, const Bin& right) { return !IsBefore(left.interval, right.interval); };
    return bins.size() > kFewBins && std::none_of(bins.begin(), bins.end(), isEmpty) &&
           std::adjacent_find(bins.begin(), bins.end(), isNotBefore) == bins.end();
  }

  static bool IsClosed(const Bin& bin) noexcept { return bin.interval.leftClosed && bin.interval.rightClosed; }

  static bool IsBefore(const Interval& left, const Interval& right) noexcept {
    return left.right < right.left || (left.right == right.left && !(left.rightClosed && right.leftClosed));
  }

  static const Bin* Scan(const Bin* first, const Bin* last, double x) noexcept {
    return std::find_if(first, last, [x](const Bin& bin) { return bin.interval.Contains(x); });
  }

  // Of the bins that begin at or below `x` only the last two can hold it, the one before the last if the last one
  // begins at `x` with an open end.
  static const Bin* Search(const Bin* first, const Bin* last, double x) noexcept {
    const auto beginsAbove = [](double value, const Bin& bin) { return value < bin.interval.left; };
    const Bin* const after = std::upper_bound(first, last, x, beginsAbove);
    if (after == first) return last;
    if (after[-1].interval.Contains(x)) return after - 1;
    return after - first >= 2 && after[-2].interval.Contains(x) ? after - 2 : last;
  }

  std::vector<Entry> fEntries;
  std::vector<Bin> fBins;
};

}  // namespace KelTransformNS
