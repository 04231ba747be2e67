#pragma once

#include <memory>
#include <string_view>

#include "plugins/torvane/fields/FieldScope.h"
#include "plugins/torvane/models/ModelBody.h"
#include "plugins/torvane/targets/Target.h"

namespace Torvane {

/// Builds the mathematics of a model element. Field names resolve in `scope`, categories that the body names are added
/// to `target`. Throws `PmmlError`.
using BuildBody = std::unique_ptr<ModelBody> (*)(const Element& model, FieldScope& scope, Target& target);

/// The builder of a model kind by its element name; null if the kind isn't supported.
[[nodiscard]] BuildBody FindBuilder(std::string_view elementName) noexcept;

}  // namespace Torvane
