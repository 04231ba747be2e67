#pragma once

#include <string>

#include "scoring/common/KelStatus.h"

namespace kelscore {

/// Code and meaning of a status for a message: "status 260009 (...)".
[[nodiscard]] inline std::string StatusText(const KelCommon_1_3::KelStatus& status) {
  return "status " + std::to_string(status.GetErrorCode()) + " (" + status.GetMessage() + ")";
}

}  // namespace kelscore
