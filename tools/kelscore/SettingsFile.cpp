#include "tools/kelscore/SettingsFile.h"

#include <filesystem>
#include <fstream>
#include <optional>
#include <system_error>
#include <vector>
#include <xercesc/dom/DOMDocument.hpp>
#include <xercesc/dom/DOMElement.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>

#include "scoring/common/KelDiagnostics.h"
#include "scoring/common/KelScoringConst.h"
#include "scoring/common/KelXInputSource.h"
#include "scoring/pmml/ScoringPMMLParser.h"
#include "tools/kelscore/Failure.h"
#include "tools/kelscore/PmmlDocument.h"
#include "tools/kelscore/StatusText.h"

namespace kelscore {
namespace {

using KelCommon_1_3::KelDiagnostics;
using KelCommon_1_3::KelStatus;
using KelScoring_20::ScoringPMMLParser;
using KelXML_1_3::KelSettings;
using KelXML_1_3::KelXInputSource;
namespace Const = KelScoring_20::KelScoringConst;

[[noreturn]] void Fail(const std::string& path, const std::string& reason) {
  throw Failure(kNoModel, path + ": no settings: " + reason);
}

std::ifstream Open(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::error_code ignored;
  if (!file || std::filesystem::is_directory(path, ignored)) Fail(path, "the file can't be read");
  return file;
}

void CheckWellFormed(const std::string& path) {
  std::ifstream file = Open(path);
  if (const std::optional<std::string> fault = FindXmlFault(file)) Fail(path, "not well-formed XML, " + *fault);
}

KelSettings ReadParameters(const std::string& path) {
  std::ifstream file = Open(path);
  const KelXInputSource source(file);
  xercesc::XercesDOMParser parser;
  parser.setLoadExternalDTD(false);
  parser.parse(source);
  KelSettings settings;
  KelDiagnostics::Clear();
  const KelStatus status =
      ScoringPMMLParser("UTF-8").FillSettings(settings, parser.getDocument()->getDocumentElement());
  if (!status.IsOK()) Fail(path, StatusText(status) + ": " + KelDiagnostics::Last());
  return settings;
}

void ResolvePaths(const std::filesystem::path& folder, KelSettings& settings) {
  std::vector<std::string> files;
  if (!settings.GetSettingValByName(Const::kSettingScoringPmmlFiles, files)) return;
  for (std::string& file : files) {
    if (!file.empty()) file = (folder / file).lexically_normal().string();
  }
  settings.AddSetting(Const::kSettingScoringPmmlFiles, files, true);
}

}  // namespace

KelSettings ReadSettingsFile(const std::string& path) {
  CheckWellFormed(path);
  KelSettings settings = ReadParameters(path);
  ResolvePaths(std::filesystem::path(path).parent_path(), settings);
  return settings;
}

}  // namespace kelscore
