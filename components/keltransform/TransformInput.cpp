#include "components/keltransform/TransformInput.h"

#include <algorithm>

namespace KelTransformNS {

using KelCommon_1_3::Value;

namespace {

template <typename Item>
bool Holds(const std::vector<Item>& items, const Item& item) noexcept {
  return std::find(items.begin(), items.end(), item) != items.end();
}

}  // namespace

MissingMarks::MissingMarks(const FieldDeclaration& field, TextPool& pool) {
  for (const FieldDeclaration::DeclaredValue& declared : field.values) {
    if (declared.property != FieldDeclaration::DeclaredValue::kMissing) continue;
    fTexts.push_back(pool.Intern(declared.value));
    const Cell cell = ReadLiteral(declared.value, field.dataType, pool);
    if (cell.state == Cell::kNumber) fNumbers.push_back(cell.number);
  }
}

bool MissingMarks::Contain(const Value& value, const Cell& cell, const TextPool& pool) const noexcept {
  if (cell.state == Cell::kNumber && Holds(fNumbers, cell.number)) return true;
  if (cell.IsMissing()) return false;
  return Holds(fTexts, ReadCell(value, DataType::kString, pool).textId);
}

TransformInput::TransformInput(const FieldDeclaration& field, std::uint32_t slot, TextPool& pool,
                               std::optional<GroupFunction> function)
    : fKey(field.name),
      fSlot(slot),
      fType(field.dataType),
      fMarks(field, pool),
      fFunction(function),
      fIsPlain(fMarks.IsEmpty() && !fFunction) {}

Cell TransformInput::ReadOther(const Value& value, const TextPool& pool) const noexcept {
  if (!fFunction) return ReadMarked(value, pool);
  return JoinGroup(value, *fFunction, [&](const Value& member) { return ReadMarked(member, pool); });
}

Cell TransformInput::ReadMarked(const Value& value, const TextPool& pool) const noexcept {
  const Cell cell = ReadCell(value, fType, pool);
  return fMarks.Contain(value, cell, pool) ? Cell::Missing() : cell;
}

}  // namespace KelTransformNS
