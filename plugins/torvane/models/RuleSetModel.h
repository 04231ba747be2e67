#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "plugins/torvane/fields/FieldScope.h"
#include "plugins/torvane/models/EntityIds.h"
#include "plugins/torvane/models/ModelBody.h"
#include "plugins/torvane/predicates/Predicate.h"
#include "plugins/torvane/targets/Target.h"

namespace Torvane {

/// A set of rules: the first one that fires, the heaviest one, or the score whose rules weigh most.
///
/// A rule fires if its predicate and those of all compound rules around it are true. Predicates stand in document order
/// in one list, each part of an "and" by itself; one that isn't true leads past all that stands inside its rule.
///
/// The confidence of a category is that of its best firing rule, or, where weights are added, its total weight divided
/// by the number of firing rules. The probability of the prediction is its confidence, where confidences are numbers
/// up to 1. What remains to 1 goes to the other categories as the score distribution of the deciding rule has them;
/// where weights are added, each category has its own.
class RuleSetModel final : public ModelBody {
 public:
  static std::unique_ptr<ModelBody> Build(const Element& model, FieldScope& scope, Target& target);

  void Evaluate(KelTransformNS::Frame frame, Prediction& prediction) const override;
  [[nodiscard]] std::size_t ScratchCount() const noexcept override { return fCategoryCount; }
  [[nodiscard]] bool GivesProbabilities() const noexcept override { return fGivesProbabilities; }
  [[nodiscard]] bool GivesConfidences() const noexcept override { return fIsClassification; }
  [[nodiscard]] std::uint32_t EntityCount() const noexcept override { return fRuleCount; }
  void WriteEntity(std::uint32_t entity, KelCommon_1_3::Value& value) const override { fIds.Write(entity, value); }
  [[nodiscard]] std::span<const KindOutput> KindOutputs() const noexcept override;

 private:
  friend class RuleSetReader;

  static constexpr std::uint32_t kNoRule = Prediction::kNone;

  enum class Criterion : std::uint8_t { kFirstHit, kWeightedMax, kWeightedSum };

  struct Step {
    Test test;
    std::uint32_t end = 0;         // the step to go on with if the test isn't true
    std::uint32_t rule = kNoRule;  // that fires if it is; none before a rule's last step
  };
  struct Rule {
    double weight = 1.0;
    std::optional<double> confidence;
    double number = 0.0;         // the score of a regression
    std::uint32_t category = 0;  // the score of a classification
    std::uint32_t endShare = 0;  // of its places in fShares, which begin where those of the rule before end
  };
  // What firing rules say together; the arrays have a place for each category.
  struct Tally {
    double* bestRules;             // the number of each category's best rule, or kNobody
    double* totals;                // of the weights
    std::uint32_t best = kNoRule;  // of all
    std::uint32_t firing = 0;
  };

  template <typename Fire>
  void ForEachFiring(const KelTransformNS::Cell* frame, Fire&& fire) const;
  [[nodiscard]] bool Beats(std::uint32_t rule, std::uint32_t other) const noexcept;
  [[nodiscard]] std::uint32_t FindBest(const KelTransformNS::Cell* frame) const;
  void Conclude(std::uint32_t rule, Prediction& prediction) const noexcept;
  void Classify(const KelTransformNS::Cell* frame, Prediction& prediction) const;
  void Count(const KelTransformNS::Cell* frame, Tally& tally) const;
  [[nodiscard]] std::uint32_t BestOfHeaviestCategory(const Tally& tally) const noexcept;
  void FillConfidences(const Tally& tally, Prediction& prediction) const noexcept;
  void ConcludeDefault(Prediction& prediction) const noexcept;
  void FillProbabilities(std::uint32_t rule, Prediction& prediction) const noexcept;

  PredicateTable fPredicates;
  std::vector<Step> fSteps;
  std::vector<Rule> fRules;  // in document order; the default score stands behind them like one more
  std::vector<std::pair<std::uint32_t, double>> fShares;  // of a rule's records with other categories than its score
  EntityIds fIds;
  std::uint32_t fRuleCount = 0;  // without the default
  std::uint32_t fCategoryCount = 0;
  Criterion fCriterion = Criterion::kFirstHit;
  bool fIsClassification = false;
  bool fGivesProbabilities = false;
};

}  // namespace Torvane
