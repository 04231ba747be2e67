#pragma once

#include <string>

#include "scoring/common/KelSettings.h"

namespace kelscore {

/// Reads the "Parameter" children of the file's root element, whatever its name:
///
///     <Settings>
///       <Parameter name="versionSupported" value="4.0"/>
///       <Parameter name="scoring_modelIDs"><ListValue><Value value="a"/><Value value="b"/></ListValue></Parameter>
///     </Settings>
///
/// Documents named in "scoring_pmmlFiles" by a relative path stand beside the settings file. The XML platform must be
/// up. Throws `Failure` (no model) with file and reason.
[[nodiscard]] KelXML_1_3::KelSettings ReadSettingsFile(const std::string& path);

}  // namespace kelscore
