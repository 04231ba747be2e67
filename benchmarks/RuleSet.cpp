// The cost of one record of a rule set whose first rule that fires decides: "library" for the prediction alone, which
// ends at that rule, "library_all" for all outputs, whose confidences need every rule.

#include "benchmarks/Documents.h"
#include "benchmarks/ScoringLoop.h"

namespace {

using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;

using namespace ScoringLoop;

constexpr int kInputs = 4;
constexpr int kRules = 50;
const char* const kCategories[] = {"low", "middle", "high"};

// The rules of `Documents::RuleSet` as one would write them: a table and one loop.
class HandWrittenRules {
 public:
  HandWrittenRules();
  void Score(HandWritten::NamedRecord& in, HandWritten::NamedRecord& out);
  [[nodiscard]] const char* Score(const double* x) const;

 private:
  struct Rule {
    std::size_t above;
    double lower;
    std::size_t below;
    double upper;
    const char* score;
  };
  std::vector<Rule> fRules;
  HandWritten::Binding fInputs{FieldNames(kInputs)};
  HandWritten::Binding fOutputs{{"prediction"}};
};

HandWrittenRules::HandWrittenRules() {
  for (std::size_t r = 0; r < kRules; ++r) {
    const double step = static_cast<double>(r) / 25.0;
    fRules.push_back({r % 4, 2.0 - step, (r + 1) % 4, step - 1.5, kCategories[r % 3]});
  }
}

const char* HandWrittenRules::Score(const double* x) const {
  for (const Rule& rule : fRules) {
    if (x[rule.above] > rule.lower && x[rule.below] <= rule.upper) return rule.score;
  }
  return kCategories[0];
}

void HandWrittenRules::Score(HandWritten::NamedRecord& in, HandWritten::NamedRecord& out) {
  double x[kInputs];
  for (std::size_t i = 0; i < kInputs; ++i) {
    const double* number = std::get_if<double>(&fInputs.At(in, i).value);
    if (number == nullptr) return;
    x[i] = *number;
  }
  fOutputs.At(out, 0).value = Score(x);
}

void ScoreRules(benchmark::State& state, bool wantsAll) {
  auto model = Documents::Load(Documents::RuleSet(kRules), Documents::PlugIn("torvane"));
  ValueRecord out(2);
  out.Add("prediction", Value::NULL_VALUE);
  if (wantsAll && !model->Scorable(out).IsOK()) WrongAnswer("outputs");
  const HandWrittenRules expected;
  ValueRecord in = InputRecord(kInputs);
  for (const auto& row : MakeRows(kInputs)) {
    SetAll(in, row);
    if (!model->Score(in, out).IsOK() || out.At(0).GetString() != expected.Score(row.data())) WrongAnswer("rule set");
  }
  ScoreRows(state, *model, out, kInputs);
}

void RulesLibrary(benchmark::State& state) { ScoreRules(state, false); }
BENCHMARK(RulesLibrary)->Name("RuleSet50/library");

void RulesLibraryAll(benchmark::State& state) { ScoreRules(state, true); }
BENCHMARK(RulesLibraryAll)->Name("RuleSet50/library_all");

void RulesNamed(benchmark::State& state) {
  HandWrittenRules limit;
  ScoreNamedVariants(state, limit, kInputs, {"prediction"});
}
BENCHMARK(RulesNamed)->Name("RuleSet50/limit_named");

}  // namespace
