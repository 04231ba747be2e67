#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "scoring/common/KelStatus.h"
#include "scoring/common/ValueRecord.h"
#include "scoring/model/ScoringModel.h"
#include "tools/kelscore/RecordBinding.h"
#include "tools/kelscore/RowBatch.h"

namespace kelscore {

/// Scores rows one by one, in records that are used again and again. One thread uses a scorer at a time; copies share
/// the model only.
class RecordScorer {
 public:
  /// `model` must outlive the scorer. `wanted` names the outputs to fill. `splitFields` are those of a split model,
  /// which a failure tells.
  RecordScorer(KelScoring_20::ScoringModel& model, RecordBinding binding, const KelCommon_1_3::ValueRecord& wanted,
               std::vector<std::string> splitFields);

  /// False, and the reason, when the row can't be read or scored. What a plug-in throws is a reason, too.
  [[nodiscard]] bool Score(const RowView& row, std::string& reason);
  /// The outputs of the row that was scored last.
  [[nodiscard]] const KelCommon_1_3::ValueRecord& Scored() const { return fOut; }
  [[nodiscard]] std::size_t ColumnCount() const { return fBinding.ColumnCount(); }

 private:
  [[nodiscard]] std::string Reason(const KelCommon_1_3::KelStatus& status) const;

  KelScoring_20::ScoringModel& fModel;
  RecordBinding fBinding;
  std::vector<std::string> fSplitFields;
  KelCommon_1_3::ValueRecord fIn;
  KelCommon_1_3::ValueRecord fOut;
};

}  // namespace kelscore
