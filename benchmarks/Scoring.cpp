// The cost of one record, through `ScoringModel::Score` with records that are used again and set by position, beside
// hand-written code for the same model: "limit_named" on named variants, "limit_arrays" on plain arrays.

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>

#include "benchmarks/Allocations.h"
#include "benchmarks/Documents.h"
#include "benchmarks/HandWritten.h"
#include "benchmarks/RatioReporter.h"
#include "scoring/common/KelDiagnostics.h"
#include "scoring/common/ValueRecord.h"
#include "scoring/factory/ScoringFactory.h"

namespace {

using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;
using KelScoring_20::ScoringModel;

constexpr std::size_t kRows = 256;  // enough that no branch predictor learns the data by heart

// Row after row of numbers between -3 and 3, the same in every run.
std::vector<std::vector<double>> Rows(int inputs) {
  std::mt19937 random(20);
  std::uniform_real_distribution<double> number(-3.0, 3.0);
  std::vector<std::vector<double>> rows(kRows, std::vector<double>(static_cast<std::size_t>(inputs)));
  for (auto& row : rows) std::generate(row.begin(), row.end(), [&] { return number(random); });
  return rows;
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

std::vector<std::string> FieldNames(int inputs) {
  std::vector<std::string> names;
  for (int i = 0; i < inputs; ++i) names.push_back(Documents::FieldName(i));
  return names;
}

[[noreturn]] void WrongAnswer(const char* what) {
  std::fprintf(stderr, "wrong answer: %s\n", what);
  std::exit(1);
}

// Scores the rows round and round, and tells the allocations per record once the first record has passed.
void ScoreRows(benchmark::State& state, ScoringModel& model, ValueRecord& out, int inputs) {
  const auto rows = Rows(inputs);
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

template <typename Limit>
void ScoreNamedVariants(benchmark::State& state, Limit& limit, int inputs, const std::vector<std::string>& outputs) {
  const auto rows = Rows(inputs);
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

bool Close(double a, double b) { return std::fabs(a - b) <= 1e-12 * std::max(1.0, std::fabs(b)); }

// --- Idle: what the library itself costs ---

void IdleLibrary(benchmark::State& state) {
  auto model = Documents::Load(Documents::Minimal(), Documents::PlugIn("idle"));
  ValueRecord out(2);
  out.Add("prediction", Value::NULL_VALUE);
  const auto inputs = static_cast<int>(state.range(0));
  ScoreRows(state, *model, out, inputs);
}
BENCHMARK(IdleLibrary)->Name("Idle/library")->Arg(4)->Arg(13);

// --- Linear regression ---

template <int kTerms>
void LinearLibrary(benchmark::State& state) {
  auto model = Documents::Load(Documents::LinearRegression(kTerms), Documents::PlugIn("torvane"));
  ValueRecord out(2);
  out.Add("prediction", Value::NULL_VALUE);
  const auto rows = Rows(kTerms);
  const HandWritten::Linear expected(kTerms);
  ValueRecord in = InputRecord(kTerms);
  for (const auto& row : rows) {
    SetAll(in, row);
    if (!model->Score(in, out).IsOK() || !Close(out.At(0).GetReal(), expected.Score(row.data()))) {
      WrongAnswer("linear regression");
    }
  }
  ScoreRows(state, *model, out, kTerms);
}

template <int kTerms>
void LinearNamed(benchmark::State& state) {
  HandWritten::Linear limit(kTerms);
  ScoreNamedVariants(state, limit, kTerms, {"prediction"});
}

template <int kTerms>
void LinearArrays(benchmark::State& state) {
  const HandWritten::Linear limit(kTerms);
  const auto rows = Rows(kTerms);
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(limit.Score(rows[i].data()));
    i = (i + 1) % kRows;
  }
}

#define LINEAR(terms)                                                  \
  BENCHMARK(LinearLibrary<terms>)->Name("Linear" #terms "/library");   \
  BENCHMARK(LinearNamed<terms>)->Name("Linear" #terms "/limit_named"); \
  BENCHMARK(LinearArrays<terms>)->Name("Linear" #terms "/limit_arrays")
LINEAR(9);
LINEAR(13);
LINEAR(50);

// --- Multinomial regression with all probabilities ---

template <int kTerms>
void MultinomialLibrary(benchmark::State& state) {
  auto model = Documents::Load(Documents::MultinomialRegression(kTerms), Documents::PlugIn("torvane"));
  ValueRecord out(2);
  if (!model->Scorable(out).IsOK() || !out.Contains("probcategory")) WrongAnswer("outputs");
  const auto rows = Rows(kTerms);
  const HandWritten::Multinomial expected(kTerms);
  ValueRecord in = InputRecord(kTerms);
  for (const auto& row : rows) {
    SetAll(in, row);
    double probabilities[3];
    expected.Score(row.data(), probabilities);
    if (!model->Score(in, out).IsOK() || !Close(out["probcategory"]["middle"].GetReal(), probabilities[1])) {
      WrongAnswer("multinomial regression");
    }
  }
  ScoreRows(state, *model, out, kTerms);
}

template <int kTerms>
void MultinomialNamed(benchmark::State& state) {
  HandWritten::Multinomial limit(kTerms);
  ScoreNamedVariants(state, limit, kTerms, {"prediction", "probability", "low", "middle", "high"});
}

#define MULTINOMIAL(terms)                                                     \
  BENCHMARK(MultinomialLibrary<terms>)->Name("Multinomial" #terms "/library"); \
  BENCHMARK(MultinomialNamed<terms>)->Name("Multinomial" #terms "/limit_named")
MULTINOMIAL(4);
MULTINOMIAL(13);

// --- Tree ---

void TreeLibrary(benchmark::State& state) {
  auto model = Documents::Load(Documents::Tree20(), Documents::PlugIn("torvane"));
  ValueRecord out(2);
  out.Add("prediction", Value::NULL_VALUE);
  ValueRecord in = InputRecord(4);
  for (const auto& row : Rows(4)) {
    SetAll(in, row);
    const double expected = HandWritten::Tree20::Score(row.data());
    if (!model->Score(in, out).IsOK() || out.At(0).IsNull() != std::isnan(expected) ||
        (!out.At(0).IsNull() && !Close(out.At(0).GetReal(), expected))) {
      WrongAnswer("tree");
    }
  }
  ScoreRows(state, *model, out, 4);
}
BENCHMARK(TreeLibrary)->Name("Tree20/library");

void TreeNamed(benchmark::State& state) {
  HandWritten::Tree20 limit;
  ScoreNamedVariants(state, limit, 4, {"prediction"});
}
BENCHMARK(TreeNamed)->Name("Tree20/limit_named");

void TreeArrays(benchmark::State& state) {
  const auto rows = Rows(4);
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(HandWritten::Tree20::Score(rows[i].data()));
    i = (i + 1) % kRows;
  }
}
BENCHMARK(TreeArrays)->Name("Tree20/limit_arrays");

// --- The first record of a layout, when names are bound to positions ---

// A record whose layout the model doesn't know yet, on a model that has scored others: what binding adds.
void FirstRecord(benchmark::State& state) {
  const std::string document = Documents::LinearRegression(13);
  const auto rows = Rows(13);
  KelScoring_20::ScoringFactory keepsPlatformUp;
  for (auto _ : state) {
    auto model = Documents::Load(document, Documents::PlugIn("torvane"));
    ValueRecord in = InputRecord(13);
    ValueRecord out(2);
    out.Add("prediction", Value::NULL_VALUE);
    SetAll(in, rows[0]);
    const auto start = std::chrono::steady_clock::now();
    benchmark::DoNotOptimize(model->Score(in, out));
    state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  }
}
BENCHMARK(FirstRecord)->Name("Linear13/first_record")->UseManualTime()->Iterations(300);

}  // namespace

int main(int argc, char** argv) { return RunBenchmarks(argc, argv); }
