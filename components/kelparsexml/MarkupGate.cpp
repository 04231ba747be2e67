#include "components/kelparsexml/MarkupGate.h"

#include <algorithm>
#include <utility>

#include "components/kelparsexml/InputGate.h"

namespace KelXML_1_3 {
namespace {
constexpr int kMaxDepth = 10'000;
constexpr std::size_t kMaxTagBytes = std::size_t{64} << 20;

constexpr std::string_view kDocumentType = "<!DOCTYPE";
constexpr std::string_view kCharacterData = "<![CDATA[";
constexpr std::string_view kComment = "<!--";
// What has to be seen at once to tell them apart.
constexpr std::ptrdiff_t kLongestOpening = 9;
}  // namespace

template <class Units>
auto MarkupGate<Units>::Pass(Unit* begin, Unit* end, bool atEnd) -> Unit* {
  fMarks = MarkupMarks<Units>(begin, end);
  fEnd = end;
  fFrom = begin;
  fTagFrom = begin;
  fStop = nullptr;
  fAtEnd = atEnd;
  while (fStop == nullptr) Go();
  if (fMode == Mode::kTag) CountTagBytes(fStop);
  return fStop;
}

template <class Units>
void MarkupGate<Units>::Go() {
  switch (fMode) {
    case Mode::kContent:
      return InContent();
    case Mode::kTag:
      return InTag();
    case Mode::kComment:
      return InMarked('-', 2);
    case Mode::kCharacterData:
      return InMarked(']', 2);
    case Mode::kInstruction:
      return InMarked('?', 1);
  }
}

// Quotes and '>' are plain text here.
template <class Units>
void MarkupGate<Units>::InContent() {
  while (Unit* const mark = fMarks.Next()) {
    if (*mark == Units::Of('<')) return OpenMarkup(mark);
  }
  StopAt(fEnd);
}

// Where the units end, the last one is held back: it may be the slash of an empty element.
template <class Units>
void MarkupGate<Units>::InTag() {
  if (fQuote != 0 && !PassValue()) return;
  while (Unit* const mark = fMarks.Next()) {
    if (*mark == Units::Of('>')) return CloseTag(mark);
    if (*mark == Units::Of('<')) continue;
    if (++fAttributes > fMaxAttributes) {
      return Refuse(mark, "an element has more than " + std::to_string(fMaxAttributes) + " attributes");
    }
    fQuote = *mark;
    fFrom = mark + 1;
    if (!PassValue()) return;
  }
  HoldBackLast(1);
}

template <class Units>
bool MarkupGate<Units>::PassValue() {
  while (Unit* const mark = fMarks.Next()) {
    if (*mark != fQuote) continue;
    fQuote = 0;
    fFrom = mark + 1;
    return true;
  }
  StopAt(fEnd);
  return false;
}

// A comment, a processing instruction or character data: to the first '>' that follows so many of `mark`. Those of its
// opening don't count ("<!-->" isn't closed). Where the units end, those that may be such marks are held back.
template <class Units>
void MarkupGate<Units>::InMarked(char mark, std::ptrdiff_t marks) {
  while (Unit* const at = fMarks.Next()) {
    const bool isClosed =
        *at == Units::Of('>') && at - fFrom >= marks && at[-1] == Units::Of(mark) && at[-marks] == Units::Of(mark);
    if (isClosed) {
      fMode = Mode::kContent;
      return;
    }
    fFrom = at + 1;
  }
  HoldBackLast(marks);
}

template <class Units>
void MarkupGate<Units>::OpenMarkup(Unit* at) {
  if (fEnd - at < 2) return HoldBack(at);
  if (at[1] == Units::Of('/')) return OpenTag(at, Tag::kEnd, 2);
  if (at[1] == Units::Of('?')) return Open(at, Mode::kInstruction, 2);
  if (at[1] == Units::Of('!')) return OpenDeclaration(at);
  OpenElement(at);
}

template <class Units>
void MarkupGate<Units>::OpenElement(Unit* at) {
  fRootSeen = true;
  if (fDepth == kMaxDepth) {
    return Refuse(at, "elements are nested deeper than " + std::to_string(kMaxDepth));
  }
  OpenTag(at, Tag::kStart, 1);
}

template <class Units>
void MarkupGate<Units>::OpenDeclaration(Unit* at) {
  if (fEnd - at < kLongestOpening && !fAtEnd) return HoldBack(at);
  if (StartsWith(at, kComment)) return Open(at, Mode::kComment, std::ssize(kComment));
  if (StartsWith(at, kCharacterData)) return Open(at, Mode::kCharacterData, std::ssize(kCharacterData));
  if (StartsWith(at, kDocumentType) && !fRootSeen) return PassDocumentType(at);
  OpenTag(at, Tag::kMalformed, 2);
}

template <class Units>
void MarkupGate<Units>::OpenTag(Unit* at, Tag tag, std::ptrdiff_t length) {
  fTag = tag;
  fAttributes = 0;
  fTagBytes = 0;
  fTagFrom = at;
  Open(at, Mode::kTag, length);
}

template <class Units>
void MarkupGate<Units>::Open(Unit* at, Mode mode, std::ptrdiff_t length) {
  fMode = mode;
  fFrom = at + length;
}

template <class Units>
void MarkupGate<Units>::CloseTag(Unit* at) {
  CountTagBytes(at);
  if (!fRefusal.empty()) return StopAt(at);
  const bool isEmpty = at > fFrom && at[-1] == Units::Of('/');
  if (fTag == Tag::kStart && !isEmpty) ++fDepth;
  if (fTag == Tag::kEnd && fDepth > 0) --fDepth;
  fMode = Mode::kContent;
}

// A declaration is looked at as a whole, so it is held back until its end is there. Blanks of the same length take the
// place of one that names something outside; its line breaks stay, so that lines keep their numbers. The marks in it
// are still to come, as blanks or as quotes and the '>' in content.
template <class Units>
void MarkupGate<Units>::PassDocumentType(Unit* at) {
  constexpr auto kMaxUnits = static_cast<std::ptrdiff_t>(InputGate::kMaxHeldBack / sizeof(Unit));
  if (fDocumentTypeSeen) return Refuse(at, "a second document type declaration is not accepted");
  Unit* const limit = at + std::min(fEnd - at, kMaxUnits);
  bool isExternal = false;
  Unit* const to = FindEndOfDocumentType(at + std::ssize(kDocumentType), limit, isExternal);
  if (to == limit) {
    if (limit - at == kMaxUnits) return Refuse(at, "the document type declaration is too long");
    if (fAtEnd) return Refuse(at, "the document type declaration is not closed");
    return HoldBack(at);
  }
  if (*to == Units::Of('[')) {
    return Refuse(at, "a document type declaration with an internal subset is not accepted");
  }
  const auto blank = [](Unit unit) {
    return unit == Units::Of('\n') || unit == Units::Of('\r') ? unit : Units::Of(' ');
  };
  if (isExternal) std::transform(at, to + 1, at, blank);
  fDocumentTypeSeen = true;
  fFrom = to + 1;
}

// The '>' or '[' outside of quotes, else `limit`. What is quoted in a declaration is an identifier of something
// outside.
template <class Units>
auto MarkupGate<Units>::FindEndOfDocumentType(Unit* at, Unit* limit, bool& isExternal) -> Unit* {
  for (; at != limit && *at != Units::Of('>') && *at != Units::Of('['); ++at) {
    if (*at != Units::Of('"') && *at != Units::Of('\'')) continue;
    isExternal = true;
    at = std::find(at + 1, limit, *at);
    if (at == limit) break;
  }
  return at;
}

template <class Units>
void MarkupGate<Units>::CountTagBytes(Unit* to) {
  fTagBytes += static_cast<std::size_t>(to - fTagFrom) * sizeof(Unit);
  if (fTagBytes > kMaxTagBytes) fRefusal = "a tag is longer than 64 MiB";
}

template <class Units>
void MarkupGate<Units>::StopAt(Unit* at) {
  fStop = at;
}

template <class Units>
void MarkupGate<Units>::HoldBack(Unit* at) {
  fStop = fAtEnd ? fEnd : at;
}

// So many of the last units, but no mark: it has been dealt with.
template <class Units>
void MarkupGate<Units>::HoldBackLast(std::ptrdiff_t units) {
  HoldBack(fEnd - std::min(units, fEnd - fFrom));
}

template <class Units>
void MarkupGate<Units>::Refuse(Unit* at, std::string reason) {
  fRefusal = std::move(reason);
  fStop = at;
}

template <class Units>
bool MarkupGate<Units>::StartsWith(const Unit* at, std::string_view text) const {
  return fEnd - at >= std::ssize(text) &&
         std::equal(text.begin(), text.end(), at, [](char ascii, Unit unit) { return Units::Of(ascii) == unit; });
}

template class MarkupGate<ByteUnits>;
template class MarkupGate<Utf16LittleUnits>;
template class MarkupGate<Utf16BigUnits>;

}  // namespace KelXML_1_3
