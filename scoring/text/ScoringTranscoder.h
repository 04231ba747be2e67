#pragma once

#include <memory>
#include <string>
#include <xercesc/util/TransService.hpp>

#include "scoring/common/KelExport.h"

namespace KelScoring_20 {

/// Turns the XML parser's wide text into narrow text of one encoding.
///
/// The XML platform must be up for the whole life of the object. One object belongs to one thread at a time. It suits
/// encodings without shift states: the state of one that has them (ISO-2022, UTF-7) runs on into the next text.
class KEL_EXPORT ScoringTranscoder {
 public:
  /// A null or empty name means "UTF-8". A name that the platform doesn't serve gives an object that isn't valid.
  explicit ScoringTranscoder(const char* encoding = "UTF-8");
  virtual ~ScoringTranscoder();
  ScoringTranscoder(const ScoringTranscoder&) = delete;
  ScoringTranscoder& operator=(const ScoringTranscoder&) = delete;

  /// Whether the platform serves the encoding.
  [[nodiscard]] bool IsValid() const { return fTranscoder != nullptr; }

  /// The text in the object's encoding; empty for a null text and on an object that isn't valid.
  ///
  /// A character that the encoding lacks ends the result without a report, at the block of up to 1000 bytes in front
  /// of the one that holds it: short texts come out empty, long ones are cut.
  [[nodiscard]] std::string TranscodeTo(const XMLCh* const text) const;

 private:
  std::unique_ptr<xercesc::XMLTranscoder> fTranscoder;  // null when no transcoder serves the encoding
};

}  // namespace KelScoring_20
