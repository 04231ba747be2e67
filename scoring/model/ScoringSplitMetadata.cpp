#include <iterator>
#include <utility>

#include "scoring/common/KelCatVar.h"
#include "scoring/common/KelVarList.h"
#include "scoring/model/ScoringSplitModel.h"

namespace KelScoring_20 {

using KelXML_1_3::IKelEncoder;
using KelXML_1_3::IKelVariable;
using KelXML_1_3::KelSettings;
using KelXML_1_3::KelVarList;

namespace {

bool IsCategorical(const IKelVariable& variable) {
  const auto level = variable.GetMeasureLevel();
  return level == KelXML_1_3::kCategoricalNumeric || level == KelXML_1_3::kCategoricalString;
}

// A categorical variable comes with its number of categories, not with their values.
void AddVariable(const IKelVariable& variable, KelVarList& merged) {
  if (IsCategorical(variable)) {
    merged.AddCatVar(variable.GetName(), variable.GetLabel(), variable.GetCategoryCount(), variable.GetMeasureLevel(),
                     variable.GetVariableRole());
  } else if (variable.GetMeasureLevel() == KelXML_1_3::kContinuous) {
    merged.AddContVar(variable.GetName(), variable.GetLabel(), variable.GetVariableRole());
  }
}

void AddCategories(const IKelEncoder& from, bool asTexts, IKelEncoder& to) {
  for (int i = 0; i < from.GetValueCount(); ++i) {
    if (asTexts) {
      to.AddStringValue(from.GetStringValueAt(i));
    } else {
      to.AddNumericValue(from.GetNumericValueAt(i));
    }
  }
}

// The level of the variable that is there decides how categories are read. Of roles only that of an input is taken.
void ExtendVariable(const IKelVariable& variable, IKelVariable& existing) {
  const IKelEncoder* from = variable.GetEncoder();
  IKelEncoder* to = existing.GetEncoder();
  if (IsCategorical(existing) && from != nullptr && to != nullptr) {
    AddCategories(*from, existing.GetMeasureLevel() == KelXML_1_3::kCategoricalString, *to);
  }
  if (variable.GetVariableRole() == KelXML_1_3::kRoleInput) existing.SetVariableRole(KelXML_1_3::kRoleInput);
}

void MergeVariables(const KelVarList& variables, KelVarList& merged) {
  for (int i = 0; i < variables.Size(); ++i) {
    const IKelVariable& variable = *variables.GetVarAt(i);
    if (IKelVariable* existing = merged.GetVariable(variable.GetName())) {
      ExtendVariable(variable, *existing);
    } else {
      AddVariable(variable, merged);
    }
  }
}

}  // namespace

KelVarList& ScoringSplitModel::GetVarList() {
  if (fModels.empty() || fVarList.Size() != 0) return fVarList;
  fVarList = First()->GetVarList();
  for (auto entry = std::next(fModels.begin()); entry != fModels.end(); ++entry) {
    MergeVariables(entry->second->GetVarList(), fVarList);
  }
  return fVarList;
}

// The merge is a cache that a reader may fill, so the const forms may, too.
const KelVarList& ScoringSplitModel::GetVarList() const { return const_cast<ScoringSplitModel*>(this)->GetVarList(); }

const std::vector<std::string>& ScoringSplitModel::GetDerivedFields() const {
  const_cast<ScoringSplitModel*>(this)->MergeDerivedFields();
  return fDerivedFields;
}

void ScoringSplitModel::MergeDerivedFields() {
  if (!fDerivedFields.empty()) return;
  for (const auto& [key, model] : fModels) {
    const std::vector<std::string>& fields = model->GetDerivedFields();
    fDerivedFields.insert(fDerivedFields.end(), fields.begin(), fields.end());
  }
}

KelSettings& ScoringSplitModel::GetSettings() { return fModels.empty() ? fSettings : First()->GetSettings(); }

const KelSettings& ScoringSplitModel::GetSettings() const {
  return fModels.empty() ? fSettings : std::as_const(*First()).GetSettings();
}

std::string ScoringSplitModel::GetModelType() const { return fModels.empty() ? "UNKNOWN" : First()->GetModelType(); }

KelScoringConst::ModelType ScoringSplitModel::GetType() const { return fModels.empty() ? fType : First()->GetType(); }

std::string ScoringSplitModel::GetSubType() const { return fModels.empty() ? fSubType : First()->GetSubType(); }

std::string ScoringSplitModel::GetAppName() const { return fModels.empty() ? fAppName : First()->GetAppName(); }

std::string ScoringSplitModel::GetAppVersion() const {
  return fModels.empty() ? fAppVersion : First()->GetAppVersion();
}

void ScoringSplitModel::Display(std::ostream& /*stream*/) const {}

}  // namespace KelScoring_20
