#include "plugins/torvane/models/Combination.h"

#include <algorithm>

namespace Torvane {
namespace {

void SwapEntries(double* values, double* weights, std::size_t a, std::size_t b) noexcept {
  std::swap(values[a], values[b]);
  std::swap(weights[a], weights[b]);
}

// Moves an entry of a heap, whose largest value comes first, down to its place.
void SiftDown(double* values, double* weights, std::size_t at, std::size_t count) noexcept {
  for (std::size_t child = 2 * at + 1; child < count; child = 2 * at + 1) {
    if (child + 1 < count && values[child] < values[child + 1]) ++child;
    if (!(values[at] < values[child])) return;
    SwapEntries(values, weights, at, child);
    at = child;
  }
}

// Sorts both arrays by the values: a heap sort, which needs no memory.
void SortTogether(double* values, double* weights, std::size_t count) noexcept {
  for (std::size_t at = count / 2; at-- > 0;) SiftDown(values, weights, at, count);
  for (std::size_t end = count; end-- > 1;) {
    SwapEntries(values, weights, 0, end);
    SiftDown(values, weights, 0, end);
  }
}

// Drops the values without weight and gives the number of those that stay.
std::size_t KeepWeighted(double* values, double* weights, std::size_t count) noexcept {
  std::size_t kept = 0;
  for (std::size_t i = 0; i < count; ++i) {
    if (weights[i] == 0.0) continue;
    values[kept] = values[i];
    weights[kept++] = weights[i];
  }
  return kept;
}

// The row before which `rank` others stand if the rows are sorted by a column, equal ones in their order.
std::size_t RowOfRank(const double* rows, std::size_t rowCount, std::size_t columnCount, std::size_t column,
                      std::size_t rank, double* scratch) noexcept {
  for (std::size_t row = 0; row < rowCount; ++row) scratch[row] = rows[row * columnCount + column];
  std::nth_element(scratch, scratch + rank, scratch + rowCount);
  const double value = scratch[rank];
  auto before = std::count_if(scratch, scratch + rank, [&](double other) { return other < value; });
  for (std::size_t row = 0; row < rowCount; ++row) {
    if (rows[row * columnCount + column] != value) continue;
    if (static_cast<std::size_t>(before++) == rank) return row;
  }
  return 0;
}

}  // namespace

double WeightedSum(const double* values, const double* weights, std::size_t count, bool isSinglePrecision) noexcept {
  double sum = 0.0;
  for (std::size_t i = 0; i < count; ++i) {
    if (isSinglePrecision) {
      sum = static_cast<float>(sum) + static_cast<float>(weights[i]) * static_cast<float>(values[i]);
    } else {
      sum += weights[i] * values[i];
    }
  }
  return sum;
}

double Median(double* values, std::size_t count) noexcept {
  double* const middle = values + count / 2;
  std::nth_element(values, middle, values + count);
  if (count % 2 != 0) return *middle;
  return 0.5 * (*std::max_element(values, middle) + *middle);
}

double WeightedMedian(double* values, double* weights, std::size_t count) noexcept {
  count = KeepWeighted(values, weights, count);
  SortTogether(values, weights, count);
  double total = 0.0;
  for (std::size_t i = 0; i < count; ++i) total += weights[i];
  double upTo = 0.0;
  for (std::size_t i = 0; i + 1 < count; ++i) {
    upTo += weights[i];
    if (upTo > 0.5 * total) return values[i];
    if (upTo == 0.5 * total) return 0.5 * (values[i] + values[i + 1]);
  }
  return values[count - 1];
}

std::pair<std::size_t, std::size_t> MedianRows(const double* rows, std::size_t rowCount, std::size_t columnCount,
                                               std::size_t column, double* scratch) noexcept {
  return {RowOfRank(rows, rowCount, columnCount, column, (rowCount - 1) / 2, scratch),
          RowOfRank(rows, rowCount, columnCount, column, rowCount / 2, scratch)};
}

}  // namespace Torvane
