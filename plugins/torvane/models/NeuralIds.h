#pragma once

#include <cstdint>
#include <string_view>
#include <unordered_map>

#include "components/kelcommon/Hashing.h"
#include "plugins/torvane/Reading.h"

namespace Torvane {

/// The identifiers of a network's inputs and neurons, with the places of their outputs: first the inputs, then the
/// neurons layer after layer. The element tree outlives it.
class NeuralIds {
 public:
  /// Throws `PmmlError` for an identifier that stands there twice, and where there are no inputs or no layers.
  explicit NeuralIds(const Element& model);

  [[nodiscard]] std::uint32_t InputCount() const noexcept { return fInputCount; }
  [[nodiscard]] std::uint32_t Count() const noexcept { return static_cast<std::uint32_t>(fPlaces.size()); }
  /// The place that a "Con" takes its number from; one that isn't below `end` throws.
  [[nodiscard]] std::uint32_t FindSource(const Element& con, std::uint32_t end) const;
  /// The place of the neuron of a "NeuralOutput".
  [[nodiscard]] std::uint32_t FindNeuron(const Element& output) const;

 private:
  void Add(const Element& element);

  std::unordered_map<std::string_view, std::uint32_t, KelCommon_1_3::NameHash> fPlaces;
  std::uint32_t fInputCount = 0;
};

}  // namespace Torvane
