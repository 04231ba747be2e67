#pragma once

#include <string>

#include "scoring/common/KelExport.h"
#include "scoring/common/KelStatus.h"

namespace KelCommon_1_3 {

class ValueRecord;

/// The abstract scorer: the mathematics of one model, made by a plug-in and owned by a model.
///
/// The order of the virtual operations is part of the contract between library and plug-ins.
class KEL_EXPORT IKelScore {
 public:
  virtual ~IKelScore();
  /// Whether the scorer can score. The library doesn't ask.
  virtual bool IsReady() = 0;
  /// Scores `in` and fills those names that `out` holds. Both records belong to the caller.
  virtual KelStatus Score(const ValueRecord& in, ValueRecord& out) = 0;
  /// Adds the names of all outputs that the scorer can give to `record`.
  virtual KelStatus Scorable(ValueRecord& record) = 0;
  /// The kind of scorer, for people.
  virtual std::string GetType() = 0;
};

}  // namespace KelCommon_1_3
