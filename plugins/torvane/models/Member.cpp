#include "plugins/torvane/models/Member.h"

#include <algorithm>

namespace Torvane {

void Member::MapCategories(const Element& element, Target& target) {
  if (model->GetTarget().SharesCategories(target)) return;
  const std::vector<Category>& own = model->GetTarget().Categories();
  bool isSame = true;
  for (std::uint32_t i = 0; i < own.size(); ++i) {
    categories.push_back(target.AddCategoryOf(element, own[i]));
    isSame = isSame && categories.back() == i;
  }
  if (isSame) categories.clear();
}

void Member::Scatter(const double* figures, double weight, double* sums) const noexcept {
  const std::size_t count = model->GetTarget().Categories().size();
  for (std::uint32_t i = 0; i < count; ++i) sums[CategoryOf(i)] += weight * figures[i];
}

void Member::HandOver(const Prediction& part, std::size_t categoryCount, Prediction& prediction) const noexcept {
  prediction.outcome = Outcome::kValue;
  if (model->GetTarget().IsNumeric()) {
    prediction.number = part.number;
    return;
  }
  prediction.category = CategoryOf(part.category);
  prediction.hasProbabilities = part.hasProbabilities;
  prediction.hasConfidences = part.hasConfidences;
  if (part.hasProbabilities) {
    std::fill_n(prediction.probabilities, categoryCount, 0.0);
    Scatter(part.probabilities, 1.0, prediction.probabilities);
  }
  if (part.hasConfidences) {
    std::fill_n(prediction.confidences, categoryCount, 0.0);
    Scatter(part.confidences, 1.0, prediction.confidences);
  }
}

}  // namespace Torvane
