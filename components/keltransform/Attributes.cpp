#include "components/keltransform/Attributes.h"

#include <algorithm>

#include "components/keltransform/expressions/Expressions.h"

namespace KelTransformNS {

using KelXML_1_3::Element;

namespace {

template <typename IsKnown>
void RefuseOthers(const Element& element, IsKnown isKnown) {
  for (Element child = element.FirstChild(); child; child = child.NextSibling()) {
    if (isKnown(child.Name()) || IsIgnorable(child)) continue;
    throw child.Error("is not supported in <" + std::string(element.Name()) + ">");
  }
}

bool Contains(std::span<const std::string_view> names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

std::optional<DataType> ReadDataType(const Element& element) {
  for (const std::string_view attribute : {"dataType", "datatype"}) {
    const auto name = element.Attribute(attribute);
    DataType type{};
    if (!name) continue;
    if (!ParseDataType(*name, type)) throw element.AttributeError(attribute, "is no data type");
    return type;
  }
  return std::nullopt;
}

std::optional<OpType> ReadOpType(const Element& element) {
  const auto name = element.Attribute("optype");
  OpType type{};
  if (!name) return std::nullopt;
  if (!ParseOpType(*name, type)) throw element.AttributeError("optype", "is none of categorical, ordinal, continuous");
  return type;
}

std::size_t ReadChoice(const Element& element, std::string_view attribute, const std::string_view* names,
                       std::size_t count) {
  const std::string_view value = element.Required(attribute);
  std::string list;
  for (std::size_t index = 0; index < count; ++index) {
    if (names[index] == value) return index;
    list.append(index == 0 ? "" : ", ").append(names[index]);
  }
  throw element.AttributeError(attribute, "is none of " + list);
}

bool IsIgnorable(const Element& element) noexcept {
  return element.Is("Extension") || element.Name().starts_with("X-");
}

void RefuseUnknownChildren(const Element& element, std::span<const std::string_view> known) {
  RefuseOthers(element, [&](std::string_view name) { return Contains(known, name); });
}

void RefuseSecond(const Element& element, std::initializer_list<std::string_view> names) {
  for (const std::string_view name : names) {
    const Element second = element.Child(name).Next(name);
    if (second) throw second.Error("is a second one in <" + std::string(element.Name()) + ">");
  }
}

void RefuseUnknownBesideExpressions(const Element& element, std::initializer_list<std::string_view> known) {
  RefuseOthers(element, [&](std::string_view name) {
    return IsExpression(name) || Contains({known.begin(), known.size()}, name);
  });
}

std::string_view LocalName(std::string_view name) noexcept { return name.substr(name.rfind(':') + 1); }

std::string Quoted(std::string_view text) { return '"' + std::string(text) + '"'; }

}  // namespace KelTransformNS
