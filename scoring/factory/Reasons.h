#pragma once

#include <string>

#include "scoring/common/KelDiagnostics.h"

namespace KelScoring_20 {

/// Leaves a reason unless there is one: whoever was closer to the trouble knows it better.
inline void ReportIfNone(const std::string& reason) {
  if (KelCommon_1_3::KelDiagnostics::Last().empty()) KelCommon_1_3::KelDiagnostics::Report(reason);
}

}  // namespace KelScoring_20
