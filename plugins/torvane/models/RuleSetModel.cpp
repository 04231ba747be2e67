#include "plugins/torvane/models/RuleSetModel.h"

#include <algorithm>

#include "scoring/common/KelScoringConst.h"

namespace Torvane {

using KelTransformNS::Cell;

namespace {

constexpr double kNobody = -1.0;  // in the place of a rule's number

}  // namespace

std::span<const KindOutput> RuleSetModel::KindOutputs() const noexcept {
  static constexpr KindOutput kOutputs[] = {{KelScoring_20::KelScoringConst::kOutputRulesetIdfire, Feature::kEntityId}};
  return kOutputs;
}

// Only what the other categories are worth takes a look at every rule.
void RuleSetModel::Evaluate(KelTransformNS::Frame frame, Prediction& prediction) const {
  const bool needsAll = fCriterion == Criterion::kWeightedSum || prediction.wantsDistribution;
  if (fIsClassification && needsAll) return Classify(frame.data(), prediction);
  const std::uint32_t rule = FindBest(frame.data());
  if (rule == kNoRule) return ConcludeDefault(prediction);
  Conclude(rule, prediction);
}

// `fire` says whether to go on.
template <typename Fire>
void RuleSetModel::ForEachFiring(const Cell* frame, Fire&& fire) const {
  bool surrogateUsed = false;
  const auto end = static_cast<std::uint32_t>(fSteps.size());
  for (std::uint32_t at = 0; at < end;) {
    const Step& step = fSteps[at];
    if (fPredicates.Evaluate(step.test, frame, surrogateUsed) != Truth::kTrue) {
      at = step.end;
      continue;
    }
    if (step.rule != kNoRule && !fire(step.rule)) return;
    ++at;
  }
}

// The order among firing rules; the earlier one of equals comes first.
bool RuleSetModel::Beats(std::uint32_t rule, std::uint32_t other) const noexcept {
  if (fCriterion == Criterion::kFirstHit || fRules[rule].weight == fRules[other].weight) return rule < other;
  return fRules[rule].weight > fRules[other].weight;
}

std::uint32_t RuleSetModel::FindBest(const Cell* frame) const {
  std::uint32_t best = kNoRule;
  ForEachFiring(frame, [&](std::uint32_t rule) {
    if (best == kNoRule || Beats(rule, best)) best = rule;
    return fCriterion != Criterion::kFirstHit;
  });
  return best;
}

void RuleSetModel::Conclude(std::uint32_t rule, Prediction& prediction) const noexcept {
  prediction.outcome = Outcome::kValue;
  prediction.number = fRules[rule].number;
  if (fIsClassification) prediction.category = fRules[rule].category;
  if (rule < fRuleCount) prediction.entity = rule;
}

void RuleSetModel::Classify(const Cell* frame, Prediction& prediction) const {
  Tally tally{prediction.scratch, prediction.confidences};
  Count(frame, tally);
  if (tally.firing == 0) return ConcludeDefault(prediction);
  if (fCriterion == Criterion::kWeightedSum) tally.best = BestOfHeaviestCategory(tally);
  Conclude(tally.best, prediction);
  FillConfidences(tally, prediction);
  if (fGivesProbabilities) FillProbabilities(tally.best, prediction);
}

void RuleSetModel::Count(const Cell* frame, Tally& tally) const {
  std::fill_n(tally.bestRules, fCategoryCount, kNobody);
  std::fill_n(tally.totals, fCategoryCount, 0.0);
  ForEachFiring(frame, [&](std::uint32_t rule) {
    double& best = tally.bestRules[fRules[rule].category];
    if (best == kNobody || Beats(rule, static_cast<std::uint32_t>(best))) best = rule;
    if (tally.best == kNoRule || Beats(rule, tally.best)) tally.best = rule;
    tally.totals[fRules[rule].category] += fRules[rule].weight;
    ++tally.firing;
    return true;
  });
}

// The first category of the target wins a tie.
std::uint32_t RuleSetModel::BestOfHeaviestCategory(const Tally& tally) const noexcept {
  std::uint32_t winner = Prediction::kNone;
  for (std::uint32_t category = 0; category < fCategoryCount; ++category) {
    if (tally.bestRules[category] == kNobody) continue;
    if (winner == Prediction::kNone || tally.totals[category] > tally.totals[winner]) winner = category;
  }
  return static_cast<std::uint32_t>(tally.bestRules[winner]);
}

// The totals stand where the confidences belong.
void RuleSetModel::FillConfidences(const Tally& tally, Prediction& prediction) const noexcept {
  for (std::uint32_t category = 0; category < fCategoryCount; ++category) {
    if (tally.bestRules[category] == kNobody) {
      prediction.confidences[category] = 0.0;
    } else if (fCriterion == Criterion::kWeightedSum) {
      prediction.confidences[category] = tally.totals[category] / tally.firing;
    } else {
      prediction.confidences[category] = *fRules[static_cast<std::uint32_t>(tally.bestRules[category])].confidence;
    }
  }
  prediction.hasConfidences = true;
}

// The default may have no confidence; then there is no probability either.
void RuleSetModel::ConcludeDefault(Prediction& prediction) const noexcept {
  if (fRules.size() == fRuleCount) return;
  Conclude(fRuleCount, prediction);
  const Rule& rule = fRules[fRuleCount];
  if (!fIsClassification || !prediction.wantsDistribution || !rule.confidence) return;
  std::fill_n(prediction.confidences, fCategoryCount, 0.0);
  prediction.confidences[rule.category] = *rule.confidence;
  prediction.hasConfidences = true;
  if (fGivesProbabilities) FillProbabilities(fRuleCount, prediction);
}

void RuleSetModel::FillProbabilities(std::uint32_t rule, Prediction& prediction) const noexcept {
  prediction.hasProbabilities = true;
  if (fCriterion == Criterion::kWeightedSum) {
    std::copy_n(prediction.confidences, fCategoryCount, prediction.probabilities);
    return;
  }
  const double probability = prediction.confidences[fRules[rule].category];
  std::fill_n(prediction.probabilities, fCategoryCount, 0.0);
  prediction.probabilities[fRules[rule].category] = probability;
  for (std::uint32_t i = rule == 0 ? 0 : fRules[rule - 1].endShare; i < fRules[rule].endShare; ++i) {
    prediction.probabilities[fShares[i].first] = (1.0 - probability) * fShares[i].second;
  }
}

}  // namespace Torvane
