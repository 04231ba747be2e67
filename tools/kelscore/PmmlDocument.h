#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "tools/kelscore/ModelField.h"

// What the program itself reads in a PMML document, beside what the library tells. The XML platform must be up, as it
// is while a factory lives.

namespace kelscore {

/// The fields of the document's data dictionary, with their usage in the first mining schema. Reads no further than
/// that; a document that isn't well-formed gives what stands before its fault.
[[nodiscard]] DataFields ReadDataFields(std::istream& document);

/// The first fault of a document that isn't well-formed: "line 17, column 5: ...". Reads the whole document.
[[nodiscard]] std::optional<std::string> FindXmlFault(std::istream& document);

}  // namespace kelscore
