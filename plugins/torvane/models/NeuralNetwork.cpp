#include "plugins/torvane/models/NeuralNetwork.h"

#include <cmath>

namespace Torvane {

using KelTransformNS::Cell;

void NeuralNetwork::Evaluate(KelTransformNS::Frame frame, Prediction& prediction) const noexcept {
  double* const outputs = prediction.scratch;
  prediction.outcome = fLayers->Evaluate(frame.data(), outputs);
  if (prediction.outcome != Outcome::kValue) return;
  if (fIsClassification) {
    Classify(outputs, prediction);
  } else {
    Predict(outputs, prediction);
  }
}

void NeuralNetwork::Predict(const double* outputs, Prediction& prediction) const noexcept {
  Cell number = Cell::Number(outputs[fOutputs[0].neuron]);
  for (std::uint32_t i = 0; i < fInverseCount; ++i) number = fInverses.Evaluate(i, number);
  if (number.state == Cell::kNumber) {
    prediction.number = number.number;
    prediction.entity = 0;
  } else {
    prediction.outcome = number.IsMissing() ? Outcome::kMissing : Outcome::kInvalid;
  }
}

void NeuralNetwork::Classify(const double* outputs, Prediction& prediction) const noexcept {
  std::uint32_t winner = 0;
  for (std::uint32_t i = 0; i < fOutputs.size(); ++i) {
    const double output = outputs[fOutputs[i].neuron];
    if (std::isnan(output)) {
      prediction.outcome = Outcome::kInvalid;
      return;
    }
    prediction.probabilities[fOutputs[i].category] = output;
    if (output > outputs[fOutputs[winner].neuron]) winner = i;
  }
  for (const std::uint32_t category : fUntold) prediction.probabilities[category] = 0.0;
  prediction.category = fOutputs[winner].category;
  prediction.entity = winner;
  prediction.hasProbabilities = true;
}

}  // namespace Torvane
