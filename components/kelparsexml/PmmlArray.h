#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "components/kelparsexml/ElementTree.h"
#include "scoring/common/KelExport.h"

namespace KelXML_1_3 {

/// What an array's "n" is worth. Some producers write a count that isn't that of the values; where values are a set,
/// nothing hangs on it.
enum class ArrayCount { kChecked, kIgnored };

/// The values of an "Array" element. Values are separated by white space; one in double quotes may hold white space,
/// and `\"` inside stands for a quote. An "n" that is there must be the number of values, unless it is ignored. Throws
/// `PmmlError`.
KEL_EXPORT std::vector<std::string> ReadStringArray(const Element& array, ArrayCount count = ArrayCount::kChecked);
/// The same for numbers, which may be quoted.
KEL_EXPORT std::vector<double> ReadNumberArray(const Element& array);

/// An array of which only some places are listed. All others hold the default value.
struct SparseArray {
  struct Entry {
    std::uint32_t place;  ///< from 0
    double value;
  };
  std::vector<Entry> entries;  ///< in ascending order of their places, which differ
  double defaultValue = 0.0;
  std::optional<std::uint32_t> length;  ///< the "n"; all places lie below it
};

/// An "INT-SparseArray", whose values are whole numbers, or a "REAL-SparseArray". The document counts places from 1, in
/// any order. Throws `PmmlError` for lists of different lengths, a place out of range or listed twice.
KEL_EXPORT SparseArray ReadSparseArray(const Element& array);

}  // namespace KelXML_1_3
