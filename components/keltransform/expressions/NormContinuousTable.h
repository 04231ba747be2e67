#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "components/keltransform/Cell.h"

namespace KelTransformNS {

/// What becomes of an input outside the points. The order is that of the names in a document.
enum class Outliers : std::uint8_t { kAsIs, kAsMissingValues, kAsExtremeValues };

/// A point of a piecewise linear function, a "LinearNorm".
struct NormPoint {
  double orig;
  double norm;
};

/// The piecewise linear functions of a program, their points side by side.
class NormContinuousTable {
 public:
  /// At least two points, their `orig` strictly ascending. Gives the number of the entry.
  std::uint32_t Append(const std::vector<NormPoint>& points, Outliers outliers, const Cell& whenMissing) {
    fEntries.push_back({fPoints.size(), points.size(), whenMissing, outliers});
    fPoints.insert(fPoints.end(), points.begin(), points.end());
    return static_cast<std::uint32_t>(fEntries.size() - 1);
  }

  [[nodiscard]] Cell Evaluate(std::uint32_t index, const Cell& input) const noexcept {
    const Entry& entry = fEntries[index];
    if (input.state != Cell::kNumber) return input.IsMissing() ? entry.whenMissing : Cell::Invalid();
    const NormPoint* const first = fPoints.data() + entry.firstPoint;
    if (entry.outliers != Outliers::kAsIs) {
      const NormPoint& last = first[entry.pointCount - 1];
      if (input.number < first->orig || input.number > last.orig) return EvaluateOutlier(entry, input, *first, last);
    }
    return Interpolate(FindSegment(first, entry.pointCount, input.number), input.number);
  }

 private:
  static constexpr std::size_t kFewPoints = 16;  // are counted as fast as they are searched

  struct Entry {
    std::size_t firstPoint;
    std::size_t pointCount;
    Cell whenMissing;
    Outliers outliers;
  };

  static Cell EvaluateOutlier(const Entry& entry, const Cell& input, const NormPoint& first,
                              const NormPoint& last) noexcept {
    if (entry.outliers == Outliers::kAsMissingValues) return entry.whenMissing;
    return Cell::Number(input.number < first.orig ? first.norm : last.norm);
  }

  // The first point of the segment that holds `x`: of the first one if `x` is below all points, of the last one if it
  // is above them, so that the outer segments extrapolate.
  static const NormPoint* FindSegment(const NormPoint* first, std::size_t count, double x) noexcept {
    const NormPoint* const lastSegment = first + count - 2;
    if (count <= kFewPoints) {
      // Without branches, which could only be guessed.
      const NormPoint* segment = first;
      for (const NormPoint* point = first + 1; point <= lastSegment; ++point) segment += point->orig < x ? 1 : 0;
      return segment;
    }
    const auto isBelow = [](const NormPoint& point, double value) { return point.orig < value; };
    return std::lower_bound(first + 1, lastSegment + 1, x, isBelow) - 1;
  }

  // b1 + (x - a1) / (a2 - a1) * (b2 - b1), in this very order. An infinite input on a level segment has no value.
  static Cell Interpolate(const NormPoint* segment, double x) noexcept {
    const NormPoint& from = segment[0];
    const NormPoint& to = segment[1];
    const double result = from.norm + (x - from.orig) / (to.orig - from.orig) * (to.norm - from.norm);
    return result == result ? Cell::Number(result) : Cell::Invalid();
  }

  std::vector<Entry> fEntries;
  std::vector<NormPoint> fPoints;
};

}  // namespace KelTransformNS
