#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "components/kelparsexml/MarkupMarks.h"
#include "components/kelparsexml/TextUnits.h"

namespace KelXML_1_3 {

/// Follows the markup of a document, from mark to mark, as far as the rules of `KelXInputSource` need it.
///
/// It keeps to the parser's view of where markup begins and ends, or to a view under which the parser has already met
/// an error: were the two to differ on a well-formed document, a document type declaration could slip through. The
/// XML declaration is a processing instruction here.
template <class Units>
class MarkupGate {
 public:
  using Unit = typename Units::Unit;

  explicit MarkupGate(int maxAttributes) : fMaxAttributes(maxAttributes) {}

  /// Looks at the units of [begin, end), which follow the ones passed so far. Gives the end of those that may pass;
  /// the rest must come again with more behind it, unless something is refused.
  Unit* Pass(Unit* begin, Unit* end, bool atEnd);
  /// What is wrong at the end of the units passed last; empty if nothing is.
  [[nodiscard]] const std::string& Refusal() const noexcept { return fRefusal; }

 private:
  enum class Mode { kContent, kTag, kComment, kCharacterData, kInstruction };
  enum class Tag { kStart, kEnd, kMalformed };

  void Go();
  void InContent();
  void InTag();
  bool PassValue();
  void InMarked(char mark, std::ptrdiff_t marks);

  void OpenMarkup(Unit* at);
  void OpenDeclaration(Unit* at);
  void OpenElement(Unit* at);
  void OpenTag(Unit* at, Tag tag, std::ptrdiff_t length);
  void Open(Unit* at, Mode mode, std::ptrdiff_t length);
  void CloseTag(Unit* at);
  void PassDocumentType(Unit* at);
  Unit* FindEndOfDocumentType(Unit* at, Unit* limit, bool& isExternal);
  void CountTagBytes(Unit* to);

  void StopAt(Unit* at);
  void HoldBack(Unit* at);
  void HoldBackLast(std::ptrdiff_t units);
  void Refuse(Unit* at, std::string reason);
  [[nodiscard]] bool StartsWith(const Unit* at, std::string_view text) const;

  int fMaxAttributes;
  std::string fRefusal;

  // Where it stands between two calls.
  Mode fMode = Mode::kContent;
  Tag fTag = Tag::kStart;
  Unit fQuote = 0;  // the mark that ends the attribute value being passed; 0 outside
  int fAttributes = 0;
  int fDepth = 0;
  bool fRootSeen = false;
  bool fDocumentTypeSeen = false;
  std::size_t fTagBytes = 0;

  // The units being looked at.
  MarkupMarks<Units> fMarks;
  Unit* fEnd = nullptr;
  Unit* fFrom = nullptr;     // behind the last mark
  Unit* fTagFrom = nullptr;  // from here on the tag's bytes are not in fTagBytes yet
  Unit* fStop = nullptr;     // where this call ends
  bool fAtEnd = false;
};

}  // namespace KelXML_1_3
