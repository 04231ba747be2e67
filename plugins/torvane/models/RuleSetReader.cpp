#include "plugins/torvane/models/RuleSetReader.h"

namespace Torvane {
namespace {

Element NextRule(Element element) {
  while (element && !element.Is("SimpleRule") && !element.Is("CompoundRule")) element = element.NextSibling();
  return element;
}

// What a category counts for in a distribution.
double ReadRecords(const Element& distribution, const char* attribute) {
  const double records = ReadFinite(distribution, attribute).value_or(0.0);
  if (records < 0.0) throw distribution.AttributeError(attribute, "is below 0");
  return records;
}

}  // namespace

std::unique_ptr<ModelBody> RuleSetModel::Build(const Element& model, FieldScope& scope, Target& target) {
  return RuleSetReader(model, scope, target).Read();
}

RuleSetReader::RuleSetReader(const Element& model, FieldScope& scope, Target& target)
    : fElement(model),
      fTarget(target),
      fModel(std::make_unique<RuleSetModel>()),
      fPredicates(scope, fModel->fPredicates) {}

std::unique_ptr<RuleSetModel> RuleSetReader::Read() {
  RefuseUnknownModelChildren(fElement, {"RuleSet"});
  const Element ruleSet = fElement.RequiredChild("RuleSet");
  if (ruleSet.Next("RuleSet")) throw ruleSet.Next("RuleSet").Error("is a second rule set");
  RefuseUnknownChildren(ruleSet, {"RuleSelectionMethod", "ScoreDistribution", "SimpleRule", "CompoundRule"});
  fModel->fIsClassification = fTarget.Function() == MiningFunction::kClassification;
  ReadCriterion(ruleSet);
  ReadRules(ruleSet);
  ReadDefault(ruleSet);
  fModel->fIds.Assign(fIds);
  fModel->fCategoryCount = static_cast<std::uint32_t>(fTarget.Categories().size());
  fModel->fGivesProbabilities = fModel->fIsClassification && GivesProbabilities();
  fModel->fSteps.shrink_to_fit();
  fModel->fRules.shrink_to_fit();
  fModel->fShares.shrink_to_fit();
  return std::move(fModel);
}

// The first method is the one to use; the others are those that the document would allow an application.
void RuleSetReader::ReadCriterion(const Element& ruleSet) {
  static constexpr Word<Criterion> kCriteria[] = {{"firstHit", Criterion::kFirstHit},
                                                  {"weightedMax", Criterion::kWeightedMax},
                                                  {"weightedSum", Criterion::kWeightedSum}};
  const Element method = ruleSet.RequiredChild("RuleSelectionMethod");
  for (Element other = method; other; other = other.Next("RuleSelectionMethod")) {
    RefuseUnknownChildren(other, {});
    (void)ReadRequiredWord(other, "criterion", kCriteria);
  }
  fModel->fCriterion = ReadRequiredWord(method, "criterion", kCriteria);
  if (fModel->fCriterion == Criterion::kWeightedSum && !fModel->fIsClassification) {
    throw method.AttributeError("criterion", "has no meaning for a regression");
  }
}

void RuleSetReader::ReadRules(const Element& ruleSet) {
  std::vector<OpenRule> open{{0, 0, NextRule(ruleSet.FirstChild())}};
  while (!open.empty()) {
    const Element element = open.back().next;
    if (!element) {
      CloseSteps(open.back().firstStep, open.back().endStep);
      open.pop_back();
      continue;
    }
    open.back().next = NextRule(element.NextSibling());
    if (element.Is("SimpleRule")) {
      AddRule(element);
    } else {
      open.push_back(AddCompound(element));
    }
  }
  fModel->fRuleCount = static_cast<std::uint32_t>(fModel->fRules.size());
}

RuleSetReader::OpenRule RuleSetReader::AddCompound(const Element& element) {
  RefuseUnknownChildren(element, {"SimplePredicate", "CompoundPredicate", "SimpleSetPredicate", "True", "False",
                                  "SimpleRule", "CompoundRule"});
  const Element first = NextRule(element.FirstChild());
  if (!first) throw element.Error("has no rules");
  const std::uint32_t firstStep = StepCount();
  AddSteps(PredicateCompiler::FindIn(element));
  return {firstStep, StepCount(), first};
}

// A weight or a confidence that isn't given is 1, as the later versions of the standard have it: producers of earlier
// ones leave them out as well.
void RuleSetReader::AddRule(const Element& element) {
  RefuseUnknownChildren(
      element, {"SimplePredicate", "CompoundPredicate", "SimpleSetPredicate", "True", "False", "ScoreDistribution"});
  const std::uint32_t firstStep = StepCount();
  AddSteps(PredicateCompiler::FindIn(element));
  CloseSteps(firstStep, StepCount());
  fModel->fSteps.back().rule = static_cast<std::uint32_t>(fModel->fRules.size());
  fIds.push_back(element.Attribute("id"));
  Rule rule;
  rule.weight = ReadFinite(element, "weight").value_or(1.0);
  rule.confidence = ReadFinite(element, "confidence").value_or(1.0);
  ReadScore(element, "score", rule);
  ReadShares(element, rule);
  rule.endShare = static_cast<std::uint32_t>(fModel->fShares.size());
  fModel->fRules.push_back(rule);
}

// A rule needs its predicate to be true, whether it is false or unknown otherwise. So the predicates that an "and"
// joins are as good as steps one after the other, which cost less than a compound predicate.
void RuleSetReader::AddSteps(const Element& predicate) {
  const bool isAnd = predicate.Is("CompoundPredicate") && predicate.Attribute("booleanOperator") == "and";
  const std::uint32_t firstStep = StepCount();
  for (Element child = predicate.FirstChild(); isAnd && child; child = child.NextSibling()) {
    if (!IsIgnorable(child)) fModel->fSteps.emplace_back().test = fPredicates.Compile(child);
  }
  if (StepCount() == firstStep) fModel->fSteps.emplace_back().test = fPredicates.Compile(predicate);
}

// What comes next if a test isn't true: all that follows what has been read so far.
void RuleSetReader::CloseSteps(std::uint32_t first, std::uint32_t end) {
  for (std::uint32_t step = first; step < end; ++step) fModel->fSteps[step].end = StepCount();
}

void RuleSetReader::ReadDefault(const Element& ruleSet) {
  Rule rule;
  rule.confidence = ReadFinite(ruleSet, "defaultConfidence");
  if (!ruleSet.Attribute("defaultScore")) return;
  ReadScore(ruleSet, "defaultScore", rule);
  ReadShares(ruleSet, rule);
  rule.endShare = static_cast<std::uint32_t>(fModel->fShares.size());
  fModel->fRules.push_back(rule);
}

void RuleSetReader::ReadScore(const Element& element, std::string_view attribute, Rule& rule) {
  if (fModel->fIsClassification) {
    rule.category = fTarget.AddCategory(element, attribute, element.Required(attribute));
  } else {
    rule.number = RequiredFinite(element, attribute);
  }
}

// A category's share of the records that don't have the score: by their probabilities if these are given, else by their
// counts.
void RuleSetReader::ReadShares(const Element& element, const Rule& rule) {
  if (!fModel->fIsClassification) return;
  const Element first = element.Child("ScoreDistribution");
  const char* const attribute = first.Attribute("probability") ? "probability" : "recordCount";
  std::unordered_set<std::uint32_t> known;
  const std::size_t begin = fModel->fShares.size();
  double sum = 0.0;
  for (Element child = first; child; child = child.Next("ScoreDistribution")) {
    RefuseUnknownChildren(child, {});
    const std::uint32_t category = fTarget.AddCategory(child, "value", child.Required("value"));
    if (!known.insert(category).second) throw child.AttributeError("value", "stands there twice");
    const double records = ReadRecords(child, attribute);
    if (category == rule.category || records == 0.0) continue;
    sum += records;
    fModel->fShares.emplace_back(category, records);
  }
  for (std::size_t i = begin; i < fModel->fShares.size(); ++i) fModel->fShares[i].second /= sum;
}

// Producers also give percentages, or weights of any size, which are no probabilities.
bool RuleSetReader::GivesProbabilities() const noexcept {
  const std::vector<Rule>& rules = fModel->fRules;
  const bool byWeight = fModel->fCriterion == Criterion::kWeightedSum;
  for (std::uint32_t i = 0; i < rules.size(); ++i) {
    const double figure = byWeight && i < fModel->fRuleCount ? rules[i].weight : rules[i].confidence.value_or(0.0);
    if (figure < 0.0 || figure > 1.0) return false;
  }
  return true;
}

}  // namespace Torvane
