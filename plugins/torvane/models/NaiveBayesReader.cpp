#include "plugins/torvane/models/NaiveBayesReader.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <string_view>
#include <utility>

#include "components/keltransform/ExpressionCompiler.h"
#include "plugins/torvane/models/Parts.h"

namespace Torvane {

using KelTransformNS::Cell;
using KelTransformNS::DataType;

namespace {

constexpr std::uint32_t kNoPlace = Prediction::kNone;  // of a category without a record

double ReadCount(const Element& element, std::string_view attribute) {
  const double count = RequiredFinite(element, attribute);
  if (count < 0.0) throw element.AttributeError(attribute, "is below 0");
  return count;
}

Element SingleChild(const Element& element, std::string_view name) {
  const Element child = element.RequiredChild(name);
  if (child.Next(name)) throw child.Next(name).Error("is one too many in <" + std::string(element.Name()) + ">");
  return child;
}

Element ReadCountList(const Element& element) {
  const Element counts = SingleChild(element, "TargetValueCounts");
  RefuseUnknownChildren(counts, {"TargetValueCount"});
  return counts;
}

// Producers also write the attribute in lower case.
DataType ReadDataType(const Element& derived) {
  const char* const name = derived.Attribute("datatype") ? "datatype" : "dataType";
  DataType type;
  if (!KelTransformNS::ParseDataType(derived.Required(name), type)) {
    throw derived.AttributeError(name, "is no data type");
  }
  return type;
}

}  // namespace

std::unique_ptr<ModelBody> NaiveBayesModel::Build(const Element& model, FieldScope& scope, Target& target) {
  return NaiveBayesReader(model, scope, target).Read();
}

NaiveBayesReader::NaiveBayesReader(const Element& model, FieldScope& scope, Target& target)
    : fElement(model), fScope(scope), fTarget(target), fModel(std::make_unique<NaiveBayesModel>()) {}

std::unique_ptr<NaiveBayesModel> NaiveBayesReader::Read() {
  RefuseUnknownModelChildren(fElement, {"BayesInputs", "BayesOutput"});
  ReadThreshold();
  ReadOutput();
  ChooseCategories();
  ReadInputs();
  fModel->fLogShares.shrink_to_fit();
  fModel->fDistributions.shrink_to_fit();
  return std::move(fModel);
}

void NaiveBayesReader::ReadThreshold() {
  fThreshold = ReadCount(fElement, "threshold");
  fModel->fLogThreshold = std::log(fThreshold);
}

// It comes first: it names the categories that all other counts are about.
void NaiveBayesReader::ReadOutput() {
  const Element output = SingleChild(fElement, "BayesOutput");
  RefuseUnknownChildren(output, {"TargetValueCounts"});
  if (!fTarget.Name().empty() && output.Required("fieldName") != fTarget.Name()) {
    throw output.AttributeError("fieldName", "isn't the target of the model");
  }
  for (Element count = ReadCountList(output).Child("TargetValueCount"); count; count = count.Next("TargetValueCount")) {
    RefuseUnknownChildren(count, {});
    const std::uint32_t category = fTarget.AddCategory(count, "value", count.Required("value"));
    fCounts.resize(fTarget.Categories().size());
    if (fCounts[category]) throw count.AttributeError("value", "has a count already");
    fCounts[category] = ReadCount(count, "count");
  }
  fCounts.resize(fTarget.Categories().size());
}

void NaiveBayesReader::ChooseCategories() {
  fModel->fTargetCategoryCount = static_cast<std::uint32_t>(fCounts.size());
  fPlaces.assign(fCounts.size(), kNoPlace);
  fToldIn.assign(fCounts.size(), 0);
  for (std::uint32_t category = 0; category < fCounts.size(); ++category) {
    const double count = fCounts[category].value_or(0.0);
    if (count == 0.0) continue;
    fPlaces[category] = static_cast<std::uint32_t>(fModel->fCategories.size());
    fModel->fCategories.push_back(category);
    fModel->fLogCounts.push_back(std::log(count));
  }
  if (fModel->fCategories.empty()) throw fElement.Child("BayesOutput").Error("counts no record of any category");
}

// Producers of 4.1 put their inputs of numbers, which the standard didn't have before 4.2, into extensions.
void NaiveBayesReader::ReadInputs() {
  const Element inputs = SingleChild(fElement, "BayesInputs");
  RefuseUnknownChildren(inputs, {"BayesInput"});
  for (Element child = inputs.FirstChild(); child; child = child.NextSibling()) {
    if (child.Is("BayesInput")) ReadInput(child);
    if (!child.Is("Extension")) continue;
    for (Element input = child.Child("BayesInput"); input; input = input.Next("BayesInput")) ReadInput(input);
  }
  if (fModel->fInputs.empty()) throw inputs.Error("has no BayesInput");
}

void NaiveBayesReader::ReadInput(const Element& element) {
  RefuseUnknownChildren(element, {"DerivedField", "PairCounts", "TargetValueStats"});
  if (!fFieldNames.emplace(element.Required("fieldName")).second) {
    throw element.AttributeError("fieldName", "has a BayesInput already");
  }
  const Source source = ReadSource(element);
  Input input;
  input.slot = source.slot;
  const Element stats = element.Child("TargetValueStats");
  if (!stats) {
    ReadPairCounts(element, source, input);
  } else if (element.Child("PairCounts")) {
    throw stats.Error("stands beside PairCounts, which say something else of the same input");
  } else if (KelTransformNS::IsText(source.dataType)) {
    throw stats.Error("needs numbers, but its input holds texts");
  } else {
    ReadStats(SingleChild(element, "TargetValueStats"), input);
  }
  fModel->fInputs.push_back(std::move(input));
}

// With a field of its own, an input reads nothing else, whatever its name is.
NaiveBayesReader::Source NaiveBayesReader::ReadSource(const Element& element) {
  if (element.Child("DerivedField")) return CompileDerived(SingleChild(element, "DerivedField"));
  const Field& field = fScope.Resolve(element.Required("fieldName"), element);
  return {field.slot, field.dataType};
}

NaiveBayesReader::Source NaiveBayesReader::CompileDerived(const Element& derived) {
  const Element expression = OnlyExpression(derived);
  const DataType type = ReadDataType(derived);
  return {fScope.Compiler().CompileExpression(expression, type).slot, type};
}

void NaiveBayesReader::ReadPairCounts(const Element& element, const Source& source, Input& input) {
  input.first = fModel->fLogShares.size();
  fValues.clear();
  for (Element pairCounts = element.RequiredChild("PairCounts"); pairCounts;
       pairCounts = pairCounts.Next("PairCounts")) {
    RefuseUnknownChildren(pairCounts, {"TargetValueCounts"});
    ReadValue(pairCounts, source, input);
    ReadRow(pairCounts);
  }
  input.values.Seal();
  TakeLogarithms(element, input.first);
}

void NaiveBayesReader::ReadValue(const Element& pairCounts, const Source& source, Input& input) {
  const auto row = static_cast<std::uint32_t>(fValues.size());
  const Cell value = ReadComparand(pairCounts, "value", pairCounts.Required("value"), source.dataType, fScope.Pool());
  if (!fValues.emplace(value.number, value.textId).second) {
    throw pairCounts.AttributeError("value", "has counts already");
  }
  if (value.state == Cell::kText) {
    input.values.AddText(value.textId, row);
  } else {
    input.values.AddNumber(value.number, row);
  }
}

void NaiveBayesReader::ReadRow(const Element& pairCounts) {
  std::vector<double>& shares = fModel->fLogShares;
  const std::size_t first = shares.size();
  const Element list = ReadCountList(pairCounts);
  ++fList;
  CheckSize(pairCounts);
  shares.resize(first + fModel->fCategories.size(), 0.0);
  for (Element count = list.Child("TargetValueCount"); count; count = count.Next("TargetValueCount")) {
    RefuseUnknownChildren(count, {});
    const double records = ReadCount(count, "count");
    const std::uint32_t place = TakePlace(count);
    if (place != kNoPlace) shares[first + place] = records;
    ++fToldCounts;
  }
}

// A count that isn't told takes as much memory as one that is: a few bytes of a document could ask for very much.
void NaiveBayesReader::CheckSize(const Element& pairCounts) const {
  constexpr std::size_t kAlwaysAllowed = std::size_t{1} << 20U;
  constexpr std::size_t kPerCount = 64;
  if (fModel->fLogShares.size() > kAlwaysAllowed + kPerCount * fToldCounts) {
    throw pairCounts.Error("and those before it tell the counts of too few of the model's categories");
  }
}

// Turns the counts of an input, from `first` on, into the logarithms of each value's share of a category's records.
void NaiveBayesReader::TakeLogarithms(const Element& element, std::size_t first) {
  std::vector<double>& shares = fModel->fLogShares;
  const std::size_t count = fModel->fCategories.size();
  std::vector<double> sums(count, 0.0);
  for (std::size_t i = first; i < shares.size(); ++i) sums[(i - first) % count] += shares[i];
  for (const double sum : sums) {
    if (!std::isfinite(sum)) throw element.Error("has counts whose sum is too large");
  }
  for (std::size_t i = first; i < shares.size(); ++i) {
    shares[i] = std::log(shares[i] == 0.0 ? fThreshold : shares[i] / sums[(i - first) % count]);
  }
}

void NaiveBayesReader::ReadStats(const Element& stats, Input& input) {
  RefuseUnknownChildren(stats, {"TargetValueStat"});
  input.isCounted = false;
  input.first = fModel->fDistributions.size();
  fModel->fDistributions.resize(input.first + fModel->fCategories.size());
  ++fList;
  for (Element stat = stats.Child("TargetValueStat"); stat; stat = stat.Next("TargetValueStat")) ReadStat(stat, input);
  for (const std::uint32_t category : fModel->fCategories) {
    if (fToldIn[category] != fList) throw stats.Error("has none for " + Quoted(fTarget.Categories()[category].text));
  }
}

void NaiveBayesReader::ReadStat(const Element& stat, Input& input) {
  RefuseUnknownChildren(stat, {"GaussianDistribution", "PoissonDistribution"});
  const Distribution distribution = ReadDistribution(stat);
  const std::uint32_t place = TakePlace(stat);
  if (place == kNoPlace) return;
  fModel->fDistributions[input.first + place] = distribution;
  input.hasPoisson = input.hasPoisson || distribution.isPoisson;
}

NaiveBayesReader::Distribution NaiveBayesReader::ReadDistribution(const Element& stat) {
  if (!stat.Child("PoissonDistribution")) return ReadNormal(SingleChild(stat, "GaussianDistribution"));
  const Element poisson = SingleChild(stat, "PoissonDistribution");
  if (stat.Child("GaussianDistribution")) throw poisson.Error("stands beside another distribution");
  RefuseUnknownChildren(poisson, {});
  const double mean = ReadCount(poisson, "mean");
  return {mean, std::log(mean), 0.0, true};
}

NaiveBayesReader::Distribution NaiveBayesReader::ReadNormal(const Element& normal) {
  RefuseUnknownChildren(normal, {});
  const double mean = RequiredFinite(normal, "mean");
  const double variance = RequiredFinite(normal, "variance");
  if (!(variance >= std::numeric_limits<double>::min())) throw normal.AttributeError("variance", "isn't above 0");
  return {mean, -0.5 / variance, -0.5 * (std::log(2.0 * std::numbers::pi) + std::log(variance)), false};
}

// The place of a category that a list of an input tells of.
std::uint32_t NaiveBayesReader::TakePlace(const Element& element) {
  const std::optional<std::uint32_t> category = fTarget.FindCategory(element.Required("value"));
  if (!category || !fCounts[*category]) throw element.AttributeError("value", "isn't among the values of BayesOutput");
  if (fToldIn[*category] == fList) throw element.AttributeError("value", "stands there twice");
  fToldIn[*category] = fList;
  return fPlaces[*category];
}

}  // namespace Torvane
