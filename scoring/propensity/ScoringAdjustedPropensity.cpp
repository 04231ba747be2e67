#include "scoring/propensity/ScoringAdjustedPropensity.h"

#include <cmath>
#include <cstddef>

#include "scoring/common/KelCatVar.h"
#include "scoring/common/KelScoringConst.h"
#include "scoring/common/KelVarList.h"
#include "scoring/common/ValueRecord.h"
#include "scoring/propensity/OutputKeys.h"

namespace KelScoring_20 {

using KelCommon_1_3::KelStatus;
using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;
using KelXML_1_3::IKelEncoder;
using KelXML_1_3::KelCatVar;

namespace {

constexpr int kNoCategory = -1;

double EncodeText(const IKelEncoder& encoder, const Value& prediction) {
  // A text is encoded in place; only what is no text has to be turned into one.
  return prediction.GetType() == Value::kText ? encoder.EncodeString(prediction.Text())
                                              : encoder.EncodeString(prediction.GetString());
}

int PredictedIndex(const KelCatVar& target, const Value& prediction) {
  const IKelEncoder* encoder = target.GetEncoder();
  if (encoder == nullptr) return kNoCategory;
  return static_cast<int>(encoder->GetValueKind() == IKelEncoder::kNumericKind
                              ? encoder->EncodeNumber(prediction.GetReal())
                              : EncodeText(*encoder, prediction));
}

}  // namespace

ScoringAdjustedPropensity::ScoringAdjustedPropensity(KelXML_1_3::KelSettings& settings, KelXML_1_3::KelVarList& varList)
    : fSettings(settings), fVarList(varList) {}

ScoringAdjustedPropensity::~ScoringAdjustedPropensity() = default;

KelStatus ScoringAdjustedPropensity::ComputeRawPropensity(ValueRecord& record) const {
  const KelStatus noPropensity(KelScoringConst::kNoPropensity, false);
  const int predictionAt = record.IndexOf(OutputKeys::kPrediction);
  const int probabilityAt = record.IndexOf(OutputKeys::kProbability);
  if (predictionAt < 0 || probabilityAt < 0) return noPropensity;

  const auto* target = dynamic_cast<const KelCatVar*>(fVarList.GetTargetRespVariable());
  if (target == nullptr || !target->GetBinaryFlag()) return noPropensity;

  const int trueIndex = target->GetBinaryFlagTrueIndex();
  const int predictedIndex = PredictedIndex(*target, record.At(predictionAt));
  if (trueIndex < 0 || predictedIndex < 0) return noPropensity;

  const double probability = record.At(probabilityAt).GetReal();
  record[OutputKeys::kRawPropensity] = predictedIndex == trueIndex ? probability : 1.0 - probability;
  return KelStatus();
}

KelStatus ScoringAdjustedPropensity::ComputeAdjustedPropensity(ValueRecord& record) const {
  if (!fNetworkRead) return KelStatus(KelScoringConst::kNotImplemented, false);
  const KelStatus status = ComputeRawPropensity(record);
  if (!status.IsOK()) return status;

  const double rawPropensity = record[OutputKeys::kRawPropensity];
  const std::size_t hiddenUnits = fHiddenWeights.size();
  if (fHiddenBiases.size() != hiddenUnits || fOutputWeights.size() != hiddenUnits) {
    return KelStatus(KelScoringConst::kNetworkMalformed, false);
  }
  // adjusted = d + sum over i of v[i] * tanh(raw * w[i] + b[i]). Summed in the order of the units, the bias last: the
  // order shows in the last bits. Not clamped, so it may lie outside 0 to 1.
  double adjustedPropensity = 0.0;
  for (std::size_t i = 0; i < hiddenUnits; ++i) {
    adjustedPropensity += std::tanh(rawPropensity * fHiddenWeights[i] + fHiddenBiases[i]) * fOutputWeights[i];
  }
  adjustedPropensity += fOutputBias;
  record[OutputKeys::kAdjustedPropensity] = adjustedPropensity;
  return KelStatus();
}

}  // namespace KelScoring_20
