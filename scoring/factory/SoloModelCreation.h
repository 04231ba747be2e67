#pragma once

#include <iosfwd>
#include <memory>
#include <string>

#include "scoring/common/KelStatus.h"

namespace KelXML_1_3 {
class KelSettings;
}

namespace KelScoring_20 {

class ScoringModel;

/// The whole road from one document to a finished model: prescan, variable list, plug-in, metadata, transformation,
/// propensity. Null only with an error in `status`, which is set anew. Writes three keys into `settings` (see
/// `ScoringFactory`) and leaves this thread's reason of a refusal in `KelDiagnostics`.
std::unique_ptr<ScoringModel> CreateSoloModel(KelXML_1_3::KelSettings& settings, std::istream& stream,
                                              KelCommon_1_3::KelStatus& status);

/// The same from a file; 260004 if it can't be opened.
std::unique_ptr<ScoringModel> CreateSoloModelFromFile(KelXML_1_3::KelSettings& settings, const std::string& path,
                                                      KelCommon_1_3::KelStatus& status);

}  // namespace KelScoring_20
