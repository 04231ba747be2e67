#include "plugins/torvane/targets/Target.h"

#include <algorithm>
#include <cmath>

namespace Torvane {

using KelCommon_1_3::Value;
using KelTransformNS::Cell;
using KelTransformNS::DataType;
using KelTransformNS::FieldDeclaration;
using KelTransformNS::OpType;

namespace {

std::optional<double> ReadPrior(const Element& targetValue) {
  const std::optional<double> prior = targetValue.Number("priorProbability");
  if (prior && !(*prior >= 0.0 && *prior <= 1.0)) {
    throw targetValue.AttributeError("priorProbability", "isn't between 0 and 1");
  }
  return prior;
}

}  // namespace

Target::Target(FieldScope& scope, const Element& model, MiningFunction function, std::string_view fieldHint)
    : fPool(scope.Pool()),
      fExpansion(scope.GetDocument().expansion),
      fFunction(function),
      fType(function == MiningFunction::kRegression ? DataType::kDouble : DataType::kString),
      fOpType(KelTransformNS::ImpliedOpType(fType)),
      fCategories(std::make_shared<CategoryList>()) {
  if (function == MiningFunction::kClustering) {  // its result is of no field
    if (const Element targets = model.Child("Targets")) throw targets.Error("has no meaning for a clustering");
    return;
  }
  ChooseField(scope, model, fieldHint);
  ReadDeclaration(scope);
  ReadTargets(scope.Schema(), model.Child("Targets"));
}

// One target is the rule; it may be left out of the schema. A chain of models lists the targets of all its models; its
// own is the only one that suits what it predicts.
void Target::ChooseField(const FieldScope& scope, const Element& model, std::string_view fieldHint) {
  std::vector<const MiningField*> targets;
  for (const MiningField& field : scope.Schema().fields) {
    if (field.usage == FieldUsage::kTarget) targets.push_back(&field);
  }
  if (targets.size() > 1) {
    const auto isHinted = [&](const auto* field) { return field->name == fieldHint; };
    const bool hasHinted = std::any_of(targets.begin(), targets.end(), isHinted);
    const MiningField* const second = targets[1];
    const bool chooses = hasHinted || model.Is("MiningModel");
    std::erase_if(targets,
                  [&](const auto* field) { return hasHinted ? !isHinted(field) : !Suits(scope, model, *field); });
    if (!chooses || targets.size() != 1) throw second->element.Error("is a second target; a model predicts one");
  }
  if (!targets.empty()) {
    fName = targets[0]->name;
    return;
  }
  const Element target = model.Child("Targets").Child("Target");
  if (target && target.Attribute("field")) fName = target.Required("field");
}

bool Target::Suits(const FieldScope& scope, const Element& model, const MiningField& field) const {
  if (scope.GetDocument().dictionary.Find(field.name) == nullptr) return false;
  return (OpTypeOf(scope, model, field) == OpType::kContinuous) == IsNumeric();
}

OpType Target::OpTypeOf(const FieldScope& scope, const Element& model, const MiningField& field) {
  const Element targets = model.Child("Targets");
  for (Element target = targets.Child("Target"); target; target = target.Next("Target")) {
    const std::optional<OpType> own = KelTransformNS::ReadOpType(target);
    if (own && target.Attribute("field").value_or(field.name) == field.name) return *own;
  }
  const FieldDeclaration* const declaration = scope.GetDocument().dictionary.Find(field.name);
  return field.opType.value_or(declaration == nullptr ? OpType::kContinuous : declaration->opType);
}

void Target::ReadDeclaration(const FieldScope& scope) {
  const FieldDeclaration* declaration = fName.empty() ? nullptr : scope.GetDocument().dictionary.Find(fName);
  if (declaration == nullptr) return;
  fType = declaration->dataType;
  const MiningField* field = scope.Schema().Find(fName);
  fOpType = field != nullptr && field->opType ? *field->opType : declaration->opType;
  if (fFunction == MiningFunction::kRegression) return;
  DeclaredCategories& declared = scope.GetDocument().categories;
  if (auto shared = declared.Find(fName)) {
    fCategories = std::move(shared);
    return;
  }
  for (const FieldDeclaration::DeclaredValue& value : declaration->values) {
    if (value.property != FieldDeclaration::DeclaredValue::kValid) continue;
    const std::optional<Cell> cell = FindComparand(value.value, fType, fPool);
    if (!cell || !ShowsItself(*cell)) continue;  // it can't be predicted
    const std::optional<std::uint32_t> known = fCategories->Find(*cell);
    fCategories->At(known ? *known : fCategories->Add(*cell, fType)).displayValue = value.displayValue;
  }
  declared.Keep(fName, fCategories);
}

void Target::ReadTargets(const MiningSchema& schema, const Element& targets) {
  RefuseUnknownChildren(targets, {"Target"});
  bool isRead = false;
  for (Element target = targets.Child("Target"); target; target = target.Next("Target")) {
    const std::optional<std::string_view> field = target.Attribute("field");
    if (field && *field != fName) {
      const MiningField* other = schema.Find(*field);
      if (other == nullptr || other->usage != FieldUsage::kTarget) {
        throw target.AttributeError("field", "isn't the target of the model");
      }
      continue;
    }
    if (isRead) throw target.Error("is a second one for the same field");
    isRead = true;
    ReadTarget(target);
  }
}

void Target::ReadTarget(const Element& target) {
  static constexpr Word<CastInteger> kCasts[] = {
      {"round", CastInteger::kRound}, {"ceiling", CastInteger::kCeiling}, {"floor", CastInteger::kFloor}};
  RefuseUnknownChildren(target, {"TargetValue"});
  fOpType = KelTransformNS::ReadOpType(target).value_or(fOpType);
  fMin = ReadFinite(target, "min");
  fMax = ReadFinite(target, "max");
  if (fMin && fMax && *fMin > *fMax) throw target.AttributeError("min", "is above max");
  fRescaleFactor = ReadFinite(target, "rescaleFactor").value_or(1.0);
  fRescaleConstant = ReadFinite(target, "rescaleConstant").value_or(0.0);
  fCastInteger = ReadWord(target, "castInteger", kCasts, CastInteger::kNone);
  fAdjusts = fMin || fMax || fRescaleFactor != 1.0 || fRescaleConstant != 0.0 || fCastInteger != CastInteger::kNone;
  std::unordered_set<std::uint32_t> known;
  for (Element child = target.Child("TargetValue"); child; child = child.Next("TargetValue")) {
    ReadTargetValue(child, known);
  }
  CheckPriors(target);
}

// "rawDataValue" is what 3.0 and 3.1 called "displayValue".
void Target::ReadTargetValue(const Element& targetValue, std::unordered_set<std::uint32_t>& known) {
  RefuseUnknownChildren(targetValue, {"Partition"});
  const std::optional<double> prior = ReadPrior(targetValue);
  if (fFunction == MiningFunction::kRegression) {
    const std::optional<double> defaultValue = ReadFinite(targetValue, "defaultValue");
    if (defaultValue && fDefaultValue) throw targetValue.AttributeError("defaultValue", "is the second one");
    if (defaultValue) fDefaultValue = defaultValue;
    return;
  }
  const std::uint32_t index = AddCategory(targetValue, "value", targetValue.Required("value"));
  if (!known.insert(index).second) throw targetValue.AttributeError("value", "stands there twice");
  Category& category = OwnCategories(targetValue).At(index);
  if (const auto display = targetValue.Attribute("displayValue")) {
    category.displayValue = *display;
  } else if (const auto raw = targetValue.Attribute("rawDataValue")) {
    category.displayValue = *raw;
  }
  category.priorProbability = prior;
  fHasPriors = fHasPriors || prior;
}

void Target::CheckPriors(const Element& target) const {
  double sum = 0.0;
  for (const Category& category : Categories()) sum += category.priorProbability.value_or(0.0);
  if (fHasPriors && sum <= 0.0) throw target.Error("has prior probabilities that are all 0");
}

std::uint32_t Target::AddCategory(const Element& element, std::string_view what, std::string_view text) {
  const Cell cell = ReadComparand(element, what, text, fType, fPool);
  if (!ShowsItself(cell)) throw element.Error(std::string(what) + " " + Quoted(text) + " is no value of its type");
  if (const std::optional<std::uint32_t> known = fCategories->Find(cell)) return *known;
  return OwnCategories(element).Add(cell, fType);
}

// Clusters of the same identifier that are named differently are shown by it: the name that one segment has for it
// would be wrong for what another one predicts.
std::uint32_t Target::AddCategoryOf(const Element& element, const Category& category) {
  const std::size_t count = Categories().size();
  const std::uint32_t index = AddCategory(element, "the category", category.text);
  if (index == count) {
    OwnCategories(element).At(index).displayValue = category.displayValue;
  } else if (fFunction == MiningFunction::kClustering && Categories()[index].displayValue != category.displayValue) {
    OwnCategories(element).At(index).displayValue = category.text;
  }
  return index;
}

void Target::AddCluster(const Element& element, std::string_view id, std::string_view displayName) {
  const Cell cell = Cell::Text(fPool, fPool.Intern(id));
  if (fCategories->Find(cell)) throw element.Error("is a second one with the identifier " + Quoted(id));
  CategoryList& clusters = OwnCategories(element);
  clusters.At(clusters.Add(cell, fType)).displayValue = displayName;
}

// Whether the category's text tells the category. A boolean 2 would be shown as the text of another one.
bool Target::ShowsItself(const Cell& cell) const {
  if (cell.state == Cell::kText) return true;
  Value value;
  KelTransformNS::WriteCell(cell, fType, value);
  const std::optional<Cell> shown = FindComparand(value.GetString(), fType, fPool);
  return shown && shown->number == cell.number;
}

// What other models share isn't changed, but copied before.
CategoryList& Target::OwnCategories(const Element& element) {
  constexpr std::size_t kIndexBytes = 64;
  if (fCategories.use_count() > 1) {
    fExpansion.Add(Categories().size() * (sizeof(Category) + kIndexBytes), element);
    fCategories = std::make_shared<CategoryList>(*fCategories);
  }
  return *fCategories;
}

std::optional<std::uint32_t> Target::FindCategory(std::string_view text) const {
  const std::optional<Cell> cell = FindComparand(text, fType, fPool);
  return cell ? fCategories->Find(*cell) : std::nullopt;
}

void Target::FinishRare(Prediction& prediction) const noexcept {
  if (fFunction == MiningFunction::kRegression) {
    if (prediction.outcome == Outcome::kValue && fAdjusts) prediction.number = Adjust(prediction.number);
    if (prediction.outcome == Outcome::kValue && std::isnan(prediction.number)) prediction.outcome = Outcome::kInvalid;
    if (prediction.outcome == Outcome::kMissing && fDefaultValue) {
      // The default is a value of the target already, so limits and scaling have no part in it.
      prediction.outcome = Outcome::kValue;
      prediction.number = *fDefaultValue;
    }
  } else if (prediction.outcome == Outcome::kMissing && fHasPriors) {
    PredictFromPriors(prediction);
  }
}

// In this order: limits, factor, constant, rounding. What isn't a number must not become one by a limit.
double Target::Adjust(double number) const noexcept {
  if (std::isnan(number)) return number;
  if (fMin) number = std::max(number, *fMin);
  if (fMax) number = std::min(number, *fMax);
  number = number * fRescaleFactor + fRescaleConstant;
  switch (fCastInteger) {
    case CastInteger::kRound:
      return std::round(number);
    case CastInteger::kCeiling:
      return std::ceil(number);
    case CastInteger::kFloor:
      return std::floor(number);
    case CastInteger::kNone:
      break;
  }
  return number;
}

void Target::PredictFromPriors(Prediction& prediction) const noexcept {
  double sum = 0.0;
  const std::vector<Category>& categories = Categories();
  for (const Category& category : categories) sum += category.priorProbability.value_or(0.0);
  prediction.category = 0;
  for (std::uint32_t i = 0; i < categories.size(); ++i) {
    prediction.probabilities[i] = categories[i].priorProbability.value_or(0.0) / sum;
    if (prediction.probabilities[i] > prediction.probabilities[prediction.category]) prediction.category = i;
  }
  prediction.outcome = Outcome::kValue;
  prediction.hasProbabilities = true;
  prediction.hasConfidences = false;
  prediction.entity = Prediction::kNone;
}

}  // namespace Torvane
