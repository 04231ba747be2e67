#include "components/keltransform/DeclaredFields.h"

#include <utility>

#include "components/keltransform/Attributes.h"

namespace KelTransformNS {

using KelXML_1_3::Element;

void DeclaredFields::Declare(const Element& dictionary) {
  RefuseUnknownChildren(dictionary, {"DerivedField", "DefineFunction"});
  const std::size_t countBefore = fFields.size();
  Scope scope;
  try {
    for (Element child = dictionary.Child("DerivedField"); child; child = child.Next("DerivedField")) {
      DeclareInto(scope, child);
    }
    fScopes.push_back(std::move(scope));
  } catch (...) {
    while (fFields.size() > countBefore) fFields.pop_back();
    throw;
  }
}

void DeclaredFields::DeclareInto(Scope& scope, const Element& field) {
  fFields.push_back({std::string(field.Required("name")), field, fScopes.size() + 1});
  const bool isNew = scope.emplace(fFields.back().name, &fFields.back()).second;
  if (!isNew) throw field.AttributeError("name", "stands in the dictionary twice");
}

DeclaredField* DeclaredFields::Find(std::string_view name, std::size_t dictionaries) {
  while (dictionaries-- > 0) {
    const auto found = fScopes[dictionaries].find(name);
    if (found != fScopes[dictionaries].end()) return found->second;
  }
  return nullptr;
}

void DeclaredFields::Withdraw(std::string_view name) {
  if (!fScopes.empty()) fScopes.back().erase(name);
}

}  // namespace KelTransformNS
