#pragma once

#include <string>
#include <utility>
#include <vector>

#include "scoring/common/KelSettings.h"

namespace KelTest {

using Entries = std::vector<std::pair<std::string, std::string>>;

inline std::string PlugIn(const std::string& name) { return KEL_TEST_PLUGINS + name; }

inline KelXML_1_3::KelSettings Nested(const Entries& entries) {
  KelXML_1_3::KelSettings settings;
  for (const auto& [name, value] : entries) settings.AddSetting(name, value, true);
  return settings;
}

/// What a host gives: the test plug-in `plugIn` for everything, and the elements that count as a model.
inline KelXML_1_3::KelSettings HostSettings(const std::string& plugIn,
                                            const Entries& modelDll = {{"TreeModel", "any"}}) {
  KelXML_1_3::KelSettings settings;
  settings.AddSetting("scoringDll", Nested({{"Torvane", PlugIn(plugIn)}}), true);
  settings.AddSetting("modelDll", Nested(modelDll), true);
  return settings;
}

/// The text setting `name`, "(none)" without it.
inline std::string Text(const KelXML_1_3::KelSettings& settings, const std::string& name) {
  std::string text = "(none)";
  settings.GetSettingValByName(name, text);
  return text;
}

}  // namespace KelTest
