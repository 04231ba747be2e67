#include "plugins/torvane/models/SparseRows.h"

namespace Torvane {

void SparseRows::AddCell(std::uint32_t column, double value) {
  fColumns.push_back(column);
  fValues.push_back(value);
}

void SparseRows::ShrinkToFit() {
  fColumns.shrink_to_fit();
  fValues.shrink_to_fit();
  fEnds.shrink_to_fit();
}

std::vector<double> SparseRows::Expand(std::size_t columnCount) const {
  std::vector<double> cells(fEnds.size() * columnCount, 0.0);
  std::size_t cell = 0;
  for (std::size_t row = 0; row < fEnds.size(); ++row) {
    for (; cell < fEnds[row]; ++cell) cells[row * columnCount + fColumns[cell]] = fValues[cell];
  }
  return cells;
}

void SparseRows::Products(const double* x, double* sums) const noexcept {
  std::size_t cell = 0;
  for (const std::size_t end : fEnds) {
    double sum = 0.0;
    for (; cell < end; ++cell) sum += fValues[cell] * x[fColumns[cell]];
    *sums++ = sum;
  }
}

// Only columns where one of both isn't 0 count. Those of `x` are listed once, each column as a number before its value;
// a row is then merged with the list.
void SparseRows::SquaredDistances(const double* x, std::size_t columnCount, double* scratch,
                                  double* sums) const noexcept {
  double* listEnd = scratch;
  for (std::size_t column = 0; column < columnCount; ++column) {
    if (x[column] == 0.0) continue;
    *listEnd++ = static_cast<double>(column);
    *listEnd++ = x[column];
  }
  std::size_t cell = 0;
  for (const std::size_t end : fEnds) {
    double sum = 0.0;
    const double* entry = scratch;
    for (; cell < end; ++cell) {
      const double column = fColumns[cell];
      for (; entry != listEnd && entry[0] < column; entry += 2) sum += entry[1] * entry[1];
      const bool isInBoth = entry != listEnd && entry[0] == column;
      const double difference = (isInBoth ? entry[1] : 0.0) - fValues[cell];
      if (isInBoth) entry += 2;
      sum += difference * difference;
    }
    for (; entry != listEnd; entry += 2) sum += entry[1] * entry[1];
    *sums++ = sum;
  }
}

}  // namespace Torvane
