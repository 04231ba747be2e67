#include "components/keltransform/Attributes.h"
#include "components/keltransform/expressions/Expressions.h"

namespace KelTransformNS {

using KelXML_1_3::Element;

namespace {

DiscretizeTable::Bin ReadBin(const Element& element, DataType input, DataType type, TextPool& pool) {
  RefuseUnknownChildren(element, {"Interval"});
  RefuseSecond(element, {"Interval"});
  return {ReadInterval(element.RequiredChild("Interval"), input), ReadLiteralOf(element, "binValue", type, pool)};
}

std::vector<DiscretizeTable::Bin> ReadBins(const Element& element, DataType input, DataType type, TextPool& pool) {
  std::vector<DiscretizeTable::Bin> bins;
  for (Element child = element.Child("DiscretizeBin"); child; child = child.Next("DiscretizeBin")) {
    bins.push_back(ReadBin(child, input, type, pool));
  }
  return bins;
}

}  // namespace

// Without bins this tells missing inputs from others, which may then be of any type.
CompiledValue CompileDiscretize(const Element& element, ExpressionContext& context) {
  const DataType type = LiteralType(element, context);
  TextPool& pool = context.code.Pool();
  RefuseUnknownChildren(element, {"DiscretizeBin"});
  const bool hasBins = static_cast<bool>(element.Child("DiscretizeBin"));
  const CompiledValue input = hasBins ? CompileNumericField(element, context) : CompileField(element, context);
  const std::vector<DiscretizeTable::Bin> bins = ReadBins(element, input.type, type, pool);
  const Cell whenMissing = ReadOptionalLiteralOf(element, "mapMissingTo", type, pool);
  const Cell otherwise = ReadOptionalLiteralOf(element, "defaultValue", type, pool);
  const std::uint32_t entry = context.code.Data().discretize.Append(bins, whenMissing, otherwise);
  return context.code.Emit(OpCode::kDiscretize, {input.operand}, entry, type);
}

}  // namespace KelTransformNS
