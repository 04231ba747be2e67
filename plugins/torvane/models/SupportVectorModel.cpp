#include "plugins/torvane/models/SupportVectorModel.h"

#include <algorithm>
#include <cmath>

namespace Torvane {

using KelTransformNS::Cell;

void SupportVectorModel::Evaluate(KelTransformNS::Frame frame, Prediction& prediction) const noexcept {
  double* const x = prediction.scratch;
  prediction.outcome = ReadInputs(frame.data(), x);
  if (prediction.outcome != Outcome::kValue) return;
  const double* values = x;
  if (fIsOfVectors) {
    double* const kernelValues = x + fInputs.size();
    fVectors.Evaluate(x, kernelValues + fVectors.Count(), kernelValues);
    values = kernelValues;
  }
  if (fDecision == Decision::kVotes) return TakeVotes(values, prediction);
  if (fDecision == Decision::kBest) return FindBest(values, prediction);
  prediction.number = Sum(0, values);
}

// No distance or product can be told of a vector that lacks a number or isn't finite.
Outcome SupportVectorModel::ReadInputs(const Cell* frame, double* x) const noexcept {
  Outcome outcome = Outcome::kValue;
  for (const Input& input : fInputs) {
    const Cell& cell = frame[input.slot];
    if (cell.IsMissing()) {
      outcome = Outcome::kMissing;
      continue;
    }
    if (cell.IsInvalid()) return Outcome::kInvalid;
    *x = input.isIndicator ? (Holds(cell, input.category) ? 1.0 : 0.0) : cell.number;
    if (!std::isfinite(*x++)) return Outcome::kInvalid;
  }
  return outcome;
}

bool SupportVectorModel::Holds(const Cell& cell, const Cell& category) noexcept {
  if (cell.state != category.state) return false;
  return cell.state == Cell::kText ? cell.textId == category.textId : cell.number == category.number;
}

double SupportVectorModel::Sum(std::size_t machine, const double* values) const noexcept {
  double sum = 0.0;
  for (std::uint32_t i = machine == 0 ? 0 : fMachines[machine - 1].endTerm; i < fMachines[machine].endTerm; ++i) {
    sum += fTerms[i].coefficient * values[fTerms[i].place];
  }
  return sum + fMachines[machine].constant;
}

// An f below the threshold speaks for the machine's category; if the largest wins, one above it.
void SupportVectorModel::TakeVotes(const double* values, Prediction& prediction) const noexcept {
  double* const votes = prediction.probabilities;
  prediction.outcome = Outcome::kInvalid;
  std::fill_n(votes, fCategoryCount, 0.0);
  for (std::size_t i = 0; i < fMachines.size(); ++i) {
    const Machine& machine = fMachines[i];
    const double f = Sum(i, values);
    if (std::isnan(f)) return;
    const bool isOwn = fMaxWins ? f > machine.threshold : f < machine.threshold;
    votes[isOwn ? machine.category : machine.alternate] += 1.0;
  }
  prediction.category = *std::max_element(fCategories.begin(), fCategories.end(),
                                          [&](std::uint32_t a, std::uint32_t b) { return votes[a] < votes[b]; });
  const auto machineCount = static_cast<double>(fMachines.size());
  for (std::size_t i = 0; i < fCategoryCount; ++i) votes[i] /= machineCount;
  prediction.hasProbabilities = true;
  prediction.outcome = Outcome::kValue;
}

void SupportVectorModel::FindBest(const double* values, Prediction& prediction) const noexcept {
  prediction.outcome = Outcome::kInvalid;
  double best = 0.0;
  std::uint32_t winner = Prediction::kNone;
  for (std::size_t i = 0; i < fMachines.size(); ++i) {
    const double f = Sum(i, values);
    if (std::isnan(f)) return;
    if (winner != Prediction::kNone && !(fMaxWins ? f > best : f < best)) continue;
    best = f;
    winner = fMachines[i].category;
  }
  prediction.category = winner;
  prediction.outcome = Outcome::kValue;
}

}  // namespace Torvane
