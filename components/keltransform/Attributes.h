#pragma once

#include <array>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "components/kelparsexml/ElementTree.h"
#include "components/keltransform/Cell.h"
#include "scoring/common/KelExport.h"

namespace KelTransformNS {

/// The "dataType" of an element, also under the name "datatype" that some producers write. Throws `PmmlError` for an
/// unknown type.
[[nodiscard]] KEL_EXPORT std::optional<DataType> ReadDataType(const KelXML_1_3::Element& element);
/// The "optype" of an element. Throws `PmmlError` for an unknown one.
[[nodiscard]] KEL_EXPORT std::optional<OpType> ReadOpType(const KelXML_1_3::Element& element);

/// The place in `names` of an attribute's value. Throws `PmmlError`, which lists the names, for any other value.
[[nodiscard]] std::size_t ReadChoice(const KelXML_1_3::Element& element, std::string_view attribute,
                                     const std::string_view* names, std::size_t count);

/// An attribute that names one of a few values: `Enum` counts them in the order of `names`; its absence is `otherwise`.
template <typename Enum, std::size_t kCount>
[[nodiscard]] Enum ReadEnum(const KelXML_1_3::Element& element, std::string_view attribute,
                            const std::array<std::string_view, kCount>& names, Enum otherwise) {
  if (!element.Attribute(attribute)) return otherwise;
  return static_cast<Enum>(ReadChoice(element, attribute, names.data(), kCount));
}

/// Whether an element has no influence on results wherever it stands: "Extension" and names that begin with "X-".
[[nodiscard]] KEL_EXPORT bool IsIgnorable(const KelXML_1_3::Element& element) noexcept;
/// Throws for the first child of `element` that is neither among `known` nor ignorable: leaving out what isn't
/// understood could change the results.
KEL_EXPORT void RefuseUnknownChildren(const KelXML_1_3::Element& element, std::span<const std::string_view> known);
inline void RefuseUnknownChildren(const KelXML_1_3::Element& element, std::initializer_list<std::string_view> known) {
  RefuseUnknownChildren(element, std::span(known.begin(), known.size()));
}
/// Throws for a second child of one of the names, of which an element may have one only: the reader would pass over it.
KEL_EXPORT void RefuseSecond(const KelXML_1_3::Element& element, std::initializer_list<std::string_view> names);
/// `RefuseUnknownChildren` for an element that may hold expressions.
void RefuseUnknownBesideExpressions(const KelXML_1_3::Element& element, std::initializer_list<std::string_view> known);

/// A name without the prefix of its namespace, as elements are named.
[[nodiscard]] KEL_EXPORT std::string_view LocalName(std::string_view name) noexcept;

/// How PMML's rules write a text into an error.
[[nodiscard]] std::string Quoted(std::string_view text);

}  // namespace KelTransformNS
