#include "components/kelparsexml/PmmlVersion.h"

#include <algorithm>
#include <string_view>

namespace KelXML_1_3 {

std::optional<std::string> FindPmmlVersion(const Element& root) {
  constexpr std::string_view kStem = "http://www.dmg.org/PMML-";
  if (const auto version = root.Attribute("version")) return std::string(*version);
  const std::string_view name = root.Attribute("xmlns").value_or("");
  if (!name.starts_with(kStem)) return std::nullopt;
  std::string version(name.substr(kStem.size()));
  std::replace(version.begin(), version.end(), '_', '.');
  return version;
}

}  // namespace KelXML_1_3
