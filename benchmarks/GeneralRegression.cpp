// The cost of one record of a general regression with numeric covariates: the same sum as that of "Linear", here by
// parameters that are products of predictors.

#include "benchmarks/Documents.h"
#include "benchmarks/ScoringLoop.h"

namespace {

using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;

using namespace ScoringLoop;

constexpr int kCovariates = 9;

void GeneralLinearLibrary(benchmark::State& state) {
  auto model = Documents::Load(Documents::GeneralRegression(kCovariates), Documents::PlugIn("torvane"));
  ValueRecord out(2);
  out.Add("prediction", Value::NULL_VALUE);
  const HandWritten::Linear expected(kCovariates);
  ValueRecord in = InputRecord(kCovariates);
  for (const auto& row : MakeRows(kCovariates)) {
    SetAll(in, row);
    if (!model->Score(in, out).IsOK() || !Close(out.At(0).GetReal(), expected.Score(row.data()))) {
      WrongAnswer("general regression");
    }
  }
  ScoreRows(state, *model, out, kCovariates);
}
BENCHMARK(GeneralLinearLibrary)->Name("GeneralLinear9/library");

void GeneralLinearNamed(benchmark::State& state) {
  HandWritten::Linear limit(kCovariates);
  ScoreNamedVariants(state, limit, kCovariates, {"prediction"});
}
BENCHMARK(GeneralLinearNamed)->Name("GeneralLinear9/limit_named");

}  // namespace
