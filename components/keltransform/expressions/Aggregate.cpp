#include <array>
#include <string>

#include "components/keltransform/Attributes.h"
#include "components/keltransform/expressions/Expressions.h"

namespace KelTransformNS {

using KelXML_1_3::Element;

namespace {

constexpr std::array<std::string_view, 6> kFunctions = {"count", "sum", "average", "min", "max", "multiset"};

GroupFunction ReadFunction(const Element& element) {
  const std::size_t function = ReadChoice(element, "function", kFunctions.data(), kFunctions.size());
  if (kFunctions[function] == "multiset") {
    throw element.AttributeError("function", "isn't supported: a field has one value, not a list of them");
  }
  return static_cast<GroupFunction>(function);
}

// A record holds the values of one group, and nothing about what it was chosen by.
void RefuseChoice(const Element& element) {
  for (const std::string_view attribute : {"groupField", "sqlWhere"}) {
    if (element.Attribute(attribute)) {
      throw element.AttributeError(attribute, "isn't supported: a record holds the values of one group only");
    }
  }
}

DataType ResultType(const Element& element, GroupFunction function, DataType type) {
  const bool isPlain = type <= DataType::kBoolean && !IsText(type);
  switch (function) {
    case GroupFunction::kCount:
      return DataType::kInteger;
    case GroupFunction::kMin:
    case GroupFunction::kMax:
      if (!IsText(type)) return type;
      break;
    case GroupFunction::kSum:
      if (type == DataType::kInteger || type == DataType::kBoolean) return DataType::kInteger;
      [[fallthrough]];
    case GroupFunction::kAverage:
      if (isPlain) return DataType::kDouble;
      break;
  }
  throw element.AttributeError("function", "isn't for values of the type " + std::string(DataTypeName(type)));
}

}  // namespace

// The values are joined where the record is read, so there is nothing left to compute here.
CompiledValue CompileAggregate(const Element& element, ExpressionContext& context) {
  RefuseUnknownChildren(element, {});
  const GroupFunction function = ReadFunction(element);
  RefuseChoice(element);
  const CompiledValue joined = context.findGroup(element.Required("field"), function, element);
  return {joined.operand, ResultType(element, function, joined.type)};
}

}  // namespace KelTransformNS
