// The cost of one record of a neural network 50-100-100-10 with softmax, beside the plain loops over its weights.

#include <algorithm>
#include <cmath>
#include <random>

#include "benchmarks/Documents.h"
#include "benchmarks/ScoringLoop.h"

namespace {

using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;

using namespace ScoringLoop;

constexpr std::size_t kSizes[] = {50, 100, 100, 10};
constexpr std::size_t kCategories = 10;
constexpr int kInputs = 50;

struct Layer {
  std::vector<double> biases;
  std::vector<double> weights;  // neuron after neuron
};

// Weights between -0.3 and 0.3, the same in every run.
std::vector<Layer> MakeLayers() {
  std::mt19937 random(11);
  std::uniform_real_distribution<double> number(-0.3, 0.3);
  std::vector<Layer> layers(3);
  for (std::size_t i = 0; i < 3; ++i) {
    layers[i].biases.resize(kSizes[i + 1]);
    layers[i].weights.resize(kSizes[i] * kSizes[i + 1]);
    for (double& bias : layers[i].biases) bias = number(random);
    for (double& weight : layers[i].weights) weight = number(random);
  }
  return layers;
}

// The network as one would write it.
class PlainLoops {
 public:
  const std::vector<double>& Score(const std::vector<double>& x) {
    fFrom.assign(x.begin(), x.end());
    for (std::size_t i = 0; i < fLayers.size(); ++i) {
      Sum(fLayers[i]);
      if (i + 1 < fLayers.size()) {
        for (double& z : fTo) z = 1.0 / (1.0 + std::exp(-z));
      }
      std::swap(fFrom, fTo);
    }
    Softmax(fFrom);
    return fFrom;
  }

 private:
  void Sum(const Layer& layer) {
    fTo.resize(layer.biases.size());
    const double* weight = layer.weights.data();
    for (std::size_t neuron = 0; neuron < fTo.size(); ++neuron) {
      double sum = 0.0;
      for (const double from : fFrom) sum += *weight++ * from;
      fTo[neuron] = sum + layer.biases[neuron];
    }
  }

  static void Softmax(std::vector<double>& figures) {
    const double largest = *std::max_element(figures.begin(), figures.end());
    double sum = 0.0;
    for (double& figure : figures) sum += figure = std::exp(figure - largest);
    for (double& figure : figures) figure /= sum;
  }

  std::vector<Layer> fLayers = MakeLayers();
  std::vector<double> fFrom;
  std::vector<double> fTo;
};

std::string NeuronId(std::size_t layer, std::size_t neuron) {
  return std::to_string(layer) + "," + std::to_string(neuron);
}

std::string LayerText(std::size_t number, const Layer& layer, const std::string& attributes) {
  const std::size_t inputs = kSizes[number - 1];
  std::string text = "<NeuralLayer " + attributes + ">\n";
  for (std::size_t neuron = 0; neuron < layer.biases.size(); ++neuron) {
    text +=
        "<Neuron id=\"" + NeuronId(number, neuron) + "\" bias=\"" + Documents::NumberText(layer.biases[neuron]) + "\">";
    for (std::size_t from = 0; from < inputs; ++from) {
      text += "<Con from=\"" + NeuronId(number - 1, from) + "\" weight=\"" +
              Documents::NumberText(layer.weights[neuron * inputs + from]) + "\"/>";
    }
    text += "</Neuron>\n";
  }
  return text + "</NeuralLayer>\n";
}

std::string Document() {
  std::string fields;
  std::string schema;
  std::string inputs;
  for (int i = 0; i < kInputs; ++i) {
    const std::string name = Documents::FieldName(i);
    fields += "<DataField name=\"" + name + "\" optype=\"continuous\" dataType=\"double\"/>\n";
    schema += "<MiningField name=\"" + name + "\"/>\n";
    inputs += "<NeuralInput id=\"" + NeuronId(0, static_cast<std::size_t>(i)) +
              "\"><DerivedField optype=\"continuous\" dataType=\"double\"><FieldRef field=\"" + name +
              "\"/></DerivedField></NeuralInput>\n";
  }
  const std::vector<Layer> layers = MakeLayers();
  std::string body = LayerText(1, layers[0], "") + LayerText(2, layers[1], "") +
                     LayerText(3, layers[2], "activationFunction=\"identity\" normalizationMethod=\"softmax\"");
  std::string outputs;
  for (std::size_t i = 0; i < kCategories; ++i) {
    outputs += "<NeuralOutput outputNeuron=\"" + NeuronId(3, i) +
               "\"><DerivedField optype=\"continuous\" dataType=\"double\"><NormDiscrete field=\"y\" value=\"c" +
               std::to_string(i) + "\"/></DerivedField></NeuralOutput>\n";
  }
  return "<PMML version=\"4.0\" xmlns=\"http://www.dmg.org/PMML-4_0\">\n<Header/>\n<DataDictionary>\n"
         "<DataField name=\"y\" optype=\"categorical\" dataType=\"string\"/>\n" +
         fields +
         "</DataDictionary>\n<NeuralNetwork functionName=\"classification\" activationFunction=\"logistic\">\n"
         "<MiningSchema>\n<MiningField name=\"y\" usageType=\"predicted\"/>\n" +
         schema + "</MiningSchema>\n<NeuralInputs>\n" + inputs + "</NeuralInputs>\n" + body + "<NeuralOutputs>\n" +
         outputs + "</NeuralOutputs>\n</NeuralNetwork>\n</PMML>\n";
}

void NeuralLibrary(benchmark::State& state) {
  auto model = Documents::Load(Document(), Documents::PlugIn("torvane"));
  ValueRecord out(2);
  out.Add("prediction", Value::NULL_VALUE);
  out.Add("probability", Value::NULL_VALUE);
  PlainLoops expected;
  ValueRecord in = InputRecord(kInputs);
  for (const auto& row : MakeRows(kInputs)) {
    SetAll(in, row);
    const std::vector<double>& shares = expected.Score(row);
    const auto winner = std::max_element(shares.begin(), shares.end());
    if (!model->Score(in, out).IsOK() || !Close(out.At(1).GetReal(), *winner) ||
        out.At(0).GetString() != std::string(1, 'c').append(std::to_string(winner - shares.begin()))) {
      WrongAnswer("neural network");
    }
  }
  ScoreRows(state, *model, out, kInputs);
}
BENCHMARK(NeuralLibrary)->Name("Neural50_100_100_10/library");

void NeuralArrays(benchmark::State& state) {
  const Rows rows = MakeRows(kInputs);
  PlainLoops limit;
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(limit.Score(rows[i]).data());
    benchmark::ClobberMemory();
    i = (i + 1) % kRows;
  }
}
BENCHMARK(NeuralArrays)->Name("Neural50_100_100_10/limit_arrays");

}  // namespace
