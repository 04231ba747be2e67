#include "components/keltransform/CodeBuilder.h"

#include <utility>

#include "components/keltransform/Attributes.h"
#include "components/keltransform/Conversion.h"
#include "components/keltransform/NumberText.h"

namespace KelTransformNS {

using KelXML_1_3::Element;

namespace {

std::string NotOfType(DataType type) { return "is no value of the type " + std::string(DataTypeName(type)); }

bool IsNumeric(DataType type) { return !IsText(type); }

}  // namespace

CodeBuilder::CodeBuilder(TextPool& pool) : fPool(pool), fTables(std::make_unique<Tables>()) {}

CompiledValue CodeBuilder::Constant(const Cell& cell, DataType type) {
  fTables->constants.push_back(cell);
  return {Operand::Constant(static_cast<std::uint32_t>(fTables->constants.size() - 1)), type};
}

CompiledValue CodeBuilder::Emit(OpCode operation, const std::vector<Operand>& operands, std::uint32_t data,
                                DataType type) {
  Instruction instruction{};
  instruction.result = NewSlot();
  instruction.firstOperand = static_cast<std::uint32_t>(fOperands.size());
  instruction.operandCount = static_cast<std::uint32_t>(operands.size());
  instruction.data = data;
  instruction.operation = operation;
  fInstructions.push_back(instruction);
  fOperands.insert(fOperands.end(), operands.begin(), operands.end());
  return {Operand::Slot(instruction.result), type};
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
  const CompiledValue result = Emit(OpCode::kConvert, {value.operand}, 0, to);
  fInstructions.back().from = value.type;
  fInstructions.back().to = to;
  return result;
}

Cell CodeBuilder::ConvertedConstant(const Cell& cell, DataType from, DataType to, const Element& element) {
  const Cell converted = Convert(cell, from, to, fPool);
  if (converted.IsInvalid()) throw element.Error("its value " + NotOfType(to));
  if (converted.state != Cell::kText) return converted;
  NumberBuffer buffer;
  const std::string_view text = converted.text != nullptr ? *converted.text : ShortestText(converted.number, buffer);
  return Cell::Text(fPool, fPool.Intern(text));
}

std::uint32_t CodeBuilder::SlotOf(const CompiledValue& value) {
  if (!value.operand.IsConstant()) return value.operand.Index();
  return Emit(OpCode::kCopy, {value.operand}, 0, value.type).operand.Index();
}

Program CodeBuilder::Finish() {
  fTables->pool = &fPool;
  auto next = std::make_unique<Tables>();
  Program program;
  program.fCode = std::make_unique<Program::Code>(
      Program::Code{std::exchange(fInstructions, {}), std::exchange(fOperands, {}), std::move(fTables)});
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
