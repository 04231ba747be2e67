#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "plugins/torvane/models/RuleSetModel.h"

namespace Torvane {

/// Reads a "RuleSetModel" element. Rules nest as deep as a document likes, so nothing here calls itself.
class RuleSetReader {
 public:
  RuleSetReader(const Element& model, FieldScope& scope, Target& target);
  std::unique_ptr<RuleSetModel> Read();

 private:
  using Criterion = RuleSetModel::Criterion;
  using Rule = RuleSetModel::Rule;

  // A rule set or compound rule whose rules are being read.
  struct OpenRule {
    std::uint32_t firstStep;  // of its own predicate; the rule set has none
    std::uint32_t endStep;
    Element next;
  };

  void ReadCriterion(const Element& ruleSet);
  void ReadRules(const Element& ruleSet);
  void AddRule(const Element& element);
  OpenRule AddCompound(const Element& element);
  void AddSteps(const Element& predicate);
  void CloseSteps(std::uint32_t first, std::uint32_t end);
  [[nodiscard]] std::uint32_t StepCount() const { return static_cast<std::uint32_t>(fModel->fSteps.size()); }
  void ReadDefault(const Element& ruleSet);
  void ReadScore(const Element& element, std::string_view attribute, Rule& rule);
  void ReadShares(const Element& element, const Rule& rule);
  [[nodiscard]] bool GivesProbabilities() const noexcept;

  Element fElement;
  Target& fTarget;
  std::unique_ptr<RuleSetModel> fModel;
  PredicateCompiler fPredicates;
  std::vector<std::optional<std::string_view>> fIds;
};

}  // namespace Torvane
