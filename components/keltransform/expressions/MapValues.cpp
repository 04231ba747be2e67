#include <algorithm>
#include <string_view>
#include <unordered_map>

#include "components/keltransform/Attributes.h"
#include "components/keltransform/Hashing.h"
#include "components/keltransform/expressions/Expressions.h"

namespace KelTransformNS {

using KelXML_1_3::Element;

namespace {

// An input of the mapping, and the column of its keys.
struct KeyColumn {
  CompiledValue field;
  std::string_view name;
  Element declaration;
  bool isUsed = false;
};

std::vector<KeyColumn> CompileKeyColumns(const Element& element, ExpressionContext& context) {
  std::vector<KeyColumn> columns;
  for (Element pair = element.Child("FieldColumnPair"); pair; pair = pair.Next("FieldColumnPair")) {
    RefuseUnknownChildren(pair, {});
    columns.push_back({CompileField(pair, context), LocalName(pair.Required("column")), pair});
  }
  return columns;
}

// Reads the rows of an "InlineTable" into the mapping table. A row without one of the keys matches nothing; one without
// the output column has a missing result. A column that no row has is a mistake in the document.
class TableReader {
 public:
  TableReader(const Element& mapValues, std::vector<KeyColumn>& columns, DataType resultType, CodeBuilder& code)
      : fMapValues(mapValues),
        fColumns(columns),
        fOutputColumn(LocalName(mapValues.Required("outputColumn"))),
        fResultType(resultType),
        fCode(code),
        fKeys(columns.size()) {
    for (const KeyColumn& column : fColumns) fCells.try_emplace(column.name);
    fCells.try_emplace(fOutputColumn);
  }

  void Read(const Element& inlineTable) {
    RefuseUnknownChildren(inlineTable, {"row"});
    for (Element row = inlineTable.Child("row"); row; row = row.Next("row")) ReadRow(row);
    if (inlineTable.Child("row")) CheckColumns();
  }

 private:
  void ReadRow(const Element& row) {
    FindCells(row);
    const bool hasKeys = ReadKeys();
    const Cell result = ReadResult();
    if (hasKeys) fCode.Data().mapValues.AppendRow(fKeys, result);
  }

  void FindCells(const Element& row) {
    for (auto& [name, cell] : fCells) cell = Element();
    for (Element child = row.FirstChild(); child; child = child.NextSibling()) {
      const auto column = fCells.find(child.Name());
      if (column == fCells.end()) continue;
      if (column->second) throw child.Error("stands in its row twice");
      RefuseUnknownChildren(child, {});
      column->second = child;
    }
  }

  bool ReadKeys() {
    bool hasAll = true;
    for (std::size_t column = 0; column < fColumns.size(); ++column) {
      const Element cell = fCells.at(fColumns[column].name);
      fColumns[column].isUsed = fColumns[column].isUsed || cell;
      hasAll = ReadKey(cell, fColumns[column].field.type, fKeys[column]) && hasAll;
    }
    return hasAll;
  }

  bool ReadKey(const Element& cell, DataType type, MapValuesTable::Key& key) {
    if (!cell || (cell.Text().empty() && !IsText(type))) return false;
    const Cell literal = ReadTextLiteral(cell, cell.Text(), type, fCode.Pool());
    key = MapValuesTable::KeyOf(literal);
    return !literal.IsMissing();
  }

  Cell ReadResult() {
    const Element cell = fCells.at(fOutputColumn);
    fHasOutput = fHasOutput || cell;
    if (!cell || (cell.Text().empty() && !IsText(fResultType))) return Cell::Missing();
    return ReadTextLiteral(cell, cell.Text(), fResultType, fCode.Pool());
  }

  void CheckColumns() const {
    if (!fHasOutput) throw fMapValues.AttributeError("outputColumn", "no row has this column");
    for (const KeyColumn& column : fColumns) {
      if (!column.isUsed) throw column.declaration.AttributeError("column", "no row has this column");
    }
  }

  const Element fMapValues;
  std::vector<KeyColumn>& fColumns;
  const std::string_view fOutputColumn;
  const DataType fResultType;
  CodeBuilder& fCode;
  std::vector<MapValuesTable::Key> fKeys;
  std::unordered_map<std::string_view, Element, NameHash> fCells;  // of the row at hand, by column
  bool fHasOutput = false;
};

std::size_t CountRows(const Element& inlineTable) {
  std::size_t count = 0;
  for (Element row = inlineTable.Child("row"); row; row = row.Next("row")) ++count;
  return count;
}

std::vector<Operand> OperandsOf(const std::vector<KeyColumn>& columns) {
  std::vector<Operand> operands;
  operands.reserve(columns.size());
  for (const KeyColumn& column : columns) operands.push_back(column.field.operand);
  return operands;
}

}  // namespace

// Without a table it tells records with a missing input from others.
CompiledValue CompileMapValues(const Element& element, ExpressionContext& context) {
  RefuseUnknownChildren(element, {"FieldColumnPair", "InlineTable", "TableLocator"});
  RefuseSecond(element, {"InlineTable"});
  const Element locator = element.Child("TableLocator");
  if (locator) throw locator.Error("a table outside the document isn't supported");
  std::vector<KeyColumn> columns = CompileKeyColumns(element, context);
  const DataType type = LiteralType(element, context);
  TextPool& pool = context.code.Pool();
  const Cell whenMissing = ReadOptionalLiteralOf(element, "mapMissingTo", type, pool);
  const Cell otherwise = ReadOptionalLiteralOf(element, "defaultValue", type, pool);
  const Element table = element.Child("InlineTable");
  const std::uint32_t entry =
      context.code.Data().mapValues.Append(columns.size(), CountRows(table), whenMissing, otherwise);
  TableReader(element, columns, type, context.code).Read(table);
  return context.code.Emit(OpCode::kMapValues, OperandsOf(columns), entry, type);
}

}  // namespace KelTransformNS
