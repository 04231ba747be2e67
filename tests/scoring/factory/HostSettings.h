#pragma once

#include <string>
#include <utility>
#include <vector>

#include "scoring/common/KelSettings.h"

namespace KelTest {

using Entries = std::vector<std::pair<std::string, std::string>>;

/// The base name, with its folder, of one of the small test plug-ins.
std::string PlugIn(const std::string& name);

/// Settings of these texts.
KelXML_1_3::KelSettings Nested(const Entries& entries);

/// What a host gives: the test plug-in `plugIn` for everything, and the elements that count as a model.
KelXML_1_3::KelSettings HostSettings(const std::string& plugIn, const Entries& modelDll = {{"TreeModel", "any"}});

/// The text setting `name`, "(none)" without it.
std::string Text(const KelXML_1_3::KelSettings& settings, const std::string& name);

}  // namespace KelTest
