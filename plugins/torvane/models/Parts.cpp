#include "plugins/torvane/models/Parts.h"

#include <string>

#include "components/keltransform/ExpressionCompiler.h"

namespace Torvane {

Element OnlyChild(const Element& element, std::string_view name) {
  const Element child = element.RequiredChild(name);
  if (const Element second = child.Next(name)) throw second.Error("is a second one");
  return child;
}

void CheckCount(const Element& element, std::string_view attribute, std::size_t count) {
  const std::optional<int> told = element.Integer(attribute);
  if (!told || (*told >= 0 && static_cast<std::size_t>(*told) == count)) return;
  throw element.AttributeError(attribute, "isn't what is there: " + std::to_string(count));
}

KelXML_1_3::PmmlMatrix ReadMatrix(const Element& matrix, Expansion& expansion) {
  KelXML_1_3::PmmlMatrix numbers = KelXML_1_3::ReadMatrix(matrix);
  expansion.Add(numbers.Rows() * numbers.Columns() * sizeof(double), matrix);
  return numbers;
}

Element OnlyExpression(const Element& derivedField) {
  (void)KelTransformNS::ReadOpType(derivedField);  // without influence
  (void)KelTransformNS::ReadDataType(derivedField);
  return KelTransformNS::ExpressionOf(derivedField);
}

}  // namespace Torvane
