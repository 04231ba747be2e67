#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "scoring/common/KelExport.h"
#include "scoring/common/Value.h"
#include "scoring/model/ScoringAbsModel.h"

namespace KelScoring_20 {

class SplitKeyIndex;

/// Models of which exactly one scores each record: the values of the split fields, taken together, are its key.
///
/// Owns its members and destroys them in key order. "First" means the one with the least key. The variable list and
/// the derived fields are merged over all members on first request and kept; other metadata is that of the first.
///
/// Threads: `Score` and `Scorable` may run on several threads as far as the members allow that. `AddModel`, `SetModel`,
/// `SetSplitFields` and the first calls of `GetVarList` and `GetDerivedFields` must not run beside anything else.
class KEL_EXPORT ScoringSplitModel : public ScoringAbsModel {
 public:
  using Key = std::vector<KelCommon_1_3::Value>;
  using ModelMap = std::map<Key, ScoringModel*>;

  ScoringSplitModel();
  ScoringSplitModel(const ScoringSplitModel&) = delete;
  ScoringSplitModel& operator=(const ScoringSplitModel&) = delete;
  ~ScoringSplitModel() override;

  /// Takes ownership of `model`, which isn't null, under a copy of `key`. False if the key is taken: then nothing
  /// changes and `model` stays the caller's.
  bool AddModel(const Key& key, ScoringModel* model);
  [[nodiscard]] const ModelMap& GetModel() const { return fModels; }
  /// Takes ownership of all models of `models` if there is none yet, else does nothing.
  void SetModel(const ModelMap& models);
  /// The names of the split fields in key order. Has no effect on positions that were worked out before.
  void SetSplitFields(std::vector<std::string>& fields);
  [[nodiscard]] std::vector<std::string> GetSplitFields() { return fSplitFields; }

  [[nodiscard]] ScoringModel* Clone() const override;
  /// Picks the member for the key and gives what its `Score` gives. 260009: no member for the key. 260027: a split
  /// field is not in `in`.
  ///
  /// The positions of the split fields are worked out on the first record that has them all, and hold from then on:
  /// later records must have the split fields at the same positions. One that is too short gives 260027.
  KelCommon_1_3::KelStatus Score(KelCommon_1_3::ValueRecord& in, KelCommon_1_3::ValueRecord& out) override;
  /// What the first member offers; 260009 without members.
  KelCommon_1_3::KelStatus Scorable(KelCommon_1_3::ValueRecord& record) override;

  KelXML_1_3::KelSettings& GetSettings() override;
  [[nodiscard]] const KelXML_1_3::KelSettings& GetSettings() const override;
  /// All variables of the first member as they stand there; of the others what they add: variables, categories, and
  /// that a variable is an input.
  KelXML_1_3::KelVarList& GetVarList() override;
  [[nodiscard]] const KelXML_1_3::KelVarList& GetVarList() const override;
  [[nodiscard]] std::string GetModelType() const override;
  [[nodiscard]] KelScoringConst::ModelType GetType() const override;
  [[nodiscard]] std::string GetSubType() const override;
  /// The derived fields of all members in key order, duplicates included.
  [[nodiscard]] const std::vector<std::string>& GetDerivedFields() const override;
  [[nodiscard]] std::string GetAppName() const override;
  [[nodiscard]] std::string GetAppVersion() const override;
  void Display(std::ostream& stream) const override;

 private:
  using Positions = std::vector<std::int32_t>;

  [[nodiscard]] const Positions* SplitPositions(const KelCommon_1_3::ValueRecord& in);
  [[nodiscard]] const Positions* FindPositions(const KelCommon_1_3::ValueRecord& in);
  const Positions* Publish(Positions positions);
  [[nodiscard]] ScoringModel* First() const { return fModels.empty() ? nullptr : fModels.begin()->second; }
  void MergeDerivedFields();

  std::vector<std::string> fSplitFields;
  std::atomic<const Positions*> fSplitFieldIndices = nullptr;  // owned; null: not worked out
  ModelMap fModels;
  std::unique_ptr<SplitKeyIndex> fIndex;  // of fModels
};

}  // namespace KelScoring_20
