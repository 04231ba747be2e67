#pragma once

#include <memory>
#include <string>

#include "plugins/torvane/TorvaneScorer.h"
#include "scoring/common/KelSettings.h"
#include "scoring/common/KelVarList.h"

namespace Torvane {

/// The setting "scoring_modelType". Throws `PmmlError` if it names no kind of model that is supported.
[[nodiscard]] std::string ReadModelType(const KelXML_1_3::KelSettings& settings);

/// Compiles the first child of `root` that has the name `modelType`. Throws `PmmlError` if `root` isn't PMML of a
/// supported version, has no such child, or the model can't be scored. The tree of `root` isn't kept. `stream` is what
/// `root` comes from, if the segments of an ensemble are still to be read; null for a whole tree.
[[nodiscard]] std::unique_ptr<TorvaneScorer> MakeScorer(const Element& root, const std::string& modelType,
                                                        KelXML_1_3::KelSettings& settings,
                                                        const KelXML_1_3::KelVarList& varList,
                                                        KelXML_1_3::ElementStream* stream = nullptr);

}  // namespace Torvane
