#include "components/keltransform/TransformPlan.h"

#include <algorithm>
#include <utility>

#include "components/keltransform/FrameStorage.h"

namespace KelTransformNS {

using KelCommon_1_3::ValueRecord;

TransformPlan::TransformPlan(const TransformStages& stages, const TextPool& pool, const ValueRecord& record)
    : fPool(pool), fSlotCount(stages.empty() ? 0 : stages.back()->slotCount) {
  PlanTargets(stages, record);
  std::vector<bool> needed(fSlotCount);
  for (const Target& target : fTargets) needed[target.slot] = true;
  PlanPrograms(stages, needed);
  PlanSources(stages, record, needed);
}

void TransformPlan::PlanTargets(const TransformStages& stages, const ValueRecord& record) {
  for (const auto& stage : stages) {
    for (const TransformStage::Derived& derived : stage->derived) {
      const int position = record.IndexOf(derived.key);
      if (position >= 0) fTargets.push_back({position, derived.slot, derived.type});
    }
  }
}

// From the last stage to the first, since a stage marks what it needs of those before it.
void TransformPlan::PlanPrograms(const TransformStages& stages, std::vector<bool>& needed) {
  for (auto stage = stages.rbegin(); stage != stages.rend(); ++stage) {
    Program program = (*stage)->program.Select(needed);
    if (!program.IsEmpty()) fPrograms.push_back(std::move(program));
  }
  std::reverse(fPrograms.begin(), fPrograms.end());
}

void TransformPlan::PlanSources(const TransformStages& stages, const ValueRecord& record,
                                const std::vector<bool>& needed) {
  for (const auto& stage : stages) {
    for (const TransformInput& input : stage->inputs) {
      if (needed[input.Slot()]) fSources.push_back({record.IndexOf(input.Key()), &input});
    }
  }
}

void TransformPlan::Run(ValueRecord& record) const {
  if (fTargets.empty()) return;
  // The sources and the programs write every slot that the programs and the targets read.
  const FrameStorage storage(fSlotCount, FrameStorage::kUninitialized, fPool.HasMadeTexts());
  const Frame frame = storage.Cells();
  for (const Source& source : fSources) {
    SetCell(frame[source.input->Slot()], [&] { return source.input->Read(record.At(source.position), fPool); });
  }
  for (const Program& program : fPrograms) program.Run(frame);
  for (const Target& target : fTargets) WriteCell(frame[target.slot], target.type, record[target.position]);
}

}  // namespace KelTransformNS
