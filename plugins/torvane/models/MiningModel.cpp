#include "plugins/torvane/models/MiningModel.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "plugins/torvane/models/Combination.h"
#include "plugins/torvane/models/Figures.h"
#include "plugins/torvane/models/MiningReader.h"

namespace Torvane {

using KelTransformNS::Cell;
using KelTransformNS::Frame;

std::unique_ptr<ModelBody> MiningModel::Build(const Element& model, FieldScope& scope, Target& target) {
  return MiningReader(model, scope, target).Read();
}

std::uint32_t MiningModel::RankingCapacity() const noexcept { return GivesAllPredictions() ? EntityCount() : 0; }

void MiningModel::Evaluate(Frame frame, Prediction& prediction) const {
  for (const std::uint32_t slot : fOutputSlots) frame[slot] = Cell::Missing();
  switch (fMethod) {
    case Method::kSelectFirst:
      return SelectFirst(frame, prediction);
    case Method::kSelectAll:
      return SelectAll(frame, prediction);
    case Method::kModelChain:
      return RunChain(frame, prediction);
    case Method::kMajorityVote:
      return Vote(frame, prediction);
    default:
      break;
  }
  if (fIsNumeric) return CombineNumbers(frame, prediction);
  return fMethod == Method::kAverage ? AverageProbabilities(frame, prediction)
                                     : CompareProbabilities(frame, prediction);
}

// --- Segments ---

MiningModel::Part MiningModel::Run(const Segment& segment, Frame frame, bool wantsDistribution, Prediction& part,
                                   double* numbers) const {
  if (segment.hasDerived) segment.derived.Run(frame);
  for (const std::uint32_t slot : segment.derivedSlots) {
    if (frame[slot].IsInvalid()) return Part::kInvalid;
  }
  bool surrogateUsed = false;
  if (fPredicates.Evaluate(segment.predicate, frame.data(), surrogateUsed) != Truth::kTrue) return Part::kSkipped;
  part = segment.model->MakePrediction(numbers);
  part.wantsDistribution = wantsDistribution;
  segment.model->EvaluateMember(frame, part);
  switch (part.outcome) {
    case Outcome::kInvalid:
      return Part::kInvalid;
    case Outcome::kMissing:
      return Part::kMissing;
    default:
      return Part::kValue;
  }
}

// Runs the segments and gives the result of each to `take`, with its weight. False if the ensemble has no result; the
// outcome then says why. All segments run even so: outputs may ask for the results of each. A segment without the
// distribution that is wanted has no result.
template <typename Take>
bool MiningModel::RunAll(Frame frame, bool wantsDistribution, Prediction& prediction, Tally& tally,
                         const Take& take) const {
  double* const numbers = prediction.scratch + fOwnNumbers;
  const bool isSelfSufficient = fMethod == Method::kMajorityVote || fMethod == Method::kSelectAll;
  const bool needsAll = fMissingTreatment == MissingTreatment::kReturnMissing ||
                        (fMissingTreatment == MissingTreatment::kContinue && !isSelfSufficient);
  bool hasAll = true;
  for (const Segment& segment : fSegments) {
    Prediction part;
    const Part outcome = Run(segment, frame, wantsDistribution, part, numbers);
    if (outcome == Part::kSkipped) continue;
    if (outcome == Part::kInvalid) {
      prediction.outcome = Outcome::kInvalid;
      return false;
    }
    const double weight = fIsWeighted ? WeightOf(segment, frame.data()) : 1.0;
    const bool hasResult = outcome == Part::kValue && (part.hasProbabilities || !wantsDistribution);
    if (hasResult && !std::isnan(weight)) {
      tally.results += weight;
      take(segment, part, weight);
    } else {
      hasAll = false;
      tally.missing += std::isnan(weight) ? segment.weight : weight;
    }
  }
  if (hasAll) return true;
  if (needsAll) return false;
  return fMissingTreatment != MissingTreatment::kSkipSegment ||
         tally.missing / (tally.results + tally.missing) <= fMissingThreshold;
}

// For the outputs, if the segments end before those that are the first to need some fields.
void MiningModel::FinishDerived(std::size_t firstSegment, Frame frame) const noexcept {
  if (!fOutputsMayReadDerived) return;
  for (std::size_t i = firstSegment; i < fSegments.size(); ++i) {
    if (fSegments[i].hasDerived) fSegments[i].derived.Run(frame);
  }
}

// NaN if the field of the weight is missing, or holds what can't be one.
double MiningModel::WeightOf(const Segment& segment, const Cell* frame) const noexcept {
  if (segment.weightSlot == Prediction::kNone) return segment.weight;
  const Cell& factor = frame[segment.weightSlot];
  const bool isFactor = factor.state == Cell::kNumber && factor.number >= 0.0 && std::isfinite(factor.number);
  return isFactor ? segment.weight * factor.number : std::numeric_limits<double>::quiet_NaN();
}

// --- Selection ---

void MiningModel::SelectFirst(Frame frame, Prediction& prediction) const {
  for (std::uint32_t i = 0; i < fSegments.size(); ++i) {
    Prediction part;
    const Part outcome = Run(fSegments[i], frame, prediction.wantsDistribution, part, prediction.scratch + fOwnNumbers);
    if (outcome == Part::kSkipped) continue;
    if (outcome == Part::kMissing && fMissingTreatment == MissingTreatment::kSkipSegment) continue;
    prediction.entity = i;
    if (outcome == Part::kInvalid) prediction.outcome = Outcome::kInvalid;
    if (outcome == Part::kValue) fSegments[i].HandOver(part, fCategoryCount, prediction);
    return FinishDerived(i + 1, frame);
  }
}

void MiningModel::SelectAll(Frame frame, Prediction& prediction) const {
  Tally tally;
  const auto take = [&](const Segment& segment, const Prediction& part, double) {
    const auto index = static_cast<std::uint32_t>(&segment - fSegments.data());
    const double result = fIsNumeric ? part.number : segment.CategoryOf(part.category);
    prediction.ranking[prediction.rankingCount++] = {index, result};
  };
  if (!RunAll(frame, false, prediction, tally, take)) prediction.rankingCount = 0;
  if (prediction.rankingCount == 0) return;
  prediction.outcome = Outcome::kValue;
  prediction.category = 0;
}

// The result is that of the last segment that took part; the others hand on what they found by their outputs.
void MiningModel::RunChain(Frame frame, Prediction& prediction) const {
  for (std::size_t i = 0; i < fSegments.size(); ++i) {
    const Segment& segment = fSegments[i];
    Prediction part;
    const Part outcome = Run(segment, frame, prediction.wantsDistribution, part, prediction.scratch + fOwnNumbers);
    if (outcome == Part::kSkipped) continue;
    if (outcome == Part::kMissing && fMissingTreatment == MissingTreatment::kSkipSegment) continue;
    prediction.outcome = outcome == Part::kInvalid ? Outcome::kInvalid : Outcome::kMissing;
    if (outcome == Part::kInvalid) return;
    if (outcome == Part::kMissing && fMissingTreatment == MissingTreatment::kReturnMissing) {
      return FinishDerived(i + 1, frame);
    }
    if (outcome == Part::kValue && segment.givesResult) segment.HandOver(part, fCategoryCount, prediction);
  }
}

// --- Combination ---

// Adds up by category what the trees say. False if there is no such layout, or a value that it needs is missing: the
// segments then run one by one.
bool MiningModel::AddUpTrees(Frame frame, Prediction& prediction) const {
  if (fTrees == nullptr) return false;
  std::fill_n(prediction.probabilities, fCategoryCount, 0.0);
  if (!fTrees->AddUp(frame.data(), prediction.scratch, prediction.probabilities)) return false;
  for (std::uint32_t i = 0; i < fCategoryCount; ++i) prediction.probabilities[i] /= fTreeWeight;
  ConcludeByProbabilities(prediction);
  return true;
}

void MiningModel::CombineNumbers(Frame frame, Prediction& prediction) const {
  if (fTrees != nullptr && fTrees->Sum(frame.data(), prediction.scratch, prediction.number)) {
    if (fMethod == Method::kAverage) prediction.number /= fTreeWeight;
    prediction.outcome = Outcome::kValue;
    return;
  }
  double* const values = prediction.scratch;
  double* const weights = values + fSegments.size();
  std::size_t count = 0;
  Tally tally;
  const auto take = [&](const Segment&, const Prediction& part, double weight) {
    values[count] = part.number;
    weights[count++] = weight;
  };
  if (!RunAll(frame, false, prediction, tally, take) || count == 0) return;
  if (fMethod != Method::kSum && tally.results == 0.0) return;  // none has any weight
  prediction.outcome = Outcome::kValue;
  switch (fMethod) {
    case Method::kMedian:
      prediction.number = fIsWeighted ? WeightedMedian(values, weights, count) : Median(values, count);
      return;
    case Method::kAverage:
      prediction.number = WeightedSum(values, weights, count, fIsSinglePrecision) / tally.results;
      return;
    default:
      prediction.number = WeightedSum(values, weights, count, fIsSinglePrecision);
  }
}

// A missing result is a vote of its own, and nothing is predicted if it wins.
void MiningModel::Vote(Frame frame, Prediction& prediction) const {
  if (AddUpTrees(frame, prediction)) return;
  double* const votes = prediction.probabilities;
  std::fill_n(votes, fCategoryCount, 0.0);
  Tally tally;
  const auto take = [&](const Segment& segment, const Prediction& part, double weight) {
    votes[segment.CategoryOf(part.category)] += weight;
  };
  if (!RunAll(frame, false, prediction, tally, take) || tally.results <= 0.0) return;
  const bool countsMissing = fMissingTreatment == MissingTreatment::kContinue;
  const double all = tally.results + (countsMissing ? tally.missing : 0.0);
  if (countsMissing && tally.missing > *std::max_element(votes, votes + fCategoryCount)) return;
  for (std::uint32_t i = 0; i < fCategoryCount; ++i) votes[i] /= all;
  ConcludeByProbabilities(prediction);
}

void MiningModel::AverageProbabilities(Frame frame, Prediction& prediction) const {
  if (AddUpTrees(frame, prediction)) return;
  double* const sums = prediction.probabilities;
  std::fill_n(sums, fCategoryCount, 0.0);
  Tally tally;
  const auto take = [&](const Segment& segment, const Prediction& part, double weight) {
    segment.Scatter(part.probabilities, weight, sums);
  };
  if (!RunAll(frame, true, prediction, tally, take) || tally.results == 0.0) return;
  for (std::uint32_t i = 0; i < fCategoryCount; ++i) sums[i] /= tally.results;
  ConcludeByProbabilities(prediction);
}

// Keeps the probabilities that each segment gives, one row for each.
void MiningModel::CompareProbabilities(Frame frame, Prediction& prediction) const {
  double* const rows = prediction.scratch;
  std::size_t rowCount = 0;
  Tally tally;
  const auto take = [&](const Segment& segment, const Prediction& part, double) {
    double* const row = rows + rowCount++ * fCategoryCount;
    std::fill_n(row, fCategoryCount, 0.0);
    segment.Scatter(part.probabilities, 1.0, row);
  };
  if (!RunAll(frame, true, prediction, tally, take) || rowCount == 0) return;
  const std::uint32_t largest = IndexOfLargest(rows, rowCount * fCategoryCount);
  if (largest == Prediction::kNone) {
    prediction.outcome = Outcome::kInvalid;
  } else if (fMethod == Method::kMedian) {
    TakeMedians(rows, rowCount, prediction);
  } else {
    TakeMaximum(rows, rowCount, largest, prediction);
  }
}

// The category with the largest median wins. From version 4.3 on the probabilities are those of the model that gave
// this median, or the mean of the two around it.
void MiningModel::TakeMedians(const double* rows, std::size_t rowCount, Prediction& prediction) const {
  double* const column = prediction.scratch + fSegments.size() * fCategoryCount;
  for (std::uint32_t category = 0; category < fCategoryCount; ++category) {
    for (std::size_t row = 0; row < rowCount; ++row) column[row] = rows[row * fCategoryCount + category];
    prediction.probabilities[category] = Median(column, rowCount);
  }
  ConcludeByProbabilities(prediction);
  if (!fTellsWinnersShares || prediction.outcome != Outcome::kValue) return;
  const auto [low, high] = MedianRows(rows, rowCount, fCategoryCount, prediction.category, column);
  for (std::uint32_t i = 0; i < fCategoryCount; ++i) {
    prediction.probabilities[i] = 0.5 * (rows[low * fCategoryCount + i] + rows[high * fCategoryCount + i]);
  }
}

// The largest probability of all wins; told is the mean of the models that are as sure of this category.
void MiningModel::TakeMaximum(const double* rows, std::size_t rowCount, std::size_t best,
                              Prediction& prediction) const noexcept {
  const auto winner = static_cast<std::uint32_t>(best % fCategoryCount);
  std::fill_n(prediction.probabilities, fCategoryCount, 0.0);
  double count = 0.0;
  for (std::size_t row = 0; row < rowCount; ++row) {
    const double* const shares = rows + row * fCategoryCount;
    if (shares[winner] != rows[best]) continue;
    count += 1.0;
    for (std::uint32_t i = 0; i < fCategoryCount; ++i) prediction.probabilities[i] += shares[i];
  }
  for (std::uint32_t i = 0; i < fCategoryCount; ++i) prediction.probabilities[i] /= count;
  prediction.outcome = Outcome::kValue;
  prediction.category = winner;
  prediction.hasProbabilities = true;
}

void MiningModel::ConcludeByProbabilities(Prediction& prediction) const noexcept {
  prediction.category = IndexOfLargest(prediction.probabilities, fCategoryCount);
  prediction.hasProbabilities = true;
  prediction.outcome = prediction.category == Prediction::kNone ? Outcome::kInvalid : Outcome::kValue;
}

}  // namespace Torvane
