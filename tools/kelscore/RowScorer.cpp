#include "tools/kelscore/RowScorer.h"

#include <exception>
#include <new>
#include <utility>

#include "scoring/common/KelStatus.h"
#include "tools/kelscore/CsvText.h"
#include "tools/kelscore/StatusText.h"

namespace kelscore {

using KelCommon_1_3::KelStatus;
using KelCommon_1_3::ValueRecord;
using KelScoring_20::ScoringModel;

bool ScoreRecord(ScoringModel& model, const RowView& row, RecordBinding& binding, ValueRecord& in, ValueRecord& out,
                 std::string& reason) {
  if (!binding.Fill(row, in, reason)) return false;
  // A composite model leaves a member alone that fails, so nothing of the row before may be there.
  out.SetAllNull();
  try {
    const KelStatus status = model.Score(in, out);
    if (status.IsError()) reason = StatusText(status);
    return !status.IsError();
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    reason = std::string("the scorer threw an exception: ") + error.what();
  } catch (...) {
    reason = "the scorer threw an exception";
  }
  return false;
}

RowScorer::RowScorer(ScoringModel& model, RecordBinding binding, OutputLayout layout, RowStyle style)
    : fModel(model),
      fBinding(std::move(binding)),
      fLayout(std::move(layout)),
      fStyle(style),
      fIn(fBinding.Prototype()),
      fOut(fLayout.Prototype()) {}

void RowScorer::Score(const RowBatch& batch, ScoredBatch& result) {
  result.text.clear();
  result.failures.clear();
  result.rows = 0;
  result.stopped = false;
  for (std::size_t i = 0; i < batch.RowCount(); ++i) {
    const std::size_t begin = result.text.size();
    if (!ScoreRow(batch, i, result.text)) {
      result.text.resize(begin);
      result.failures.push_back({batch.FirstRowNumber() + i, batch.LineOf(i), fReason});
      result.stopped = fStyle.stopOnError;
      if (result.stopped) return;
      WriteFailedRow(batch, i, result.text);
    }
    FinishRow(begin, result.text);
    ++result.rows;
  }
}

// Each column is appended behind a delimiter; `FinishRow` takes the first one away if no input stands before it.
bool RowScorer::ScoreRow(const RowBatch& batch, std::size_t index, std::string& to) {
  if (!ScoreRecord(fModel, batch.Row(index), fBinding, fIn, fOut, fReason)) return false;
  if (fStyle.writeInput) AppendInput(batch, index, to);
  if (!fLayout.Append(fOut, fStyle.delimiter, to, fReason)) return false;
  if (fStyle.writeErrors) to.push_back(fStyle.delimiter);
  return true;
}

void RowScorer::WriteFailedRow(const RowBatch& batch, std::size_t index, std::string& to) {
  if (fStyle.writeInput) AppendInput(batch, index, to);
  fLayout.AppendEmpty(fStyle.delimiter, to);
  if (!fStyle.writeErrors) return;
  to.push_back(fStyle.delimiter);
  AppendField(to, fReason, fStyle.delimiter);
}

// A ragged row is brought to the width of the table: the outputs must stand in their columns.
void RowScorer::AppendInput(const RowBatch& batch, std::size_t index, std::string& to) const {
  const RowView row = batch.Row(index);
  const std::size_t columns = fBinding.ColumnCount();
  if (batch.IsPlain(index) && row.FieldCount() == columns) {
    to.append(row.Joined());
    return;
  }
  for (std::size_t i = 0; i < columns; ++i) {
    if (i > 0) to.push_back(fStyle.delimiter);
    if (i < row.FieldCount()) AppendField(to, row.Field(i), fStyle.delimiter);
  }
}

void RowScorer::FinishRow(std::size_t begin, std::string& to) const {
  if (!fStyle.writeInput && to.size() > begin) to.erase(begin, 1);
  // A blank line is no row to whoever reads the table.
  if (to.size() == begin) to += "\"\"";
  to.push_back('\n');
}

}  // namespace kelscore
