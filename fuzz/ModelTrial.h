#pragma once

#include <cstddef>
#include <string>

namespace KelFuzz {

/// What became of a document.
struct TrialResult {
  bool isLoaded = false;
  std::size_t recordCount = 0;  ///< that were scored
};

/// Offers a document to the default plug-in, and scores records of every kind of value with the model if it loads:
/// missing, invalid, extreme and composite values, the document's own words, fields that lack and fields too many.
/// What a record gives must depend on nothing but the record: neither on the order of its fields, nor on the records
/// before it, nor on which other outputs are asked for. A breach ends the program by `std::abort` with a line on
/// standard error. The XML platform must be up.
TrialResult TryModel(const std::string& document);

}  // namespace KelFuzz
