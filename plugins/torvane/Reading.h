#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "components/kelparsexml/ElementTree.h"
#include "components/keltransform/Attributes.h"
#include "components/keltransform/Cell.h"

namespace Torvane {

using KelXML_1_3::Element;
using KelXML_1_3::PmmlError;

/// A map from names of the document, which nobody can choose so that they are slow to find.
template <typename T>
using NameMap = std::map<std::string, T, std::less<>>;

/// What every reader of model elements shares: words of enumerated attributes, unknown content, literals.

/// An attribute's word among those that a table knows. `absent` if the attribute isn't there; an unknown word throws
/// and lists the known ones.
template <typename Enum>
struct Word {
  const char* text;
  Enum value;
};

[[noreturn]] void ThrowUnknownWord(const Element& element, std::string_view attribute, const std::string& knownWords);

template <typename Enum, std::size_t kCount>
Enum ReadWord(const Element& element, std::string_view attribute, const Word<Enum> (&words)[kCount], Enum absent) {
  const std::optional<std::string_view> text = element.Attribute(attribute);
  if (!text) return absent;
  for (const Word<Enum>& word : words) {
    if (*text == word.text) return word.value;
  }
  std::string known;
  for (const Word<Enum>& word : words) known += (known.empty() ? "" : ", ") + std::string(word.text);
  ThrowUnknownWord(element, attribute, known);
}

/// The same for an attribute that must be there.
template <typename Enum, std::size_t kCount>
Enum ReadRequiredWord(const Element& element, std::string_view attribute, const Word<Enum> (&words)[kCount]) {
  (void)element.Required(attribute);
  return ReadWord(element, attribute, words, words[0].value);
}

using KelTransformNS::IsIgnorable;
using KelTransformNS::RefuseSecond;
using KelTransformNS::RefuseUnknownChildren;

/// Whether an element is a model by the older way of composing them, without a schema of its own.
[[nodiscard]] bool IsComposed(const Element& model) noexcept;
/// The same as `RefuseUnknownChildren` for a model element: what every kind may hold (each but once), and the elements
/// of this kind's body.
void RefuseUnknownModelChildren(const Element& model, std::initializer_list<std::string_view> body);

/// A number that is neither infinite nor NaN, which throw. Nothing if the attribute isn't there.
[[nodiscard]] std::optional<double> ReadFinite(const Element& element, std::string_view attribute);
/// The same for an attribute that must be there.
[[nodiscard]] double RequiredFinite(const Element& element, std::string_view attribute);

/// A literal of the document that a field of a type is compared with: numbers for all types but strings, where it is
/// a text of the pool. An integer field may be compared with 2.5, a boolean one with 0.5. `what` names the attribute
/// or element whose text it is; a text that isn't of the type throws.
[[nodiscard]] KelTransformNS::Cell ReadComparand(const Element& element, std::string_view what, std::string_view text,
                                                 KelTransformNS::DataType type, KelTransformNS::TextPool& pool);
/// The same without a result for a text that isn't of the type.
[[nodiscard]] std::optional<KelTransformNS::Cell> FindComparand(std::string_view text, KelTransformNS::DataType type,
                                                                KelTransformNS::TextPool& pool);

/// "'text'", shortened if it is long, for reasons.
[[nodiscard]] std::string Quoted(std::string_view text);

}  // namespace Torvane
