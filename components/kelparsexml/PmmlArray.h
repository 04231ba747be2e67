#pragma once

#include <string>
#include <vector>

#include "components/kelparsexml/ElementTree.h"
#include "scoring/common/KelExport.h"

namespace KelXML_1_3 {

/// The values of an "Array" element. Values are separated by white space; one in double quotes may hold white space,
/// and `\"` inside stands for a quote. An "n" that is there must be the number of values. Throws `PmmlError`.
KEL_EXPORT std::vector<std::string> ReadStringArray(const Element& array);
/// The same for numbers, which may be quoted.
KEL_EXPORT std::vector<double> ReadNumberArray(const Element& array);

}  // namespace KelXML_1_3
