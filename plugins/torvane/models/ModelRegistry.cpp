#include "plugins/torvane/models/ModelRegistry.h"

#include "plugins/torvane/models/ClusteringModel.h"
#include "plugins/torvane/models/GeneralRegressionModel.h"
#include "plugins/torvane/models/MiningModel.h"
#include "plugins/torvane/models/NaiveBayesModel.h"
#include "plugins/torvane/models/NearestNeighborModel.h"
#include "plugins/torvane/models/NeuralNetwork.h"
#include "plugins/torvane/models/RegressionModel.h"
#include "plugins/torvane/models/RuleSetModel.h"
#include "plugins/torvane/models/SupportVectorModel.h"
#include "plugins/torvane/models/TreeModel.h"

namespace Torvane {
namespace {

constexpr MiningFunction kNumber = MiningFunction::kRegression;
constexpr MiningFunction kCategory = MiningFunction::kClassification;
constexpr MiningFunction kCluster = MiningFunction::kClustering;

// All model kinds. A new one adds its line here.
const ModelKind kKinds[] = {
    {"ClusteringModel", ClusteringModel::Build, {kCluster}},
    {"GeneralRegressionModel", GeneralRegressionModel::Build, {kNumber, kCategory}},
    {"MiningModel", MiningModel::Build, {kNumber, kCategory, kCluster}},
    {"NaiveBayesModel", NaiveBayesModel::Build, {kCategory}},
    {"NearestNeighborModel",
     NearestNeighborModel::Build,
     {kNumber, kCategory, kCluster},
     NearestNeighborModel::BuildFurther},
    {"NeuralNetwork", NeuralNetwork::Build, {kNumber, kCategory}, NeuralNetwork::BuildFurther},
    {"RegressionModel", RegressionModel::Build, {kNumber, kCategory}},
    {"RuleSetModel", RuleSetModel::Build, {kNumber, kCategory}},
    {"SupportVectorMachineModel", SupportVectorModel::Build, {kNumber, kCategory}},
    {"TreeModel", TreeModel::Build, {kNumber, kCategory}},
};

}  // namespace

const ModelKind* FindKind(std::string_view elementName) noexcept {
  for (const ModelKind& kind : kKinds) {
    if (kind.elementName == elementName) return &kind;
  }
  return nullptr;
}

const ModelKind* FindMemberKind(std::string_view elementName) noexcept {
  if (elementName == "Regression") return FindKind("RegressionModel");
  if (elementName == "DecisionTree") return FindKind("TreeModel");
  return FindKind(elementName);
}

}  // namespace Torvane
