#include "scoring/model/ScoringBaseScorer.h"

#include "scoring/common/KelScoringConst.h"

namespace KelScoring_20 {

using KelCommon_1_3::KelStatus;
using KelCommon_1_3::ValueRecord;
using KelXML_1_3::KelSettings;
using KelXML_1_3::KelVarList;

ScoringBaseScorer::ScoringBaseScorer(KelSettings& settings, const KelVarList& varList)
    : fSettings(settings), fVarList(varList) {}

ScoringBaseScorer::ScoringBaseScorer(const ScoringBaseScorer& other) = default;

ScoringBaseScorer::~ScoringBaseScorer() = default;

bool ScoringBaseScorer::IsReady() { return false; }

KelStatus ScoringBaseScorer::Score(const ValueRecord& /*in*/, ValueRecord& /*out*/) {
  return KelStatus(KelScoringConst::kNotImplemented, false);
}

KelStatus ScoringBaseScorer::Scorable(ValueRecord& /*record*/) {
  return KelStatus(KelScoringConst::kNotImplemented, false);
}

std::string ScoringBaseScorer::GetType() { return "UNKNOWN"; }

KelSettings& ScoringBaseScorer::GetSettings() { return fSettings; }

const KelSettings& ScoringBaseScorer::GetSettings() const { return fSettings; }

void ScoringBaseScorer::SetSettings(const KelSettings& settings) { fSettings = settings; }

KelVarList& ScoringBaseScorer::GetVarList() { return fVarList; }

const KelVarList& ScoringBaseScorer::GetVarList() const { return fVarList; }

void ScoringBaseScorer::SetVarList(const KelVarList& varList) { fVarList = varList; }

}  // namespace KelScoring_20
