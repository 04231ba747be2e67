#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <xercesc/util/XercesDefs.hpp>

#include "components/kelparsexml/PmmlError.h"
#include "scoring/common/KelExport.h"

XERCES_CPP_NAMESPACE_BEGIN
class DOMElement;
XERCES_CPP_NAMESPACE_END

namespace KelXML_1_3 {

class ElementTree;

/// A handle on one element of an `ElementTree`: two words, copied freely, valid while the tree lives. A default one
/// is no element; asking it anything gives the empty answer, so that optional parts read without a test at each step.
class KEL_EXPORT Element {
 public:
  Element() = default;

  explicit operator bool() const noexcept { return fTree != nullptr; }
  /// Whether both are the same element of the same tree.
  friend bool operator==(const Element&, const Element&) = default;

  /// The element's local name, without a prefix.
  [[nodiscard]] std::string_view Name() const noexcept;
  [[nodiscard]] bool Is(std::string_view name) const noexcept { return Name() == name; }
  /// The value of an attribute by its qualified name, UTF-8; nothing if it is absent (an empty one is there).
  [[nodiscard]] std::optional<std::string_view> Attribute(std::string_view name) const noexcept;
  /// In document order; from a DOM, in the order of their names.
  [[nodiscard]] int AttributeCount() const noexcept;
  [[nodiscard]] std::string_view AttributeName(int index) const noexcept;
  [[nodiscard]] std::string_view AttributeValue(int index) const noexcept;
  /// The character data directly in the element, UTF-8, all pieces joined, as it stands. A piece that is only white
  /// space is left out if the element has child elements; without any, it is kept.
  [[nodiscard]] std::string_view Text() const noexcept;
  /// The line where the start tag ends, from 1; 0 where it isn't known (a tree made from a DOM).
  [[nodiscard]] int Line() const noexcept;

  [[nodiscard]] Element FirstChild() const noexcept;
  [[nodiscard]] Element NextSibling() const noexcept;
  /// The first child, or the next sibling, of that name.
  [[nodiscard]] Element Child(std::string_view name) const noexcept;
  [[nodiscard]] Element Next(std::string_view name) const noexcept;

  // Reading with a clear error. Each throws `PmmlError` that names element, attribute, text and line.

  /// The attribute, which must be there.
  [[nodiscard]] std::string_view Required(std::string_view attribute) const;
  /// The child element, which must be there.
  [[nodiscard]] Element RequiredChild(std::string_view name) const;
  /// A number as PMML writes them (white space around it is trimmed; "INF", "-INF", "NaN" and exponents pass, and
  /// "Infinity" as some producers write it), nothing if the attribute is absent. One beyond the range of a double is
  /// the nearest that there is: an infinity, or 0.
  [[nodiscard]] std::optional<double> Number(std::string_view attribute) const;
  [[nodiscard]] double Number(std::string_view attribute, double otherwise) const;
  [[nodiscard]] double RequiredNumber(std::string_view attribute) const;
  /// A number of whole value, however it is written: "3", "3.0", "1e3".
  [[nodiscard]] std::optional<int> Integer(std::string_view attribute) const;
  /// "true", "false", "1" and "0".
  [[nodiscard]] bool Boolean(std::string_view attribute, bool otherwise) const;
  /// An error about this element: "<TreeModel> line 12: " and `reason`.
  [[nodiscard]] PmmlError Error(const std::string& reason) const;
  /// The same about one of its attributes, with the attribute's text: "<Node recordCount="x"> line 12: " and `reason`.
  [[nodiscard]] PmmlError AttributeError(std::string_view attribute, const std::string& reason) const;

 private:
  friend class ElementTree;
  friend class ElementTreeBuilder;
  Element(const ElementTree* tree, std::uint32_t index) noexcept : fTree(tree), fIndex(index) {}

  const ElementTree* fTree = nullptr;
  std::uint32_t fIndex = 0;
};

/// A compact, read-only tree of a document's elements: names interned, text in an arena, UTF-8. Comments, processing
/// instructions, and white space between elements are not kept.
///
/// It is what builders read PMML from, whichever way a document came, and dies when they are done. It holds no
/// Xerces object. Once made it doesn't change, so any thread may read it.
class KEL_EXPORT ElementTree {
 public:
  ElementTree(const ElementTree&) = delete;
  ElementTree& operator=(const ElementTree&) = delete;
  ~ElementTree();

  /// Reads a document from the stream's current position through `KelXInputSource`, in one SAX2 pass. If `modelName`
  /// isn't empty, the models under the root (all elements there but the header, the build task, the dictionaries and
  /// extensions) are kept only as far as they matter: the first element of that name wholly, every other model as a
  /// bare element without attributes or content. An element with more than 1,000 attributes is refused. The XML
  /// platform must be up. Throws `PmmlError` (with line and column for malformed XML) and `std::bad_alloc`.
  static std::unique_ptr<ElementTree> Read(std::istream& stream, std::string_view modelName = {});
  /// Copies a DOM element with all its content; the parent's children aren't looked at. The same rule for
  /// `modelName`, where `root` is the document's root element.
  static std::unique_ptr<ElementTree> FromDom(const xercesc::DOMElement& root, std::string_view modelName = {});

  [[nodiscard]] Element Root() const noexcept;

 private:
  friend class Element;
  friend class ElementTreeBuilder;
  struct Storage;
  ElementTree();

  std::unique_ptr<Storage> fStorage;
};

/// Reads a whole text as a number by PMML's lexical rules, see `Element::Number`; nothing if it is none.
KEL_EXPORT std::optional<double> ParsePmmlNumber(std::string_view text);

}  // namespace KelXML_1_3
