#include "plugins/torvane/models/ModelRegistry.h"

#include "plugins/torvane/models/RegressionModel.h"
#include "plugins/torvane/models/TreeModel.h"

namespace Torvane {
namespace {

struct Kind {
  std::string_view elementName;
  BuildBody build;
};

// All model kinds. A new one adds its line here.
constexpr Kind kKinds[] = {
    {"RegressionModel", RegressionModel::Build},
    {"TreeModel", TreeModel::Build},
};

}  // namespace

BuildBody FindBuilder(std::string_view elementName) noexcept {
  for (const Kind& kind : kKinds) {
    if (kind.elementName == elementName) return kind.build;
  }
  return nullptr;
}

}  // namespace Torvane
