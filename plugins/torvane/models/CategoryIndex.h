#pragma once

#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "components/keltransform/Cell.h"

namespace Torvane {

/// Finds the position of a cell's value in a list of categories of one field. Immutable.
class CategoryIndex {
 public:
  static constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();

  CategoryIndex() = default;
  explicit CategoryIndex(const std::vector<KelTransformNS::Cell>& categories);

  /// Whether the list has a category twice.
  [[nodiscard]] bool HasRepeated() const noexcept;
  /// `kNone` for a category that isn't listed, and for a missing one.
  [[nodiscard]] std::uint32_t Find(const KelTransformNS::Cell& cell) const noexcept;

 private:
  std::vector<std::pair<double, std::uint32_t>> fPositions;  // by the number that stands for the category
};

}  // namespace Torvane
