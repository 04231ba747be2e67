#pragma once

#include <cstddef>
#include <utility>

namespace Torvane {

/// How the results of several models become one. Arrays have `count` entries, at least one.

/// The sum of weight * value in the order of the array. In single precision each value, product and sum is rounded.
[[nodiscard]] double WeightedSum(const double* values, const double* weights, std::size_t count,
                                 bool isSinglePrecision) noexcept;
/// The middle value, the mean of the two middle ones of an even count. Reorders the values.
[[nodiscard]] double Median(double* values, std::size_t count) noexcept;
/// The smallest value at which the values up to it have half of all weight; where they have exactly half, the mean of
/// it and the next. Values of weight 0 don't count; there is another one. Reorders both arrays.
[[nodiscard]] double WeightedMedian(double* values, double* weights, std::size_t count) noexcept;
/// The rows of a matrix with `columnCount` columns whose values in `column` are the lower and the upper median; both
/// are the same of an odd count. `scratch` has a place for each row.
[[nodiscard]] std::pair<std::size_t, std::size_t> MedianRows(const double* rows, std::size_t rowCount,
                                                             std::size_t columnCount, std::size_t column,
                                                             double* scratch) noexcept;

}  // namespace Torvane
