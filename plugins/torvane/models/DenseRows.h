#pragma once

#include <cstddef>
#include <vector>

namespace Torvane {

/// Rows of numbers, all of one length, each of which is summed with one vector: the weights of a layer of neurons, the
/// vectors of a kernel. Several rows are summed side by side, each of them from its first column to its last, so that
/// the sums are those of a plain loop to the last bit, but don't wait for each other. Immutable.
class DenseRows {
 public:
  DenseRows() = default;
  /// `cells` holds row after row.
  DenseRows(const std::vector<double>& cells, std::size_t columnCount);

  [[nodiscard]] std::size_t RowCount() const noexcept { return fRowCount; }
  [[nodiscard]] std::size_t ColumnCount() const noexcept { return fColumnCount; }

  /// sums[r] = sum of cell[r][c] * x[c] over c. `sums` and `x` must not overlap.
  void Products(const double* x, double* sums) const noexcept;
  /// sums[r] = sum of (x[c] - cell[r][c])^2 over c.
  void SquaredDistances(const double* x, double* sums) const noexcept;

 private:
  std::vector<double> fCells;  // blocks of rows, each block column after column
  std::size_t fRowCount = 0;
  std::size_t fColumnCount = 0;
};

}  // namespace Torvane
