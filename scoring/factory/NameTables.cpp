#include <array>
#include <utility>

#include "scoring/common/KelSettings.h"
#include "scoring/factory/ScoringScorerFactory.h"

namespace KelScoring_20 {

using KelCommon_1_3::KelStatus;
using KelXML_1_3::KelSettings;
using namespace KelScoringConst;

namespace {

constexpr std::array<std::pair<const char*, ModelType>, 15> kModelTypes = {{
    {"AssociationModel", AssociationModel},
    {"ClusteringModel", ClusteringModel},
    {"GeneralRegressionModel", GeneralRegressionModel},
    {"MiningModel", MiningModel},
    {"NaiveBayesModel", NaiveBayesModel},
    {"NeuralNetwork", NeuralNetwork},
    {"RegressionModel", RegressionModel},
    {"RuleSetModel", RuleSetModel},
    {"SequenceModel", SequenceModel},
    {"SupportVectorMachineModel", SupportVectorMachineModel},
    {"TextModel", TextModel},
    {"TimeSeriesModel", TimeSeriesModel},
    {"TreeModel", TreeModel},
    {"BayesNetModel", BayesNetModel},
    {"NearestNeighborModel", NearestNeighborModel},
}};

}  // namespace

KelStatus ScoringScorerFactory::GetScoringNames(std::map<std::string, std::string>& names, KelSettings& settings) {
  names.clear();
  KelSettings table;
  if (!settings.GetSettingValByName(kSettingScoringDll, table)) return KelStatus(kScoringDllMissing, false);
  std::vector<std::string> keys;
  table.GetSettingNames(keys);
  for (const std::string& key : keys) table.GetSettingValByName(key, names[key]);
  return KelStatus();
}

KelStatus ScoringScorerFactory::GetModelNames(std::vector<std::string>& names, KelSettings& settings) {
  names.clear();
  KelSettings table;
  if (!settings.GetSettingValByName(kSettingModelDll, table)) return KelStatus(kModelDllMissing, false);
  table.GetSettingNames(names);
  return KelStatus();
}

ModelType ScoringScorerFactory::GetModelType(const std::string& name) {
  for (const auto& [element, type] : kModelTypes) {
    if (name == element) return type;
  }
  return UnknownModel;
}

}  // namespace KelScoring_20
