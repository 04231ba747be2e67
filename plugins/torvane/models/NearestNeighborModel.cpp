#include "plugins/torvane/models/NearestNeighborModel.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "scoring/common/KelScoringConst.h"

namespace Torvane {

void NearestNeighborModel::Evaluate(KelTransformNS::Frame frame, Prediction& prediction) const noexcept {
  fNeighborhood->Find(frame.data(), prediction);
  if (prediction.outcome != Outcome::kValue) return;
  if (fIsVote) {
    Vote(prediction);
  } else if (fNumbers.empty()) {
    prediction.category = prediction.entity;
  } else {
    prediction.number = fIsMedian ? Median(prediction) : Average(prediction);
  }
}

// sum of w v / sum of w from the nearest one on, where w = 1 or 1 / (distance + threshold)
double NearestNeighborModel::Average(const Prediction& prediction) const noexcept {
  double sum = 0.0;
  double weights = 0.0;
  for (std::uint32_t i = 0; i < prediction.rankingCount; ++i) {
    const double weight = WeightOf(prediction.ranking[i]);
    sum += weight * fNumbers[prediction.ranking[i].entity];
    weights += weight;
  }
  return sum / weights;
}

// Of an even number the mean of the two in the middle.
double NearestNeighborModel::Median(const Prediction& prediction) const noexcept {
  const std::uint32_t count = prediction.rankingCount;
  double* const numbers = prediction.scratch + fNeighborhood->measure.RecordSize();
  for (std::uint32_t i = 0; i < count; ++i) numbers[i] = fNumbers[prediction.ranking[i].entity];
  double* const upper = numbers + count / 2;
  std::nth_element(numbers, upper, numbers + count);
  if (count % 2 != 0) return *upper;
  return std::midpoint(*std::max_element(numbers, upper), *upper);
}

void NearestNeighborModel::Vote(Prediction& prediction) const noexcept {
  double* const votes = prediction.probabilities;
  std::fill_n(votes, fWinningOrder.size(), 0.0);
  double sum = 0.0;
  for (std::uint32_t i = 0; i < prediction.rankingCount; ++i) {
    const double weight = WeightOf(prediction.ranking[i]);
    votes[fCategories[prediction.ranking[i].entity]] += weight;
    sum += weight;
  }
  if (!(sum > 0.0) || !std::isfinite(sum)) {  // a distance is 0 or infinite, and the threshold makes up for nothing
    prediction.outcome = Outcome::kInvalid;
    return;
  }
  prediction.category = fWinningOrder[0];
  for (const std::uint32_t category : fWinningOrder) {
    if (votes[category] > votes[prediction.category]) prediction.category = category;
  }
  for (std::size_t i = 0; i < fWinningOrder.size(); ++i) votes[i] /= sum;
  prediction.hasProbabilities = true;
}

std::span<const KindOutput> NearestNeighborModel::KindOutputs() const noexcept {
  namespace Const = KelScoring_20::KelScoringConst;
  static constexpr KindOutput kOutputs[] = {{Const::kOutputKnnCaseid, Feature::kEntityId},
                                            {Const::kOutputKnnDistance, Feature::kAffinity}};
  return kOutputs;
}

}  // namespace Torvane
