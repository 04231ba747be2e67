#include "components/keltransform/CodeBuilder.h"

#include <algorithm>
#include <utility>

#include "components/keltransform/Attributes.h"
#include "components/keltransform/Conversion.h"
#include "components/keltransform/MadeTexts.h"
#include "components/keltransform/NumberText.h"

namespace KelTransformNS {

using KelXML_1_3::Element;

namespace {

std::string NotOfType(DataType type) { return "is no value of the type " + std::string(DataTypeName(type)); }

bool MakesText(OpCode operation) { return operation == OpCode::kMakeText || operation == OpCode::kReplace; }

bool IsNumeric(DataType type) { return !IsText(type); }

// Longer texts of constants are made anew for each record, so that a short document can't fill the memory with them.
constexpr std::size_t kMaxFoldedText = 256;

std::unique_ptr<Tables> EmptyTables(const TextPool& pool) {
  auto tables = std::make_unique<Tables>();
  tables->pool = &pool;
  return tables;
}

// Ends the texts that are made while a constant is computed.
class TextScope {
 public:
  TextScope() : fTexts(MadeTexts::OfThisThread()), fMark(fTexts.Mark()) {}
  TextScope(const TextScope&) = delete;
  TextScope& operator=(const TextScope&) = delete;
  ~TextScope() { fTexts.ReleaseTo(fMark); }

 private:
  MadeTexts& fTexts;
  std::size_t fMark;
};

}  // namespace

CodeBuilder::CodeBuilder(TextPool& pool, SlotCounter& slots) : fPool(pool), fSlots(slots), fTables(EmptyTables(pool)) {}

CompiledValue CodeBuilder::Constant(const Cell& cell, DataType type) {
  fTables->constants.push_back(cell);
  return {Operand::Constant(static_cast<std::uint32_t>(fTables->constants.size() - 1)), type};
}

CompiledValue CodeBuilder::Emit(OpCode operation, const std::vector<Operand>& operands, std::uint32_t data,
                                DataType type) {
  Instruction instruction{};
  instruction.operation = operation;
  instruction.data = data;
  const auto isConstant = [](const Operand& operand) { return operand.IsConstant(); };
  if (!operands.empty() && std::all_of(operands.begin(), operands.end(), isConstant)) {
    if (const auto constant = Fold(instruction, operands, type)) return *constant;
  }
  if (MakesText(operation)) fPool.SetHasMadeTexts();
  return Append(instruction, operands, type);
}

CompiledValue CodeBuilder::Append(Instruction instruction, const std::vector<Operand>& operands, DataType type) {
  instruction.result = fSlots.NewSlot();
  instruction.firstOperand = static_cast<std::uint32_t>(fOperands.size());
  instruction.operandCount = static_cast<std::uint32_t>(operands.size());
  fInstructions.push_back(instruction);
  fOperands.insert(fOperands.end(), operands.begin(), operands.end());
  return {Operand::Slot(instruction.result), type};
}

std::optional<CompiledValue> CodeBuilder::Fold(const Instruction& instruction, const std::vector<Operand>& operands,
                                               DataType type) {
  const TextScope texts;
  const Operands constants(operands.data(), operands.size(), nullptr, fTables->constants.data());
  const Cell result = Execute(instruction, constants, *fTables);
  const bool isMade = MakesText(instruction.operation) && result.state == Cell::kText;
  if (isMade && result.text->size() > kMaxFoldedText) return std::nullopt;
  return Constant(Kept(result), type);
}

Cell CodeBuilder::Kept(const Cell& cell) {
  if (cell.state != Cell::kText) return cell;
  NumberBuffer buffer;
  const std::string_view text = cell.text != nullptr ? *cell.text : ShortestText(cell.number, buffer);
  return Cell::Text(fPool, fPool.Intern(text));
}

CompiledValue CodeBuilder::Converted(const CompiledValue& value, DataType to, const Element& element) {
  if (!CanConvert(value.type, to)) {
    throw element.Error("a value of the type " + std::string(DataTypeName(value.type)) + " can't be converted to " +
                        std::string(DataTypeName(to)));
  }
  if (value.operand.IsConstant()) {
    return Constant(ConvertedConstant(fTables->constants[value.operand.Index()], value.type, to, element), to);
  }
  if (IsSameCell(value.type, to)) return {value.operand, to};
  if (to == DataType::kFloat && IsNumeric(value.type)) return Emit(OpCode::kRoundToFloat, {value.operand}, 0, to);
  Instruction instruction{};
  instruction.operation = OpCode::kConvert;
  instruction.from = value.type;
  instruction.to = to;
  return Append(instruction, {value.operand}, to);
}

Cell CodeBuilder::ConvertedConstant(const Cell& cell, DataType from, DataType to, const Element& element) {
  const Cell converted = Convert(cell, from, to, fPool);
  // A function that has no value for its constants is no mistake until its result is asked for.
  if (converted.IsInvalid() && !cell.IsInvalid()) throw element.Error("its value " + NotOfType(to));
  return Kept(converted);
}

std::uint32_t CodeBuilder::SlotOf(const CompiledValue& value) {
  if (!value.operand.IsConstant()) return value.operand.Index();
  Instruction copy{};
  copy.operation = OpCode::kCopy;
  return Append(copy, {value.operand}, value.type).operand.Index();
}

Program CodeBuilder::Finish() {
  auto next = EmptyTables(fPool);
  Program program;
  program.fCode = std::make_unique<Program::Code>(std::exchange(fInstructions, {}), std::exchange(fOperands, {}),
                                                  std::move(fTables));
  fTables = std::move(next);
  return program;
}

Cell ReadTextLiteral(const Element& element, std::string_view text, DataType type, TextPool& pool) {
  const Cell cell = ReadLiteral(text, type, pool);
  if (cell.IsInvalid()) throw element.Error(Quoted(text) + ' ' + NotOfType(type));
  return cell;
}

Cell ReadLiteralOf(const Element& element, std::string_view attribute, DataType type, TextPool& pool) {
  const Cell cell = ReadLiteral(element.Required(attribute), type, pool);
  if (cell.IsInvalid()) throw element.AttributeError(attribute, NotOfType(type));
  return cell;
}

Cell ReadOptionalLiteralOf(const Element& element, std::string_view attribute, DataType type, TextPool& pool) {
  return element.Attribute(attribute) ? ReadLiteralOf(element, attribute, type, pool) : Cell::Missing();
}

}  // namespace KelTransformNS
