#pragma once

#include <string>
#include <xercesc/util/TransService.hpp>

namespace KelScoring_20 {

/// The text in the transcoder's encoding; empty for a null text. A failure ends the result in front of the block
/// that it falls in and is not reported.
std::string ToNarrow(xercesc::XMLTranscoder& transcoder, const XMLCh* text);

}  // namespace KelScoring_20
