#pragma once

#include <cstdint>
#include <memory>
#include <unordered_set>

#include "plugins/torvane/models/NeuralIds.h"
#include "plugins/torvane/models/NeuralNetwork.h"
#include "plugins/torvane/models/NeuralTarget.h"

namespace Torvane {

/// Reads the "NeuralOutputs" of one target of a "NeuralNetwork" element.
class NeuralOutputReader {
 public:
  NeuralOutputReader(const Element& model, const FieldScope& scope, const NeuralIds& ids, Target& target);
  std::unique_ptr<NeuralNetwork> Read(std::shared_ptr<const NeuralLayers> layers);

 private:
  void ReadOutput(const Element& output, const NeuralTarget::Chain& chain);
  void ReadInverse(const Element& output, const NeuralTarget::Chain& chain);
  void ReadCategory(const Element& output, const NeuralTarget::Chain& chain);
  void CheckOutputs(const Element& outputs);

  Element fElement;
  const NeuralIds& fIds;
  Target& fTarget;
  NeuralTarget fChains;
  std::unique_ptr<NeuralNetwork> fNetwork = std::make_unique<NeuralNetwork>();
  std::unordered_set<std::uint32_t> fKnown;  // categories that have an output
};

}  // namespace Torvane
