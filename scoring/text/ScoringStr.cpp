#include "scoring/text/ScoringStr.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUTF8Transcoder.hpp>

#include "scoring/text/NarrowText.h"

namespace KelScoring_20 {
namespace {

using xercesc::XMLPlatformUtils;
using xercesc::XMLString;
using xercesc::XMLUTF8Transcoder;

using WideView = std::basic_string_view<XMLCh>;
using WideText = std::basic_string<XMLCh>;

constexpr XMLSize_t kBlockSize = 1000;  // of a conversion to and from UTF-8
constexpr XMLCh kUtf8Name[] = u"UTF-8";

/// A new array of the exact length, from the allocation that the parser's text functions use.
XMLCh* NewArray(WideView head, WideView tail = {}) {
  const XMLSize_t unitCount = head.size() + tail.size() + 1;
  auto* array = static_cast<XMLCh*>(XMLPlatformUtils::fgMemoryManager->allocate(unitCount * sizeof(XMLCh)));
  XMLCh* end = std::copy(tail.begin(), tail.end(), std::copy(head.begin(), head.end(), array));
  *end = 0;
  return array;
}

WideView View(const XMLCh* text) { return text ? WideView(text, XMLString::stringLen(text)) : WideView(); }

/// Widens one block. False if the transcoder threw or the bytes ended within a character.
bool AppendBlock(XMLUTF8Transcoder& transcoder, std::string_view& utf8, WideText& result) {
  XMLCh block[kBlockSize];
  unsigned char characterSizes[kBlockSize];  // asked for, not looked at
  XMLSize_t eaten = 0;
  XMLSize_t unitCount = 0;
  try {
    unitCount = transcoder.transcodeFrom(reinterpret_cast<const XMLByte*>(utf8.data()), utf8.size(), block, kBlockSize,
                                         eaten, characterSizes);
  } catch (...) {  // whatever it is, the text ends here
    return false;
  }
  result.append(block, std::find(block, block + unitCount, XMLCh(0)));
  utf8.remove_prefix(eaten);
  return eaten > 0;
}

}  // namespace

ScoringStr::ScoringStr(const XMLCh* text) : fStr(XMLString::replicate(text)) {}

ScoringStr::ScoringStr(const char* text) : fStr(text ? XMLString::transcode(text) : nullptr) {}

ScoringStr::ScoringStr(const std::string& text) : ScoringStr(text.c_str()) {}

ScoringStr::ScoringStr(const ScoringStr& other) : ScoringStr(other.fStr) {}

ScoringStr::~ScoringStr() { clear(); }

ScoringStr& ScoringStr::operator=(const ScoringStr& other) { return this == &other ? *this : *this = other.fStr; }

// The copy is made before the old array goes: the text may lie in it.
ScoringStr& ScoringStr::operator=(const XMLCh* text) {
  return text == fStr ? *this : Adopt(XMLString::replicate(text));
}

ScoringStr& ScoringStr::operator=(const char* text) { return Adopt(text ? XMLString::transcode(text) : nullptr); }

ScoringStr& ScoringStr::assign(XMLCh c) { return Adopt(NewArray(c ? WideView(&c, 1) : WideView())); }

ScoringStr& ScoringStr::assignUTF8(const std::string& utf8) {
  clear();
  if (utf8.empty()) return *this;
  XMLUTF8Transcoder transcoder(kUtf8Name, kBlockSize, XMLPlatformUtils::fgMemoryManager);
  std::string_view remaining = utf8;
  WideText result;
  while (!remaining.empty() && AppendBlock(transcoder, remaining, result)) {
  }
  return append(result.c_str());
}

ScoringStr& ScoringStr::clear() { return Adopt(nullptr); }

ScoringStr& ScoringStr::Adopt(XMLCh* text) {
  XMLCh* old = std::exchange(fStr, text);
  if (old) XMLString::release(&old);
  return *this;
}

unsigned int ScoringStr::length() const { return static_cast<unsigned int>(XMLString::stringLen(fStr)); }

bool ScoringStr::equals(const XMLCh* text) const { return XMLString::equals(fStr, text); }

bool ScoringStr::operator==(const ScoringStr& other) const {
  return fStr && other.fStr && XMLString::equals(fStr, other.fStr);
}

bool ScoringStr::ContainsString(const XMLCh* text) const {
  return text && fStr && View(fStr).find(View(text)) != WideView::npos;
}

std::string ScoringStr::toUTF8() const {
  if (empty()) return std::string();
  XMLUTF8Transcoder transcoder(kUtf8Name, kBlockSize, XMLPlatformUtils::fgMemoryManager);
  return ToNarrow(transcoder, fStr);
}

unsigned int ScoringStr::convertToInteger() {
  unsigned int value = 0;
  for (const XMLCh c : View(fStr)) {
    if (!XMLString::isDigit(c)) return 0;
    value = value * 10 + static_cast<unsigned int>(c - u'0');
  }
  return value;
}

ScoringStr& ScoringStr::append(const XMLCh* text) {
  return text && *text ? Adopt(NewArray(View(fStr), View(text))) : *this;
}

ScoringStr& ScoringStr::append(XMLCh c) { return c ? Adopt(NewArray(View(fStr), WideView(&c, 1))) : *this; }

ScoringStr& ScoringStr::append(const char* text) { return text && *text ? append(ScoringStr(text)) : *this; }

unsigned int ScoringStr::replaceSubstring(const XMLCh* from, const XMLCh* to) {
  if (!from || !*from || !ContainsString(from)) return 0;
  const WideView text = View(fStr);
  const WideView pattern = View(from);
  WideText result;
  unsigned int count = 0;
  std::size_t start = 0;
  for (std::size_t hit = 0; (hit = text.find(pattern, start)) != WideView::npos; start = hit + pattern.size()) {
    result.append(text, start, hit - start).append(View(to));
    ++count;
  }
  result.append(text, start);
  Adopt(result.empty() ? nullptr : NewArray(result));
  return count;
}

void ScoringStr::truncateString(unsigned int count) {
  const unsigned int oldLength = length();
  const unsigned int newLength = oldLength - std::min(count, oldLength);
  std::fill(fStr + newLength, fStr + oldLength, XMLCh(0));  // the array keeps its size
}

}  // namespace KelScoring_20
