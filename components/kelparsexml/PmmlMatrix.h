#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "components/kelparsexml/ElementTree.h"
#include "scoring/common/KelExport.h"

namespace KelXML_1_3 {

/// A dense matrix of finite numbers. Immutable.
class PmmlMatrix {
 public:
  /// `cells` holds the rows, one after the other.
  PmmlMatrix(std::size_t columns, std::vector<double> cells) : fColumns(columns), fCells(std::move(cells)) {}

  [[nodiscard]] std::size_t Rows() const noexcept { return fColumns == 0 ? 0 : fCells.size() / fColumns; }
  [[nodiscard]] std::size_t Columns() const noexcept { return fColumns; }
  /// A cell by its row and column, from 0. Both must be in range.
  [[nodiscard]] double At(std::size_t row, std::size_t column) const noexcept {
    return fCells[row * fColumns + column];
  }

 private:
  std::size_t fColumns;
  std::vector<double> fCells;
};

/// The matrix of a "Matrix" element: its diagonal, its lower left triangle or its rows as arrays, or single cells by
/// "MatCell" with the element's defaults for all others (0 where it gives none). "nbRows" and "nbCols" needn't be
/// there; where they are, the content must fit them. Throws `PmmlError` for arrays of a wrong length, cells outside the
/// matrix or given twice, numbers that aren't finite, no cells at all, and for a size that the document only claims:
/// a matrix whose cells aren't all written may have some millions of them.
KEL_EXPORT PmmlMatrix ReadMatrix(const Element& matrix);

}  // namespace KelXML_1_3
