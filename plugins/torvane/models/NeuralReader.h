#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "components/kelcommon/Hashing.h"
#include "plugins/torvane/models/NeuralNetwork.h"
#include "plugins/torvane/models/NeuralTarget.h"

namespace Torvane {

/// Reads a "NeuralNetwork" element.
class NeuralReader {
 public:
  NeuralReader(const Element& model, FieldScope& scope, Target& target);
  std::unique_ptr<NeuralNetwork> Read();

 private:
  void ReadInputs(const Element& inputs);
  std::uint32_t CompileInput(const Element& derivedField);
  void ReadLayer(const Element& element);
  void ReadNeuron(const Element& neuron, const Element& layerElement, NeuralLayer& layer);
  void ReadConnections(const Element& neuron, NeuralLayer& layer);
  void ReadShape(const Element& neuron, const Element& layerElement, std::size_t connectionCount, NeuralLayer& layer);
  void ReadOutputs(const Element& outputs);
  void ReadInverse(const Element& output, const NeuralTarget::Chain& chain);
  void ReadCategory(const Element& output, const NeuralTarget::Chain& chain);
  void FindUntold();
  [[nodiscard]] Normalization ReadNormalization(const Element& layer) const;
  [[nodiscard]] Activation ReadActivation(const Element& layer) const;
  [[nodiscard]] std::optional<double> Inherited(const Element& layer, std::string_view attribute) const;
  void AddId(const Element& element);
  [[nodiscard]] std::uint32_t FindId(const Element& element, std::string_view attribute, std::uint32_t first,
                                     std::uint32_t end, const char* otherwise) const;

  Element fElement;
  FieldScope& fScope;
  Target& fTarget;
  std::unique_ptr<NeuralNetwork> fNetwork;
  std::unordered_map<std::string_view, std::uint32_t, KelCommon_1_3::NameHash> fPlaces;  // of outputs, by id
  std::uint32_t fInputCount = 0;
  std::unordered_set<std::uint32_t> fKnown;  // categories that have an output
};

}  // namespace Torvane
