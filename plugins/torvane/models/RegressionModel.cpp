#include "plugins/torvane/models/RegressionModel.h"

#include <algorithm>
#include <cmath>

#include "plugins/torvane/models/Figures.h"

namespace Torvane {

using KelTransformNS::Cell;

void RegressionModel::Evaluate(KelTransformNS::Frame frame, Prediction& prediction) const noexcept {
  if (fIsClassification) return Classify(frame.data(), prediction);
  double y = 0.0;
  if (!fTables[0].Evaluate(frame.data(), y)) return;
  prediction.number = InverseLink(fLink, y);
  prediction.outcome = Outcome::kValue;
}

// The y stand in the array of confidences, which this kind doesn't tell, in the order of the tables. A y that is
// missing makes all probabilities unknown.
void RegressionModel::Classify(const Cell* frame, Prediction& prediction) const noexcept {
  double* const p = prediction.confidences;
  for (std::size_t i = 0; i < fTables.size(); ++i) {
    if (!fTables[i].Evaluate(frame, p[i])) return;
  }
  Combine(p);
  std::uint32_t winner = fWinningOrder[0];
  for (const std::uint32_t table : fWinningOrder) {
    if (std::isnan(p[table])) {
      prediction.outcome = Outcome::kInvalid;
      return;
    }
    if (p[table] > p[winner]) winner = table;
  }
  for (const std::uint32_t category : fUntold) prediction.probabilities[category] = 0.0;
  for (std::size_t i = 0; i < fTables.size(); ++i) prediction.probabilities[fCategories[i]] = p[i];
  prediction.category = fCategories[winner];
  prediction.hasProbabilities = true;
  prediction.outcome = Outcome::kValue;
}

// Turns the y of the tables into probabilities in place.
void RegressionModel::Combine(double* p) const noexcept {
  const std::size_t count = fTables.size();
  switch (fCombination) {
    case Combination::kSoftmax:
      return Softmax(p, count);
    case Combination::kBinary: {
      const double event = InverseLink(fLink, p[fBinaryTable]);
      const double limited = fLink == Link::kIdentity ? std::clamp(event, 0.0, 1.0) : event;
      p[fBinaryTable] = limited;
      p[1 - fBinaryTable] = 1.0 - limited;
      return;
    }
    case Combination::kCumulative:
      return Accumulate(p);
    case Combination::kRemainder: {
      double rest = 1.0;
      for (std::size_t i = 0; i + 1 < count; ++i) {
        p[i] = InverseLink(fLink, p[i]);
        rest -= p[i];
      }
      p[count - 1] = rest;
      return;
    }
    default:
      for (std::size_t i = 0; i < count; ++i) p[i] = InverseLink(fLink, p[i]);
      if (fCombination == Combination::kEachShared) Share(p, count);
  }
}

// F(y_j) is the probability of the categories up to j; the y of the last category plays no part.
void RegressionModel::Accumulate(double* p) const noexcept {
  const std::size_t last = fTables.size() - 1;
  double below = 0.0;
  for (std::size_t i = 0; i < last; ++i) {
    const double upTo = InverseLink(fLink, p[i]);
    p[i] = upTo - below;
    below = upTo;
  }
  p[last] = 1.0 - below;
}

}  // namespace Torvane
