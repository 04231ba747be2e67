#include "plugins/torvane/models/NeuralReader.h"

#include <cmath>

#include "plugins/torvane/models/Parts.h"

namespace Torvane {

using KelTransformNS::DataType;

namespace {

// Many of the layers are fully connected: all their neurons take the same outputs, side by side in order.
bool IsDense(const NeuralLayer& layer) {
  const std::uint32_t width = layer.ends[0];
  for (std::size_t neuron = 0; neuron < layer.ends.size(); ++neuron) {
    if (layer.ends[neuron] != width * (neuron + 1)) return false;
  }
  for (std::size_t i = 0; i < layer.sources.size(); ++i) {
    if (layer.sources[i] != layer.sources[0] + i % width) return false;
  }
  return true;
}

void Seal(NeuralLayer& layer) {
  if (IsDense(layer)) {
    layer.firstSource = layer.sources[0];
    layer.dense = DenseRows(layer.weights, layer.ends[0]);
    layer.sources = {};
    layer.weights = {};
    layer.ends = {};
  }
  for (auto* numbers : {&layer.biases, &layer.widths, &layer.heights, &layer.weights}) numbers->shrink_to_fit();
  layer.sources.shrink_to_fit();
}

// Some producers call the number that comes of a category or a scale by the type of the field that it comes from.
std::optional<DataType> ReadNumberType(const Element& derivedField) {
  const char* const name = derivedField.Attribute("dataType") ? "dataType" : "datatype";
  const std::optional<std::string_view> text = derivedField.Attribute(name);
  DataType type;
  if (!text) return std::nullopt;
  if (!KelTransformNS::ParseDataType(*text, type)) throw derivedField.AttributeError(name, "is no data type");
  return KelTransformNS::IsText(type) ? std::nullopt : std::optional(type);
}

}  // namespace

std::unique_ptr<ModelBody> NeuralNetwork::Build(const Element& model, FieldScope& scope, Target& target) {
  return NeuralReader(model, scope, target).Read();
}

NeuralReader::NeuralReader(const Element& model, FieldScope& scope, Target& target)
    : fElement(model), fScope(scope), fTarget(target), fNetwork(std::make_unique<NeuralNetwork>()) {}

std::unique_ptr<NeuralNetwork> NeuralReader::Read() {
  RefuseUnknownModelChildren(fElement, {"NeuralInputs", "NeuralLayer", "NeuralOutputs"});
  fNetwork->fIsClassification = fTarget.Function() == MiningFunction::kClassification;
  ReadInputs(OnlyChild(fElement, "NeuralInputs"));
  (void)fElement.RequiredChild("NeuralLayer");
  for (Element layer = fElement.Child("NeuralLayer"); layer; layer = layer.Next("NeuralLayer")) ReadLayer(layer);
  fNetwork->fNeuronEnd = static_cast<std::uint32_t>(fPlaces.size());
  ReadOutputs(OnlyChild(fElement, "NeuralOutputs"));
  FindUntold();
  return std::move(fNetwork);
}

void NeuralReader::AddId(const Element& element) {
  const auto place = static_cast<std::uint32_t>(fPlaces.size());
  if (!fPlaces.emplace(element.Required("id"), place).second) {
    throw element.AttributeError("id", "is that of another input or neuron");
  }
}

// The place of an id from `first` on and below `end`.
std::uint32_t NeuralReader::FindId(const Element& element, std::string_view attribute, std::uint32_t first,
                                   std::uint32_t end, const char* otherwise) const {
  const auto found = fPlaces.find(element.Required(attribute));
  if (found == fPlaces.end() || found->second < first || found->second >= end) {
    throw element.AttributeError(attribute, otherwise);
  }
  return found->second;
}

// --- Inputs ---

void NeuralReader::ReadInputs(const Element& inputs) {
  RefuseUnknownChildren(inputs, {"NeuralInput"});
  for (Element input = inputs.RequiredChild("NeuralInput"); input; input = input.Next("NeuralInput")) {
    RefuseUnknownChildren(input, {"DerivedField"});
    AddId(input);
    fNetwork->fInputSlots.push_back(CompileInput(OnlyChild(input, "DerivedField")));
  }
  fInputCount = static_cast<std::uint32_t>(fNetwork->fInputSlots.size());
  CheckCount(inputs, "numberOfInputs", fInputCount);
}

std::uint32_t NeuralReader::CompileInput(const Element& derivedField) {
  const auto field = fScope.Compiler().CompileExpression(OnlyExpression(derivedField), ReadNumberType(derivedField));
  if (KelTransformNS::IsText(field.dataType)) throw derivedField.Error("gives a text, but a neuron needs a number");
  return field.slot;
}

// --- Layers ---

void NeuralReader::ReadLayer(const Element& element) {
  RefuseUnknownChildren(element, {"Neuron"});
  NeuralLayer layer;
  layer.activation = ReadActivation(element);
  layer.normalization = ReadNormalization(element);
  layer.threshold = Inherited(element, "threshold").value_or(0.0);
  layer.firstNeuron = static_cast<std::uint32_t>(fPlaces.size());
  for (Element neuron = element.RequiredChild("Neuron"); neuron; neuron = neuron.Next("Neuron")) {
    ReadNeuron(neuron, element, layer);
  }
  CheckCount(element, "numberOfNeurons", layer.biases.size());
  Seal(layer);
  fNetwork->fLayers.push_back(std::move(layer));
}

Activation NeuralReader::ReadActivation(const Element& layer) const {
  static constexpr Word<Activation> kActivations[] = {
      {"threshold", Activation::kThreshold},
      {"logistic", Activation::kLogistic},
      {"tanh", Activation::kTanh},
      {"identity", Activation::kIdentity},
      {"exponential", Activation::kExponential},
      {"reciprocal", Activation::kReciprocal},
      {"square", Activation::kSquare},
      {"Gauss", Activation::kGauss},
      {"sine", Activation::kSine},
      {"cosine", Activation::kCosine},
      {"Elliott", Activation::kElliott},
      {"arctan", Activation::kArctan},
      {"rectifier", Activation::kRectifier},
      {"radialBasis", Activation::kRadialBasis},
  };
  const bool isOwn = layer.Attribute("activationFunction").has_value();
  return ReadRequiredWord(isOwn ? layer : fElement, "activationFunction", kActivations);
}

// The network's own method is meant for what the network gives, the outputs of its last layer. Taken literally it would
// hold for each layer without a method; hidden layers would then share a sum of 1, which no producer trains.
Normalization NeuralReader::ReadNormalization(const Element& layer) const {
  static constexpr Word<Normalization> kNormalizations[] = {
      {"none", Normalization::kNone}, {"simplemax", Normalization::kSimplemax}, {"softmax", Normalization::kSoftmax}};
  const Normalization ofNetwork = ReadWord(fElement, "normalizationMethod", kNormalizations, Normalization::kNone);
  const bool isLast = !layer.Next("NeuralLayer");
  return ReadWord(layer, "normalizationMethod", kNormalizations, isLast ? ofNetwork : Normalization::kNone);
}

std::optional<double> NeuralReader::Inherited(const Element& layer, std::string_view attribute) const {
  const std::optional<double> own = ReadFinite(layer, attribute);
  return own ? own : ReadFinite(fElement, attribute);
}

void NeuralReader::ReadNeuron(const Element& neuron, const Element& layerElement, NeuralLayer& layer) {
  RefuseUnknownChildren(neuron, {"Con"});
  AddId(neuron);
  const std::size_t before = layer.sources.size();
  ReadConnections(neuron, layer);
  const double bias = ReadFinite(neuron, "bias").value_or(0.0);
  const bool isRadial = layer.activation == Activation::kRadialBasis;
  layer.biases.push_back(isRadial ? 0.0 : bias);
  if (isRadial) ReadShape(neuron, layerElement, layer.sources.size() - before, layer);
}

void NeuralReader::ReadConnections(const Element& neuron, NeuralLayer& layer) {
  for (Element con = neuron.RequiredChild("Con"); con; con = con.Next("Con")) {
    RefuseUnknownChildren(con, {});
    layer.sources.push_back(
        FindId(con, "from", 0, layer.firstNeuron, "is neither an input nor a neuron of an earlier layer"));
    layer.weights.push_back(RequiredFinite(con, "weight"));
  }
  layer.ends.push_back(static_cast<std::uint32_t>(layer.sources.size()));
}

// What the radial basis function needs; the other functions pass it over.
void NeuralReader::ReadShape(const Element& neuron, const Element& layerElement, std::size_t connectionCount,
                             NeuralLayer& layer) {
  const auto find = [&](std::string_view attribute) {
    const std::optional<double> own = ReadFinite(neuron, attribute);
    return own ? own : Inherited(layerElement, attribute);
  };
  const std::optional<double> width = find("width");
  if (!width) throw neuron.Error("needs a width, its own or that of its layer or network");
  const double divisor = 2.0 * *width * *width;
  if (!(divisor > 0.0) || !std::isfinite(divisor)) throw neuron.Error("has a width that can't be divided by");
  const double altitude = find("altitude").value_or(1.0);
  if (!(altitude > 0.0)) throw neuron.Error("has an altitude that isn't above 0");
  layer.widths.push_back(divisor);
  layer.heights.push_back(static_cast<double>(connectionCount) * std::log(altitude));
}

// --- Outputs ---

void NeuralReader::ReadOutputs(const Element& outputs) {
  RefuseUnknownChildren(outputs, {"NeuralOutput"});
  NeuralTarget target(fElement, fScope, fTarget);
  std::vector<std::optional<std::string_view>> ids;
  for (Element output = outputs.RequiredChild("NeuralOutput"); output; output = output.Next("NeuralOutput")) {
    RefuseUnknownChildren(output, {"DerivedField"});
    (void)OnlyChild(output, "DerivedField");
    const std::uint32_t neuron = FindId(output, "outputNeuron", fInputCount, fNetwork->fNeuronEnd, "is no neuron");
    const NeuralTarget::Chain chain = target.Follow(output);
    fNetwork->fOutputs.push_back({neuron, 0});
    ids.push_back(output.Attribute("outputNeuron"));
    if (fNetwork->fIsClassification) {
      ReadCategory(output, chain);
    } else {
      ReadInverse(output, chain);
    }
  }
  CheckCount(outputs, "numberOfOutputs", fNetwork->fOutputs.size());
  fNetwork->fIds.Assign(ids);
}

void NeuralReader::ReadInverse(const Element& output, const NeuralTarget::Chain& chain) {
  if (chain.normDiscrete) throw chain.normDiscrete.Error("tells a category, but the model is a regression");
  if (fNetwork->fOutputs.size() > 1) throw output.Error("is a second output of the same number");
  for (const Element& function : chain.normContinuous) NeuralTarget::AddInverse(function, fNetwork->fInverses);
  fNetwork->fInverseCount = static_cast<std::uint32_t>(chain.normContinuous.size());
}

void NeuralReader::ReadCategory(const Element& output, const NeuralTarget::Chain& chain) {
  const Element& discrete = chain.normDiscrete;
  if (!discrete) throw output.Error("tells no category, but the model is a classification");
  if (discrete.Attribute("method").value_or("indicator") != "indicator") {
    throw discrete.AttributeError("method", "isn't supported, only indicator is");
  }
  const std::uint32_t category = fTarget.AddCategory(discrete, "value", discrete.Required("value"));
  if (!fKnown.insert(category).second) throw discrete.AttributeError("value", "has an output already");
  fNetwork->fOutputs.back().category = category;
}

// A single output would win whatever its neuron says.
void NeuralReader::FindUntold() {
  if (!fNetwork->fIsClassification) return;
  if (fKnown.size() < 2) {
    throw fElement.Child("NeuralOutputs").Error("needs outputs for two categories or more");
  }
  for (std::uint32_t category = 0; category < fTarget.Categories().size(); ++category) {
    if (fKnown.count(category) == 0) fNetwork->fUntold.push_back(category);
  }
}

}  // namespace Torvane
