#include "scoring/factory/SoloModelCreation.h"

#include <cerrno>
#include <fstream>
#include <map>
#include <system_error>
#include <vector>

#include "scoring/common/KelCatVar.h"
#include "scoring/common/KelDiagnostics.h"
#include "scoring/common/KelScoringConst.h"
#include "scoring/common/KelSettings.h"
#include "scoring/common/KelVarList.h"
#include "scoring/factory/ScoringModelAttr.h"
#include "scoring/factory/ScoringScorerFactory.h"
#include "scoring/model/ScoringSoloModel.h"
#include "scoring/propensity/ScoringAdjustedPropensity.h"

namespace KelScoring_20 {

using KelCommon_1_3::IKelScore;
using KelCommon_1_3::KelDiagnostics;
using KelCommon_1_3::KelStatus;
using KelXML_1_3::KelCatVar;
using KelXML_1_3::KelSettings;
using KelXML_1_3::KelVarList;
using namespace KelScoringConst;

namespace {

KelStatus Prescan(KelSettings& settings, std::istream& stream, ScoringModelAttr& attr) {
  std::map<std::string, std::string> scoringNames;
  KelStatus status = ScoringScorerFactory::GetScoringNames(scoringNames, settings);
  if (!status.IsOK()) return status;
  std::vector<std::string> modelNames;
  status = ScoringScorerFactory::GetModelNames(modelNames, settings);
  if (!status.IsOK()) return status;

  std::string encoding = "UTF-8";
  settings.GetSettingValByName(kSettingEncoding, encoding);
  status = ScoringScorerFactory::GetModelAttr(stream, modelNames, attr, encoding);
  if (attr.type == UnknownModel && !attr.modelType.empty()) {
    attr.type = ScoringScorerFactory::GetModelType(attr.modelType);
  }
  return status;
}

// These kinds start from an empty list: what stands in it comes from the plug-in.
bool StartsWithoutVariables(ModelType type) {
  return type == UnknownModel || type == AssociationModel || type == SequenceModel;
}

// A list that couldn't be read doesn't stop the creation: whether the model can do without is the plug-in's matter.
KelVarList ReadVariables(ScoringModelAttr& attr) {
  KelVarList varList;
  if (!StartsWithoutVariables(attr.type)) static_cast<void>(ScoringScorerFactory::ParseVarList(varList, attr));
  return varList;
}

void TellSettings(const ScoringModelAttr& attr, KelSettings& settings) {
  settings.AddSetting(kSettingScoringVersion, attr.version, true);
  settings.AddSetting(kSettingScoringModelType, attr.modelType, true);
  settings.AddSetting(kSettingScoringMultipleModelMethod, attr.multipleModelMethod, true);
}

void TellModel(const ScoringModelAttr& attr, ScoringSoloModel& model) {
  model.SetType(attr.type);
  model.SetAlgName(attr.algorithmName);
  model.SetModelID(attr.modelID);
  model.SetAppName(attr.applicationName);
  model.SetAppVersion(attr.applicationVersion);
  std::string subType;  // read back from the settings, because the plug-in may have put another one there
  model.GetSettings().GetSettingValByName(kSettingScoringModelType, subType);
  model.SetSubType(subType);
}

void AddTransformation(ScoringModelAttr& attr, ScoringSoloModel& model) {
  if (!attr.hasTransformations) return;
  model.SetTransformation(ScoringScorerFactory::GetTransformation(attr));
  model.SetDerivedFields(attr.derivedFields);
  bool needDerivedPredictor = false;
  if (model.GetSettings().GetSettingValByName(kSettingScoringNeedDerivedPredictor, needDerivedPredictor)) {
    model.SetNeedDerivedPredictor(needDerivedPredictor);
  }
}

// A flag target has an evaluator also without a network in the document; only a network that can't be read takes it
// away.
void AddPropensity(ScoringModelAttr& attr, ScoringSoloModel& model) {
  const auto* target = dynamic_cast<const KelCatVar*>(model.GetVarList().GetTargetRespVariable());
  if (target == nullptr || !target->GetBinaryFlag()) return;
  auto evaluator = std::make_unique<ScoringAdjustedPropensity>(model.GetSettings(), model.GetVarList());
  if (attr.propensityStream != nullptr) {
    if (!evaluator->ReadNetwork(attr.propensityStream)) evaluator.reset();
    attr.propensityStream->clear();
    attr.propensityStream->str("");
  }
  model.SetAdjustedPropensity(evaluator.release());
}

}  // namespace

std::unique_ptr<ScoringModel> CreateSoloModel(KelSettings& settings, std::istream& stream, KelStatus& status) {
  KelDiagnostics::Clear();
  status = KelStatus();  // also where an exception leaves before the first outcome
  ScoringModelAttr attr;
  status = Prescan(settings, stream, attr);
  if (status.IsError()) return nullptr;
  const KelVarList varList = ReadVariables(attr);
  TellSettings(attr, settings);
  auto model = std::make_unique<ScoringSoloModel>(settings, varList);
  IKelScore* scorer = ScoringScorerFactory::GetScorer(model->GetSettings(), model->GetVarList(), stream);
  if (scorer == nullptr) {
    status = KelStatus(kNoScorer, false);
    return nullptr;
  }
  model->SetScorer(scorer);
  TellModel(attr, *model);
  if (status.IsOK()) {  // a warning means that nothing is known about the document
    AddTransformation(attr, *model);
    AddPropensity(attr, *model);
  }
  return model;
}

std::unique_ptr<ScoringModel> CreateSoloModelFromFile(KelSettings& settings, const std::string& path,
                                                      KelStatus& status) {
  std::ifstream file(path);
  if (!file.is_open()) {
    KelDiagnostics::Report("the file \"" + path + "\" can't be opened: " + std::generic_category().message(errno));
    status = KelStatus(kFileNotOpened, false);
    return nullptr;
  }
  return CreateSoloModel(settings, file, status);
}

}  // namespace KelScoring_20
