#pragma once

#include <stdexcept>
#include <string>

#include "scoring/common/KelExport.h"

namespace KelXML_1_3 {

/// Why a document can't be served: malformed, contradictory or not supported. The text names element, attribute,
/// offending value and line.
///
/// Thrown by readers and builders while they load, caught at the edge of a component (which reports the text through
/// `KelDiagnostics`); never leaves a component's public operations and never occurs while a record is scored.
class KEL_EXPORT PmmlError : public std::runtime_error {
 public:
  explicit PmmlError(const std::string& reason);
  ~PmmlError() override;
};

}  // namespace KelXML_1_3
