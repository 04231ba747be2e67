#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <xercesc/sax/InputSource.hpp>

#include "scoring/common/KelExport.h"

namespace KelXML_1_3 {

/// An input source of the XML parser over a stream, for one parse, and the gate for documents of strangers.
///
/// The bytes go to the parser from the stream's current position while they are watched in one linear pass. A
/// document type declaration with an external identifier is blanked out, so nothing is ever opened by name. What no
/// honest document holds ends the input at that place, so that the parser reports a truncated document and
/// `KelDiagnostics` has the reason: an internal subset, elements nested deeper than 10,000, more than 10,000
/// attributes on an element, a tag or attribute over 64 MiB, and an encoding other than UTF-8, UTF-16, US-ASCII,
/// ISO-8859-x and windows-125x. The document's own encoding counts; one that is set on the source has no effect.
///
/// Bytes are read ahead in blocks: the stream may stand behind the last byte that the parser used. Doesn't own the
/// stream, never throws for what it reads (not even if the stream's exception mask is set), and must not outlive the
/// stream.
class KEL_EXPORT KelXInputSource : public xercesc::InputSource {
 public:
  static constexpr int kMaxAttributes = 10'000;

  /// `maxAttributes`: a lower limit for readers whose cost grows with the square of an element's attributes.
  explicit KelXInputSource(std::istream& stream, int maxAttributes = kMaxAttributes);
  ~KelXInputSource() override;
  KelXInputSource(const KelXInputSource&) = delete;
  KelXInputSource& operator=(const KelXInputSource&) = delete;

  /// Made by the parser, which owns the result.
  [[nodiscard]] xercesc::BinInputStream* makeStream() const override;
  /// Always null: the document tells its encoding.
  [[nodiscard]] const XMLCh* getEncoding() const override;

  /// Why the gate ended the input, with the line; empty as long as it didn't.
  [[nodiscard]] const std::string& Refusal() const noexcept;

 private:
  std::istream& fStream;
  int fMaxAttributes;
  // Shared with the stream that the parser owns, so that neither has to outlive the other.
  std::shared_ptr<std::string> fRefusal;
};

}  // namespace KelXML_1_3
