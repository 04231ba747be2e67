#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "components/kelparsexml/ElementTree.h"
#include "components/keltransform/Cell.h"
#include "components/keltransform/Hashing.h"

namespace KelTransformNS {

/// A "DefineFunction" of a dictionary. What refers to the document lives as long as its tree.
struct DeclaredFunction {
  std::string_view name;
  std::vector<std::optional<DataType>> parameters;  ///< their types, where they have one
  std::unordered_map<std::string_view, std::size_t, NameHash> parameterByName;
  std::optional<DataType> type;  ///< of the result
  KelXML_1_3::Element body;
  std::size_t visibleDictionaries =
      0;  ///< the body sees the functions of so many dictionaries, the last of them its own
};

/// The functions of the dictionaries that were declared so far, one scope inside the other.
class DeclaredFunctions {
 public:
  using Scope = std::unordered_map<std::string_view, DeclaredFunction, NameHash>;

  /// The "DefineFunction" children of the dictionary that will be declared next. Throws `PmmlError` for a malformed
  /// one, or two of one name.
  [[nodiscard]] Scope Read(const KelXML_1_3::Element& dictionary) const;
  /// Makes them the innermost scope.
  void Declare(Scope scope);

  /// The function of that name in the innermost of the first `dictionaries` that has one; null if none has. It lives as
  /// long as this object.
  [[nodiscard]] const DeclaredFunction* Find(std::string_view name, std::size_t dictionaries) const;

 private:
  std::deque<Scope> fScopes;  // their functions keep their addresses
};

}  // namespace KelTransformNS
