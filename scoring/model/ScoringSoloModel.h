#pragma once

#include <memory>
#include <string>
#include <vector>

#include "scoring/common/IKelScore.h"
#include "scoring/common/ValueRecord.h"
#include "scoring/model/ScoringAbsModel.h"

namespace KelScoring_20 {

/// A model of one document, scored by one plug-in's scorer. Around the scorer it computes derived fields into the
/// input record before, and propensities into the output record after.
///
/// The scorer refers to the model's settings and variable list, so it goes before them.
class ScoringSoloModel : public ScoringAbsModel {
 public:
  ScoringSoloModel(const KelXML_1_3::KelSettings& settings, const KelXML_1_3::KelVarList& varList);
  ScoringSoloModel(const ScoringSoloModel&) = delete;
  ScoringSoloModel& operator=(const ScoringSoloModel&) = delete;
  ~ScoringSoloModel() override;

  /// Takes ownership. Does nothing, and takes nothing, if a scorer is held.
  void SetScorer(KelCommon_1_3::IKelScore* scorer);

  [[nodiscard]] ScoringModel* Clone() const override;
  /// 260009 without a scorer; else the status of the transformation or the scorer. A propensity that can't be computed
  /// isn't reported: its field keeps its value.
  KelCommon_1_3::KelStatus Score(KelCommon_1_3::ValueRecord& in, KelCommon_1_3::ValueRecord& out) override;
  KelCommon_1_3::KelStatus Scorable(KelCommon_1_3::ValueRecord& record) override;
  [[nodiscard]] std::string GetModelType() const override;
  void SetDerivedFields(const std::vector<std::string>& derivedFields) override;

 private:
  KelCommon_1_3::KelStatus ComputeDerivedFields(KelCommon_1_3::ValueRecord& in) const;
  void ComputePropensity(KelCommon_1_3::ValueRecord& out) const;

  std::unique_ptr<KelCommon_1_3::IKelScore> fScorer;
  std::vector<KelCommon_1_3::FieldKey> fDerivedKeys;  // of fDerivedFields, hashed once
};

}  // namespace KelScoring_20
