#include "components/kelparsexml/ElementTreeBuilder.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "components/kelparsexml/Lexical.h"
#include "components/kelparsexml/PmmlError.h"
#include "components/kelparsexml/Utf8.h"

namespace KelXML_1_3 {
namespace {
using namespace std::string_view_literals;

constexpr std::size_t kMaxRecords = std::numeric_limits<std::uint32_t>::max();
constexpr NameTable::Id kMaxName = 0x7FFF'FFFF;
constexpr std::size_t kMaxLine = std::numeric_limits<int>::max();
// Room for a short piece of text is reserved without counting its bytes.
constexpr std::size_t kMaxShortPiece = 1024;
// The elements around a piece: the root, the model, its segmentation.
constexpr std::size_t kPieceDepth = 3;

const char16_t* LocalPart(const char16_t* qualifiedName) {
  const char16_t* local = qualifiedName;
  for (const char16_t* at = qualifiedName; *at != 0; ++at) {
    if (*at == u':') local = at + 1;
  }
  return local;
}

// What stands beside the models under the root.
bool IsModel(std::string_view name) {
  constexpr std::array kOthers = {"Header"sv, "MiningBuildTask"sv, "DataDictionary"sv, "TransformationDictionary"sv,
                                  "Extension"sv};
  return std::find(kOthers.begin(), kOthers.end(), name) == kOthers.end();
}
}  // namespace

ElementTreeBuilder::ElementTreeBuilder(std::string_view modelName, Segments segments)
    : fTree(new ElementTree), fStorage(*fTree->fStorage), fModelName(modelName), fSegments(segments) {}

bool ElementTreeBuilder::StartElement(const char16_t* qualifiedName, std::size_t line) {
  if (fSkippedDepth > 0) {
    ++fSkippedDepth;
    return false;
  }
  fName = InternElement(qualifiedName);
  fPosition = 0;
  const bool isPiece = fOpen.size() == kPieceDepth && IsPiece();
  if (isPiece) BeginPiece();
  Append(fName, line, !isPiece);
  if (fOpen.size() <= kPieceDepth) NoteStructure(fStorage.names.Get(fName));
  return fSkippedDepth == 0;
}

// What the elements next to the root mean for those below them.
void ElementTreeBuilder::NoteStructure(std::string_view name) {
  if (IsSkippedModel(name)) fSkippedDepth = 1;
  if (IsSegmentation(name)) fSegmentation = fOpen.back().index;
}

// A name without a prefix is recognised as it stands: what is guessed is never a name with a colon.
NameTable::Id ElementTreeBuilder::InternElement(const char16_t* qualifiedName) {
  const auto address = reinterpret_cast<std::uintptr_t>(qualifiedName);
  NameTable::Id& guess = fElementGuesses[(address >> 4 ^ address >> 14) % kGuesses];
  if (!fStorage.names.Is(qualifiedName, guess)) guess = fStorage.names.Intern(LocalPart(qualifiedName), guess);
  return guess;
}

void ElementTreeBuilder::Append(NameTable::Id name, std::size_t line, bool isInTree) {
  ElementTree::Storage& storage = fStorage;
  const std::size_t index = storage.elements.size();
  if (index == kMaxRecords || name > kMaxName) throw PmmlError("the document has too many elements");
  const auto position = static_cast<std::uint32_t>(index);
  if (!fOpen.empty()) {
    DropWhiteSpaceRun();
    fOpen.back().hasChild = true;
    if (isInTree) LinkToParent(position);
  }
  storage.elements.Append({name & kMaxName, 0, static_cast<std::uint32_t>(std::min(line, kMaxLine)), 0,
                           static_cast<std::uint32_t>(storage.attributes.size()), 0});
  fOpen.push_back({position, 0, fTextEnd, false});
  fRunFrom = fTextEnd;
}

void ElementTreeBuilder::LinkToParent(std::uint32_t child) {
  OpenElement& parent = fOpen.back();
  if (parent.lastChild != 0) fStorage.elements[parent.lastChild].nextSibling = child;
  fStorage.elements[parent.index].hasChildren = 1;
  parent.lastChild = child;
}

// Of the model that is kept: those that aren't have nothing below them.
bool ElementTreeBuilder::IsSegmentation(std::string_view name) const {
  const bool isInModel =
      fOpen.size() == kPieceDepth && fStorage.names.Get(fStorage.elements[fOpen[1].index].name) == fModelName;
  return fSegments == Segments::kAsPieces && fSegmentation == 0 && isInModel && name == "Segmentation";
}

bool ElementTreeBuilder::IsPiece() const {
  return fSegmentation != 0 && fOpen.back().index == fSegmentation && fStorage.names.Get(fName) == "Segment";
}

void ElementTreeBuilder::BeginPiece() {
  fBeforePiece = fStorage.End();
  fPiece = PieceState::kOpen;
}

void ElementTreeBuilder::DropPiece() {
  fStorage.Truncate(fBeforePiece);
  fPiece = PieceState::kNone;
}

Element ElementTreeBuilder::Segmentation() const noexcept {
  return fSegmentation == 0 ? Element() : Element(fTree.get(), fSegmentation);
}

Element ElementTreeBuilder::Piece() const noexcept {
  if (fPiece != PieceState::kWhole) return {};
  return {fTree.get(), static_cast<std::uint32_t>(fBeforePiece.elements)};
}

bool ElementTreeBuilder::IsSkippedModel(std::string_view name) {
  const bool isChildOfRoot = fOpen.size() == 2;
  if (fModelName.empty() || !isChildOfRoot || !IsModel(name)) return false;
  return name != fModelName || std::exchange(fModelSeen, true);
}

void ElementTreeBuilder::AddAttribute(const char16_t* qualifiedName, const char16_t* value) {
  if (fSkippedDepth > 0) return;
  ElementTree::Storage& storage = fStorage;
  if (storage.attributes.size() == kMaxRecords) throw PmmlError("the document has too many attributes");
  NameTable::Id& guess = fAttributeGuesses[(std::size_t{fName} * 16 + fPosition++) % kGuesses];
  guess = storage.names.Intern(qualifiedName, guess);
  storage.attributes.Append({guess, storage.texts.Add(value)});
}

void ElementTreeBuilder::AddText(const char16_t* text, std::size_t size) {
  if (fSkippedDepth > 0 || fOpen.empty()) return;
  const std::size_t bytes = size <= kMaxShortPiece ? size * kMaxUtf8PerUnit : Utf8Size(text, size);
  const std::size_t needed = fTextEnd + bytes;
  if (needed > fText.size()) fText.resize(std::max(needed, 2 * fTextEnd));
  fTextEnd = static_cast<std::size_t>(WriteUtf8(text, size, fText.data() + fTextEnd) - fText.data());
}

void ElementTreeBuilder::DropWhiteSpaceRun() {
  if (std::all_of(fText.data() + fRunFrom, fText.data() + fTextEnd, IsXmlSpace)) fTextEnd = fRunFrom;
}

void ElementTreeBuilder::EndElement() {
  if (fSkippedDepth > 1) {
    --fSkippedDepth;
    return;
  }
  fSkippedDepth = 0;
  const OpenElement element = fOpen.back();
  if (element.hasChild) DropWhiteSpaceRun();
  const std::string_view text(fText.data() + element.textFrom, fTextEnd - element.textFrom);
  if (!text.empty()) fStorage.elements[element.index].text = fStorage.texts.Add(text);
  fOpen.pop_back();
  fTextEnd = element.textFrom;
  fRunFrom = element.textFrom;
  if (fPiece == PieceState::kOpen && fOpen.size() == kPieceDepth) fPiece = PieceState::kWhole;
}

}  // namespace KelXML_1_3
