// Ensembles of trees beside what one would write by hand for each shape: walks of eight trees at a time over flat
// nodes, and for many small trees masks by intervals. The limits read named variants and write two of them, as the
// library does with its records.

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "benchmarks/Documents.h"
#include "benchmarks/EnsembleDocument.h"
#include "benchmarks/HandWritten.h"
#include "benchmarks/RatioReporter.h"
#include "benchmarks/ScoringLoop.h"

namespace {

using namespace ScoringLoop;
using EnsembleDocument::Ensemble;
using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;

// --- Limits ---

/// Names, scaling and outputs are the same for all limits; how a sum comes about isn't.
class NamedLimit {
 public:
  explicit NamedLimit(const Ensemble& ensemble)
      : fEnsemble(ensemble), fInputs(FieldNames(ensemble.inputs)), fOutputs({"prediction", "y"}) {
    for (int i = 0; i < ensemble.inputs; ++i) {
      const double norm = -EnsembleDocument::Mean(i) / EnsembleDocument::Deviation(i);
      fScales.push_back({EnsembleDocument::Mean(i), norm});
    }
    fNumbers.resize(fScales.size());
  }

  template <typename Sum>
  void ScoreBy(const Sum& sum, HandWritten::NamedRecord& in, HandWritten::NamedRecord& out) {
    for (std::size_t i = 0; i < fNumbers.size(); ++i) {
      const double x = *std::get_if<double>(&fInputs.At(in, i).value);
      fNumbers[i] = x;
      if (!fEnsemble.isScaled) continue;
      fNumbers[i] = static_cast<double>(static_cast<float>(fScales[i].norm + x / fScales[i].mean * -fScales[i].norm));
    }
    double result = sum(fNumbers.data());
    if (fEnsemble.isAverage) result /= static_cast<double>(fEnsemble.trees.size());
    fOutputs.At(out, 0).value = result;
    fOutputs.At(out, 1).value = result;
  }

 private:
  struct Scale {
    double mean;
    double norm;
  };
  const Ensemble& fEnsemble;
  HandWritten::Binding fInputs;
  HandWritten::Binding fOutputs;
  std::vector<Scale> fScales;
  std::vector<double> fNumbers;
};

class Walks : NamedLimit {
 public:
  explicit Walks(const Ensemble& ensemble) : NamedLimit(ensemble), fScores(ensemble.trees.size()) {
    for (const EnsembleDocument::Tree& tree : ensemble.trees) Add(tree);
  }
  void Score(HandWritten::NamedRecord& in, HandWritten::NamedRecord& out) {
    ScoreBy([this](const double* numbers) { return Sum(numbers); }, in, out);
  }

 private:
  struct Step {
    double limit;
    std::uint32_t distance;
    std::uint32_t feature;
  };

  void Add(const EnsembleDocument::Tree& tree) {
    const auto root = static_cast<std::uint32_t>(fSteps.size());
    fRoots.push_back(root);
    std::vector<int> nodes{0};
    for (std::size_t i = 0; i < nodes.size(); ++i) {
      const EnsembleDocument::Node& node = tree[static_cast<std::size_t>(nodes[i])];
      fResults.push_back(node.score);
      if (node.isLeaf) {
        fSteps.push_back({std::numeric_limits<double>::infinity(), 0, 0});
        continue;
      }
      fSteps.push_back(
          {node.limit, static_cast<std::uint32_t>(nodes.size() - i), static_cast<std::uint32_t>(node.feature)});
      nodes.push_back(node.below);
      nodes.push_back(node.above);
    }
  }

  double Sum(const double* numbers) {
    constexpr std::size_t kLanes = 8;
    for (std::size_t tree = 0; tree + kLanes <= fRoots.size(); tree += kLanes) {
      std::array<std::uint32_t, kLanes> at;
      std::copy_n(fRoots.begin() + static_cast<std::ptrdiff_t>(tree), kLanes, at.begin());
      for (std::uint32_t moved = 1; moved != 0;) {
        moved = 0;
        for (std::uint32_t& node : at) {
          const Step& step = fSteps[node];
          moved |= step.distance;
          node += step.distance + static_cast<std::uint32_t>(numbers[step.feature] > step.limit);
        }
      }
      for (std::size_t lane = 0; lane < kLanes; ++lane) fScores[tree + lane] = fResults[at[lane]];
    }
    for (std::size_t tree = fRoots.size() / kLanes * kLanes; tree < fRoots.size(); ++tree) {
      std::uint32_t at = fRoots[tree];
      while (fSteps[at].distance != 0) {
        at += fSteps[at].distance + static_cast<std::uint32_t>(numbers[fSteps[at].feature] > fSteps[at].limit);
      }
      fScores[tree] = fResults[at];
    }
    double sum = 0.0;
    for (const double score : fScores) sum += score;
    return sum;
  }

  std::vector<Step> fSteps;
  std::vector<double> fResults;
  std::vector<std::uint32_t> fRoots;
  std::vector<double> fScores;
};

/// For trees of at most 8 leaves.
class Masks : NamedLimit {
 public:
  explicit Masks(const Ensemble& ensemble)
      : NamedLimit(ensemble), fRowLength((ensemble.trees.size() + 15) / 16 * 16), fScores(8 * ensemble.trees.size()) {
    fFeatures.resize(static_cast<std::size_t>(ensemble.inputs));
    for (const auto& tree : ensemble.trees) {
      for (const auto& node : tree) {
        if (!node.isLeaf) fFeatures[static_cast<std::size_t>(node.feature)].limits.push_back(node.limit);
      }
    }
    for (Feature& feature : fFeatures) {
      std::sort(feature.limits.begin(), feature.limits.end());
      feature.rows.assign((feature.limits.size() + 1) * fRowLength, 0xFF);
    }
    for (std::size_t tree = 0; tree < ensemble.trees.size(); ++tree) {
      std::uint8_t next = 0;
      Fill(ensemble.trees[tree], 0, tree, next);
    }
    fTreeCount = ensemble.trees.size();
  }
  void Score(HandWritten::NamedRecord& in, HandWritten::NamedRecord& out) {
    ScoreBy([this](const double* numbers) { return Sum(numbers); }, in, out);
  }

 private:
  using Row [[gnu::vector_size(16)]] = std::uint8_t;
  struct Feature {
    std::vector<double> limits;
    std::vector<std::uint8_t> rows;
  };

  static Row Load(const std::uint8_t* masks) {
    Row row;
    std::memcpy(&row, masks, sizeof(row));
    return row;
  }

  std::uint8_t Fill(const EnsembleDocument::Tree& tree, int at, std::size_t index, std::uint8_t& next) {
    const EnsembleDocument::Node& node = tree[static_cast<std::size_t>(at)];
    if (node.isLeaf) {
      fScores[8 * index + next] = node.score;
      return static_cast<std::uint8_t>(1U << next++);
    }
    const std::uint8_t below = Fill(tree, node.below, index, next);
    const std::uint8_t above = Fill(tree, node.above, index, next);
    Feature& feature = fFeatures[static_cast<std::size_t>(node.feature)];
    for (std::size_t row = 0; row <= feature.limits.size(); ++row) {
      const bool isAbove = row > 0 && feature.limits[row - 1] >= node.limit;
      std::uint8_t& mask = feature.rows[row * fRowLength + index];
      mask = static_cast<std::uint8_t>(mask & ~(isAbove ? below : above));
    }
    return static_cast<std::uint8_t>(below | above);
  }

  double Sum(const double* numbers) const {
    std::array<const std::uint8_t*, 16> rows;
    for (std::size_t i = 0; i < fFeatures.size(); ++i) {
      const std::vector<double>& limits = fFeatures[i].limits;
      const double* first = limits.data();
      for (std::size_t length = limits.size(); length > 1;) {
        const std::size_t half = length / 2;
        first += half * static_cast<std::size_t>(first[half - 1] < numbers[i]);
        length -= half;
      }
      const auto row = static_cast<std::size_t>(first - limits.data()) + (*first < numbers[i] ? 1 : 0);
      rows[i] = fFeatures[i].rows.data() + row * fRowLength;
    }
    double sum = 0.0;
    for (std::size_t begin = 0; begin < fTreeCount; begin += 16) {
      Row masks = Load(rows[0] + begin);
      for (std::size_t i = 1; i < fFeatures.size(); ++i) masks &= Load(rows[i] + begin);
      const std::size_t end = std::min<std::size_t>(16, fTreeCount - begin);
      for (std::size_t lane = 0; lane < end; ++lane) {
        sum += fScores[8 * (begin + lane) + static_cast<std::size_t>(std::countr_zero<std::uint8_t>(masks[lane]))];
      }
    }
    return sum;
  }

  std::size_t fRowLength;
  std::size_t fTreeCount = 0;
  std::vector<Feature> fFeatures;
  std::vector<double> fScores;
};

// --- Runs ---

void RunLibrary(benchmark::State& state, const Ensemble& ensemble) {
  auto model = Documents::Load(EnsembleDocument::Text(ensemble), Documents::PlugIn("torvane"));
  ValueRecord out(2);
  out.Add("prediction", Value::NULL_VALUE);
  out.Add("y", Value::NULL_VALUE);
  ValueRecord in = InputRecord(ensemble.inputs);
  for (const auto& row : MakeRows(ensemble.inputs)) {
    SetAll(in, row);
    const double expected = EnsembleDocument::Score(ensemble, row.data());
    if (!model->Score(in, out).IsOK() || out.At(0).GetReal() != expected || out.At(1).GetReal() != expected) {
      WrongAnswer("ensemble");
    }
  }
  ScoreRows(state, *model, out, ensemble.inputs);
}

template <typename Limit>
void RunLimit(benchmark::State& state, const Ensemble& ensemble) {
  Limit limit(ensemble);
  HandWritten::NamedRecord in = HandWritten::MakeRecord(FieldNames(ensemble.inputs));
  HandWritten::NamedRecord out = HandWritten::MakeRecord({"prediction", "y"});
  for (const auto& row : MakeRows(ensemble.inputs)) {
    SetAll(in, row);
    limit.Score(in, out);
    if (std::get<double>(out[0].value) != EnsembleDocument::Score(ensemble, row.data())) WrongAnswer("limit");
  }
  ScoreNamedVariants(state, limit, ensemble.inputs, {"prediction", "y"});
}

Ensemble Scaled() {
  Ensemble ensemble = EnsembleDocument::Boosted(100, 3, 9);
  ensemble.isScaled = true;
  return ensemble;
}

void Boosted100Library(benchmark::State& state) { RunLibrary(state, Scaled()); }
void Boosted100Masks(benchmark::State& state) { RunLimit<Masks>(state, Scaled()); }
void Boosted100Walks(benchmark::State& state) { RunLimit<Walks>(state, Scaled()); }
BENCHMARK(Boosted100Library)->Name("Boosted100x3/library");
BENCHMARK(Boosted100Masks)->Name("Boosted100x3/limit_masks");
BENCHMARK(Boosted100Walks)->Name("Boosted100x3/walks");

Ensemble Deep() { return EnsembleDocument::Forest(200, 340, 20); }
void ForestLibrary(benchmark::State& state) { RunLibrary(state, Deep()); }
void ForestWalks(benchmark::State& state) { RunLimit<Walks>(state, Deep()); }
BENCHMARK(ForestLibrary)->Name("Forest200/library");
BENCHMARK(ForestWalks)->Name("Forest200/limit_walks");

Ensemble Boosted500() { return EnsembleDocument::Boosted(500, 6, 50); }
void Boosted500Library(benchmark::State& state) { RunLibrary(state, Boosted500()); }
void Boosted500Walks(benchmark::State& state) { RunLimit<Walks>(state, Boosted500()); }
BENCHMARK(Boosted500Library)->Name("Boosted500x6/library");
BENCHMARK(Boosted500Walks)->Name("Boosted500x6/limit_walks");

}  // namespace

int main(int argc, char** argv) { return RunBenchmarks(argc, argv); }
