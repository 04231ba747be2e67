#include "plugins/torvane/models/ComparisonMeasure.h"

#include <limits>

namespace Torvane {

using KelTransformNS::Cell;
using KelTransformNS::Interval;

namespace {

constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();

bool IsMissing(double code) noexcept { return code != code; }

}  // namespace

std::optional<std::uint32_t> ValuePositions::Find(const Cell& cell) const noexcept {
  if (cell.state == Cell::kText) return ranks.OfText(cell.textId);
  if (const std::optional<std::uint32_t> rank = ranks.OfNumber(cell.number)) return rank;
  const auto found = std::find_if(intervals.begin(), intervals.end(),
                                  [&](const Interval& interval) { return interval.Contains(cell.number); });
  if (found == intervals.end()) return std::nullopt;
  return static_cast<std::uint32_t>(found - intervals.begin());
}

// A number stands for itself and a text for its number in the pool. NaN: the cell holds nothing that can be compared.
double ComparisonMeasure::CodeOf(const ComparedField& field, const Cell& cell) const noexcept {
  if (cell.state != Cell::kNumber && cell.state != Cell::kText) return kMissing;
  if (field.positions != kNone) {
    const std::optional<std::uint32_t> position = fPositions[field.positions].Find(cell);
    return position ? static_cast<double>(*position) : kMissing;
  }
  const double code = cell.state == Cell::kText ? static_cast<double>(cell.textId) : cell.number;
  const bool isComparable = fAggregation != Aggregation::kBinary || code == 0.0 || code == 1.0;
  return isComparable ? code : kMissing;
}

void ComparisonMeasure::AddPoint(std::span<const double> rows) {
  const std::uint32_t lane = fPointCount % kLanes;
  if (lane == 0) fPoints.resize(fPoints.size() + std::size_t{fRowCount} * kLanes, 0.0);
  double* const block = fPoints.data() + fPoints.size() - std::size_t{fRowCount} * kLanes;
  for (std::size_t row = 0; row < rows.size(); ++row) {
    block[row * kLanes + lane] = rows[row];
    fHasGaps = fHasGaps || IsMissing(rows[row]);
  }
  ++fPointCount;
}

// Behind the codes of the fields stands A, as it is for a point without gaps.
Outcome ComparisonMeasure::ReadRecord(const Cell* frame, double* record) const noexcept {
  double known = 0.0;
  for (std::size_t i = 0; i < fFields.size(); ++i) {
    const Cell& cell = frame[fFields[i].slot];
    record[i] = CodeOf(fFields[i], cell);
    if (cell.IsMissing()) continue;
    if (IsMissing(record[i])) return Outcome::kInvalid;
    known += fFields[i].missingWeight;
  }
  record[fFields.size()] = fTotalMissingWeight / known;
  return known > 0.0 ? Outcome::kValue : Outcome::kMissing;
}

void ComparisonMeasure::CompareBlock(const double* record, std::uint32_t first, Block& block) const noexcept {
  const double* const rows = fPoints.data() + std::size_t{first} * fRowCount;
  switch (fAggregation) {
    case Aggregation::kEuclidean:
    case Aggregation::kSquaredEuclidean:
      Aggregate(
          record, rows, 0.0, [](double sum, double weight, double c) { return sum + weight * (c * c); }, block);
      break;
    case Aggregation::kCityBlock:
      Aggregate(
          record, rows, 0.0, [](double sum, double weight, double c) { return sum + weight * c; }, block);
      break;
    case Aggregation::kChebychev:
      Aggregate(
          record, rows, -std::numeric_limits<double>::infinity(),
          [](double most, double weight, double c) {
            const double weighted = weight * c;
            return weighted <= most || std::isnan(most) ? most : weighted;  // NaN stays
          },
          block);
      break;
    case Aggregation::kMinkowski:
      Aggregate(
          record, rows, 0.0,
          [power = fPower](double sum, double weight, double c) { return sum + weight * std::pow(c, power); }, block);
      break;
    case Aggregation::kBinary:
      return AggregateBinary(record, rows, block);
  }
  Finish(record, block);
}

// Leaves the bare sums in the block's affinities.
template <typename Fold>
void ComparisonMeasure::Aggregate(const double* record, const double* rows, double start, const Fold& fold,
                                  Block& block) const noexcept {
  double sums[kLanes];
  std::fill_n(sums, kLanes, start);
  std::fill_n(block.known, kLanes, fHasGaps ? 0.0 : fTotalMissingWeight);
  if (fHasDifferencesOnly && !fHasGaps) {
    AddDifferences(record, rows, fold, sums);
  } else {
    AddComparisons(record, rows, fold, sums, block.known);
  }
  std::copy_n(sums, kLanes, block.affinities);
}

// The usual case, which goes without detours: the sums stay in registers.
template <typename Fold>
void ComparisonMeasure::AddDifferences(const double* record, const double* rows, const Fold& fold,
                                       double* sums) const noexcept {
  const ComparedField* const fields = fFields.data();
  const std::size_t count = fFields.size();
  for (std::size_t i = 0; i < count; ++i, rows += kLanes) {
    const double x = record[i];
    if (IsMissing(x)) continue;
    const double weight = fields[i].weight;
    for (std::uint32_t lane = 0; lane < kLanes; ++lane) {
      sums[lane] = fold(sums[lane], weight, std::fabs(x - rows[lane]));
    }
  }
}

template <typename Fold>
void ComparisonMeasure::AddComparisons(const double* record, const double* rows, const Fold& fold, double* sums,
                                       double* known) const noexcept {
  for (std::size_t i = 0; i < fFields.size(); ++i) {
    if (IsMissing(record[i])) continue;
    const ComparedField& field = fFields[i];
    const double* const points = rows + std::size_t{field.row} * kLanes;
    double c[kLanes];
    CompareField(field, record[i], points, c);
    for (std::uint32_t lane = 0; lane < kLanes; ++lane) {
      if (fHasGaps && IsMissing(points[lane])) continue;
      sums[lane] = fold(sums[lane], field.weight, c[lane]);
      if (fHasGaps) known[lane] += field.missingWeight;
    }
  }
}

void ComparisonMeasure::Finish(const double* record, Block& block) const noexcept {
  if (fHasGaps) {
    for (std::uint32_t lane = 0; lane < kLanes; ++lane) {
      block.affinities[lane] *= fTotalMissingWeight / block.known[lane];
    }
  } else {
    const double a = record[fFields.size()];
    for (std::uint32_t lane = 0; lane < kLanes; ++lane) block.affinities[lane] *= a;
  }
  if (fAggregation == Aggregation::kEuclidean) {
    for (std::uint32_t lane = 0; lane < kLanes; ++lane) block.affinities[lane] = std::sqrt(block.affinities[lane]);
  } else if (fAggregation == Aggregation::kMinkowski) {
    const double inverse = 1.0 / fPower;
    for (std::uint32_t lane = 0; lane < kLanes; ++lane) {
      block.affinities[lane] = std::pow(block.affinities[lane], inverse);
    }
  }
}

// The values of both are 0 and 1. Weights have no part in it; fields that either lacks aren't counted.
void ComparisonMeasure::AggregateBinary(const double* record, const double* rows, Block& block) const noexcept {
  for (std::uint32_t lane = 0; lane < kLanes; ++lane) {
    double a[4] = {};
    double count = 0.0;
    for (std::size_t i = 0; i < fFields.size(); ++i) {
      const double y = rows[std::size_t{fFields[i].row} * kLanes + lane];
      if (IsMissing(record[i]) || IsMissing(y)) continue;
      a[(record[i] == 1.0 ? 0 : 2) + (y == 1.0 ? 0 : 1)] += 1.0;
      count += 1.0;
    }
    double numerator = 0.0;
    double denominator = 0.0;
    for (int i = 0; i < 4; ++i) {
      numerator += fBinary.c[i] * a[i];
      denominator += fBinary.d[i] * a[i];
    }
    block.affinities[lane] = denominator == 0.0 ? kMissing : numerator / denominator;
    block.known[lane] = count;
  }
}

void ComparisonMeasure::CompareField(const ComparedField& field, double x, const double* points,
                                     double* c) const noexcept {
  if (field.distributionSize > 0) return CompareDistribution(field, x, points, c);
  for (std::uint32_t lane = 0; lane < kLanes; ++lane) {
    c[lane] = IsMissing(points[lane]) ? kMissing : CompareOne(field, x, points[lane]);
  }
}

// c = sum of share_j * c(x, value_j)
void ComparisonMeasure::CompareDistribution(const ComparedField& field, double x, const double* shares,
                                            double* c) const noexcept {
  std::fill_n(c, kLanes, 0.0);
  for (std::uint32_t j = 0; j < field.distributionSize; ++j, shares += kLanes) {
    const double one = CompareOne(field, x, fDistributionValues[field.distributionFirst + j]);
    for (std::uint32_t lane = 0; lane < kLanes; ++lane) c[lane] += shares[lane] * one;
  }
}

double ComparisonMeasure::CompareOne(const ComparedField& field, double x, double y) const noexcept {
  switch (field.function) {
    case Function::kAbsDiff:
      return std::fabs(x - y);
    case Function::kGaussSim:
      return std::exp(-field.gaussFactor * ((x - y) * (x - y)));
    case Function::kDelta:
      return x == y ? 0.0 : 1.0;
    case Function::kEqual:
      return x == y ? 1.0 : 0.0;
    case Function::kTable:
      return fTables[field.table + static_cast<std::size_t>(x) * field.tableSize + static_cast<std::size_t>(y)];
  }
  return kMissing;
}

}  // namespace Torvane
