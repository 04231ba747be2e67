#pragma once

#include "scoring/common/KelScoringConst.h"
#include "scoring/common/ValueRecord.h"

/// The outputs that the library itself reads or writes, hashed once for the whole process.
namespace KelScoring_20::OutputKeys {

inline const KelCommon_1_3::FieldKey kPrediction{KelScoringConst::kOutputPrediction};
inline const KelCommon_1_3::FieldKey kProbability{KelScoringConst::kOutputProbability};
inline const KelCommon_1_3::FieldKey kRawPropensity{KelScoringConst::kOutputRawPropensity};
inline const KelCommon_1_3::FieldKey kAdjustedPropensity{KelScoringConst::kOutputAdjustedPropensity};

}  // namespace KelScoring_20::OutputKeys
