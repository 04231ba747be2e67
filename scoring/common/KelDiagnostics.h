#pragma once

#include <string>

#include "scoring/common/KelExport.h"

namespace KelCommon_1_3 {

/// Where plug-ins and components leave the reason of a refusal, and where a host reads it after a failed creation.
///
/// A contract that answers with null can't say why; this can. Each thread has its own text. It is no log: it holds
/// the last reason only, and nothing on the scoring road touches it.
class KEL_EXPORT KelDiagnostics {
 public:
  /// Replaces this thread's reason. A good reason names element, attribute, offending text and line.
  static void Report(const std::string& reason);
  /// This thread's last reason; empty if there is none.
  static std::string Last();
  static void Clear();
};

}  // namespace KelCommon_1_3
