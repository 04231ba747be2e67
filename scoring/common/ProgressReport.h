#pragma once

#include <string>

#include "scoring/common/KelExport.h"

namespace KelCommon_1_3 {

/// The abstract sink of progress measures.
class KEL_EXPORT ProgressReport {
 public:
  virtual ~ProgressReport();
  virtual int DiscreteMeasure(const std::string& measure) = 0;
  virtual double ScaleMeasure(const std::string& measure) = 0;
};

}  // namespace KelCommon_1_3
