#pragma once

#include <benchmark/benchmark.h>
#include <cstddef>
#include <string>
#include <vector>

#include "benchmarks/HandWritten.h"
#include "scoring/common/ValueRecord.h"
#include "scoring/model/ScoringModel.h"

/// What every benchmark of scoring does: rows of numbers, records that are used again and set by position, and the
/// loop.
namespace ScoringLoop {

/// Enough rows that no branch predictor learns the data by heart.
inline constexpr std::size_t kRows = 256;

using Rows = std::vector<std::vector<double>>;

/// Row after row of numbers between -3 and 3, the same in every run.
Rows MakeRows(int inputs);
/// The names of the inputs of `Documents`.
std::vector<std::string> FieldNames(int inputs);
KelCommon_1_3::ValueRecord InputRecord(int inputs);
void SetAll(KelCommon_1_3::ValueRecord& record, const std::vector<double>& row);
void SetAll(HandWritten::NamedRecord& record, const std::vector<double>& row);

/// Ends the program.
[[noreturn]] void WrongAnswer(const char* what);
/// Equal but for the rounding of a different order.
bool Close(double a, double b);

/// Scores the rows round and round, and tells the allocations per record once all rows have passed.
void ScoreRows(benchmark::State& state, KelScoring_20::ScoringModel& model, KelCommon_1_3::ValueRecord& out,
               int inputs);

/// The same for hand-written code on named variants.
template <typename Limit>
void ScoreNamedVariants(benchmark::State& state, Limit& limit, int inputs, const std::vector<std::string>& outputs) {
  const Rows rows = MakeRows(inputs);
  HandWritten::NamedRecord in = HandWritten::MakeRecord(FieldNames(inputs));
  HandWritten::NamedRecord out = HandWritten::MakeRecord(outputs);
  std::size_t i = 0;
  for (auto _ : state) {
    SetAll(in, rows[i]);
    limit.Score(in, out);
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
    i = (i + 1) % kRows;
  }
}

}  // namespace ScoringLoop
