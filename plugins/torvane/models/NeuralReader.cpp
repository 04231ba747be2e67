#include "plugins/torvane/models/NeuralReader.h"

#include <cmath>
#include <utility>

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

NeuralReader::NeuralReader(const Element& model, FieldScope& scope, const NeuralIds& ids)
    : fElement(model), fScope(scope), fIds(ids) {}

std::shared_ptr<const NeuralLayers> NeuralReader::Read() {
  RefuseUnknownModelChildren(fElement, {"NeuralInputs", "NeuralLayer", "NeuralOutputs"});
  fLayers->neuronEnd = fIds.InputCount();
  ReadInputs(OnlyChild(fElement, "NeuralInputs"));
  for (Element layer = fElement.Child("NeuralLayer"); layer; layer = layer.Next("NeuralLayer")) ReadLayer(layer);
  return std::move(fLayers);
}

// --- Inputs ---

void NeuralReader::ReadInputs(const Element& inputs) {
  RefuseUnknownChildren(inputs, {"NeuralInput"});
  for (Element input = inputs.RequiredChild("NeuralInput"); input; input = input.Next("NeuralInput")) {
    RefuseUnknownChildren(input, {"DerivedField"});
    fLayers->inputSlots.push_back(CompileInput(OnlyChild(input, "DerivedField")));
  }
  CheckCount(inputs, "numberOfInputs", fLayers->inputSlots.size());
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
  layer.firstNeuron = fLayers->neuronEnd;
  for (Element neuron = element.RequiredChild("Neuron"); neuron; neuron = neuron.Next("Neuron")) {
    ReadNeuron(neuron, element, layer);
  }
  CheckCount(element, "numberOfNeurons", layer.biases.size());
  fLayers->neuronEnd += static_cast<std::uint32_t>(layer.biases.size());
  Seal(layer);
  fLayers->layers.push_back(std::move(layer));
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
    layer.sources.push_back(fIds.FindSource(con, layer.firstNeuron));
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

}  // namespace Torvane
