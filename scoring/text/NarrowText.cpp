#include "scoring/text/NarrowText.h"

#include <xercesc/util/XMLString.hpp>

namespace KelScoring_20 {
namespace {

using xercesc::XMLString;
using xercesc::XMLTranscoder;

constexpr XMLSize_t kBlockSize = 1000;  // bytes that one call of the transcoder may give

bool IsFirstHalfOfPair(XMLCh c) { return c >= 0xD800 && c <= 0xDBFF; }

/// The length up to a last character that is only half there. Some transcoders would carry that half over into the
/// next text.
XMLSize_t LengthOfWholeCharacters(const XMLCh* text) {
  const XMLSize_t length = XMLString::stringLen(text);
  return length > 0 && IsFirstHalfOfPair(text[length - 1]) ? length - 1 : length;
}

/// Appends what one call gives. False if it threw, and then nothing is appended.
bool AppendBlock(XMLTranscoder& transcoder, const XMLCh* text, XMLSize_t length, XMLSize_t& eaten,
                 std::string& result) {
  XMLByte block[kBlockSize];
  XMLSize_t byteCount = 0;
  try {
    byteCount = transcoder.transcodeTo(text, length, block, kBlockSize, eaten, XMLTranscoder::UnRep_Throw);
  } catch (...) {  // whatever it is, the text ends here
    return false;
  }
  result.append(reinterpret_cast<const char*>(block), byteCount);
  return true;
}

}  // namespace

std::string ToNarrow(XMLTranscoder& transcoder, const XMLCh* text) {
  std::string result;
  XMLSize_t remaining = LengthOfWholeCharacters(text);
  while (remaining > 0) {
    XMLSize_t eaten = 0;
    if (!AppendBlock(transcoder, text, remaining, eaten, result) || eaten == 0) return result;
    text += eaten;
    remaining -= eaten;
  }
  // A transcoder that eats a character whose bytes don't all fit any more keeps the rest of them for its next call.
  XMLSize_t eaten = 0;
  if (!result.empty()) AppendBlock(transcoder, text, 0, eaten, result);
  return result;
}

}  // namespace KelScoring_20
