#pragma once

#include <string>
#include <vector>

#include "scoring/common/KelSettings.h"
#include "tools/kelscore/Arguments.h"

namespace kelscore {

/// The settings by which the library finds plug-ins: every kind of model counts as a model, and each goes to the
/// default plug-in unless the arguments say otherwise. Those of a settings file stand before them. The XML platform
/// must be up. Throws `Failure` (no model) for a settings file that can't be read.
[[nodiscard]] KelXML_1_3::KelSettings MakeSettings(const ModelArguments& arguments);

/// The names of the elements that count as a model, in the order of the settings.
[[nodiscard]] std::vector<std::string> ModelElements(KelXML_1_3::KelSettings& settings);

}  // namespace kelscore
