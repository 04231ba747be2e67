#include <cmath>

#include "components/keltransform/Attributes.h"
#include "components/keltransform/expressions/Expressions.h"

namespace KelTransformNS {

using KelXML_1_3::Element;

namespace {

// The type of a constant that nothing gives a type: what its text looks like.
DataType InferType(std::string_view text) {
  const std::optional<double> number = KelXML_1_3::ParsePmmlNumber(text);
  if (!number) return DataType::kString;
  const bool hasFraction = text.find_first_of(".eE") != std::string_view::npos || !std::isfinite(*number);
  return hasFraction ? DataType::kDouble : DataType::kInteger;
}

DataType TypeOf(const Element& element, const ExpressionContext& context) {
  if (const std::optional<DataType> own = ReadDataType(element)) return *own;
  return context.wantedType ? *context.wantedType : InferType(element.Text());
}

bool IsMissing(const Element& element, DataType type) {
  return element.Boolean("missing", false) || (element.Text().empty() && !IsText(type));
}

}  // namespace

CompiledValue CompileConstant(const Element& element, ExpressionContext& context) {
  RefuseUnknownChildren(element, {});
  const DataType type = TypeOf(element, context);
  if (IsMissing(element, type)) return context.code.Constant(Cell::Missing(), type);
  return context.code.Constant(ReadTextLiteral(element, element.Text(), type, context.code.Pool()), type);
}

std::optional<CompiledValue> FindConstantOf(const Element& element, DataType type, CodeBuilder& code) {
  if (IsMissing(element, type)) return code.Constant(Cell::Missing(), type);
  const Cell cell = ReadLiteral(element.Text(), type, code.Pool());
  return cell.IsInvalid() ? std::nullopt : std::optional(code.Constant(cell, type));
}

}  // namespace KelTransformNS
