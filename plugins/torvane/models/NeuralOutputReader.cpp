#include "plugins/torvane/models/NeuralOutputReader.h"

#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "plugins/torvane/models/NeuralReader.h"
#include "plugins/torvane/models/Parts.h"

namespace Torvane {

std::unique_ptr<ModelBody> NeuralNetwork::Build(const Element& model, FieldScope& scope, Target& target) {
  const NeuralIds ids(model);
  return NeuralOutputReader(model, scope, ids, target).Read(NeuralReader(model, scope, ids).Read());
}

std::unique_ptr<ModelBody> NeuralNetwork::BuildFurther(const ModelBody& first, const Element& model, FieldScope& scope,
                                                       Target& target) {
  const NeuralIds ids(model);
  return NeuralOutputReader(model, scope, ids, target).Read(static_cast<const NeuralNetwork&>(first).fLayers);
}

NeuralOutputReader::NeuralOutputReader(const Element& model, const FieldScope& scope, const NeuralIds& ids,
                                       Target& target)
    : fElement(model), fIds(ids), fTarget(target), fChains(model, scope, target) {}

std::unique_ptr<NeuralNetwork> NeuralOutputReader::Read(std::shared_ptr<const NeuralLayers> layers) {
  fNetwork->fLayers = std::move(layers);
  fNetwork->fIsClassification = fTarget.Function() == MiningFunction::kClassification;
  const Element outputs = OnlyChild(fElement, "NeuralOutputs");
  RefuseUnknownChildren(outputs, {"NeuralOutput"});
  std::vector<std::optional<std::string_view>> ids;
  std::size_t count = 0;
  for (Element output = outputs.Child("NeuralOutput"); output; output = output.Next("NeuralOutput"), ++count) {
    RefuseUnknownChildren(output, {"DerivedField"});
    const NeuralTarget::Chain chain = fChains.Follow(OnlyChild(output, "DerivedField"));
    if (chain.isOfAnotherTarget) continue;
    ReadOutput(output, chain);
    ids.push_back(output.Attribute("outputNeuron"));
  }
  CheckCount(outputs, "numberOfOutputs", count);
  CheckOutputs(outputs);
  fNetwork->fIds.Assign(ids);
  return std::move(fNetwork);
}

void NeuralOutputReader::ReadOutput(const Element& output, const NeuralTarget::Chain& chain) {
  fNetwork->fOutputs.push_back({fIds.FindNeuron(output), 0});
  if (fNetwork->fIsClassification) {
    ReadCategory(output, chain);
  } else {
    ReadInverse(output, chain);
  }
}

void NeuralOutputReader::ReadInverse(const Element& output, const NeuralTarget::Chain& chain) {
  if (chain.normDiscrete) throw chain.normDiscrete.Error("tells a category, but the model is a regression");
  if (fNetwork->fOutputs.size() > 1) throw output.Error("is a second output of the same number");
  for (const Element& function : chain.normContinuous) NeuralTarget::AddInverse(function, fNetwork->fInverses);
  fNetwork->fInverseCount = static_cast<std::uint32_t>(chain.normContinuous.size());
}

void NeuralOutputReader::ReadCategory(const Element& output, const NeuralTarget::Chain& chain) {
  const Element& discrete = chain.normDiscrete;
  if (!discrete) throw output.Error("tells no category, but the model is a classification");
  if (discrete.Attribute("method").value_or("indicator") != "indicator") {
    throw discrete.AttributeError("method", "isn't supported, only indicator is");
  }
  const std::uint32_t category = fTarget.AddCategory(discrete, "value", discrete.Required("value"));
  if (!fKnown.insert(category).second) throw discrete.AttributeError("value", "has an output already");
  fNetwork->fOutputs.back().category = category;
}

// A single output of a category would win whatever its neuron says.
void NeuralOutputReader::CheckOutputs(const Element& outputs) {
  if (fNetwork->fOutputs.empty()) throw outputs.Error("has none for the target " + Quoted(fTarget.Name()));
  if (!fNetwork->fIsClassification) return;
  if (fKnown.size() < 2) throw outputs.Error("needs outputs for two categories or more");
  for (std::uint32_t category = 0; category < fTarget.Categories().size(); ++category) {
    if (fKnown.count(category) == 0) fNetwork->fUntold.push_back(category);
  }
}

}  // namespace Torvane
