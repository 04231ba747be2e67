#include "tools/kelscore/RecordScorer.h"

#include <exception>
#include <new>
#include <utility>

#include "tools/kelscore/CsvText.h"
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
  try {
    const KelStatus status = fModel.Score(fIn, fOut);
    if (!status.IsError()) return true;
    reason = Reason(status);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    reason = std::string("the scorer threw an exception: ") + error.what();
  } catch (...) {
    reason = "the scorer threw an exception";
  }
  return false;
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
