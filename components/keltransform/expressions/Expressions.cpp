#include "components/keltransform/expressions/Expressions.h"

#include <array>

#include "components/keltransform/Attributes.h"

namespace KelTransformNS {

using KelXML_1_3::Element;

namespace {

[[noreturn]] CompiledValue RefuseExpression(const Element& element, ExpressionContext&) {
  constexpr char kReason[] = "this expression isn't supported";
  throw element.Attribute("function") ? element.AttributeError("function", kReason) : element.Error(kReason);
}

struct ExpressionKind {
  std::string_view name;
  CompiledValue (*compile)(const Element&, ExpressionContext&);
};

constexpr std::array<ExpressionKind, 10> kExpressionKinds = {{
    {"Constant", CompileConstant},
    {"FieldRef", CompileFieldRef},
    {"NormContinuous", CompileNormContinuous},
    {"NormDiscrete", CompileNormDiscrete},
    {"Discretize", CompileDiscretize},
    {"MapValues", CompileMapValues},
    {"Apply", CompileApply},
    {"Aggregate", CompileAggregate},
    {"TextIndex", CompileTextIndex},
    {"Lag", RefuseExpression},
}};

const ExpressionKind* FindKind(std::string_view name) noexcept {
  for (const ExpressionKind& kind : kExpressionKinds) {
    if (kind.name == name) return &kind;
  }
  return nullptr;
}

// Elements whose content is data or free, so that nothing in it refers to a field.
bool HoldsNoReferences(const Element& element) {
  return element.Is("InlineTable") || element.Is("TableLocator") || element.Is("Extension");
}

}  // namespace

CompiledValue CompileAnyExpression(const Element& expression, ExpressionContext& context) {
  const ExpressionKind* const kind = FindKind(expression.Name());
  if (kind == nullptr) throw expression.Error("this is no expression");
  return kind->compile(expression, context);
}

std::string_view FieldAttribute(const Element& element) noexcept {
  return element.Is("TextIndex") ? "textField" : "field";
}

bool IsExpression(std::string_view elementName) noexcept { return FindKind(elementName) != nullptr; }

std::vector<std::string_view> CollectReferences(const Element& expression) {
  std::vector<std::string_view> names;
  std::vector<Element> pending = {expression};  // a stack of our own: documents nest deeper than a thread's may be
  while (!pending.empty()) {
    const Element element = pending.back();
    pending.pop_back();
    if (const auto name = element.Attribute(FieldAttribute(element))) names.push_back(*name);
    for (Element child = element.FirstChild(); child; child = child.NextSibling()) {
      if (!HoldsNoReferences(child)) pending.push_back(child);
    }
  }
  return names;
}

CompiledValue CompileField(const Element& element, ExpressionContext& context) {
  return context.findField(element.Required("field"), element);
}

CompiledValue CompileNumericField(const Element& element, ExpressionContext& context) {
  const CompiledValue field = CompileField(element, context);
  return IsText(field.type) ? context.code.Converted(field, DataType::kDouble, element) : field;
}

DataType LiteralType(const Element& element, const ExpressionContext& context) {
  const std::optional<DataType> own = ReadDataType(element);
  return own ? *own : context.wantedType.value_or(DataType::kString);
}

}  // namespace KelTransformNS
