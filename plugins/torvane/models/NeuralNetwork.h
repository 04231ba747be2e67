#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "components/keltransform/expressions/NormContinuousTable.h"
#include "plugins/torvane/fields/FieldScope.h"
#include "plugins/torvane/models/EntityIds.h"
#include "plugins/torvane/models/ModelBody.h"
#include "plugins/torvane/models/NeuralLayer.h"
#include "plugins/torvane/targets/Target.h"

namespace Torvane {

/// A feed-forward network of neurons. Each layer takes outputs of inputs and of any earlier layers. The output neuron
/// of a regression gives the number in the scale that the network was trained in, and is turned back by the inverse of
/// the functions that the document says of it; those of a classification give the probabilities of the categories, as
/// they are.
///
/// The entity of a prediction is its output neuron.
class NeuralNetwork final : public ModelBody {
 public:
  static std::unique_ptr<ModelBody> Build(const Element& model, FieldScope& scope, Target& target);
  /// The body of another target of the model that `first` was built of, over the same layers.
  static std::unique_ptr<ModelBody> BuildFurther(const ModelBody& first, const Element& model, FieldScope& scope,
                                                 Target& target);

  void Evaluate(KelTransformNS::Frame frame, Prediction& prediction) const noexcept override;
  [[nodiscard]] std::size_t ScratchCount() const noexcept override { return fLayers->neuronEnd; }
  [[nodiscard]] std::uint32_t EntityCount() const noexcept override {
    return static_cast<std::uint32_t>(fOutputs.size());
  }
  void WriteEntity(std::uint32_t entity, KelCommon_1_3::Value& value) const override { fIds.Write(entity, value); }

 private:
  friend class NeuralOutputReader;

  struct Output {
    std::uint32_t neuron;    // the place of its output
    std::uint32_t category;  // of a classification
  };

  void Predict(const double* outputs, Prediction& prediction) const noexcept;
  void Classify(const double* outputs, Prediction& prediction) const noexcept;

  std::shared_ptr<const NeuralLayers> fLayers;
  std::vector<Output> fOutputs;  // in document order: the first one wins a tie
  EntityIds fIds;                // of the outputs' neurons
  bool fIsClassification = false;
  std::vector<std::uint32_t> fUntold;  // categories of the target without an output, whose probability is 0
  // Of a regression: functions that turn the output neuron's number back, one after the other, so many.
  KelTransformNS::NormContinuousTable fInverses;
  std::uint32_t fInverseCount = 0;
};

}  // namespace Torvane
