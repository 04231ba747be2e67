#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "components/kelparsexml/ElementTree.h"
#include "components/keltransform/Code.h"
#include "components/keltransform/SlotCounter.h"

namespace KelTransformNS {

/// A compiled expression: where its value stands, and the data type of that value.
struct CompiledValue {
  Operand operand;
  DataType type;
};

/// Writes the code of one program after the other, over the slots that a counter hands out. Pool and counter must
/// outlive it.
class CodeBuilder {
 public:
  CodeBuilder(TextPool& pool, SlotCounter& slots);

  [[nodiscard]] TextPool& Pool() noexcept { return fPool; }
  /// The tables of the program being written.
  [[nodiscard]] Tables& Data() noexcept { return *fTables; }
  /// The value of a constant.
  [[nodiscard]] const Cell& ConstantCell(Operand operand) const { return fTables->constants[operand.Index()]; }

  [[nodiscard]] SlotCounter& Slots() noexcept { return fSlots; }

  [[nodiscard]] CompiledValue Constant(const Cell& cell, DataType type);
  /// Adds an instruction whose result, of data type `type`, gets a slot of its own. If all operands are constants, so
  /// is the result, and there is no instruction.
  CompiledValue Emit(OpCode operation, const std::vector<Operand>& operands, std::uint32_t data, DataType type);
  /// The value as one of type `to`, converted while it is compiled if it is a constant. Throws an error about `element`
  /// if there is no conversion, or if the constant is no value of the type.
  [[nodiscard]] CompiledValue Converted(const CompiledValue& value, DataType to, const KelXML_1_3::Element& element);
  /// The slot of the value; a constant is copied into one.
  [[nodiscard]] std::uint32_t SlotOf(const CompiledValue& value);

  /// Hands over the code written so far and begins the next program.
  [[nodiscard]] Program Finish();

 private:
  CompiledValue Append(Instruction instruction, const std::vector<Operand>& operands, DataType type);
  /// The result of constants; nothing if it is a text that the program had better make than keep.
  std::optional<CompiledValue> Fold(const Instruction& instruction, const std::vector<Operand>& operands,
                                    DataType type);
  /// A cell that outlives the texts that were made for it.
  Cell Kept(const Cell& cell);
  Cell ConvertedConstant(const Cell& cell, DataType from, DataType to, const KelXML_1_3::Element& element);

  TextPool& fPool;
  SlotCounter& fSlots;
  std::vector<Instruction> fInstructions;
  std::vector<Operand> fOperands;
  std::unique_ptr<Tables> fTables;
};

/// A literal of the document as a cell of type `type`. Throws an error about `element` if it is none.
[[nodiscard]] Cell ReadTextLiteral(const KelXML_1_3::Element& element, std::string_view text, DataType type,
                                   TextPool& pool);
/// The same for a required attribute.
[[nodiscard]] Cell ReadLiteralOf(const KelXML_1_3::Element& element, std::string_view attribute, DataType type,
                                 TextPool& pool);
/// The same for an optional attribute, whose absence is missing.
[[nodiscard]] Cell ReadOptionalLiteralOf(const KelXML_1_3::Element& element, std::string_view attribute, DataType type,
                                         TextPool& pool);

}  // namespace KelTransformNS
