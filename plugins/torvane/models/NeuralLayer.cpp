#include "plugins/torvane/models/NeuralLayer.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "plugins/torvane/models/Figures.h"

namespace Torvane {

using KelTransformNS::Cell;

namespace {

template <typename Function>
void ForEach(double* z, std::size_t count, Function function) noexcept {
  std::transform(z, z + count, z, function);
}

}  // namespace

void NeuralLayer::Evaluate(double* outputs) const noexcept {
  double* const sums = outputs + firstNeuron;
  if (ends.empty()) {
    SumDense(outputs, sums);
  } else {
    SumSparse(outputs, sums);
  }
  for (std::size_t i = 0; i < biases.size(); ++i) sums[i] += biases[i];
  Activate(sums);
  if (normalization == Normalization::kSoftmax) Softmax(sums, biases.size());
  if (normalization == Normalization::kSimplemax) Share(sums, biases.size());
}

void NeuralLayer::SumDense(const double* outputs, double* sums) const noexcept {
  if (activation == Activation::kRadialBasis) {
    dense.SquaredDistances(outputs + firstSource, sums);
  } else {
    dense.Products(outputs + firstSource, sums);
  }
}

void NeuralLayer::SumSparse(const double* outputs, double* sums) const noexcept {
  std::uint32_t connection = 0;
  for (std::size_t neuron = 0; neuron < ends.size(); ++neuron) {
    double sum = 0.0;
    for (; connection < ends[neuron]; ++connection) {
      const double output = outputs[sources[connection]];
      const double difference = output - weights[connection];
      sum += activation == Activation::kRadialBasis ? difference * difference : output * weights[connection];
    }
    sums[neuron] = sum;
  }
}

// Each formula as the standard's table of activation functions has it, but for tanh, whose quotient of exponentials
// would overflow. Comparisons are such that NaN doesn't turn into a number.
void NeuralLayer::Activate(double* sums) const noexcept {
  const std::size_t count = biases.size();
  switch (activation) {
    case Activation::kThreshold:
      return ForEach(sums, count, [this](double z) { return std::isnan(z) ? z : (z > threshold ? 1.0 : 0.0); });
    case Activation::kLogistic:
      return ForEach(sums, count, [](double z) { return 1.0 / (1.0 + std::exp(-z)); });
    case Activation::kTanh:
      return ForEach(sums, count, [](double z) { return std::tanh(z); });
    case Activation::kIdentity:
      return;
    case Activation::kExponential:
      return ForEach(sums, count, [](double z) { return std::exp(z); });
    case Activation::kReciprocal:
      return ForEach(sums, count, [](double z) { return 1.0 / z; });
    case Activation::kSquare:
      return ForEach(sums, count, [](double z) { return z * z; });
    case Activation::kGauss:
      return ForEach(sums, count, [](double z) { return std::exp(-(z * z)); });
    case Activation::kSine:
      return ForEach(sums, count, [](double z) { return std::sin(z); });
    case Activation::kCosine:
      return ForEach(sums, count, [](double z) { return std::cos(z); });
    case Activation::kElliott:
      return ForEach(sums, count, [](double z) { return z / (1.0 + std::fabs(z)); });
    case Activation::kArctan:
      return ForEach(sums, count, [](double z) { return 2.0 * std::atan(z) / std::numbers::pi; });
    case Activation::kRectifier:
      return ForEach(sums, count, [](double z) { return z < 0.0 ? 0.0 : z; });
    case Activation::kRadialBasis:
      for (std::size_t i = 0; i < count; ++i) sums[i] = std::exp(heights[i] - sums[i] / widths[i]);
      return;
  }
}

Outcome NeuralLayers::Evaluate(const Cell* frame, double* outputs) const noexcept {
  const Outcome outcome = ReadInputs(frame, outputs);
  if (outcome != Outcome::kValue) return outcome;
  for (const NeuralLayer& layer : layers) layer.Evaluate(outputs);
  return outcome;
}

// A network can't do without any of its inputs.
Outcome NeuralLayers::ReadInputs(const Cell* frame, double* outputs) const noexcept {
  Outcome outcome = Outcome::kValue;
  for (std::size_t i = 0; i < inputSlots.size(); ++i) {
    const Cell& cell = frame[inputSlots[i]];
    if (cell.state == Cell::kNumber) {
      outputs[i] = cell.number;
    } else if (cell.IsMissing()) {
      outcome = Outcome::kMissing;
    } else {
      return Outcome::kInvalid;
    }
  }
  return outcome;
}

}  // namespace Torvane
