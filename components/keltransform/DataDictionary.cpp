#include "components/keltransform/DataDictionary.h"

#include <array>
#include <limits>
#include <optional>

#include "components/keltransform/Attributes.h"

namespace KelTransformNS {

using KelXML_1_3::Element;

namespace {

enum class Closure { kOpenOpen, kOpenClosed, kClosedOpen, kClosedClosed };
constexpr std::array<std::string_view, 4> kClosureNames = {"openOpen", "openClosed", "closedOpen", "closedClosed"};
constexpr std::array<std::string_view, 3> kPropertyNames = {"valid", "invalid", "missing"};

FieldDeclaration::DeclaredValue ReadDeclaredValue(const Element& element) {
  using DeclaredValue = FieldDeclaration::DeclaredValue;
  RefuseUnknownChildren(element, {});
  const std::string value(element.Required("value"));
  const std::string displayValue(element.Attribute("displayValue").value_or(value));
  return {value, displayValue, ReadEnum(element, "property", kPropertyNames, DeclaredValue::kValid)};
}

DataType RequiredDataType(const Element& element) {
  const std::optional<DataType> type = ReadDataType(element);
  if (!type) (void)element.Required("dataType");  // throws
  return *type;
}

FieldDeclaration ReadDataField(const Element& element) {
  RefuseUnknownChildren(element, {"Value", "Interval"});
  FieldDeclaration field{};
  field.name = element.Required("name");
  field.dataType = RequiredDataType(element);
  field.opType = ReadOpType(element).value_or(ImpliedOpType(field.dataType));
  for (Element child = element.FirstChild(); child; child = child.NextSibling()) {
    if (child.Is("Value")) field.values.push_back(ReadDeclaredValue(child));
    if (child.Is("Interval")) field.intervals.push_back(ReadInterval(child, field.dataType));
  }
  return field;
}

double ReadMargin(const Element& element, std::string_view attribute, double otherwise, DataType type) {
  const double margin = element.Number(attribute, otherwise);
  if (margin != margin) throw element.AttributeError(attribute, "is no number");
  return InPrecisionOf(type, margin);
}

}  // namespace

Interval ReadInterval(const Element& element, DataType type) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  RefuseUnknownChildren(element, {});
  const auto closure = static_cast<Closure>(ReadChoice(element, "closure", kClosureNames.data(), kClosureNames.size()));
  if (!element.Attribute("leftMargin") && !element.Attribute("rightMargin")) throw element.Error("it has no margin");
  const Interval interval = {ReadMargin(element, "leftMargin", -kInfinity, type),
                             ReadMargin(element, "rightMargin", kInfinity, type),
                             closure == Closure::kClosedOpen || closure == Closure::kClosedClosed,
                             closure == Closure::kOpenClosed || closure == Closure::kClosedClosed};
  if (interval.left > interval.right) throw element.AttributeError("leftMargin", "lies above the right margin");
  return interval;
}

// A taxonomy plays no part in a score.
DataDictionary::DataDictionary(const Element& element) {
  RefuseUnknownChildren(element, {"DataField", "Taxonomy"});
  for (Element child = element.Child("DataField"); child; child = child.Next("DataField")) {
    fFields.push_back(ReadDataField(child));
    const bool isNew = fByName.emplace(fFields.back().name, fFields.size() - 1).second;
    if (!isNew) throw child.AttributeError("name", "stands in the dictionary twice");
  }
}

const FieldDeclaration* DataDictionary::Find(std::string_view name) const {
  const auto found = fByName.find(name);
  return found == fByName.end() ? nullptr : &fFields[found->second];
}

}  // namespace KelTransformNS
