#pragma once

#include <cstddef>
#include <string>

namespace KelXML_1_3 {

enum class UnitKind { kBytes, kUtf16Little, kUtf16Big };

/// What a document's first bytes tell.
struct DocumentEncoding {
  UnitKind units = UnitKind::kBytes;
  /// Why the document is refused; empty if it isn't.
  std::string refusal;
};

/// Finds the code units of a document as the parser finds them (byte order mark, else the shape of an XML
/// declaration) and judges the encoding that its XML declaration names. `bytes` is the document's beginning and
/// long enough for an XML declaration, or all of it.
DocumentEncoding ReadDocumentEncoding(const unsigned char* bytes, std::size_t size, bool isWhole);

}  // namespace KelXML_1_3
