#include "plugins/torvane/models/ModelRegistry.h"

#include "plugins/torvane/models/RegressionModel.h"
#include "plugins/torvane/models/TreeModel.h"

namespace Torvane {
namespace {

constexpr MiningFunction kNumber = MiningFunction::kRegression;
constexpr MiningFunction kCategory = MiningFunction::kClassification;

// All model kinds. A new one adds its line here.
const ModelKind kKinds[] = {
    {"RegressionModel", RegressionModel::Build, {kNumber, kCategory}},
    {"TreeModel", TreeModel::Build, {kNumber, kCategory}},
};

}  // namespace

const ModelKind* FindKind(std::string_view elementName) noexcept {
  for (const ModelKind& kind : kKinds) {
    if (kind.elementName == elementName) return &kind;
  }
  return nullptr;
}

}  // namespace Torvane
