#include "tools/kelscore/RowScorer.h"

#include <utility>

#include "tools/kelscore/CsvText.h"

namespace kelscore {

RowScorer::RowScorer(RecordScorer scorer, OutputLayout layout, RowStyle style)
    : fScorer(std::move(scorer)), fLayout(std::move(layout)), fStyle(style) {}

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
  if (!fScorer.Score(batch.Row(index), fReason)) return false;
  if (fStyle.writeInput) AppendInput(batch, index, to);
  if (!fLayout.Append(fScorer.Scored(), fStyle.delimiter, to, fReason)) return false;
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
  const std::size_t columns = fScorer.ColumnCount();
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
