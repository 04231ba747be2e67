#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "components/kelparsexml/ElementTree.h"
#include "components/keltransform/Cell.h"

namespace KelTransformNS {

/// The "dataType" of an element, also under the name "datatype" that some producers write. Throws `PmmlError` for an
/// unknown type.
[[nodiscard]] std::optional<DataType> ReadDataType(const KelXML_1_3::Element& element);
/// The "optype" of an element. Throws `PmmlError` for an unknown one.
[[nodiscard]] std::optional<OpType> ReadOpType(const KelXML_1_3::Element& element);

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

/// A name without the prefix of its namespace, as elements are named.
[[nodiscard]] std::string_view LocalName(std::string_view name) noexcept;

/// How PMML's rules write a text into an error.
[[nodiscard]] std::string Quoted(std::string_view text);

}  // namespace KelTransformNS
