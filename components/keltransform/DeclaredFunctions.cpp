#include "components/keltransform/DeclaredFunctions.h"

#include <utility>

#include "components/keltransform/Attributes.h"
#include "components/keltransform/ExpressionCompiler.h"

namespace KelTransformNS {

using KelXML_1_3::Element;

namespace {

void ReadParameters(const Element& element, DeclaredFunction& function) {
  const std::string_view kind = "ParameterField";
  for (Element field = element.Child(kind); field; field = field.Next(kind)) {
    RefuseUnknownChildren(field, {});
    (void)ReadOpType(field);  // without influence
    const bool isNew = function.parameterByName.emplace(field.Required("name"), function.parameters.size()).second;
    if (!isNew) throw field.AttributeError("name", "is the name of another parameter as well");
    function.parameters.push_back(ReadDataType(field));
  }
}

DeclaredFunction ReadFunction(const Element& element, std::size_t visibleDictionaries) {
  (void)ReadOpType(element);  // without influence
  DeclaredFunction function;
  function.name = element.Required("name");
  function.type = ReadDataType(element);
  function.body = RequiredExpression(element, {"ParameterField"});
  function.visibleDictionaries = visibleDictionaries;
  ReadParameters(element, function);
  return function;
}

}  // namespace

DeclaredFunctions::Scope DeclaredFunctions::Read(const Element& dictionary) const {
  const std::string_view kind = "DefineFunction";
  Scope scope;
  for (Element child = dictionary.Child(kind); child; child = child.Next(kind)) {
    DeclaredFunction function = ReadFunction(child, fScopes.size() + 1);
    const bool isNew = scope.emplace(function.name, std::move(function)).second;
    if (!isNew) throw child.AttributeError("name", "stands in the dictionary twice");
  }
  return scope;
}

void DeclaredFunctions::Declare(Scope scope) { fScopes.push_back(std::move(scope)); }

const DeclaredFunction* DeclaredFunctions::Find(std::string_view name, std::size_t dictionaries) const {
  while (dictionaries-- > 0) {
    const auto found = fScopes[dictionaries].find(name);
    if (found != fScopes[dictionaries].end()) return &found->second;
  }
  return nullptr;
}

}  // namespace KelTransformNS
