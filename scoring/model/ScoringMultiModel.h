#pragma once

#include <memory>
#include <string>
#include <vector>

#include "scoring/model/MemberIds.h"
#include "scoring/model/ScoringAbsModel.h"

namespace KelScoring_20 {

/// Models that are all scored on each record. Their results stand apart by identifier: `out[name][id]`. Nothing is
/// combined; metadata is that of the first member.
///
/// Owns its members and destroys them in the order of adding.
class ScoringMultiModel : public ScoringAbsModel {
 public:
  ScoringMultiModel();
  ScoringMultiModel(const ScoringMultiModel&) = delete;
  ScoringMultiModel& operator=(const ScoringMultiModel&) = delete;
  ~ScoringMultiModel() override;

  /// Takes ownership of `model`, which isn't null. Identifiers needn't differ: the later one's results then stay.
  void AddModel(std::string id, ScoringModel* model);

  [[nodiscard]] ScoringModel* Clone() const override;
  /// 260009 without members, else OK. A member that fails leaves what `out` held for it. All members get the same input
  /// record, so a later one finds the derived fields of the earlier ones there.
  KelCommon_1_3::KelStatus Score(KelCommon_1_3::ValueRecord& in, KelCommon_1_3::ValueRecord& out) override;
  KelCommon_1_3::KelStatus Scorable(KelCommon_1_3::ValueRecord& record) override;
  KelXML_1_3::KelSettings& GetSettings() override;
  [[nodiscard]] const KelXML_1_3::KelSettings& GetSettings() const override;
  KelXML_1_3::KelVarList& GetVarList() override;
  [[nodiscard]] const KelXML_1_3::KelVarList& GetVarList() const override;
  [[nodiscard]] std::string GetModelType() const override;
  [[nodiscard]] KelScoringConst::ModelType GetType() const override;
  [[nodiscard]] std::string GetSubType() const override;

 private:
  MemberIds fModelIDs;  // beside fModels
  std::vector<std::unique_ptr<ScoringModel>> fModels;
};

}  // namespace KelScoring_20
