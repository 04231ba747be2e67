#include "components/keltransform/Attributes.h"
#include "components/keltransform/expressions/Expressions.h"

namespace KelTransformNS {

using KelXML_1_3::Element;

// A plain reference needs no code: its value is the field's own cell.
CompiledValue CompileFieldRef(const Element& element, ExpressionContext& context) {
  RefuseUnknownChildren(element, {});
  const CompiledValue field = CompileField(element, context);
  const Cell whenMissing = ReadOptionalLiteralOf(element, "mapMissingTo", field.type, context.code.Pool());
  if (whenMissing.IsMissing()) return field;
  const CompiledValue replacement = context.code.Constant(whenMissing, field.type);
  return context.code.Emit(OpCode::kReplaceMissing, {field.operand, replacement.operand}, 0, field.type);
}

}  // namespace KelTransformNS
