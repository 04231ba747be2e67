#include "scoring/model/ScoringAbsModel.h"

#include "scoring/propensity/ScoringAdjustedPropensity.h"

namespace KelScoring_20 {

using KelCommon_1_3::KelStatus;
using KelTransformNS::KelTransformation;
using KelXML_1_3::KelSettings;
using KelXML_1_3::KelVarList;

ScoringAbsModel::ScoringAbsModel() = default;

ScoringAbsModel::ScoringAbsModel(const KelSettings& settings, const KelVarList& varList)
    : fSettings(settings), fVarList(varList) {}

ScoringAbsModel::ScoringAbsModel(const ScoringAbsModel& other)
    : ScoringModel(other),
      fSettings(other.fSettings),
      fVarList(other.fVarList),
      fType(other.fType),
      fSubType(other.fSubType),
      fAlgName(other.fAlgName),
      fVersion(other.fVersion),
      fDerivedFields(other.fDerivedFields),
      fNeedDerivedPredictor(other.fNeedDerivedPredictor),
      fModelID(other.fModelID),
      fAppName(other.fAppName),
      fAppVersion(other.fAppVersion),
      fStatus(other.fStatus) {}

ScoringAbsModel& ScoringAbsModel::operator=(const ScoringAbsModel& other) {
  if (this == &other) return *this;
  fTransformation.reset();
  fAdjustedPropensity.reset();
  fSettings = other.fSettings;
  fVarList = other.fVarList;
  fType = other.fType;
  fSubType = other.fSubType;
  fAlgName = other.fAlgName;
  fVersion = other.fVersion;
  fDerivedFields = other.fDerivedFields;
  fNeedDerivedPredictor = other.fNeedDerivedPredictor;
  fModelID = other.fModelID;
  fAppName = other.fAppName;
  fAppVersion = other.fAppVersion;
  fStatus = other.fStatus;
  return *this;
}

ScoringAbsModel::~ScoringAbsModel() {
  fTransformation.reset();
  fAdjustedPropensity.reset();
}

KelSettings& ScoringAbsModel::GetSettings() { return fSettings; }

const KelSettings& ScoringAbsModel::GetSettings() const { return fSettings; }

KelVarList& ScoringAbsModel::GetVarList() { return fVarList; }

const KelVarList& ScoringAbsModel::GetVarList() const { return fVarList; }

std::string ScoringAbsModel::GetModelType() const { return "UNKNOWN"; }

KelScoringConst::ModelType ScoringAbsModel::GetType() const { return fType; }

void ScoringAbsModel::SetType(KelScoringConst::ModelType type) { fType = type; }

std::string ScoringAbsModel::GetSubType() const { return fSubType; }

void ScoringAbsModel::SetSubType(const std::string& subType) { fSubType = subType; }

std::string ScoringAbsModel::GetAlgName() const { return fAlgName; }

void ScoringAbsModel::SetAlgName(const std::string& algName) { fAlgName = algName; }

std::string ScoringAbsModel::GetVersion() const { return fVersion; }

void ScoringAbsModel::SetVersion(const std::string& version) { fVersion = version; }

const KelTransformation* ScoringAbsModel::GetTransformation() const { return fTransformation.get(); }

void ScoringAbsModel::SetTransformation(KelTransformation* transformation) { fTransformation.reset(transformation); }

const std::vector<std::string>& ScoringAbsModel::GetDerivedFields() const { return fDerivedFields; }

void ScoringAbsModel::SetDerivedFields(const std::vector<std::string>& derivedFields) {
  fDerivedFields = derivedFields;
}

void ScoringAbsModel::SetNeedDerivedPredictor(bool need) { fNeedDerivedPredictor = need; }

bool ScoringAbsModel::NeedDerivedPredictor() const { return fNeedDerivedPredictor; }

ScoringAdjustedPropensity* ScoringAbsModel::GetAdjustedPropensity() const { return fAdjustedPropensity.get(); }

void ScoringAbsModel::SetAdjustedPropensity(ScoringAdjustedPropensity* adjustedPropensity) {
  // Callers may replace an evaluator that they have destroyed themselves, so the old one is let go as it is.
  static_cast<void>(fAdjustedPropensity.release());
  fAdjustedPropensity.reset(adjustedPropensity);
}

std::string ScoringAbsModel::GetModelID() const { return fModelID; }

void ScoringAbsModel::SetModelID(const std::string& modelID) { fModelID = modelID; }

std::string ScoringAbsModel::GetAppName() const { return fAppName; }

void ScoringAbsModel::SetAppName(const std::string& appName) { fAppName = appName; }

std::string ScoringAbsModel::GetAppVersion() const { return fAppVersion; }

void ScoringAbsModel::SetAppVersion(const std::string& appVersion) { fAppVersion = appVersion; }

KelStatus ScoringAbsModel::GetStatus() const { return fStatus; }

void ScoringAbsModel::Display(std::ostream& /*stream*/) const {}

}  // namespace KelScoring_20
