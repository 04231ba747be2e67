#pragma once

#include <optional>
#include <string>

#include "components/kelparsexml/ElementTree.h"
#include "scoring/common/KelExport.h"

namespace KelXML_1_3 {

/// The version that the root of a document tells by its attribute "version", such as "4.2" or "4.4.1", or without it by
/// its namespace, as in "http://www.dmg.org/PMML-4_1", which some producers rely on. Nothing if it tells none.
[[nodiscard]] KEL_EXPORT std::optional<std::string> FindPmmlVersion(const Element& root);

}  // namespace KelXML_1_3
