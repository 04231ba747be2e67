#include "plugins/torvane/models/NearestNeighborReader.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "plugins/torvane/models/TrainingFrame.h"

namespace Torvane {

using KelTransformNS::Cell;

namespace {

constexpr double kUsualThreshold = 0.001;

Element OnlyChild(const Element& model, std::string_view name) {
  const Element child = model.RequiredChild(name);
  if (child.Next(name)) throw child.Next(name).Error("stands there twice");
  return child;
}

}  // namespace

std::unique_ptr<ModelBody> NearestNeighborModel::Build(const Element& model, FieldScope& scope, Target& target) {
  return NearestNeighborReader(model, scope, target).Read();
}

NearestNeighborReader::NearestNeighborReader(const Element& model, FieldScope& scope, Target& target)
    : fElement(model),
      fScope(scope),
      fTarget(target),
      fModel(std::make_unique<NearestNeighborModel>()),
      fNeighborhood(std::make_shared<Neighborhood>()),
      fComparison(model, scope, fNeighborhood->measure),
      fTable(OnlyChild(model, "TrainingInstances")) {}

std::unique_ptr<NearestNeighborModel> NearestNeighborReader::Read() {
  RefuseUnknownModelChildren(fElement, {"TrainingInstances", "ComparisonMeasure", "KNNInputs"});
  ReadMethods();
  ReadInputs();
  ReadInstances();
  fModel->fNeighborhood = std::move(fNeighborhood);
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
  fModel->fIsVote = fTarget.Function() == MiningFunction::kClassification;
  const Method method = fModel->fIsVote ? ofCategories : ofNumbers;
  fModel->fIsMedian = method == Method::kMedian;
  fModel->fIsWeighted = method == Method::kWeighted && fTarget.Function() != MiningFunction::kClustering;
  if (fModel->fIsWeighted && !fNeighborhood->measure.IsDistance()) {
    throw fElement.Child("ComparisonMeasure").AttributeError("kind", "gives no weights, which need a distance");
  }
  fModel->fThreshold = ReadFinite(fElement, "threshold").value_or(kUsualThreshold);
  if (fModel->fThreshold < 0.0) throw fElement.AttributeError("threshold", "is below 0");
  (void)fElement.Required("numberOfNeighbors");
  const int count = fElement.Integer("numberOfNeighbors").value_or(0);
  if (count < 1) throw fElement.AttributeError("numberOfNeighbors", "isn't from 1 on");
  fNeighborhood->neighborCount = static_cast<std::uint32_t>(count);
}

void NearestNeighborReader::ReadInputs() {
  const Element inputs = OnlyChild(fElement, "KNNInputs");
  RefuseUnknownChildren(inputs, {"KNNInput"});
  for (Element child = inputs.RequiredChild("KNNInput"); child; child = child.Next("KNNInput")) {
    RefuseUnknownChildren(child, {});
    const std::string_view name = child.Required("field");
    const Field& field = fScope.Resolve(name, child);
    fComparison.AddField(child, name, field);
    fInputs.push_back({name, child, field.dataType});
  }
}

void NearestNeighborReader::ReadInstances() {
  const Element instances = fElement.Child("TrainingInstances");
  if (const auto idField = fElement.Attribute("instanceIdVariable")) fIdColumn = RequiredColumn(fElement, *idField);
  if (fTarget.Function() != MiningFunction::kClustering) fTargetColumn = RequiredColumn(instances, fTarget.Name());
  if (fTable.IsTransformed()) {
    ReadTransformed();
  } else {
    ReadUntransformed();
  }
  for (const Input& input : fInputs) {
    if (!input.hasValue) throw input.element.AttributeError("field", "has no value in any instance");
  }
  if (fIds.size() < fNeighborhood->neighborCount) {
    throw fElement.AttributeError("numberOfNeighbors", "is more than there are instances");
  }
  fComparison.Finish();
  fNeighborhood->ids.Assign(fIds);
  fModel->fNumbers.shrink_to_fit();
  fModel->fCategories.shrink_to_fit();
  if (fModel->fIsVote) ChooseWinningOrder();
}

// The columns hold the compared fields themselves.
void NearestNeighborReader::ReadTransformed() {
  std::vector<std::size_t> columns;
  for (const Input& input : fInputs) columns.push_back(RequiredColumn(input.element, input.name));
  std::vector<Cell> cells(fInputs.size());
  while (fTable.ReadRow()) {
    for (std::size_t i = 0; i < fInputs.size(); ++i) {
      const std::optional<std::string_view> text = fTable.Text(columns[i]);
      cells[i] =
          text ? ReadComparand(fTable.Row(), fInputs[i].name, *text, fInputs[i].type, fScope.Pool()) : Cell::Missing();
    }
    AddInstance(cells);
  }
}

void NearestNeighborReader::ReadUntransformed() {
  std::vector<std::string_view> names;
  for (const Input& input : fInputs) names.push_back(input.name);
  TrainingFrame frame(fElement, fScope, names, fTable);
  while (fTable.ReadRow()) AddInstance(frame.Read(fTable));
}

void NearestNeighborReader::AddInstance(const std::vector<Cell>& cells) {
  const Element& row = fTable.Row();
  fComparison.AddPoint(row, cells);
  for (std::size_t i = 0; i < cells.size(); ++i) fInputs[i].hasValue = fInputs[i].hasValue || !cells[i].IsMissing();
  fIds.push_back(fIdColumn ? std::optional(RequiredText(*fIdColumn, "instanceIdVariable")) : std::nullopt);
  const std::optional<std::string_view> target =
      fTargetColumn ? std::optional(RequiredText(*fTargetColumn, fTarget.Name())) : std::nullopt;
  if (fModel->fIsVote) {
    fModel->fCategories.push_back(fTarget.AddCategory(row, fTarget.Name(), *target));
  } else if (target) {
    const std::optional<double> number = KelXML_1_3::ParsePmmlNumber(*target);
    if (!number || !std::isfinite(*number)) throw row.Error("has a target that is no number: " + Quoted(*target));
    fModel->fNumbers.push_back(*number);
  } else {
    const std::string id = fIds.back() ? std::string(*fIds.back()) : std::to_string(fIds.size());
    fTarget.AddCluster(row, id, id);
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

std::size_t NearestNeighborReader::RequiredColumn(const Element& referrer, std::string_view field) const {
  const std::optional<std::size_t> column = fTable.FindColumn(field);
  if (!column) throw referrer.Error("needs a column of field " + Quoted(field) + " in the training instances");
  return *column;
}

std::string_view NearestNeighborReader::RequiredText(std::size_t column, std::string_view field) const {
  const std::optional<std::string_view> text = fTable.Text(column);
  if (!text) throw fTable.Row().Error("has no value of " + Quoted(field));
  return *text;
}

}  // namespace Torvane
