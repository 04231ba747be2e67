// The cost of one record of naive Bayes: half of the inputs have normal distributions, half are counted by bins.

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "benchmarks/Documents.h"
#include "benchmarks/ScoringLoop.h"

namespace {

using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;

using namespace ScoringLoop;

constexpr int kInputs = 10;
const char* const kCategories[] = {"low", "middle", "high"};
const std::vector<std::string> kOutputs = {"prediction", "probability"};

// The model of `Documents::NaiveBayes` as one would write it: tables of logarithms, one loop.
class HandWrittenBayes {
 public:
  HandWrittenBayes();
  void Score(HandWritten::NamedRecord& in, HandWritten::NamedRecord& out);
  void Score(const double* x, double* probabilities) const;

 private:
  struct Normal {
    double mean, factor, constant;
  };
  std::array<std::array<Normal, 3>, kInputs> fNormals{};
  std::array<std::array<std::array<double, 3>, 3>, kInputs> fLogShares{};
  double fLogThreshold = std::log(0.001);
  HandWritten::Binding fInputs{FieldNames(kInputs)};
  HandWritten::Binding fOutputs{kOutputs};
};

HandWrittenBayes::HandWrittenBayes() {
  for (std::size_t i = 0; i < kInputs; ++i) {
    const int input = static_cast<int>(i);
    for (std::size_t k = 0; k < 3; ++k) {
      const int table = static_cast<int>(k);
      const double variance = 1.0 + table;
      fNormals[i][k] = {Documents::Coefficient(input, table) - 1.0, -0.5 / variance,
                        -0.5 * std::log(2.0 * std::numbers::pi * variance)};
      double sum = 0.0;
      for (int bin = 0; bin < 3; ++bin) sum += Documents::NaiveBayesCount(input, bin, table);
      for (std::size_t bin = 0; bin < 3; ++bin) {
        fLogShares[i][bin][k] = std::log(Documents::NaiveBayesCount(input, static_cast<int>(bin), table) / sum);
      }
    }
  }
}

void HandWrittenBayes::Score(const double* x, double* probabilities) const {
  std::fill_n(probabilities, 3, std::log(10.0));
  for (std::size_t i = 0; i < kInputs; ++i) {
    if (i % 2 == 0) {
      for (std::size_t k = 0; k < 3; ++k) {
        const Normal& normal = fNormals[i][k];
        const double distance = x[i] - normal.mean;
        probabilities[k] += std::max(normal.constant + distance * distance * normal.factor, fLogThreshold);
      }
    } else {
      const auto& shares = fLogShares[i][x[i] <= -1.0 ? 0 : x[i] <= 1.0 ? 1 : 2];
      for (std::size_t k = 0; k < 3; ++k) probabilities[k] += shares[k];
    }
  }
  const double largest = *std::max_element(probabilities, probabilities + 3);
  double sum = 0.0;
  for (std::size_t k = 0; k < 3; ++k) sum += probabilities[k] = std::exp(probabilities[k] - largest);
  for (std::size_t k = 0; k < 3; ++k) probabilities[k] /= sum;
}

// A missing input ends it: no row has one.
void HandWrittenBayes::Score(HandWritten::NamedRecord& in, HandWritten::NamedRecord& out) {
  double x[kInputs];
  for (std::size_t i = 0; i < kInputs; ++i) {
    const double* number = std::get_if<double>(&fInputs.At(in, i).value);
    if (number == nullptr) return;
    x[i] = *number;
  }
  double probabilities[3];
  Score(x, probabilities);
  const auto winner = std::max_element(probabilities, probabilities + 3) - probabilities;
  fOutputs.At(out, 0).value = kCategories[winner];
  fOutputs.At(out, 1).value = probabilities[winner];
}

void BayesLibrary(benchmark::State& state) {
  auto model = Documents::Load(Documents::NaiveBayes(kInputs), Documents::PlugIn("torvane"));
  ValueRecord out(2);
  for (const std::string& output : kOutputs) out.Add(output.c_str(), Value::NULL_VALUE);
  const HandWrittenBayes expected;
  ValueRecord in = InputRecord(kInputs);
  for (const auto& row : MakeRows(kInputs)) {
    SetAll(in, row);
    double probabilities[3];
    expected.Score(row.data(), probabilities);
    const auto winner = std::max_element(probabilities, probabilities + 3) - probabilities;
    if (!model->Score(in, out).IsOK() || out.At(0).GetString() != kCategories[winner] ||
        !Close(out.At(1).GetReal(), probabilities[winner])) {
      WrongAnswer("naive Bayes");
    }
  }
  ScoreRows(state, *model, out, kInputs);
}
BENCHMARK(BayesLibrary)->Name("NaiveBayes10/library");

void BayesNamed(benchmark::State& state) {
  HandWrittenBayes limit;
  ScoreNamedVariants(state, limit, kInputs, kOutputs);
}
BENCHMARK(BayesNamed)->Name("NaiveBayes10/limit_named");

}  // namespace
