#include "plugins/torvane/models/NearestNeighborReader.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "plugins/torvane/models/NeighborhoodReader.h"

namespace Torvane {

namespace {

constexpr double kUsualThreshold = 0.001;

}  // namespace

std::unique_ptr<ModelBody> NearestNeighborModel::Build(const Element& model, FieldScope& scope, Target& target) {
  return NearestNeighborReader(model, target, NeighborhoodReader(model, scope).Read()).Read();
}

std::unique_ptr<ModelBody> NearestNeighborModel::BuildFurther(const ModelBody& first, const Element& model,
                                                              FieldScope& /*scope*/, Target& target) {
  return NearestNeighborReader(model, target, static_cast<const NearestNeighborModel&>(first).fNeighborhood).Read();
}

NearestNeighborReader::NearestNeighborReader(const Element& model, Target& target,
                                             std::shared_ptr<const Neighborhood> neighborhood)
    : fElement(model), fTarget(target), fModel(std::make_unique<NearestNeighborModel>()) {
  fModel->fNeighborhood = std::move(neighborhood);
}

std::unique_ptr<NearestNeighborModel> NearestNeighborReader::Read() {
  ReadMethods();
  ReadThreshold();
  if (fTarget.Function() == MiningFunction::kClustering) {
    NameInstances();
  } else {
    ReadTargetValues();
  }
  if (fModel->fIsVote) ChooseWinningOrder();
  return std::move(fModel);
}

// The weight of a neighbour is defined by its distance. A similarity has none, and nothing here makes one up.
void NearestNeighborReader::ReadMethods() {
  enum class Method { kPlain, kWeighted, kMedian };
  static constexpr Word<Method> kOfNumbers[] = {
      {"median", Method::kMedian}, {"average", Method::kPlain}, {"weightedAverage", Method::kWeighted}};
  static constexpr Word<Method> kOfCategories[] = {{"majorityVote", Method::kPlain},
                                                   {"weightedMajorityVote", Method::kWeighted}};
  const Method ofNumbers = ReadWord(fElement, "continuousScoringMethod", kOfNumbers, Method::kPlain);
  const Method ofCategories = ReadWord(fElement, "categoricalScoringMethod", kOfCategories, Method::kPlain);
  if (fTarget.Function() == MiningFunction::kClustering) return;
  fModel->fIsVote = fTarget.Function() == MiningFunction::kClassification;
  const Method method = fModel->fIsVote ? ofCategories : ofNumbers;
  fModel->fIsMedian = method == Method::kMedian;
  fModel->fIsWeighted = method == Method::kWeighted;
  if (fModel->fIsWeighted && !fModel->fNeighborhood->measure.IsDistance()) {
    throw fElement.Child("ComparisonMeasure").AttributeError("kind", "gives no weights, which need a distance");
  }
}

void NearestNeighborReader::ReadThreshold() {
  fModel->fThreshold = ReadFinite(fElement, "threshold").value_or(kUsualThreshold);
  if (fModel->fThreshold < 0.0) throw fElement.AttributeError("threshold", "is below 0");
}

void NearestNeighborReader::ReadTargetValues() {
  const Element instances = fElement.Child("TrainingInstances");
  InstanceTable table(instances);
  const std::size_t column = table.RequiredColumn(instances, fTarget.Name());
  while (table.ReadRow()) ReadTargetValue(table.Row(), table.RequiredText(column, fTarget.Name()));
  fModel->fNumbers.shrink_to_fit();
  fModel->fCategories.shrink_to_fit();
}

void NearestNeighborReader::ReadTargetValue(const Element& row, std::string_view text) {
  if (fModel->fIsVote) {
    fModel->fCategories.push_back(fTarget.AddCategory(row, fTarget.Name(), text));
    return;
  }
  const std::optional<double> number = KelXML_1_3::ParsePmmlNumber(text);
  if (!number || !std::isfinite(*number)) throw row.Error("has a target that is no number: " + Quoted(text));
  fModel->fNumbers.push_back(*number);
}

// The instances of a clustering are what it predicts.
void NearestNeighborReader::NameInstances() {
  KelCommon_1_3::Value id;
  for (std::uint32_t instance = 0; instance < fModel->EntityCount(); ++instance) {
    fModel->WriteEntity(instance, id);
    const std::string name = id.GetString();
    fTarget.AddCluster(fElement.Child("TrainingInstances"), name, name);
  }
}

void NearestNeighborReader::ChooseWinningOrder() {
  const std::vector<Category>& categories = fTarget.Categories();
  std::vector<std::size_t> counts(categories.size());
  for (const std::uint32_t category : fModel->fCategories) ++counts[category];
  std::vector<std::uint32_t>& order = fModel->fWinningOrder;
  order.resize(categories.size());
  std::iota(order.begin(), order.end(), 0U);
  std::sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
    return counts[a] != counts[b] ? counts[a] > counts[b] : categories[a].text < categories[b].text;
  });
}

}  // namespace Torvane
