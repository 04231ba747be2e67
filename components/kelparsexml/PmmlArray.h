#pragma once

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

}  // namespace KelXML_1_3
