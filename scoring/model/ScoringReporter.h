#pragma once

#include <cstdint>
#include <string>

#include "scoring/common/KelExport.h"
#include "scoring/common/ProgressReport.h"

namespace KelScoring_20 {

/// The simplest progress sink, for hosts and plug-ins: it knows the number of the current step and no measure.
class KEL_EXPORT ScoringReporter : public KelCommon_1_3::ProgressReport {
 public:
  ~ScoringReporter() override;
  /// Always 1.
  int DiscreteMeasure(const std::string& measure) override;
  /// Always the mark of a missing number.
  double ScaleMeasure(const std::string& measure) override;

  void SetCurrentStepNum(int stepNum) noexcept { fCurrentStepNum = stepNum; }
  [[nodiscard]] int GetCurrentStepNum() const noexcept { return fCurrentStepNum; }

 private:
  std::int32_t fCurrentStepNum = 0;
};

}  // namespace KelScoring_20
