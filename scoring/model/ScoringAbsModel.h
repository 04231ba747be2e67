#pragma once

#include <memory>
#include <string>
#include <vector>

#include "scoring/common/KelExport.h"
#include "scoring/common/KelSettings.h"
#include "scoring/common/KelTransformation.h"
#include "scoring/common/KelVarList.h"
#include "scoring/model/ScoringModel.h"

namespace KelScoring_20 {

/// The common base of all models: settings, variables, metadata, and the two owned helpers of a solo model. It scores
/// nothing itself.
class KEL_EXPORT ScoringAbsModel : public ScoringModel {
 public:
  /// A copy has neither transformation nor evaluator: each of these has one owner.
  ScoringAbsModel(const ScoringAbsModel& other);
  ScoringAbsModel& operator=(const ScoringAbsModel& other);
  /// Destroys the transformation, then the evaluator, then the fields that the evaluator refers to.
  ~ScoringAbsModel() override;

  KelXML_1_3::KelSettings& GetSettings() override;
  [[nodiscard]] const KelXML_1_3::KelSettings& GetSettings() const override;
  KelXML_1_3::KelVarList& GetVarList() override;
  [[nodiscard]] const KelXML_1_3::KelVarList& GetVarList() const override;
  [[nodiscard]] std::string GetModelType() const override;
  [[nodiscard]] KelScoringConst::ModelType GetType() const override;
  void SetType(KelScoringConst::ModelType type) override;
  [[nodiscard]] std::string GetSubType() const override;
  void SetSubType(const std::string& subType) override;
  [[nodiscard]] std::string GetAlgName() const override;
  void SetAlgName(const std::string& algName) override;
  [[nodiscard]] std::string GetVersion() const override;
  void SetVersion(const std::string& version) override;
  [[nodiscard]] const KelTransformNS::KelTransformation* GetTransformation() const override;
  void SetTransformation(KelTransformNS::KelTransformation* transformation) override;
  [[nodiscard]] const std::vector<std::string>& GetDerivedFields() const override;
  void SetDerivedFields(const std::vector<std::string>& derivedFields) override;
  void SetNeedDerivedPredictor(bool need) override;
  [[nodiscard]] bool NeedDerivedPredictor() const override;
  [[nodiscard]] ScoringAdjustedPropensity* GetAdjustedPropensity() const override;
  void SetAdjustedPropensity(ScoringAdjustedPropensity* adjustedPropensity) override;
  [[nodiscard]] std::string GetModelID() const override;
  void SetModelID(const std::string& modelID) override;
  [[nodiscard]] std::string GetAppName() const override;
  void SetAppName(const std::string& appName) override;
  [[nodiscard]] std::string GetAppVersion() const override;
  void SetAppVersion(const std::string& appVersion) override;
  [[nodiscard]] KelCommon_1_3::KelStatus GetStatus() const override;
  void Display(std::ostream& stream) const override;

 protected:
  ScoringAbsModel();
  /// Copies both. A scorer and an evaluator refer to these copies.
  ScoringAbsModel(const KelXML_1_3::KelSettings& settings, const KelXML_1_3::KelVarList& varList);

  KelXML_1_3::KelSettings fSettings;
  KelXML_1_3::KelVarList fVarList;
  KelScoringConst::ModelType fType = KelScoringConst::UnknownModel;
  std::string fSubType;
  std::string fAlgName;
  std::string fVersion;
  std::unique_ptr<KelTransformNS::KelTransformation> fTransformation;
  std::vector<std::string> fDerivedFields;
  bool fNeedDerivedPredictor = false;
  std::unique_ptr<ScoringAdjustedPropensity> fAdjustedPropensity;
  std::string fModelID;
  std::string fAppName;
  std::string fAppVersion;
  KelCommon_1_3::KelStatus fStatus;
};

}  // namespace KelScoring_20
