#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "scoring/common/ValueRecord.h"
#include "scoring/model/ScoringModel.h"
#include "tools/kelscore/OutputLayout.h"
#include "tools/kelscore/RecordBinding.h"
#include "tools/kelscore/RowBatch.h"

namespace kelscore {

/// What became of one batch.
struct ScoredBatch {
  struct RowFailure {
    std::uint64_t row;   ///< from 1, without the header
    std::uint64_t line;  ///< of the file, in which the row starts
    std::string reason;
  };

  std::string text;  ///< finished rows, each ended by a line feed
  std::vector<RowFailure> failures;
  std::uint64_t rows = 0;  ///< that are in `text`
  bool stopped = false;    ///< at the last failure: the rows from there on aren't scored
};

/// How rows are written.
struct RowStyle {
  char delimiter = ',';
  bool writeInput = true;
  bool writeErrors = false;  ///< a last column with the reason of a failed row
  bool stopOnError = true;   ///< else a failed row is written with empty outputs
};

/// Turns batches of rows into scored text. It has records of its own, so that each thread needs one scorer; the model
/// is shared.
class RowScorer {
 public:
  /// `model` must outlive the scorer.
  RowScorer(KelScoring_20::ScoringModel& model, RecordBinding binding, OutputLayout layout, RowStyle style);

  /// Replaces what `result` holds. Reuses its buffers.
  void Score(const RowBatch& batch, ScoredBatch& result);

 private:
  [[nodiscard]] bool ScoreRow(const RowBatch& batch, std::size_t index, std::string& to);
  void WriteFailedRow(const RowBatch& batch, std::size_t index, std::string& to);
  void AppendInput(const RowBatch& batch, std::size_t index, std::string& to) const;
  void FinishRow(std::size_t begin, std::string& to) const;

  KelScoring_20::ScoringModel& fModel;
  RecordBinding fBinding;
  OutputLayout fLayout;
  RowStyle fStyle;
  KelCommon_1_3::ValueRecord fIn;
  KelCommon_1_3::ValueRecord fOut;
  std::string fReason;  // of the row that failed last
};

/// Scores one row; false, and the reason, when it can't be read or scored. What a plug-in throws is a reason, too.
[[nodiscard]] bool ScoreRecord(KelScoring_20::ScoringModel& model, const RowView& row, RecordBinding& binding,
                               KelCommon_1_3::ValueRecord& in, KelCommon_1_3::ValueRecord& out, std::string& reason);

}  // namespace kelscore
