#include "tools/kelscore/RecordScorer.h"

#include <utility>

#include "tools/kelscore/CsvText.h"
#include "tools/kelscore/PlugInCall.h"
#include "tools/kelscore/StatusText.h"

namespace kelscore {

using KelCommon_1_3::KelStatus;
using KelCommon_1_3::ValueRecord;
using KelScoring_20::ScoringModel;

RecordScorer::RecordScorer(ScoringModel& model, RecordBinding binding, const ValueRecord& wanted,
                           std::vector<std::string> splitFields)
    : fModel(model),
      fBinding(std::move(binding)),
      fSplitFields(std::move(splitFields)),
      fIn(fBinding.Prototype()),
      fOut(wanted) {}

bool RecordScorer::Score(const RowView& row, std::string& reason) {
  if (!fBinding.Fill(row, fIn, reason)) return false;
  // A composite model leaves a member alone that fails, so nothing of the row before may be there.
  fOut.SetAllNull();
  KelStatus status;
  if (!CallPlugIn([&] { status = fModel.Score(fIn, fOut); }, reason)) return false;
  if (status.IsError()) reason = Reason(status);
  return !status.IsError();
}

std::string RecordScorer::Reason(const KelStatus& status) const {
  std::string reason = StatusText(status);
  for (const std::string& field : fSplitFields) {
    reason += &field == &fSplitFields.front() ? ", split fields: " : ", ";
    reason += field + " = " + Quoted(fIn.Get(fIn.IndexOf(field)).GetString());
  }
  return reason;
}

}  // namespace kelscore
