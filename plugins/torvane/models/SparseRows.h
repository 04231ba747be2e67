#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Torvane {

/// Rows of numbers of which most are 0, for the same sums as `DenseRows`, and to the last bit: what isn't there would
/// have added 0. The vectors that they are summed with must be finite. Immutable once filled.
class SparseRows {
 public:
  /// A cell of the last row, in ascending order of their columns.
  void AddCell(std::uint32_t column, double value);
  void EndRow() { fEnds.push_back(fValues.size()); }
  void ShrinkToFit();

  [[nodiscard]] std::size_t RowCount() const noexcept { return fEnds.size(); }
  [[nodiscard]] std::size_t CellCount() const noexcept { return fValues.size(); }
  /// All cells, those of 0 as well, row after row.
  [[nodiscard]] std::vector<double> Expand(std::size_t columnCount) const;

  /// sums[r] = sum of cell[r][c] * x[c] over c.
  void Products(const double* x, double* sums) const noexcept;
  /// sums[r] = sum of (x[c] - cell[r][c])^2 over c. `scratch` has room for twice the columns.
  void SquaredDistances(const double* x, std::size_t columnCount, double* scratch, double* sums) const noexcept;

 private:
  std::vector<std::uint32_t> fColumns;
  std::vector<double> fValues;
  std::vector<std::size_t> fEnds;  // of each row among the cells
};

}  // namespace Torvane
