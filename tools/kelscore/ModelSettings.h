#pragma once

#include "scoring/common/KelSettings.h"
#include "tools/kelscore/Arguments.h"

namespace kelscore {

/// The settings by which the library finds plug-ins: every kind of model counts as a model, and each goes to the
/// default plug-in unless the arguments say otherwise.
[[nodiscard]] KelXML_1_3::KelSettings MakeSettings(const ModelArguments& arguments);

}  // namespace kelscore
