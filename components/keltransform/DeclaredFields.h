#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "components/kelparsexml/ElementTree.h"
#include "components/keltransform/ExpressionCompiler.h"
#include "components/keltransform/Hashing.h"

namespace KelTransformNS {

/// A "DerivedField" of a dictionary, and how far its compilation is.
struct DeclaredField {
  enum State { kNew, kOnPath, kCompiled };

  std::string name;
  KelXML_1_3::Element element;
  std::size_t visibleDictionaries;  ///< the field sees so many of the dictionaries, the last of them its own
  State state = kNew;
  std::optional<ResolvedField> resolved = std::nullopt;  ///< of a compiled one
};

/// The derived fields of the dictionaries that were declared so far, one scope inside the other.
class DeclaredFields {
 public:
  /// The "DerivedField" children of a dictionary become the innermost scope. Throws `PmmlError` for a field without a
  /// name, or two of one name, and then declares nothing.
  void Declare(const KelXML_1_3::Element& dictionary);

  /// The field of that name in the innermost of the first `dictionaries` that has one; null if none has.
  [[nodiscard]] DeclaredField* Find(std::string_view name, std::size_t dictionaries);
  /// Takes a field out of the innermost scope.
  void Withdraw(std::string_view name);
  [[nodiscard]] std::size_t DictionaryCount() const noexcept { return fScopes.size(); }
  /// In order of declaration; references to the fields live as long as this object.
  [[nodiscard]] const std::deque<DeclaredField>& All() const noexcept { return fFields; }

 private:
  using Scope = std::unordered_map<std::string_view, DeclaredField*, NameHash>;

  void DeclareInto(Scope& scope, const KelXML_1_3::Element& field);

  std::deque<DeclaredField> fFields;
  std::vector<Scope> fScopes;
};

}  // namespace KelTransformNS
