#include "plugins/torvane/models/NeuralIds.h"

namespace Torvane {

NeuralIds::NeuralIds(const Element& model) {
  const Element inputs = model.RequiredChild("NeuralInputs");
  for (Element input = inputs.Child("NeuralInput"); input; input = input.Next("NeuralInput")) Add(input);
  fInputCount = Count();
  for (Element layer = model.RequiredChild("NeuralLayer"); layer; layer = layer.Next("NeuralLayer")) {
    for (Element neuron = layer.Child("Neuron"); neuron; neuron = neuron.Next("Neuron")) Add(neuron);
  }
}

void NeuralIds::Add(const Element& element) {
  if (!fPlaces.emplace(element.Required("id"), Count()).second) {
    throw element.AttributeError("id", "is that of another input or neuron");
  }
}

std::uint32_t NeuralIds::FindSource(const Element& con, std::uint32_t end) const {
  const auto found = fPlaces.find(con.Required("from"));
  if (found != fPlaces.end() && found->second < end) return found->second;
  throw con.AttributeError("from", "is neither an input nor a neuron of an earlier layer");
}

std::uint32_t NeuralIds::FindNeuron(const Element& output) const {
  const auto found = fPlaces.find(output.Required("outputNeuron"));
  if (found != fPlaces.end() && found->second >= fInputCount) return found->second;
  throw output.AttributeError("outputNeuron", "is no neuron");
}

}  // namespace Torvane
