// What composition costs beside the members that it is made of. Each iteration runs a block of both, one after the
// other, and the counters come from the medians over the iterations, so that a disturbance hits both or doesn't count.

#include <algorithm>
#include <cmath>
#include <ctime>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "benchmarks/Documents.h"
#include "benchmarks/RatioReporter.h"
#include "scoring/common/KelScoringConst.h"
#include "scoring/common/ValueRecord.h"
#include "scoring/factory/ScoringFactory.h"
#include "scoring/model/ScoringMultiModel.h"
#include "scoring/model/ScoringSplitModel.h"

namespace {

using KelCommon_1_3::KelStatus;
using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;
using KelScoring_20::ScoringFactory;
using KelScoring_20::ScoringModel;
using KelScoring_20::ScoringMultiModel;
using KelScoring_20::ScoringSplitModel;
using KelXML_1_3::KelSettings;
namespace Const = KelScoring_20::KelScoringConst;

using Models = std::vector<std::unique_ptr<ScoringModel>>;
using Streams = std::vector<std::unique_ptr<std::stringstream>>;

enum class Side { kLibrary, kLimit };

/// Processor time of this thread: what other programs do on the machine doesn't count.
double Seconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

template <typename Work>
double SecondsOf(const Work& work) {
  const double start = Seconds();
  work();
  return Seconds() - start;
}

double Median(std::vector<double> numbers) {
  const auto middle = numbers.begin() + static_cast<std::ptrdiff_t>(numbers.size() / 2);
  std::nth_element(numbers.begin(), middle, numbers.end());
  return *middle;
}

struct Medians {
  double library;  // seconds per operation
  double limit;
  double difference;
};

// Times both, `operations` at a time, and reports one of them.
template <typename Library, typename Limit>
Medians TimeBoth(benchmark::State& state, Side side, int operations, const Library& library, const Limit& limit) {
  std::vector<double> libraries;
  std::vector<double> limits;
  std::vector<double> differences;
  for (auto _ : state) {
    const double ofLibrary = SecondsOf([&] {
                               for (int i = 0; i < operations; ++i) library();
                             }) /
                             operations;
    const double ofLimit = SecondsOf([&] {
                             for (int i = 0; i < operations; ++i) limit();
                           }) /
                           operations;
    state.SetIterationTime(side == Side::kLibrary ? ofLibrary : ofLimit);
    libraries.push_back(ofLibrary);
    limits.push_back(ofLimit);
    differences.push_back(ofLibrary - ofLimit);
  }
  return {Median(libraries), Median(limits), Median(differences)};
}

KelSettings EnsembleSettings(int members) {
  KelSettings settings = Documents::Settings(Documents::PlugIn("torvane"));
  std::vector<std::string> ids;
  for (int i = 0; i < members; ++i) ids.push_back(std::string("member ").append(std::to_string(i)));
  settings.AddSetting(Const::kSettingScoringModelIDs, ids, true);
  return settings;
}

Streams Copies(const std::string& document, int count) {
  Streams streams;
  for (int i = 0; i < count; ++i) streams.push_back(std::make_unique<std::stringstream>(document));
  return streams;
}

std::unique_ptr<ScoringModel> CreateEnsemble(KelSettings& settings, const Streams& streams) {
  std::vector<std::stringstream*> documents;
  for (const auto& stream : streams) {
    stream->clear();
    stream->seekg(0);
    documents.push_back(stream.get());
  }
  ScoringFactory factory;
  factory.CreateScoringModel(settings, documents);
  return std::unique_ptr<ScoringModel>(factory.Detach());
}

std::unique_ptr<ScoringModel> CreateSingle(KelSettings& settings, std::stringstream& stream) {
  stream.clear();
  stream.seekg(0);
  ScoringFactory factory;
  factory.CreateScoringModel(settings, stream);
  return std::unique_ptr<ScoringModel>(factory.Detach());
}

Models CreateSingles(KelSettings& settings, const Streams& streams) {
  Models models;
  for (const auto& stream : streams) models.push_back(CreateSingle(settings, *stream));
  return models;
}

// --- An ensemble beside its members scored one by one ---

constexpr int kInputs = 13;
constexpr int kScoresPerBlock = 1000;

// `outputs`: the names in the records that are scored into. The members themselves are scored one by one: where models
// lie in memory makes more of a difference than what is measured.
void ScoreEnsemble(benchmark::State& state, Side side, const std::string& document,
                   const std::vector<std::string>& outputs) {
  const auto memberCount = static_cast<int>(state.range(0));
  ScoringFactory keepsPlatformUp;
  KelSettings settings = Documents::Settings(Documents::PlugIn("torvane"));
  ScoringMultiModel ensemble;
  std::vector<ScoringModel*> members;
  for (std::unique_ptr<ScoringModel>& model : CreateSingles(settings, Copies(document, memberCount))) {
    members.push_back(model.get());
    ensemble.AddModel(std::string("member ").append(std::to_string(members.size())), model.release());
  }
  ValueRecord in;
  ValueRecord out;
  for (int i = 0; i < kInputs; ++i) in.Add(Documents::FieldName(i), 0.5 * i);
  for (const std::string& name : outputs) out.Add(name, Value::NULL_VALUE);
  ValueRecord single = out;
  if (!ensemble.Score(in, out).IsOK() || !members.front()->Score(in, single).IsOK() ||
      !(out[outputs.front()]["member 1"] == single[outputs.front()])) {
    state.SkipWithError("the ensemble doesn't give what its members give");
    return;
  }
  const Medians medians = TimeBoth(
      state, side, std::max(5, kScoresPerBlock / memberCount),
      [&] { benchmark::DoNotOptimize(ensemble.Score(in, out)); },
      [&] {
        for (ScoringModel* member : members) benchmark::DoNotOptimize(member->Score(in, single));
      });
  // The target is 120 ns.
  state.counters["added_ns/member/name"] =
      1e9 * medians.difference / (memberCount * static_cast<double>(outputs.size()));
}

template <Side side>
void ScoreNumbers(benchmark::State& state) {
  ScoreEnsemble(state, side, Documents::LinearRegression(kInputs), {"prediction"});
}

// A text, a number, and a composite of three numbers.
template <Side side>
void ScoreCategories(benchmark::State& state) {
  ScoreEnsemble(state, side, Documents::MultinomialRegression(kInputs), {"prediction", "probability", "probcategory"});
}

#define ENSEMBLE(family, function, members)    \
  BENCHMARK(function<Side::kLibrary>)          \
      ->Name(family #members "/library")       \
      ->Arg(members)                           \
      ->UseManualTime()                        \
      ->Iterations(400);                       \
  BENCHMARK(function<Side::kLimit>)            \
      ->Name(family #members "/limit_singles") \
      ->Arg(members)                           \
      ->UseManualTime()                        \
      ->Iterations(400)
ENSEMBLE("EnsembleNumbers", ScoreNumbers, 1);
ENSEMBLE("EnsembleNumbers", ScoreNumbers, 10);
ENSEMBLE("EnsembleNumbers", ScoreNumbers, 100);
ENSEMBLE("EnsembleNumbers", ScoreNumbers, 1000);
ENSEMBLE("EnsembleCategories", ScoreCategories, 1);
ENSEMBLE("EnsembleCategories", ScoreCategories, 10);
ENSEMBLE("EnsembleCategories", ScoreCategories, 100);
ENSEMBLE("EnsembleCategories", ScoreCategories, 1000);

// --- The selection of a member in a split model ---

/// A member that does nothing but say that it was picked.
class Member : public KelScoring_20::ScoringAbsModel {
 public:
  explicit Member(double key) : fKey(key) {}
  [[nodiscard]] ScoringModel* Clone() const override { return nullptr; }
  KelStatus Score(ValueRecord&, ValueRecord& out) override {
    out[0] = fKey;
    return {};
  }
  KelStatus Scorable(ValueRecord&) override { return {}; }

 private:
  double fKey;
};

constexpr std::size_t kKeys = 4096;

// Keys in no order that a branch predictor or a prefetcher would learn.
std::vector<double> RandomKeys(int members) {
  std::mt19937 random(20);
  std::uniform_int_distribution<int> key(0, members - 1);
  std::vector<double> keys(kKeys);
  std::generate(keys.begin(), keys.end(), [&] { return key(random); });
  return keys;
}

template <Side side>
void SelectMember(benchmark::State& state) {
  const auto members = static_cast<int>(state.range(0));
  ScoringSplitModel split;
  std::vector<std::string> fields{"key"};
  split.SetSplitFields(fields);
  std::vector<ScoringModel*> direct;
  for (int i = 0; i < members; ++i) {
    direct.push_back(new Member(i));
    split.AddModel({Value(i)}, direct.back());
  }
  ValueRecord in;
  in.Add("other", 1.0);
  in.Add("key", Value::NULL_VALUE);
  ValueRecord out;
  out.Add("picked", Value::NULL_VALUE);
  const std::vector<double> keys = RandomKeys(members);
  for (const double key : keys) {
    in[1] = key;
    if (split.Score(in, out).IsOK() && out.At(0).GetReal() == key) continue;
    state.SkipWithError("another member was picked");
    return;
  }
  std::size_t i = 0;
  std::size_t j = 0;
  const auto next = [&keys](std::size_t& position) { return keys[position++ % kKeys]; };
  const Medians medians = TimeBoth(
      state, side, kKeys,
      [&] {
        in[1] = next(i);
        benchmark::DoNotOptimize(split.Score(in, out));
      },
      [&] {
        const double key = next(j);
        in[1] = key;
        benchmark::DoNotOptimize(direct[static_cast<std::size_t>(key)]->Score(in, out));
      });
  state.counters["selection_ns"] = 1e9 * medians.difference;
  state.counters["target_ns"] = 100 + 15 * std::ceil(std::log2(members));
}

#define SELECTION(members)                     \
  BENCHMARK(SelectMember<Side::kLibrary>)      \
      ->Name("Split" #members "/library")      \
      ->Arg(members)                           \
      ->UseManualTime()                        \
      ->Iterations(500);                       \
  BENCHMARK(SelectMember<Side::kLimit>)        \
      ->Name("Split" #members "/limit_direct") \
      ->Arg(members)                           \
      ->UseManualTime()                        \
      ->Iterations(500)
SELECTION(10);
SELECTION(1000);
SELECTION(10000);

// --- The creation of an ensemble beside that of its members ---

template <Side side>
void Create(benchmark::State& state) {
  constexpr int kMembers = 100;
  ScoringFactory keepsPlatformUp;
  const Streams streams = Copies(Documents::RegressionOfSize(static_cast<std::size_t>(state.range(0))), kMembers);
  KelSettings settings = EnsembleSettings(kMembers);
  if (!CreateEnsemble(settings, streams)) {
    state.SkipWithError("no ensemble");
    return;
  }
  KelSettings ofSingle = Documents::Settings(Documents::PlugIn("torvane"));
  const Medians medians = TimeBoth(
      state, side, 1, [&] { benchmark::DoNotOptimize(CreateEnsemble(settings, streams)); },
      [&] { benchmark::DoNotOptimize(CreateSingles(ofSingle, streams)); });
  // The target is 5 %.
  state.counters["added_percent"] = 100 * medians.difference / medians.limit;
}
BENCHMARK(Create<Side::kLibrary>)
    ->Name("CreateEnsemble100/library")
    ->Arg(4096)
    ->UseManualTime()
    ->Iterations(21)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(Create<Side::kLimit>)
    ->Name("CreateEnsemble100/limit_singles")
    ->Arg(4096)
    ->UseManualTime()
    ->Iterations(21)
    ->Unit(benchmark::kMillisecond);

}  // namespace
