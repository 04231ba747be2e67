#include "scoring/text/ScoringTranscoder.h"

#include <xercesc/util/PlatformUtils.hpp>

#include "scoring/text/NarrowText.h"

namespace KelScoring_20 {
namespace {

using xercesc::XMLPlatformUtils;
using xercesc::XMLTranscoder;
using xercesc::XMLTransService;

std::unique_ptr<XMLTranscoder> MakeTranscoder(const char* encoding) {
  constexpr XMLSize_t kTranscoderBlockSize = 4096;
  const char* name = encoding && *encoding ? encoding : "UTF-8";
  XMLTransService::Codes failure = XMLTransService::Ok;
  std::unique_ptr<XMLTranscoder> transcoder(XMLPlatformUtils::fgTransService->makeNewTranscoderFor(
      name, failure, kTranscoderBlockSize, XMLPlatformUtils::fgMemoryManager));
  if (failure != XMLTransService::Ok) return nullptr;
  return transcoder;
}

}  // namespace

ScoringTranscoder::ScoringTranscoder(const char* encoding) : fTranscoder(MakeTranscoder(encoding)) {}

ScoringTranscoder::~ScoringTranscoder() = default;

std::string ScoringTranscoder::TranscodeTo(const XMLCh* const text) const {
  return fTranscoder ? ToNarrow(*fTranscoder, text) : std::string();
}

}  // namespace KelScoring_20
