#include "plugins/torvane/models/NeighborhoodReader.h"

#include "plugins/torvane/models/Parts.h"
#include "plugins/torvane/models/TrainingFrame.h"

namespace Torvane {

using KelTransformNS::Cell;

NeighborhoodReader::NeighborhoodReader(const Element& model, FieldScope& scope)
    : fElement(model),
      fScope(scope),
      fNeighborhood(std::make_shared<Neighborhood>()),
      fComparison(model, scope, fNeighborhood->measure),
      fTable(OnlyChild(model, "TrainingInstances")) {}

std::shared_ptr<const Neighborhood> NeighborhoodReader::Read() {
  RefuseUnknownModelChildren(fElement, {"TrainingInstances", "ComparisonMeasure", "KNNInputs"});
  RefuseSecond(fElement, {"ComparisonMeasure"});
  ReadCount();
  ReadInputs();
  ReadInstances();
  CheckInstances();
  fComparison.Finish();
  fNeighborhood->ids.Assign(fIds);
  return std::move(fNeighborhood);
}

void NeighborhoodReader::ReadCount() {
  (void)fElement.Required("numberOfNeighbors");
  const int count = fElement.Integer("numberOfNeighbors").value_or(0);
  if (count < 1) throw fElement.AttributeError("numberOfNeighbors", "isn't from 1 on");
  fNeighborhood->neighborCount = static_cast<std::uint32_t>(count);
}

void NeighborhoodReader::ReadInputs() {
  const Element inputs = OnlyChild(fElement, "KNNInputs");
  RefuseUnknownChildren(inputs, {"KNNInput"});
  NameMap<bool> known;
  for (Element child = inputs.RequiredChild("KNNInput"); child; child = child.Next("KNNInput")) {
    RefuseUnknownChildren(child, {});
    const std::string_view name = child.Required("field");
    if (!known.emplace(name, true).second) throw child.AttributeError("field", "is compared already");
    const Field& field = fScope.Resolve(name, child);
    fComparison.AddField(child, name, field);
    fInputs.push_back({name, child, field.dataType});
  }
}

void NeighborhoodReader::ReadInstances() {
  if (const auto field = fElement.Attribute("instanceIdVariable")) fIdColumn = fTable.RequiredColumn(fElement, *field);
  if (fTable.IsTransformed()) {
    ReadTransformed();
  } else {
    ReadUntransformed();
  }
}

// The columns hold the compared fields themselves.
void NeighborhoodReader::ReadTransformed() {
  std::vector<std::size_t> columns;
  for (const Input& input : fInputs) columns.push_back(fTable.RequiredColumn(input.element, input.name));
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

void NeighborhoodReader::ReadUntransformed() {
  std::vector<std::string_view> names;
  for (const Input& input : fInputs) names.push_back(input.name);
  TrainingFrame frame(fElement, fScope, names, fTable);
  while (fTable.ReadRow()) AddInstance(frame.Read(fTable));
}

void NeighborhoodReader::AddInstance(const std::vector<Cell>& cells) {
  fComparison.AddPoint(fTable.Row(), cells);
  for (std::size_t i = 0; i < cells.size(); ++i) fInputs[i].hasValue = fInputs[i].hasValue || !cells[i].IsMissing();
  fIds.push_back(fIdColumn ? std::optional(fTable.RequiredText(*fIdColumn, "instanceIdVariable")) : std::nullopt);
}

void NeighborhoodReader::CheckInstances() const {
  for (const Input& input : fInputs) {
    if (!input.hasValue) throw input.element.AttributeError("field", "has no value in any instance");
  }
  if (fIds.size() < fNeighborhood->neighborCount) {
    throw fElement.AttributeError("numberOfNeighbors", "is more than there are instances");
  }
}

}  // namespace Torvane
