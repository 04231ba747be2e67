#include "scoring/pmml/ScoringSAX2Handler.h"

#include <utility>
#include <xercesc/sax2/Attributes.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLString.hpp>

#include "scoring/text/LocalText.h"

namespace KelScoring_20 {
namespace {

using xercesc::XMLFormatter;
using xercesc::XMLPlatformUtils;
using xercesc::XMLString;

bool IsFirstHalfOfPair(XMLCh c) { return c >= 0xD800 && c <= 0xDBFF; }

bool IsSecondHalfOfPair(XMLCh c) { return c >= 0xDC00 && c <= 0xDFFF; }

}  // namespace

ScoringSAX2Handler::ScoringSAX2Handler(const std::string& encoding)
    : fFormatter("UTF-8", this, XMLFormatter::NoEscapes, XMLFormatter::UnRep_CharRef,
                 XMLPlatformUtils::fgMemoryManager),
      fState(HandlerState{}),
      fTranscoder(std::make_unique<ScoringTranscoder>(encoding.c_str())) {}

ScoringSAX2Handler::~ScoringSAX2Handler() = default;

// A reader hands long text over in pieces and may cut a pair of surrogates in two. The formatter would wait forever
// for the second half, so the first half is held back until the piece with the second one comes.
void ScoringSAX2Handler::characters(const XMLCh* const chars, const XMLSize_t length) {
  if (fDropsText) return;
  const XMLCh* begin = chars;
  const XMLCh* end = chars + length;
  const XMLCh held = length > 0 ? std::exchange(fHeldBack, XMLCh(0)) : XMLCh(0);
  if (held && IsSecondHalfOfPair(*begin)) {
    const XMLCh pair[] = {held, *begin++};
    fFormatter.formatBuf(pair, 2, XMLFormatter::CharEscapes, XMLFormatter::DefaultUnRep);
  }
  if (begin != end && IsFirstHalfOfPair(end[-1])) fHeldBack = *--end;
  if (begin == end) return;
  fFormatter.formatBuf(begin, static_cast<XMLSize_t>(end - begin), XMLFormatter::CharEscapes,
                       XMLFormatter::DefaultUnRep);
}

void ScoringSAX2Handler::endElement(const XMLCh* const, const XMLCh* const, const XMLCh* const) {}

void ScoringSAX2Handler::ignorableWhitespace(const XMLCh* const, const XMLSize_t) {}

void ScoringSAX2Handler::processingInstruction(const XMLCh* const, const XMLCh* const) {}

void ScoringSAX2Handler::startElement(const XMLCh* const, const XMLCh* const, const XMLCh* const,
                                      const xercesc::Attributes&) {}

void ScoringSAX2Handler::warning(const xercesc::SAXParseException&) {}

void ScoringSAX2Handler::error(const xercesc::SAXParseException&) { throw kParserReportedError; }

void ScoringSAX2Handler::fatalError(const xercesc::SAXParseException&) { throw kParserReportedFatalError; }

void ScoringSAX2Handler::writeChars(const XMLByte* const, const XMLSize_t, XMLFormatter* const) {}

bool ScoringSAX2Handler::IsEqual(const XMLCh* text, const std::string& name) {
  return XMLString::compareString(text, WidenedName(name).Text()) == 0;
}

bool ScoringSAX2Handler::IsEqual(ScoringTranscoder* transcoder, const XMLCh* text, const std::string& name) {
  return transcoder ? transcoder->TranscodeTo(text) == name : IsEqual(text, name);
}

const XMLCh* ScoringSAX2Handler::GetAttribute(const xercesc::Attributes& attrs, const std::string& name) {
  return attrs.getValue(WidenedName(name).Text());
}

std::string ScoringSAX2Handler::ToString(const XMLCh* text) const {
  if (!text) return std::string();
  return fTranscoder ? fTranscoder->TranscodeTo(text) : WideToLocal(text);
}

}  // namespace KelScoring_20
