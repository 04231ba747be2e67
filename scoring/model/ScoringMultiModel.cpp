#include "scoring/model/ScoringMultiModel.h"

#include <utility>

#include "scoring/common/KelScoringConst.h"

namespace KelScoring_20 {

using KelCommon_1_3::KelStatus;
using KelCommon_1_3::RecordLayout;
using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;

namespace {

// The record that one model after the other scores into. Each finds there the names that the host wants, all null.
class Scratch {
 public:
  explicit Scratch(const ValueRecord& out) : fWanted(out.Size()) {
    fRecord.TakeNames(out);
    fLayout = fRecord.Layout();
  }

  ValueRecord& Blank(const ValueRecord& out) {
    if (fRecord.Layout() == fLayout) {
      DropValues();
    } else {
      TakeWantedNames(out);
    }
    return fRecord;
  }

  // Files each value in `out` under its name and the identifier at a position. The wanted names stand first in `out`
  // and at the same positions, so that only names which the model added are looked up.
  void FileInto(ValueRecord& out, const MemberIds& ids, std::size_t position) const {
    const int samePositions = fRecord.Layout() == fLayout ? fWanted : 0;
    for (int k = 0; k < fRecord.Size(); ++k) {
      Value& value = k < samePositions ? out[k] : out[fRecord.NameAt(k)];
      ids.MemberOf(value, position) = fRecord.At(k);
    }
  }

 private:
  // By now `out` may hold names behind them that models have added.
  void TakeWantedNames(const ValueRecord& out) {
    fRecord.Clear();
    for (int k = 0; k < fWanted; ++k) fRecord.Add(out.NameAt(k), Value::NULL_VALUE);
    fLayout = fRecord.Layout();
  }

  // Buffers go, too: a composite that is written anew would take up the members of the model before.
  void DropValues() {
    for (int k = 0; k < fWanted; ++k) const Value dropped(std::move(fRecord[k]));
  }

  int fWanted;
  ValueRecord fRecord;
  RecordLayout fLayout = 0;
};

}  // namespace

ScoringMultiModel::ScoringMultiModel() = default;

ScoringMultiModel::~ScoringMultiModel() {
  for (std::unique_ptr<ScoringModel>& model : fModels) model.reset();
}

void ScoringMultiModel::AddModel(std::string id, ScoringModel* model) {
  std::unique_ptr<ScoringModel> owned(model);
  fModelIDs.Add(std::move(id));
  fModels.push_back(std::move(owned));
}

ScoringModel* ScoringMultiModel::Clone() const { return nullptr; }

KelStatus ScoringMultiModel::Score(ValueRecord& in, ValueRecord& out) {
  if (fModels.empty()) return KelStatus(KelScoringConst::kNothingToScoreWith, false);
  Scratch scratch(out);
  for (std::size_t i = 0; i < fModels.size(); ++i) {
    if (fModels[i]->Score(in, scratch.Blank(out)).IsOK()) scratch.FileInto(out, fModelIDs, i);
  }
  return KelStatus();
}

KelStatus ScoringMultiModel::Scorable(ValueRecord& record) {
  if (fModels.empty()) return KelStatus(KelScoringConst::kNothingToScoreWith, false);
  for (std::size_t i = 0; i < fModels.size(); ++i) {
    ValueRecord offered(2);
    static_cast<void>(fModels[i]->Scorable(offered));
    for (int k = 0; k < offered.Size(); ++k) fModelIDs.MemberOf(record[offered.NameAt(k)], i) = offered.At(k);
  }
  return KelStatus();
}

KelXML_1_3::KelSettings& ScoringMultiModel::GetSettings() {
  return fModels.empty() ? fSettings : fModels.front()->GetSettings();
}

const KelXML_1_3::KelSettings& ScoringMultiModel::GetSettings() const {
  return fModels.empty() ? fSettings : std::as_const(*fModels.front()).GetSettings();
}

KelXML_1_3::KelVarList& ScoringMultiModel::GetVarList() {
  return fModels.empty() ? fVarList : fModels.front()->GetVarList();
}

const KelXML_1_3::KelVarList& ScoringMultiModel::GetVarList() const {
  return fModels.empty() ? fVarList : std::as_const(*fModels.front()).GetVarList();
}

std::string ScoringMultiModel::GetModelType() const {
  return fModels.empty() ? "UNKNOWN" : fModels.front()->GetModelType();
}

KelScoringConst::ModelType ScoringMultiModel::GetType() const {
  return fModels.empty() ? fType : fModels.front()->GetType();
}

std::string ScoringMultiModel::GetSubType() const { return fModels.empty() ? fSubType : fModels.front()->GetSubType(); }

}  // namespace KelScoring_20
