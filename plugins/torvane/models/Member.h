#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "plugins/torvane/CompiledModel.h"
#include "plugins/torvane/Reading.h"
#include "plugins/torvane/models/Prediction.h"
#include "plugins/torvane/targets/Target.h"

namespace Torvane {

/// A model inside another one, which uses its results. Both have categories of their own.
struct Member {
  std::unique_ptr<const CompiledModel> model;
  std::vector<std::uint32_t> categories;  ///< those of the outer model, by those of this one; empty: they are the same

  /// Adds the model's categories to those of the outer model's target.
  void MapCategories(const Element& element, Target& target);
  [[nodiscard]] std::uint32_t CategoryOf(std::uint32_t category) const noexcept {
    return categories.empty() ? category : categories[category];
  }
  /// Adds weight * figure of each of the model's categories to the sums of the outer model's.
  void Scatter(const double* figures, double weight, double* sums) const noexcept;
  /// Makes a result of the model that of the outer one, which has `categoryCount` categories.
  void HandOver(const Prediction& part, std::size_t categoryCount, Prediction& prediction) const noexcept;
};

}  // namespace Torvane
