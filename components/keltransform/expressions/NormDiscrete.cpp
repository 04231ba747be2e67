#include "components/keltransform/Attributes.h"
#include "components/keltransform/expressions/Expressions.h"

namespace KelTransformNS {

using KelXML_1_3::Element;

namespace {

void CheckMethod(const Element& element) {
  const auto method = element.Attribute("method");
  if (method && *method != "indicator") throw element.AttributeError("method", "isn't supported, only indicator is");
}

}  // namespace

CompiledValue CompileNormDiscrete(const Element& element, ExpressionContext& context) {
  RefuseUnknownChildren(element, {});
  CheckMethod(element);
  const CompiledValue input = CompileField(element, context);
  TextPool& pool = context.code.Pool();
  std::vector<Comparison>& comparisons = context.code.Data().comparisons;
  comparisons.push_back({ReadLiteralOf(element, "value", input.type, pool),
                         ReadOptionalLiteralOf(element, "mapMissingTo", DataType::kDouble, pool)});
  const auto entry = static_cast<std::uint32_t>(comparisons.size() - 1);
  return context.code.Emit(OpCode::kEquals, {input.operand}, entry, DataType::kDouble);
}

}  // namespace KelTransformNS
