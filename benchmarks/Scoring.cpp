// The cost of one record, through `ScoringModel::Score` with records that are used again and set by position, beside
// hand-written code for the same model: "limit_named" on named variants, "limit_arrays" on plain arrays.

#include <chrono>
#include <cmath>

#include "benchmarks/Documents.h"
#include "benchmarks/HandWritten.h"
#include "benchmarks/RatioReporter.h"
#include "benchmarks/ScoringLoop.h"
#include "scoring/common/KelDiagnostics.h"
#include "scoring/common/ValueRecord.h"
#include "scoring/factory/ScoringFactory.h"

namespace {

using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;
using KelScoring_20::ScoringModel;

using namespace ScoringLoop;

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
  const auto rows = MakeRows(kTerms);
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
  const auto rows = MakeRows(kTerms);
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
  const auto rows = MakeRows(kTerms);
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
  for (const auto& row : MakeRows(4)) {
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
  const auto rows = MakeRows(4);
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
  const auto rows = MakeRows(13);
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
