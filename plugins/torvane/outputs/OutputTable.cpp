#include "plugins/torvane/outputs/OutputTable.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Torvane {

using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;
using KelTransformNS::Cell;
using KelTransformNS::DataType;

namespace {

// A number as a value of another type; invalid if it can't be one.
Cell Converted(double number, DataType type) noexcept {
  switch (type) {
    case DataType::kString:
      return {number, nullptr, KelTransformNS::TextPool::kUnknown, Cell::kText};
    case DataType::kInteger:
      return number == std::trunc(number) ? Cell::Number(number) : Cell::Invalid();
    case DataType::kFloat:
      return Cell::Number(static_cast<double>(static_cast<float>(number)));
    case DataType::kBoolean:
      return number == 0.0 || number == 1.0 ? Cell::Number(number) : Cell::Invalid();
    default:
      return Cell::Number(number);
  }
}

Cell NumberOrMissing(double number, DataType type) noexcept {
  return std::isnan(number) ? Cell::Missing() : Converted(number, type);
}

}  // namespace

// Of the composite outputs: a record that has them is known by its layout.
void OutputTable::RememberLayouts() {
  ValueRecord members;
  FillNames(members);
  fMemberLayout = members.Layout();
  if (!fBody.GivesAllPredictions()) return;
  ValueRecord segments;
  FillSegmentNames(segments);
  fSegmentLayout = segments.Layout();
}

bool OutputTable::NeedsDistribution(const Output& output) const noexcept {
  return output.feature == Feature::kExpression ? fHasDistributions : output.IsDistribution();
}

bool OutputTable::NeedsRanking(const Output& output) const noexcept {
  return output.feature == Feature::kExpression ? fHasRankings : output.IsRanking();
}

void OutputTable::RunExpressions(KelTransformNS::Frame frame, const Prediction& prediction) const {
  PutIntoFrame(fOutputs, frame, prediction);
  PutIntoFrame(fHidden, frame, prediction);
  fProgram.Run(frame);
}

void OutputTable::SetWants(Prediction& prediction) const noexcept {
  prediction.wantsDistribution = prediction.wantsDistribution || fHasDistributions;
  prediction.wantsRanking = prediction.wantsRanking || fHasRankings;
}

// An invalid result is one of the whole ensemble, so that nobody reads the fields.
void OutputTable::PutIntoEnsemble(KelTransformNS::Frame frame, const Prediction& prediction) const {
  if (prediction.outcome == Outcome::kInvalid) return;
  RunExpressions(frame, prediction);
  for (const Export& field : fExports) frame[field.to] = frame[field.from];
}

void OutputTable::PutIntoFrame(const std::vector<Output>& outputs, KelTransformNS::Frame frame,
                               const Prediction& prediction) const {
  for (const Output& output : outputs) {
    if (output.feature == Feature::kExpression || output.slot == Prediction::kNone) continue;
    frame[output.slot] = CellOf(output, frame.data(), prediction);
  }
}

Cell OutputTable::CellOf(const Output& output, const Cell* frame, const Prediction& prediction) const {
  if (prediction.outcome == Outcome::kInvalid) return Cell::Missing();
  if (output.feature == Feature::kExpression) return frame[output.slot];
  if (prediction.outcome != Outcome::kValue) return Cell::Missing();
  const std::uint32_t category = output.category == Prediction::kNone ? prediction.category : output.category;
  switch (output.feature) {
    case Feature::kPredictedValue:
    case Feature::kPredictedDisplayValue:
      return output.byCategory == nullptr ? Converted(prediction.number, output.type)
                                          : (*output.byCategory)[prediction.category];
    case Feature::kProbability:
      return prediction.hasProbabilities ? Converted(prediction.probabilities[category], output.type) : Cell::Missing();
    case Feature::kConfidence:
      return prediction.hasConfidences ? Converted(prediction.confidences[category], output.type) : Cell::Missing();
    case Feature::kResidual:
      return Residual(output, frame, prediction);
    case Feature::kEntityId: {
      const std::uint32_t entity = EntityOf(output, prediction);
      return entity == Prediction::kNone ? Cell::Missing() : EntityCell(output, entity);
    }
    case Feature::kAffinity:
      return NumberOrMissing(AffinityOf(output, prediction), output.type);
    case Feature::kAuxiliary:
      return NumberOrMissing(prediction.auxiliary, output.type);
    default:
      return Cell::Missing();
  }
}

std::uint32_t OutputTable::EntityOf(const Output& output, const Prediction& prediction) noexcept {
  if (output.rank == 1) return prediction.entity;
  return output.rank <= prediction.rankingCount ? prediction.ranking[output.rank - 1].entity : Prediction::kNone;
}

// NaN where there is none.
double OutputTable::AffinityOf(const Output& output, const Prediction& prediction) noexcept {
  if (!output.IsRanking()) return prediction.affinity;
  const RankedEntity* const begin = prediction.ranking;
  const RankedEntity* const end = begin + prediction.rankingCount;
  const RankedEntity* found = begin + std::min(output.rank - 1, prediction.rankingCount);
  if (output.entity != Prediction::kNone) {
    found = std::find_if(begin, end, [&](const RankedEntity& ranked) { return ranked.entity == output.entity; });
  }
  return found == end ? std::numeric_limits<double>::quiet_NaN() : found->affinity;
}

// Identifiers are texts. One that is asked for as another type is converted each time: that is rare.
Cell OutputTable::EntityCell(const Output& output, std::uint32_t entity) const {
  if (output.type == DataType::kString) return fEntities[entity];
  thread_local Value id;
  fBody.WriteEntity(entity, id);
  return KelTransformNS::ReadCell(id, output.type, fPool);
}

// Of a number: the true value minus the predicted one. Of a category: 1 or 0, as the true value is it or not, minus
// its probability.
Cell OutputTable::Residual(const Output& output, const Cell* frame, const Prediction& prediction) const noexcept {
  const Cell& actual = frame[fTargetSlot];
  if (actual.state != Cell::kNumber && actual.state != Cell::kText) return Cell::Missing();
  if (fTarget.IsNumeric()) {
    return actual.state == Cell::kNumber ? Converted(actual.number - prediction.number, output.type) : Cell::Missing();
  }
  if (!prediction.hasProbabilities) return Cell::Missing();
  const std::uint32_t index = output.category == Prediction::kNone ? prediction.category : output.category;
  const Cell& category = fTarget.Categories()[index].cell;
  const bool isActual =
      actual.state == Cell::kText ? actual.textId == category.textId : actual.number == category.number;
  return Converted((isActual ? 1.0 : 0.0) - prediction.probabilities[index], output.type);
}

void OutputTable::Write(const Output& output, const Cell* frame, const Prediction& prediction, Value& value) const {
  if (output.isPlainNumber && prediction.outcome == Outcome::kValue) {
    value = prediction.number;
    return;
  }
  if (output.feature == Feature::kAllProbabilities) return WriteProbabilities(prediction, value);
  if (output.feature == Feature::kAllPredictions) return WritePredictions(output, prediction, value);
  if (output.feature == Feature::kEntityId && output.type == DataType::kString) {
    const bool hasValue = prediction.outcome == Outcome::kValue;
    const std::uint32_t entity = hasValue ? EntityOf(output, prediction) : Prediction::kNone;
    return entity == Prediction::kNone ? value.SetNull() : fBody.WriteEntity(entity, value);
  }
  const Cell cell = CellOf(output, frame, prediction);
  if (cell.state == Cell::kNumber && output.type == DataType::kDouble) {
    value = cell.number;
  } else if (cell.state == Cell::kText && cell.text != nullptr) {
    value = *cell.text;
  } else {
    KelTransformNS::WriteCell(cell, output.type, value);
  }
}

// The members keep their places from record to record, so that nothing is looked up and nothing allocated. A record
// without a result has them, too, all null: a host sees the same columns in every row.
void OutputTable::WriteProbabilities(const Prediction& prediction, Value& value) const {
  ValueRecord& members = value.MakeMembers();
  if (members.Layout() != fMemberLayout) {
    members.Clear();
    FillNames(members);
  }
  if (prediction.outcome != Outcome::kValue || !prediction.hasProbabilities) return members.SetAllNull();
  const int count = static_cast<int>(fTarget.Categories().size());
  for (int i = 0; i < count; ++i) members[i] = prediction.probabilities[i];
}

// A member for each segment, null for one that gave no result. The ranking holds a category or a number for the others.
void OutputTable::WritePredictions(const Output& output, const Prediction& prediction, Value& value) const {
  ValueRecord& members = value.MakeMembers();
  if (members.Layout() != fSegmentLayout) {
    members.Clear();
    FillSegmentNames(members);
  }
  members.SetAllNull();
  if (prediction.outcome != Outcome::kValue) return;
  for (std::uint32_t i = 0; i < prediction.rankingCount; ++i) {
    const RankedEntity& part = prediction.ranking[i];
    const Cell cell = output.byCategory == nullptr ? Converted(part.affinity, output.type)
                                                   : (*output.byCategory)[static_cast<std::size_t>(part.affinity)];
    KelTransformNS::WriteCell(cell, output.type, members[static_cast<int>(part.entity)]);
  }
}

void OutputTable::FillSegmentNames(ValueRecord& members) const {
  Value id;
  for (std::uint32_t segment = 0; segment < fBody.EntityCount(); ++segment) {
    fBody.WriteEntity(segment, id);
    members.Add(id.GetString(), Value::NULL_VALUE);
  }
}

void OutputTable::Announce(ValueRecord& record) const {
  for (const Output& output : fOutputs) {
    const int position = record.Add(output.key, Value::NULL_VALUE);
    if (output.feature == Feature::kAllProbabilities) FillNames(record[position].MakeMembers());
    if (output.feature == Feature::kAllPredictions) FillSegmentNames(record[position].MakeMembers());
  }
}

void OutputTable::FillNames(ValueRecord& members) const {
  for (const Category& category : fTarget.Categories()) members.Add(category.text, Value::NULL_VALUE);
}

}  // namespace Torvane
