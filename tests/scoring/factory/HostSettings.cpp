#include "tests/scoring/factory/HostSettings.h"

namespace KelTest {

using KelXML_1_3::KelSettings;

std::string PlugIn(const std::string& name) { return KEL_TEST_PLUGINS + name; }

KelSettings Nested(const Entries& entries) {
  KelSettings settings;
  for (const auto& [name, value] : entries) settings.AddSetting(name, value, true);
  return settings;
}

KelSettings HostSettings(const std::string& plugIn, const Entries& modelDll) {
  KelSettings settings;
  settings.AddSetting("scoringDll", Nested({{"Torvane", PlugIn(plugIn)}}), true);
  settings.AddSetting("modelDll", Nested(modelDll), true);
  return settings;
}

std::string Text(const KelSettings& settings, const std::string& name) {
  std::string text = "(none)";
  settings.GetSettingValByName(name, text);
  return text;
}

}  // namespace KelTest
