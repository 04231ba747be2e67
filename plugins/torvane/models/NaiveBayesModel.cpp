#include "plugins/torvane/models/NaiveBayesModel.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "plugins/torvane/models/Figures.h"

namespace Torvane {

using KelTransformNS::Cell;

namespace {

constexpr double kImpossible = -std::numeric_limits<double>::infinity();

// ln x!, infinite where a count x has no density: for fractions, numbers below 0 and those beyond all arithmetic. The
// usual function of the library keeps a sign in a variable that all threads share.
double LogFactorial(double x) noexcept {
  if (!(x >= 0.0) || x != std::trunc(x)) return -kImpossible;
  int sign = 0;
  return ::lgamma_r(x + 1.0, &sign);
}

// Poisson: density = m^x e^-m / x!. Of 0 records it is e^-m, also for m = 0, whose logarithm is no number to go on
// with.
double LogPoisson(double x, double mean, double logMean, double logFactorial) noexcept {
  if (!std::isfinite(logFactorial)) return kImpossible;
  return (x == 0.0 ? 0.0 : x * logMean) - mean - logFactorial;
}

}  // namespace

// The sums stand in the array of confidences, which this kind doesn't tell.
void NaiveBayesModel::Evaluate(KelTransformNS::Frame frame, Prediction& prediction) const noexcept {
  double* const logs = prediction.confidences;
  std::copy(fLogCounts.begin(), fLogCounts.end(), logs);
  for (const Input& input : fInputs) {
    const Cell& cell = frame[input.slot];
    if (cell.IsMissing()) continue;
    if (cell.IsInvalid()) {  // an input's own derived field, which nobody has looked at yet
      prediction.outcome = Outcome::kInvalid;
      return;
    }
    if (input.isCounted) {
      AddShares(input, cell, logs);
    } else {
      AddDensities(input, cell.number, logs);
    }
  }
  Conclude(logs, prediction);
}

void NaiveBayesModel::AddShares(const Input& input, const Cell& cell, double* logs) const noexcept {
  const std::optional<std::uint32_t> row =
      cell.state == Cell::kText ? input.values.OfText(cell.textId) : input.values.OfNumber(cell.number);
  if (!row) return;
  const std::size_t count = fCategories.size();
  const double* const shares = fLogShares.data() + input.first + *row * count;
  for (std::size_t k = 0; k < count; ++k) logs[k] += shares[k];
}

void NaiveBayesModel::AddDensities(const Input& input, double x, double* logs) const noexcept {
  const double logFactorial = input.hasPoisson ? LogFactorial(x) : 0.0;
  const Distribution* const distributions = fDistributions.data() + input.first;
  for (std::size_t k = 0; k < fCategories.size(); ++k) {
    const Distribution& distribution = distributions[k];
    const double distance = x - distribution.mean;
    const double logDensity = distribution.isPoisson
                                  ? LogPoisson(x, distribution.mean, distribution.factor, logFactorial)
                                  : distribution.constant + distance * distance * distribution.factor;
    logs[k] += std::max(logDensity, fLogThreshold);
  }
}

// Without a threshold a record can be impossible in every category: 0 / 0 is no probability.
void NaiveBayesModel::Conclude(double* logs, Prediction& prediction) const noexcept {
  const std::uint32_t best = IndexOfLargest(logs, fCategories.size());
  if (best == Prediction::kNone || logs[best] == kImpossible) {
    prediction.outcome = Outcome::kInvalid;
    return;
  }
  prediction.outcome = Outcome::kValue;
  prediction.category = fCategories[best];
  if (prediction.wantsDistribution) FillProbabilities(logs, prediction);
}

void NaiveBayesModel::FillProbabilities(double* logs, Prediction& prediction) const noexcept {
  const std::size_t count = fCategories.size();
  Softmax(logs, count);
  std::fill_n(prediction.probabilities, fTargetCategoryCount, 0.0);
  for (std::size_t k = 0; k < count; ++k) prediction.probabilities[fCategories[k]] = logs[k];
  prediction.hasProbabilities = true;
}

}  // namespace Torvane
