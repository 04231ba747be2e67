#include "components/keltransform/expressions/Patterns.h"

#include <memory>
#include <string>

#include "components/keltransform/Attributes.h"
#include "components/keltransform/functions/DateFunctions.h"
#include "components/keltransform/functions/NumberFormat.h"

namespace KelTransformNS {

namespace {

// The text of a constant; null for any other argument.
const std::string* FindText(const Argument& argument, const CodeBuilder& code) {
  if (!argument.value.operand.IsConstant()) return nullptr;
  const Cell& cell = code.ConstantCell(argument.value.operand);
  return cell.state == Cell::kText ? cell.text : nullptr;
}

const std::string& RequiredText(const Argument& pattern, const CodeBuilder& code) {
  const std::string* const text = FindText(pattern, code);
  if (text == nullptr) throw pattern.element.Error("a regular expression must be a constant text");
  return *text;
}

void CheckReplacement(const RegularExpression& expression, const Argument& replacement, const CodeBuilder& code) {
  const std::string* const text = FindText(replacement, code);
  if (text == nullptr || expression.TakesReplacement(*text)) return;
  throw replacement.element.Error(Quoted(*text) + " refers to a group that the pattern doesn't have");
}

}  // namespace

void CheckFormat(const Function& function, const std::vector<Argument>& arguments, const CodeBuilder& code) {
  const bool isOfNumber = function.text == FormatNumber;
  if (!isOfNumber && function.text != FormatDatetime) return;
  const Argument& pattern = arguments[1];
  const std::string* const text = FindText(pattern, code);
  if (text == nullptr || (isOfNumber ? IsNumberPattern(*text) : IsDatetimePattern(*text))) return;
  throw pattern.element.Error(Quoted(*text) + " is no pattern that is supported");
}

bool TakesRegularExpression(const Function& function) noexcept {
  return function.operation == OpCode::kMatches || function.operation == OpCode::kReplace;
}

CompiledValue EmitPatternFunction(const Function& function, const std::vector<Argument>& arguments, CodeBuilder& code) {
  auto expression = std::make_unique<RegularExpression>(RequiredText(arguments[1], code), true, arguments[1].element);
  std::vector<Operand> operands = {arguments[0].value.operand};
  if (arguments.size() > 2) {
    CheckReplacement(*expression, arguments[2], code);
    operands.push_back(arguments[2].value.operand);
  }
  auto& patterns = code.Data().patterns;
  patterns.push_back(std::move(expression));
  return code.Emit(function.operation, operands, static_cast<std::uint32_t>(patterns.size() - 1),
                   ResultType(function, arguments));
}

}  // namespace KelTransformNS
