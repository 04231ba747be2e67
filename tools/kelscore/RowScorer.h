#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/kelscore/OutputLayout.h"
#include "tools/kelscore/RecordScorer.h"
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

/// Turns batches of rows into scored text. One thread uses a scorer at a time; copies share the model only.
class RowScorer {
 public:
  RowScorer(RecordScorer scorer, OutputLayout layout, RowStyle style);

  /// Replaces what `result` holds. Reuses its buffers.
  void Score(const RowBatch& batch, ScoredBatch& result);

 private:
  [[nodiscard]] bool ScoreRow(const RowBatch& batch, std::size_t index, std::string& to);
  void WriteFailedRow(const RowBatch& batch, std::size_t index, std::string& to);
  void AppendInput(const RowBatch& batch, std::size_t index, std::string& to) const;
  void FinishRow(std::size_t begin, std::string& to) const;

  RecordScorer fScorer;
  OutputLayout fLayout;
  RowStyle fStyle;
  std::string fReason;  // of the row that failed last
};

}  // namespace kelscore
