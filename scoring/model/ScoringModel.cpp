#include "scoring/model/ScoringModel.h"

namespace KelScoring_20 {

ScoringModel::ScoringModel() = default;
ScoringModel::ScoringModel(const ScoringModel&) = default;
ScoringModel& ScoringModel::operator=(const ScoringModel&) = default;
ScoringModel::~ScoringModel() = default;

}  // namespace KelScoring_20
