#pragma once

#include <functional>
#include <vector>

#include "tools/kelscore/RowBatch.h"
#include "tools/kelscore/RowScorer.h"

namespace kelscore {

/// The three stages of a run. Each is called by one thread at a time.
struct Stages {
  std::function<bool(RowBatch&)> read;                                    ///< false at the end
  std::vector<std::function<void(const RowBatch&, ScoredBatch&)>> score;  ///< one for each thread
  std::function<bool(const ScoredBatch&)> write;                          ///< false to end the run
};

/// Runs all batches through the stages, in order.
///
/// With one scoring stage everything happens on the calling thread. With more, each has a thread, and so has the
/// writer; what they work on is a ring of a fixed number of batches. The result is the same: what a stage throws is
/// thrown here, a fault of the reader after everything before it has been written.
void RunPipeline(const Stages& stages);

}  // namespace kelscore
