// Clusters and nearest neighbours: one record through `ScoringModel::Score`, beside what one would write by hand over
// named variants ("limit_named") and over plain arrays ("limit_arrays").

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/Documents.h"
#include "benchmarks/HandWritten.h"
#include "benchmarks/ScoringLoop.h"
#include "scoring/common/ValueRecord.h"

namespace {

using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;

using ScoringLoop::Rows;

std::vector<double> RandomRow(std::mt19937& random, std::size_t columns) {
  std::uniform_real_distribution<double> number(-3.0, 3.0);
  std::vector<double> row(columns);
  std::generate(row.begin(), row.end(), [&] { return number(random); });
  return row;
}

Rows RandomRows(std::size_t count, std::size_t columns, unsigned seed) {
  std::mt19937 random(seed);
  Rows rows;
  while (rows.size() < count) rows.push_back(RandomRow(random, columns));
  return rows;
}

std::string Repeat(int count, const std::string& before, const std::string& after) {
  std::string text;
  for (int i = 0; i < count; ++i) text += before + Documents::FieldName(i) + after;
  return text;
}

std::string Head(int fields) {
  return "<PMML version=\"4.2\" xmlns=\"http://www.dmg.org/PMML-4_2\"><Header/><DataDictionary>"
         "<DataField name=\"y\" optype=\"continuous\" dataType=\"double\"/>" +
         Repeat(fields, "<DataField optype=\"continuous\" dataType=\"double\" name=\"", "\"/>") + "</DataDictionary>";
}

std::string Schema(int fields) {
  return "<MiningSchema>" + Repeat(fields, "<MiningField name=\"", "\"/>") +
         "<MiningField name=\"y\" usageType=\"target\"/></MiningSchema>";
}

constexpr char kMeasure[] = "<ComparisonMeasure kind=\"distance\"><euclidean/></ComparisonMeasure>";

// --- 10 clusters of 20 fields ---

struct Clusters {
  static constexpr int kFields = 20;
  static constexpr const char* kOutput = "clustering-clusterid";

  Rows centers = RandomRows(10, kFields, 1);

  [[nodiscard]] std::string Document() const {
    std::string text = Head(kFields) + "<ClusteringModel functionName=\"clustering\" modelClass=\"centerBased\">" +
                       Schema(kFields) + kMeasure + Repeat(kFields, "<ClusteringField field=\"", "\"/>");
    for (const auto& center : centers) {
      text += "<Cluster><Array type=\"real\">";
      for (const double number : center) text += Documents::NumberText(number) + " ";
      text += "</Array></Cluster>";
    }
    return text + "</ClusteringModel></PMML>";
  }

  // The cluster's identifier.
  [[nodiscard]] double Score(const double* x) {
    double least = HUGE_VAL;
    std::size_t best = 0;
    for (std::size_t cluster = 0; cluster < centers.size(); ++cluster) {
      double sum = 0.0;
      for (std::size_t i = 0; i < kFields; ++i) sum += (x[i] - centers[cluster][i]) * (x[i] - centers[cluster][i]);
      const double distance = std::sqrt(sum);
      if (distance < least) {
        least = distance;
        best = cluster;
      }
    }
    return static_cast<double>(best + 1);
  }
};

// --- The 5 nearest of 1,000 instances of 10 fields ---

struct Neighbors {
  static constexpr int kFields = 10;
  static constexpr std::size_t kNeighbors = 5;
  static constexpr const char* kOutput = "prediction";

  Rows instances = RandomRows(1000, kFields + 1, 2);  // the target comes last
  std::vector<std::pair<double, std::size_t>> nearest;

  [[nodiscard]] std::string Document() const {
    std::string text = Head(kFields) + "<NearestNeighborModel functionName=\"regression\" numberOfNeighbors=\"5\">" +
                       Schema(kFields) + "<TrainingInstances><InstanceFields><InstanceField field=\"y\"/>" +
                       Repeat(kFields, "<InstanceField field=\"", "\"/>") + "</InstanceFields><InlineTable>";
    for (const auto& instance : instances) {
      text += "<row>";
      for (int i = 0; i <= kFields; ++i) {
        const std::string name = i == kFields ? "y" : Documents::FieldName(i);
        text += "<" + name + ">" + Documents::NumberText(instance[static_cast<std::size_t>(i)]) + "</" + name + ">";
      }
      text += "</row>";
    }
    return text + "</InlineTable></TrainingInstances>" + kMeasure + "<KNNInputs>" +
           Repeat(kFields, "<KNNInput field=\"", "\"/>") + "</KNNInputs></NearestNeighborModel></PMML>";
  }

  [[nodiscard]] double Score(const double* x) {
    nearest.resize(instances.size());
    for (std::size_t instance = 0; instance < instances.size(); ++instance) {
      const double* const row = instances[instance].data();
      double sum = 0.0;
      for (std::size_t i = 0; i < kFields; ++i) sum += (x[i] - row[i]) * (x[i] - row[i]);
      nearest[instance] = {std::sqrt(sum), instance};
    }
    std::partial_sort(nearest.begin(), nearest.begin() + kNeighbors, nearest.end());
    double sum = 0.0;
    for (std::size_t i = 0; i < kNeighbors; ++i) sum += instances[nearest[i].second][kFields];
    return sum / kNeighbors;
  }
};

// --- Runs ---

double AsNumber(const Value& value) {
  return value.GetType() == Value::kNumber ? value.GetReal() : std::atof(value.GetString().c_str());
}

template <typename Model>
void Library(benchmark::State& state) {
  Model limit;
  const auto model = Documents::Load(limit.Document(), Documents::PlugIn("torvane"));
  ValueRecord in = ScoringLoop::InputRecord(Model::kFields);
  ValueRecord out(2);
  out.Add(Model::kOutput, Value::NULL_VALUE);
  for (const auto& row : ScoringLoop::MakeRows(Model::kFields)) {
    ScoringLoop::SetAll(in, row);
    if (!model->Score(in, out).IsOK() || !ScoringLoop::Close(AsNumber(out.At(0)), limit.Score(row.data()))) {
      ScoringLoop::WrongAnswer(Model::kOutput);
    }
  }
  ScoringLoop::ScoreRows(state, *model, out, Model::kFields);
}

template <typename Model>
struct OnNamedVariants {
  Model model;
  HandWritten::Binding inputs{ScoringLoop::FieldNames(Model::kFields)};
  HandWritten::Binding outputs{{Model::kOutput}};
  std::array<double, Model::kFields> x{};

  void Score(HandWritten::NamedRecord& in, HandWritten::NamedRecord& out) {
    for (std::size_t i = 0; i < x.size(); ++i) {
      const double* const number = std::get_if<double>(&inputs.At(in, i).value);
      x[i] = number == nullptr ? NAN : *number;
    }
    outputs.At(out, 0).value = model.Score(x.data());
  }
};

template <typename Model>
void Named(benchmark::State& state) {
  OnNamedVariants<Model> limit;
  ScoringLoop::ScoreNamedVariants(state, limit, Model::kFields, {Model::kOutput});
}

template <typename Model>
void Arrays(benchmark::State& state) {
  Model limit;
  const Rows rows = ScoringLoop::MakeRows(Model::kFields);
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(limit.Score(rows[i].data()));
    i = (i + 1) % ScoringLoop::kRows;
  }
}

BENCHMARK(Library<Clusters>)->Name("Clusters10x20/library");
BENCHMARK(Named<Clusters>)->Name("Clusters10x20/limit_named");
BENCHMARK(Arrays<Clusters>)->Name("Clusters10x20/limit_arrays");
BENCHMARK(Library<Neighbors>)->Name("Nearest5of1000x10/library");
BENCHMARK(Named<Neighbors>)->Name("Nearest5of1000x10/limit_named");
BENCHMARK(Arrays<Neighbors>)->Name("Nearest5of1000x10/limit_arrays");

}  // namespace
