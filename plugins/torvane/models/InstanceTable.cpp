#include "plugins/torvane/models/InstanceTable.h"

#include <algorithm>

#include "plugins/torvane/models/Parts.h"

namespace Torvane {

// The counts of records and fields are information: shortened documents keep the old ones.
InstanceTable::InstanceTable(const Element& trainingInstances)
    : fIsTransformed(trainingInstances.Boolean("isTransformed", false)) {
  RefuseUnknownChildren(trainingInstances, {"InstanceFields", "InlineTable"});
  const Element fields = OnlyChild(trainingInstances, "InstanceFields");
  RefuseUnknownChildren(fields, {"InstanceField"});
  for (Element child = fields.Child("InstanceField"); child; child = child.Next("InstanceField")) {
    RefuseUnknownChildren(child, {});
    const std::string_view field = child.Required("field");
    const std::string_view name = KelTransformNS::LocalName(child.Attribute("column").value_or(field));
    const std::size_t column = fByColumn.emplace(name, fByColumn.size()).first->second;
    if (!fByField.emplace(field, column).second) throw child.AttributeError("field", "has a column already");
  }
  fTexts.resize(fByColumn.size());
  const Element table = OnlyChild(trainingInstances, "InlineTable");
  RefuseUnknownChildren(table, {"row"});
  fNextRow = table.Child("row");
}

std::optional<std::size_t> InstanceTable::FindColumn(std::string_view field) const {
  const auto found = fByField.find(field);
  if (found == fByField.end()) return std::nullopt;
  return found->second;
}

std::size_t InstanceTable::RequiredColumn(const Element& referrer, std::string_view field) const {
  const std::optional<std::size_t> column = FindColumn(field);
  if (!column) throw referrer.Error("needs a column of field " + Quoted(field) + " in the training instances");
  return *column;
}

std::string_view InstanceTable::RequiredText(std::size_t column, std::string_view field) const {
  if (!fTexts[column]) throw fRow.Error("has no value of " + Quoted(field));
  return *fTexts[column];
}

// Columns that no field is said to stand in have no influence.
bool InstanceTable::ReadRow() {
  fRow = fNextRow;
  if (!fRow) return false;
  fNextRow = fRow.Next("row");
  std::fill(fTexts.begin(), fTexts.end(), std::nullopt);
  for (Element cell = fRow.FirstChild(); cell; cell = cell.NextSibling()) {
    const auto column = fByColumn.find(cell.Name());
    if (column == fByColumn.end()) continue;
    RefuseUnknownChildren(cell, {});
    if (fTexts[column->second]) throw cell.Error("stands in its row twice");
    if (!cell.Text().empty()) fTexts[column->second] = cell.Text();
  }
  return true;
}

}  // namespace Torvane
