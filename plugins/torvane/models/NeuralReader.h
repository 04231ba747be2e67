#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "plugins/torvane/fields/FieldScope.h"
#include "plugins/torvane/models/NeuralIds.h"
#include "plugins/torvane/models/NeuralLayer.h"

namespace Torvane {

/// Reads the inputs and layers of a "NeuralNetwork" element.
class NeuralReader {
 public:
  NeuralReader(const Element& model, FieldScope& scope, const NeuralIds& ids);
  std::shared_ptr<const NeuralLayers> Read();

 private:
  void ReadInputs(const Element& inputs);
  std::uint32_t CompileInput(const Element& derivedField);
  void ReadLayer(const Element& element);
  void ReadNeuron(const Element& neuron, const Element& layerElement, NeuralLayer& layer);
  void ReadConnections(const Element& neuron, NeuralLayer& layer);
  void ReadShape(const Element& neuron, const Element& layerElement, std::size_t connectionCount, NeuralLayer& layer);
  [[nodiscard]] Normalization ReadNormalization(const Element& layer) const;
  [[nodiscard]] Activation ReadActivation(const Element& layer) const;
  [[nodiscard]] std::optional<double> Inherited(const Element& layer, std::string_view attribute) const;

  Element fElement;
  FieldScope& fScope;
  const NeuralIds& fIds;
  std::shared_ptr<NeuralLayers> fLayers = std::make_shared<NeuralLayers>();
};

}  // namespace Torvane
