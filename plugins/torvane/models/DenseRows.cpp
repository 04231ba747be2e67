#include "plugins/torvane/models/DenseRows.h"

namespace Torvane {
namespace {

// So many rows are summed at once; what remains is summed in blocks of half the width, and so on.
constexpr std::size_t kWidestBlock = 8;

// The width of the block that begins at a row when so many rows are left.
std::size_t BlockWidth(std::size_t rowsLeft) noexcept {
  std::size_t width = kWidestBlock;
  while (width > rowsLeft) width /= 2;
  return width;
}

template <std::size_t kWidth, typename Term>
const double* SumBlock(const double* cells, std::size_t columnCount, const double* x, double* sums,
                       Term term) noexcept {
  double block[kWidth] = {};
  for (std::size_t column = 0; column < columnCount; ++column, cells += kWidth) {
    for (std::size_t row = 0; row < kWidth; ++row) block[row] += term(cells[row], x[column]);
  }
  for (std::size_t row = 0; row < kWidth; ++row) sums[row] = block[row];
  return cells;
}

template <std::size_t kWidth, typename Term>
void SumAll(const double* cells, std::size_t rowCount, std::size_t columnCount, const double* x, double* sums,
            Term term) noexcept {
  for (; rowCount >= kWidth; rowCount -= kWidth, sums += kWidth) {
    cells = SumBlock<kWidth>(cells, columnCount, x, sums, term);
  }
  if constexpr (kWidth > 1) SumAll<kWidth / 2>(cells, rowCount, columnCount, x, sums, term);
}

}  // namespace

DenseRows::DenseRows(const std::vector<double>& cells, std::size_t columnCount)
    : fRowCount(columnCount == 0 ? 0 : cells.size() / columnCount), fColumnCount(columnCount) {
  fCells.reserve(cells.size());
  for (std::size_t row = 0; row < fRowCount;) {
    const std::size_t end = row + BlockWidth(fRowCount - row);
    for (std::size_t column = 0; column < columnCount; ++column) {
      for (std::size_t i = row; i < end; ++i) fCells.push_back(cells[i * columnCount + column]);
    }
    row = end;
  }
}

void DenseRows::Products(const double* x, double* sums) const noexcept {
  SumAll<kWidestBlock>(fCells.data(), fRowCount, fColumnCount, x, sums, [](double cell, double y) { return cell * y; });
}

void DenseRows::SquaredDistances(const double* x, double* sums) const noexcept {
  SumAll<kWidestBlock>(fCells.data(), fRowCount, fColumnCount, x, sums, [](double cell, double y) {
    const double difference = y - cell;
    return difference * difference;
  });
}

}  // namespace Torvane
