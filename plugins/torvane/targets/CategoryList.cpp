#include "plugins/torvane/targets/CategoryList.h"

#include <utility>

namespace Torvane {

using KelTransformNS::Cell;

std::optional<std::uint32_t> CategoryList::Find(const Cell& cell) const {
  if (cell.state == Cell::kText) {
    const auto found = fByText.find(cell.textId);
    if (found != fByText.end()) return found->second;
  } else {
    const auto found = fByNumber.find(cell.number);
    if (found != fByNumber.end()) return found->second;
  }
  return std::nullopt;
}

std::uint32_t CategoryList::Add(const Cell& cell, KelTransformNS::DataType type) {
  const auto index = static_cast<std::uint32_t>(fCategories.size());
  Category& category = fCategories.emplace_back();
  category.cell = cell;
  KelTransformNS::WriteCell(cell, type, category.value);
  category.text = category.value.GetString();
  category.displayValue = category.text;
  if (cell.state == Cell::kText) {
    fByText.emplace(cell.textId, index);
  } else {
    fByNumber.emplace(cell.number, index);
  }
  return index;
}

std::shared_ptr<CategoryList> DeclaredCategories::Find(const std::string& field) const {
  const auto found = fByField.find(field);
  return found == fByField.end() ? nullptr : found->second;
}

void DeclaredCategories::Keep(const std::string& field, std::shared_ptr<CategoryList> list) {
  fByField.insert_or_assign(field, std::move(list));
}

}  // namespace Torvane
