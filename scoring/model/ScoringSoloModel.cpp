#include "scoring/model/ScoringSoloModel.h"

#include "scoring/common/KelScoringConst.h"
#include "scoring/propensity/OutputKeys.h"
#include "scoring/propensity/ScoringAdjustedPropensity.h"

namespace KelScoring_20 {

using KelCommon_1_3::FieldKey;
using KelCommon_1_3::IKelScore;
using KelCommon_1_3::KelStatus;
using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;

ScoringSoloModel::ScoringSoloModel(const KelXML_1_3::KelSettings& settings, const KelXML_1_3::KelVarList& varList)
    : ScoringAbsModel(settings, varList) {}

ScoringSoloModel::~ScoringSoloModel() = default;

void ScoringSoloModel::SetScorer(IKelScore* scorer) {
  if (fScorer == nullptr) fScorer.reset(scorer);
}

ScoringModel* ScoringSoloModel::Clone() const { return nullptr; }

KelStatus ScoringSoloModel::Score(ValueRecord& in, ValueRecord& out) {
  if (fScorer == nullptr) return KelStatus(KelScoringConst::kNothingToScoreWith, false);
  if (fTransformation != nullptr) {
    const KelStatus derived = ComputeDerivedFields(in);
    if (!derived.IsOK()) return derived;
  }
  const KelStatus scored = fScorer->Score(in, out);
  if (scored.IsOK() && fAdjustedPropensity != nullptr) ComputePropensity(out);
  return scored;
}

KelStatus ScoringSoloModel::ComputeDerivedFields(ValueRecord& in) const {
  if (NeedDerivedPredictor()) {
    static_cast<void>(fTransformation->GetDerivedVariableInfo(in, false));
    return fTransformation->Transform(in);
  }
  if (fDerivedKeys.empty()) return KelStatus();
  for (const FieldKey& key : fDerivedKeys) in.Add(key, Value::NULL_VALUE);
  return fTransformation->Transform(in);
}

// Which of the two is computed follows from what the host left in `out`; the adjusted one covers the raw one.
void ScoringSoloModel::ComputePropensity(ValueRecord& out) const {
  if (out.Contains(OutputKeys::kAdjustedPropensity)) {
    static_cast<void>(fAdjustedPropensity->ComputeAdjustedPropensity(out));
  } else if (out.Contains(OutputKeys::kRawPropensity)) {
    static_cast<void>(fAdjustedPropensity->ComputeRawPropensity(out));
  }
}

KelStatus ScoringSoloModel::Scorable(ValueRecord& record) {
  if (fScorer == nullptr) return KelStatus(KelScoringConst::kNothingToScoreWith, false);
  const KelStatus status = fScorer->Scorable(record);
  if (!status.IsOK()) return status;
  if (!record.Contains(OutputKeys::kPrediction) || !record.Contains(OutputKeys::kProbability)) return status;
  const ScoringAdjustedPropensity* evaluator = GetAdjustedPropensity();
  if (evaluator == nullptr) return status;
  record.Add(OutputKeys::kRawPropensity, Value::NULL_VALUE);
  if (evaluator->fNetworkRead) record.Add(OutputKeys::kAdjustedPropensity, Value::NULL_VALUE);
  return status;
}

std::string ScoringSoloModel::GetModelType() const { return fScorer == nullptr ? "UNKNOWN" : fScorer->GetType(); }

void ScoringSoloModel::SetDerivedFields(const std::vector<std::string>& derivedFields) {
  fDerivedKeys = std::vector<FieldKey>(derivedFields.begin(), derivedFields.end());
  ScoringAbsModel::SetDerivedFields(derivedFields);
}

}  // namespace KelScoring_20
