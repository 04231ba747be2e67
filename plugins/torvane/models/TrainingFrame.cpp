#include "plugins/torvane/models/TrainingFrame.h"

#include "components/keltransform/FrameStorage.h"

namespace Torvane {

using KelTransformNS::Cell;
using KelTransformNS::DataType;

namespace {

// Instances are no records that the library has computed fields into.
Document WithoutRecord(const Document& document) {
  return {document.root, document.version, document.dictionary, document.pool, document.expansion, document.categories,
          false};
}

// A text that the document doesn't hold elsewhere gets its number, by which records find it again.
Cell Known(const Cell& cell, KelTransformNS::TextPool& pool) {
  if (cell.state != Cell::kText || cell.textId != KelTransformNS::TextPool::kUnknown) return cell;
  KelCommon_1_3::Value text;
  KelTransformNS::WriteCell(cell, DataType::kString, text);
  return Cell::Text(pool, pool.Intern(text.GetString()));
}

}  // namespace

TrainingFrame::TrainingFrame(const Element& model, const FieldScope& scope, const std::vector<std::string_view>& names,
                             const InstanceTable& table)
    : fDocument(WithoutRecord(scope.GetDocument())), fFields(fDocument, model) {
  for (const std::string_view name : names) fSlots.push_back(fFields.Resolve(name, model).slot);
  fInputs = fFields.TakeInputs();
  fProgram = fFields.Compiler().Finish();
  for (const InputField& input : fInputs) {
    const std::string& name = input.Key().Name();
    if (input.mustBeInRecord) throw model.Error("needs field " + Quoted(name) + ", which only records hold");
    const KelTransformNS::FieldDeclaration* const declaration = fDocument.dictionary.Find(name);
    fColumns.push_back(
        {table.FindColumn(name), declaration != nullptr && KelTransformNS::IsText(declaration->dataType)});
  }
  fValues.resize(fInputs.size());
}

const std::vector<Cell>& TrainingFrame::Read(const InstanceTable& table) {
  KelTransformNS::FrameStorage storage(fFields.Compiler().SlotCount(), KelTransformNS::FrameStorage::kMissing,
                                       fDocument.pool.HasMadeTexts());
  const KelTransformNS::Frame frame = storage.Cells();
  for (std::size_t i = 0; i < fInputs.size(); ++i) {
    const Column& column = fColumns[i];
    const std::optional<std::string_view> text = column.position ? table.Text(*column.position) : std::nullopt;
    fValues[i].SetNull();
    if (text) fValues[i] = std::string(*text);
    if (text && column.isText) (void)fDocument.pool.Intern(*text);
    Cell& cell = frame[fInputs[i].Slot()];
    cell = fInputs[i].Read(fValues[i], fDocument.pool);
    if (cell.IsInvalid() && !fInputs[i].isTarget) {
      throw table.Row().Error("has an invalid value of field " + Quoted(fInputs[i].Key().Name()));
    }
  }
  fProgram.Run(frame);
  fCells.clear();
  for (const std::uint32_t slot : fSlots) fCells.push_back(Known(frame[slot], fDocument.pool));
  return fCells;
}

}  // namespace Torvane
