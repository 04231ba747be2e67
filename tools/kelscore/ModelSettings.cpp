#include "tools/kelscore/ModelSettings.h"

#include <filesystem>
#include <string>

#include "scoring/common/KelScoringConst.h"
#include "scoring/factory/ScoringScorerFactory.h"
#include "tools/kelscore/SettingsFile.h"

namespace kelscore {
namespace {

using KelScoring_20::ScoringScorerFactory;
using KelXML_1_3::KelSettings;
namespace Const = KelScoring_20::KelScoringConst;

constexpr char kDefaultPlugInName[] = "torvane";

// The order decides which element of a document with nested models is the model: ensembles hold other kinds.
constexpr const char* kModelElements[] = {
    "MiningModel",     "AssociationModel",          "ClusteringModel", "GeneralRegressionModel", "NaiveBayesModel",
    "NeuralNetwork",   "RegressionModel",           "RuleSetModel",    "SequenceModel",          "TextModel",
    "TimeSeriesModel", "SupportVectorMachineModel", "TreeModel",       "BayesNetModel",          "NearestNeighborModel",
};

// A name with a folder in it is taken as that path by the library.
std::string PlugInPath(const ModelArguments& arguments, const std::string& name) {
  if (arguments.pluginDir.empty() || name.find('/') != std::string::npos) return name;
  return (std::filesystem::absolute(arguments.pluginDir) / name).string();
}

KelSettings PlugIns(const ModelArguments& arguments) {
  KelSettings plugIns;
  plugIns.AddSetting(Const::kDefaultPlugIn, PlugInPath(arguments, kDefaultPlugInName), true);
  for (const auto& [element, name] : arguments.dlls) plugIns.AddSetting(element, PlugInPath(arguments, name), true);
  return plugIns;
}

KelSettings Elements(const ModelArguments& arguments) {
  KelSettings elements;
  for (const char* element : kModelElements) elements.AddSetting(element, "", true);
  for (const auto& [element, name] : arguments.dlls) {
    if (element != Const::kDefaultPlugIn) elements.AddSetting(element, "", true);
  }
  return elements;
}

}  // namespace

KelSettings MakeSettings(const ModelArguments& arguments) {
  KelSettings settings;
  if (!arguments.settingsFile.empty()) settings = ReadSettingsFile(arguments.settingsFile);
  settings.AddSetting(Const::kSettingScoringDll, PlugIns(arguments), true);
  settings.AddSetting(Const::kSettingModelDll, Elements(arguments), true);
  return settings;
}

std::vector<std::string> ModelElements(KelSettings& settings) {
  std::vector<std::string> names;
  ScoringScorerFactory::GetModelNames(names, settings);
  return names;
}

}  // namespace kelscore
