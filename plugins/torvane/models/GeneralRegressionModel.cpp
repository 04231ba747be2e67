#include "plugins/torvane/models/GeneralRegressionModel.h"

#include <algorithm>
#include <cmath>

#include "plugins/torvane/models/Figures.h"
#include "scoring/common/KelScoringConst.h"

namespace Torvane {

using KelTransformNS::Cell;

void GeneralRegressionModel::Evaluate(KelTransformNS::Frame frame, Prediction& prediction) const noexcept {
  switch (fForm) {
    case Form::kNumber:
      return PredictNumber(frame.data(), prediction);
    case Form::kCox:
      return PredictSurvival(frame.data(), prediction);
    default:
      return Classify(frame.data(), prediction);
  }
}

std::span<const KindOutput> GeneralRegressionModel::KindOutputs() const noexcept {
  static constexpr KindOutput kCoxOutputs[] = {
      {KelScoring_20::KelScoringConst::kOutputCoxCumhazard, Feature::kAuxiliary}};
  if (fForm != Form::kCox) return {};
  return kCoxOutputs;
}

bool GeneralRegressionModel::Quantity::Read(const Cell* frame, double& value) const noexcept {
  if (slot == kNoSlot) {
    value = number;
    return true;
  }
  value = frame[slot].number;
  return frame[slot].state == Cell::kNumber;
}

void GeneralRegressionModel::PredictNumber(const Cell* frame, Prediction& prediction) const noexcept {
  double y = 0.0;
  double offset = 0.0;
  double trials = 1.0;
  if (!fSums.Evaluate(0, frame, y) || !fOffset.Read(frame, offset) || !fTrials.Read(frame, trials)) return;
  prediction.number = InverseLink(fLink, y + offset, fLinkParameter) * trials;
  prediction.outcome = Outcome::kValue;
}

// Before the first event there is no hazard, however large the factor.
void GeneralRegressionModel::PredictSurvival(const Cell* frame, Prediction& prediction) const noexcept {
  double y = 0.0;
  double baseline = 0.0;
  if (!fSums.Evaluate(0, frame, y) || !fBaseline.Find(frame, baseline)) return;
  const double hazard = baseline == 0.0 ? 0.0 : baseline * std::exp(y - fReferenceSum);
  prediction.auxiliary = hazard;
  prediction.number = fPredictsHazard ? hazard : std::exp(-hazard);
  prediction.outcome = Outcome::kValue;
}

// The probabilities of the equations stand in the array of confidences, which this kind doesn't tell, until they are
// complete.
void GeneralRegressionModel::Classify(const Cell* frame, Prediction& prediction) const noexcept {
  double* const p = prediction.confidences;
  if (!FillSums(frame, p)) return;
  Combine(p);
  std::fill_n(prediction.probabilities, fCategoryCount, 0.0);
  for (std::size_t i = 0; i < fEquations.size(); ++i) prediction.probabilities[fEquations[i].category] = p[i];
  prediction.category = IndexOfLargest(prediction.probabilities, fCategoryCount);
  prediction.hasProbabilities = prediction.category != Prediction::kNone;
  prediction.outcome = prediction.hasProbabilities ? Outcome::kValue : Outcome::kInvalid;
}

bool GeneralRegressionModel::FillSums(const Cell* frame, double* y) const noexcept {
  double offset = 0.0;
  double shared = 0.0;
  if (!fOffset.Read(frame, offset)) return false;
  if (fSharedSum != Equation::kNoSum && !fSums.Evaluate(fSharedSum, frame, shared)) return false;
  for (std::size_t i = 0; i < fEquations.size(); ++i) {
    y[i] = 0.0;
    if (fEquations[i].sum == Equation::kNoSum) continue;
    if (!fSums.Evaluate(fEquations[i].sum, frame, y[i])) return false;
    y[i] = y[i] + shared + offset;
  }
  return true;
}

// Turns the y of the equations into probabilities in place. Links whose values leave the range of probabilities, such
// as the logarithm, are limited to it.
void GeneralRegressionModel::Combine(double* p) const noexcept {
  if (fForm == Form::kMultinomial) return Softmax(p, fEquations.size());
  if (fForm == Form::kCumulative) return Accumulate(p);
  p[0] = std::clamp(InverseLink(fLink, p[0], fLinkParameter), 0.0, 1.0);
  p[1] = 1.0 - p[0];
}

// G(y_j) is the probability of the categories up to j; the last category has no y.
void GeneralRegressionModel::Accumulate(double* p) const noexcept {
  const std::size_t last = fEquations.size() - 1;
  double below = 0.0;
  for (std::size_t i = 0; i < last; ++i) {
    const double upTo = InverseLink(fLink, p[i], fLinkParameter);
    p[i] = upTo - below;
    below = upTo;
  }
  p[last] = 1.0 - below;
}

}  // namespace Torvane
