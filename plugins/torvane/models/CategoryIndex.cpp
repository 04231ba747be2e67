#include "plugins/torvane/models/CategoryIndex.h"

#include <algorithm>

namespace Torvane {

using KelTransformNS::Cell;

namespace {

// All categories are of one type, so that the number of a text in the pool can't be taken for a number of the field.
double Key(const Cell& cell) noexcept { return cell.state == Cell::kText ? cell.textId : cell.number; }

}  // namespace

CategoryIndex::CategoryIndex(const std::vector<Cell>& categories) {
  fPositions.reserve(categories.size());
  for (const Cell& cell : categories) {
    fPositions.emplace_back(Key(cell), static_cast<std::uint32_t>(fPositions.size()));
  }
  std::sort(fPositions.begin(), fPositions.end());
}

bool CategoryIndex::HasRepeated() const noexcept {
  return std::adjacent_find(fPositions.begin(), fPositions.end(),
                            [](const auto& a, const auto& b) { return a.first == b.first; }) != fPositions.end();
}

std::uint32_t CategoryIndex::Find(const Cell& cell) const noexcept {
  if (cell.state != Cell::kText && cell.state != Cell::kNumber) return kNone;
  const double key = Key(cell);
  const auto found = std::lower_bound(fPositions.begin(), fPositions.end(), key,
                                      [](const auto& position, double wanted) { return position.first < wanted; });
  return found != fPositions.end() && found->first == key ? found->second : kNone;
}

}  // namespace Torvane
