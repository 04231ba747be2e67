#include "benchmarks/ScoringLoop.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>

#include "benchmarks/Allocations.h"
#include "benchmarks/Documents.h"

namespace ScoringLoop {

using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;

Rows MakeRows(int inputs) {
  std::mt19937 random(20);
  std::uniform_real_distribution<double> number(-3.0, 3.0);
  Rows rows(kRows, std::vector<double>(static_cast<std::size_t>(inputs)));
  for (auto& row : rows) std::generate(row.begin(), row.end(), [&] { return number(random); });
  return rows;
}

std::vector<std::string> FieldNames(int inputs) {
  std::vector<std::string> names;
  for (int i = 0; i < inputs; ++i) names.push_back(Documents::FieldName(i));
  return names;
}

ValueRecord InputRecord(int inputs) {
  ValueRecord record(inputs);
  for (int i = 0; i < inputs; ++i) record.Add(Documents::FieldName(i), Value::NULL_VALUE);
  return record;
}

void SetAll(ValueRecord& record, const std::vector<double>& row) {
  for (std::size_t i = 0; i < row.size(); ++i) record[static_cast<int>(i)] = row[i];
}

void SetAll(HandWritten::NamedRecord& record, const std::vector<double>& row) {
  for (std::size_t i = 0; i < row.size(); ++i) record[i].value = row[i];
}

void WrongAnswer(const char* what) {
  std::fprintf(stderr, "wrong answer: %s\n", what);
  std::exit(1);
}

bool Close(double a, double b) { return std::fabs(a - b) <= 1e-12 * std::max(1.0, std::fabs(b)); }

void ScoreRows(benchmark::State& state, KelScoring_20::ScoringModel& model, ValueRecord& out, int inputs) {
  const Rows rows = MakeRows(inputs);
  ValueRecord in = InputRecord(inputs);
  SetAll(in, rows[0]);
  for (const auto& row : rows) {
    SetAll(in, row);
    if (!model.Score(in, out).IsOK()) WrongAnswer("status");
  }
  std::size_t i = 0;
  const std::size_t before = Allocations::Count();
  for (auto _ : state) {
    SetAll(in, rows[i]);
    benchmark::DoNotOptimize(model.Score(in, out));
    i = (i + 1) % kRows;
  }
  state.counters["allocs/record"] =
      benchmark::Counter(static_cast<double>(Allocations::Count() - before), benchmark::Counter::kAvgIterations);
}

}  // namespace ScoringLoop
