#include "plugins/torvane/models/Combination.h"

#include <algorithm>

namespace Torvane {
namespace {

// Sorts both arrays by the values. Ensembles are small, and this needs no memory.
void SortTogether(double* values, double* weights, std::size_t count) noexcept {
  for (std::size_t i = 1; i < count; ++i) {
    for (std::size_t j = i; j > 0 && values[j] < values[j - 1]; --j) {
      std::swap(values[j], values[j - 1]);
      std::swap(weights[j], weights[j - 1]);
    }
  }
}

// How many rows stand before a row if they are sorted by a column, equal ones by their position.
std::size_t RankOf(const double* rows, std::size_t rowCount, std::size_t columnCount, std::size_t column,
                   std::size_t row) noexcept {
  const double value = rows[row * columnCount + column];
  std::size_t rank = 0;
  for (std::size_t other = 0; other < rowCount; ++other) {
    const double compared = rows[other * columnCount + column];
    if (compared < value || (compared == value && other < row)) ++rank;
  }
  return rank;
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
                                               std::size_t column) noexcept {
  std::pair<std::size_t, std::size_t> median(0, 0);
  for (std::size_t row = 0; row < rowCount; ++row) {
    const std::size_t rank = RankOf(rows, rowCount, columnCount, column, row);
    if (rank == (rowCount - 1) / 2) median.first = row;
    if (rank == rowCount / 2) median.second = row;
  }
  return median;
}

}  // namespace Torvane
