#pragma once

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <string_view>

#include "plugins/torvane/fields/FieldScope.h"
#include "plugins/torvane/models/ModelBody.h"
#include "plugins/torvane/targets/Target.h"

namespace Torvane {

/// Builds the mathematics of a model element. Field names resolve in `scope`, categories that the body names are added
/// to `target`. Throws `PmmlError`.
using BuildBody = std::unique_ptr<ModelBody> (*)(const Element& model, FieldScope& scope, Target& target);

/// The same of another target of the same element, once the first one's body is built, with which it may share data.
using BuildFurtherBody = std::unique_ptr<ModelBody> (*)(const ModelBody& first, const Element& model, FieldScope& scope,
                                                        Target& target);

/// A kind of model.
struct ModelKind {
  std::string_view elementName;
  BuildBody build;
  std::initializer_list<MiningFunction> functions;  ///< those that it may have
  BuildFurtherBody buildFurther = nullptr;          ///< null: a model of the kind has one target

  [[nodiscard]] bool Serves(MiningFunction function) const noexcept {
    return std::find(functions.begin(), functions.end(), function) != functions.end();
  }
};

/// The kind of an element name; null if it isn't supported.
[[nodiscard]] const ModelKind* FindKind(std::string_view elementName) noexcept;
/// The same for a model inside an ensemble, where "Regression" and "DecisionTree" are other names of two kinds.
[[nodiscard]] const ModelKind* FindMemberKind(std::string_view elementName) noexcept;

}  // namespace Torvane
