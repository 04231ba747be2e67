#include "scoring/model/ScoringSplitModel.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>

#include "scoring/common/KelScoringConst.h"
#include "scoring/common/ValueRecord.h"
#include "scoring/model/SplitKeyIndex.h"

namespace KelScoring_20 {

using KelCommon_1_3::KelStatus;
using KelCommon_1_3::ValueRecord;

ScoringSplitModel::ScoringSplitModel() : fIndex(std::make_unique<SplitKeyIndex>()) {}

ScoringSplitModel::~ScoringSplitModel() {
  for (auto& [key, model] : fModels) delete std::exchange(model, nullptr);
  delete fSplitFieldIndices.load();
}

bool ScoringSplitModel::AddModel(const Key& key, ScoringModel* model) {
  const auto [entry, isNew] = fModels.try_emplace(key, model);
  if (!isNew) return false;
  try {
    fIndex->Add(entry->first, model);
  } catch (...) {
    fModels.erase(entry);  // the model stays the caller's
    throw;
  }
  return true;
}

void ScoringSplitModel::SetModel(const ModelMap& models) {
  if (!fModels.empty()) return;
  ModelMap taken = models;
  auto index = std::make_unique<SplitKeyIndex>();
  for (const auto& [key, model] : taken) index->Add(key, model);
  fModels.swap(taken);  // which leaves each key where it is
  fIndex.swap(index);
}

void ScoringSplitModel::SetSplitFields(std::vector<std::string>& fields) { fSplitFields = fields; }

ScoringModel* ScoringSplitModel::Clone() const { return nullptr; }

KelStatus ScoringSplitModel::Score(ValueRecord& in, ValueRecord& out) {
  if (fModels.empty()) return KelStatus(KelScoringConst::kNothingToScoreWith, false);
  const Positions* positions = SplitPositions(in);
  if (positions == nullptr) return KelStatus(KelScoringConst::kSplitFieldMissing, false);
  ScoringModel* const member = fIndex->Find(in, *positions);
  if (member == nullptr) return KelStatus(KelScoringConst::kNothingToScoreWith, false);
  return member->Score(in, out);
}

// Null if a split field is not in `in`, or if `in` is shorter than the record that the positions come from.
const ScoringSplitModel::Positions* ScoringSplitModel::SplitPositions(const ValueRecord& in) {
  const Positions* positions = fSplitFieldIndices.load(std::memory_order_acquire);
  if (positions == nullptr) positions = FindPositions(in);
  const auto isInside = [&in](std::int32_t position) { return position < in.Size(); };
  const bool holds = positions != nullptr && std::all_of(positions->begin(), positions->end(), isInside);
  return holds ? positions : nullptr;
}

const ScoringSplitModel::Positions* ScoringSplitModel::FindPositions(const ValueRecord& in) {
  Positions positions;
  for (const std::string& field : fSplitFields) {
    positions.push_back(in.IndexOf(field));
    if (positions.back() < 0) return nullptr;
  }
  return Publish(std::move(positions));
}

// The first thread to come keeps its positions for all, so those that a record is being scored with never go away.
const ScoringSplitModel::Positions* ScoringSplitModel::Publish(Positions positions) {
  static const Positions kNoFields;
  if (positions.empty()) return &kNoFields;  // nothing to remember: split fields may still be set
  auto mine = std::make_unique<const Positions>(std::move(positions));
  const Positions* published = nullptr;
  if (fSplitFieldIndices.compare_exchange_strong(published, mine.get(), std::memory_order_acq_rel)) {
    return mine.release();
  }
  return published;
}

KelStatus ScoringSplitModel::Scorable(ValueRecord& record) {
  if (fModels.empty()) return KelStatus(KelScoringConst::kNothingToScoreWith, false);
  return First()->Scorable(record);
}

}  // namespace KelScoring_20
