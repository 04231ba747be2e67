#pragma once

#include <iosfwd>
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
/// ISO-8859-x and windows-125x.
///
/// Doesn't own the stream, never throws for what it reads, and must not outlive the stream.
class KEL_EXPORT KelXInputSource : public xercesc::InputSource {
 public:
  explicit KelXInputSource(std::istream& stream);
  ~KelXInputSource() override;
  KelXInputSource(const KelXInputSource&) = delete;
  KelXInputSource& operator=(const KelXInputSource&) = delete;

  /// Made by the parser, which owns the result.
  [[nodiscard]] xercesc::BinInputStream* makeStream() const override;

 private:
  std::istream& fStream;
};

}  // namespace KelXML_1_3
