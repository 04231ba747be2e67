#include "scoring/model/ScoringSplitModel.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>

#include "scoring/common/KelScoringConst.h"
#include "scoring/common/ValueRecord.h"

namespace KelScoring_20 {

using KelCommon_1_3::KelStatus;
using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;

namespace {

const Value& At(const SplitKeyLess::Key& key, std::size_t i) { return key[i]; }
const Value& At(const SplitKeyView& key, std::size_t i) { return key.record.At(key.positions[i]); }

std::size_t Length(const SplitKeyLess::Key& key) { return key.size(); }
std::size_t Length(const SplitKeyView& key) { return key.positions.size(); }

// Less than, equal to or greater than 0, after the order of values. Numbers are compared in place; NaN, which is no
// less and no greater, goes the general way.
int Compare(const Value& left, const Value& right) {
  if (left.GetType() == Value::kNumber && right.GetType() == Value::kNumber) {
    const double leftNumber = left.GetReal();
    const double rightNumber = right.GetReal();
    if (leftNumber < rightNumber) return -1;
    if (rightNumber < leftNumber) return 1;
    if (leftNumber == rightNumber) return 0;
  }
  if (left < right) return -1;
  return right < left ? 1 : 0;
}

template <typename Left, typename Right>
bool Less(const Left& left, const Right& right) {
  const std::size_t common = std::min(Length(left), Length(right));
  for (std::size_t i = 0; i < common; ++i) {
    if (const int order = Compare(At(left, i), At(right, i)); order != 0) return order < 0;
  }
  return Length(left) < Length(right);
}

}  // namespace

bool SplitKeyLess::operator()(const Key& left, const Key& right) const { return Less(left, right); }
bool SplitKeyLess::operator()(const Key& left, const SplitKeyView& right) const { return Less(left, right); }
bool SplitKeyLess::operator()(const SplitKeyView& left, const Key& right) const { return Less(left, right); }

ScoringSplitModel::ScoringSplitModel() = default;

ScoringSplitModel::~ScoringSplitModel() {
  for (auto& [key, model] : fModels) delete std::exchange(model, nullptr);
  delete fSplitFieldIndices.load();
}

bool ScoringSplitModel::AddModel(const Key& key, ScoringModel* model) { return fModels.try_emplace(key, model).second; }

void ScoringSplitModel::SetModel(const ModelMap& models) {
  if (fModels.empty()) fModels = models;
}

void ScoringSplitModel::SetModel(const std::map<Key, ScoringModel*>& models) {
  SetModel(ModelMap(models.begin(), models.end()));
}

void ScoringSplitModel::SetSplitFields(std::vector<std::string>& fields) { fSplitFields = fields; }

ScoringModel* ScoringSplitModel::Clone() const { return nullptr; }

KelStatus ScoringSplitModel::Score(ValueRecord& in, ValueRecord& out) {
  if (fModels.empty()) return KelStatus(KelScoringConst::kNothingToScoreWith, false);
  const Positions* positions = SplitPositions(in);
  if (positions == nullptr) return KelStatus(KelScoringConst::kSplitFieldMissing, false);
  const auto found = fModels.find(SplitKeyView{in, *positions});
  if (found == fModels.end()) return KelStatus(KelScoringConst::kNothingToScoreWith, false);
  return found->second->Score(in, out);
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
