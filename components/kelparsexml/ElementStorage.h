#pragma once

#include <cstddef>
#include <cstdint>

#include "components/kelparsexml/ChunkedArray.h"
#include "components/kelparsexml/ElementTree.h"
#include "components/kelparsexml/NameTable.h"
#include "components/kelparsexml/TextArena.h"

namespace KelXML_1_3 {

/// One element. Elements stand in document order, so its first child, if it has one, is the next record, and its
/// attributes end where those of the next record begin. 20 bytes: a document has hundreds of thousands of them.
struct ElementRecord {
  NameTable::Id name : 31;
  NameTable::Id hasChildren : 1;
  std::uint32_t line;
  std::uint32_t nextSibling;  // 0 for none
  std::uint32_t firstAttribute;
  TextArena::Ref text;
};

struct AttributeRecord {
  NameTable::Id name;
  TextArena::Ref value;
};

struct ElementTree::Storage {
  NameTable names;
  TextArena texts;
  ChunkedArray<ElementRecord> elements;
  ChunkedArray<AttributeRecord> attributes;

  [[nodiscard]] std::size_t AttributesEnd(std::size_t element) const noexcept {
    return element + 1 < elements.size() ? elements[element + 1].firstAttribute : attributes.size();
  }

  /// How far the storage is filled.
  struct Mark {
    std::size_t elements = 0;
    std::size_t attributes = 0;
    TextArena::Mark texts{};
  };
  [[nodiscard]] Mark End() const noexcept { return {elements.size(), attributes.size(), texts.End()}; }
  /// Drops what was added since `End` gave the mark, but for the names.
  void Truncate(const Mark& mark) {
    elements.Truncate(mark.elements);
    attributes.Truncate(mark.attributes);
    texts.Truncate(mark.texts);
  }
};

}  // namespace KelXML_1_3
