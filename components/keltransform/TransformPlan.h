#pragma once

#include <cstdint>
#include <vector>

#include "components/keltransform/TransformStage.h"
#include "scoring/common/ValueRecord.h"

namespace KelTransformNS {

/// What there is to do for the records of one layout: which values to read, the part of the programs that computes the
/// derived fields that such a record names, and where to write these. Immutable.
class TransformPlan {
 public:
  /// The stages and the pool must outlive the plan.
  TransformPlan(const TransformStages& stages, const TextPool& pool, const KelCommon_1_3::ValueRecord& record);

  /// Computes the derived fields of a record that has the plan's layout.
  void Run(KelCommon_1_3::ValueRecord& record) const;

 private:
  // `position` is -1 for a field that the record lacks, which reads as null.
  struct Source {
    int position;
    const TransformInput* input;
  };
  struct Target {
    int position;
    std::uint32_t slot;
    DataType type;
  };

  void PlanTargets(const TransformStages& stages, const KelCommon_1_3::ValueRecord& record);
  void PlanPrograms(const TransformStages& stages, std::vector<bool>& needed);
  void PlanSources(const TransformStages& stages, const KelCommon_1_3::ValueRecord& record,
                   const std::vector<bool>& needed);

  const TextPool& fPool;
  std::uint32_t fSlotCount = 0;
  std::vector<Source> fSources;
  std::vector<Program> fPrograms;
  std::vector<Target> fTargets;
};

}  // namespace KelTransformNS
