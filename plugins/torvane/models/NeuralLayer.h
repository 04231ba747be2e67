#pragma once

#include <cstdint>
#include <vector>

#include "components/keltransform/Cell.h"
#include "plugins/torvane/models/DenseRows.h"
#include "plugins/torvane/models/Prediction.h"

namespace Torvane {

/// What becomes of the weighted sum of a neuron.
enum class Activation : std::uint8_t {
  kThreshold,
  kLogistic,
  kTanh,
  kIdentity,
  kExponential,
  kReciprocal,
  kSquare,
  kGauss,
  kSine,
  kCosine,
  kElliott,
  kArctan,
  kRectifier,
  kRadialBasis,
};

/// What becomes of the activations of a layer together.
enum class Normalization : std::uint8_t { kNone, kSimplemax, kSoftmax };

/// A layer of neurons over the array of all outputs so far, first those of the inputs, then those of each layer.
///
/// Z = sum of weight * output, in the order of the connections, + bias; of the radial basis function
/// Z = sum of (output - weight)^2 / (2 width^2), whose activation is exp(f ln(altitude) - Z) with f connections.
struct NeuralLayer {
  /// Fills `outputs` from `firstNeuron` on. What isn't a number stays so through every function.
  void Evaluate(double* outputs) const noexcept;

  Activation activation = Activation::kLogistic;
  Normalization normalization = Normalization::kNone;
  double threshold = 0.0;
  std::uint32_t firstNeuron = 0;  ///< the place of its output

  /// One per neuron; for the radial basis function 0.
  std::vector<double> biases;
  /// Of the radial basis function, one per neuron: 2 width^2, and f ln(altitude).
  std::vector<double> widths;
  std::vector<double> heights;

  /// Where all neurons take the same outputs side by side, those from `firstSource` on: their weights.
  DenseRows dense;
  std::uint32_t firstSource = 0;
  /// Else the connections one after the other, and where those of each neuron end.
  std::vector<std::uint32_t> sources;
  std::vector<double> weights;
  std::vector<std::uint32_t> ends;

 private:
  void SumDense(const double* outputs, double* sums) const noexcept;
  void SumSparse(const double* outputs, double* sums) const noexcept;
  void Activate(double* sums) const noexcept;
};

/// The inputs and layers of a network, which the outputs of several targets share.
struct NeuralLayers {
  /// Fills `outputs` with those of the inputs and of all neurons. Without a result if an input is missing or invalid.
  Outcome Evaluate(const KelTransformNS::Cell* frame, double* outputs) const noexcept;

  std::vector<std::uint32_t> inputSlots;
  std::vector<NeuralLayer> layers;
  std::uint32_t neuronEnd = 0;  ///< the number of inputs and neurons

 private:
  Outcome ReadInputs(const KelTransformNS::Cell* frame, double* outputs) const noexcept;
};

}  // namespace Torvane
