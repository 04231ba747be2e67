#include "scoring/model/ScoringReporter.h"

#include "scoring/common/KelMV.h"

namespace KelScoring_20 {

ScoringReporter::~ScoringReporter() = default;

int ScoringReporter::DiscreteMeasure(const std::string& /*measure*/) { return 1; }

double ScoringReporter::ScaleMeasure(const std::string& /*measure*/) { return KelCommon_1_3::KelMV::gMissingValue; }

}  // namespace KelScoring_20
