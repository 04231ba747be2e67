#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "components/kelparsexml/ElementTree.h"
#include "components/keltransform/Cell.h"
#include "components/keltransform/Hashing.h"

namespace KelTransformNS {

/// An "Interval". An absent margin is the infinity of its side.
struct KEL_EXPORT Interval {
  double left;
  double right;
  bool leftClosed;
  bool rightClosed;

  [[nodiscard]] bool Contains(double x) const noexcept {
    return (leftClosed ? x >= left : x > left) && (rightClosed ? x <= right : x < right);
  }
};

/// Reads an "Interval" of values of `type`; its margins are of that type, too. Throws `PmmlError` for an unknown
/// closure, a malformed margin, no margin, or a left margin above the right one.
KEL_EXPORT Interval ReadInterval(const KelXML_1_3::Element& element, DataType type);

/// A "DataField" as the document declares it.
struct FieldDeclaration {
  struct DeclaredValue {
    std::string value;
    std::string displayValue;  ///< the value itself where the document gives none
    enum Property { kValid, kInvalid, kMissing } property;
  };

  std::string name;
  DataType dataType;
  OpType opType;
  std::vector<DeclaredValue> values;  ///< in document order, which is the order of an ordinal field
  std::vector<Interval> intervals;
};

/// The fields that a document declares, in document order. Immutable once read.
class KEL_EXPORT DataDictionary {
 public:
  DataDictionary() = default;
  /// Reads a "DataDictionary" element; no element gives an empty dictionary. Throws `PmmlError`.
  explicit DataDictionary(const KelXML_1_3::Element& element);

  [[nodiscard]] const FieldDeclaration* Find(std::string_view name) const;
  [[nodiscard]] const std::vector<FieldDeclaration>& Fields() const noexcept { return fFields; }

 private:
  std::vector<FieldDeclaration> fFields;
  std::unordered_map<std::string, std::size_t, NameHash, std::equal_to<>> fByName;
};

}  // namespace KelTransformNS
