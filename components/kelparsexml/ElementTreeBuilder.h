#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "components/kelparsexml/ElementStorage.h"
#include "components/kelparsexml/ElementTree.h"

namespace KelXML_1_3 {

/// Puts an `ElementTree` together from a document's events, in document order.
///
/// What is behind the last open element's end is never touched again, and everything is appended in document order:
/// so a finished subtree can be handed over and cut off without a change to the rest.
///
/// `modelName` is the rule of `ElementTree::Read`. Names and values are texts of UTF-16 that end with 0. Throws
/// `PmmlError` if a document is too large for the tree.
class ElementTreeBuilder {
 public:
  /// What becomes of the "Segment" children of the model's first "Segmentation". Pieces are built behind the tree, one
  /// at a time, and aren't linked into it.
  enum class Segments { kInTree, kAsPieces };
  enum class PieceState { kNone, kOpen, kWhole };

  explicit ElementTreeBuilder(std::string_view modelName, Segments segments = Segments::kInTree);

  /// False if the element's attributes don't matter; they may be left out then. Its end must come all the same.
  bool StartElement(const char16_t* qualifiedName, std::size_t line);
  /// Of the element that was started last.
  void AddAttribute(const char16_t* qualifiedName, const char16_t* value);
  /// Character data of the innermost open element; any number of pieces of whole characters.
  void AddText(const char16_t* text, std::size_t size);
  void EndElement();

  /// Whether there is no root yet.
  [[nodiscard]] bool IsEmpty() const noexcept { return fStorage.elements.size() == 0; }
  /// As far as it has been built. What is open has no text yet.
  [[nodiscard]] const ElementTree& Tree() const noexcept { return *fTree; }
  /// The element whose segments are pieces; none as long as it hasn't been started.
  [[nodiscard]] Element Segmentation() const noexcept;
  [[nodiscard]] PieceState State() const noexcept { return fPiece; }
  /// The piece, if it is whole. It must be dropped before anything is built behind it.
  [[nodiscard]] Element Piece() const noexcept;
  /// Gives the memory of the whole piece to what comes next.
  void DropPiece();

  /// The tree, once the root has ended. The builder is used up.
  std::unique_ptr<ElementTree> Finish() { return std::move(fTree); }

 private:
  struct OpenElement {
    std::uint32_t index;
    std::uint32_t lastChild;  // 0 for none
    std::size_t textFrom;     // where its text begins in fText
    bool hasChild;            // a piece counts here
  };

  NameTable::Id InternElement(const char16_t* qualifiedName);
  void Append(NameTable::Id name, std::size_t line, bool isInTree);
  void LinkToParent(std::uint32_t child);
  void NoteStructure(std::string_view name);
  [[nodiscard]] bool IsSkippedModel(std::string_view name);
  [[nodiscard]] bool IsSegmentation(std::string_view name) const;
  [[nodiscard]] bool IsPiece() const;
  void BeginPiece();
  void DropWhiteSpaceRun();

  std::unique_ptr<ElementTree> fTree;
  ElementTree::Storage& fStorage;  // of fTree
  std::string fModelName;
  bool fModelSeen = false;
  std::size_t fSkippedDepth = 0;  // open elements of which nothing is kept; the outermost is there by name

  Segments fSegments;
  std::uint32_t fSegmentation = 0;  // 0 for none
  PieceState fPiece = PieceState::kNone;
  ElementTree::Storage::Mark fBeforePiece;

  std::vector<OpenElement> fOpen;
  // The text of all open elements, one behind the other: while a child is open, nothing is added to its parent's. Only
  // the first fTextEnd bytes are in use.
  std::string fText;
  std::size_t fTextEnd = 0;
  // Where the text since the last tag begins. If it is white space beside a child, it is dropped.
  std::size_t fRunFrom = 0;

  // The numbers that names had last time: by the name's address for elements (parsers keep one text per name), by
  // element and position for attributes. Any of them may be wrong.
  static constexpr std::size_t kGuesses = 1024;
  std::array<NameTable::Id, kGuesses> fElementGuesses{};
  std::array<NameTable::Id, kGuesses> fAttributeGuesses{};
  NameTable::Id fName = 0;    // of the element started last
  std::size_t fPosition = 0;  // of its next attribute
};

}  // namespace KelXML_1_3
