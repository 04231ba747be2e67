#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "components/keltransform/Program.h"
#include "plugins/torvane/fields/FieldScope.h"
#include "plugins/torvane/models/ModelBody.h"
#include "plugins/torvane/models/ModelRegistry.h"
#include "plugins/torvane/outputs/OutputTable.h"
#include "plugins/torvane/targets/Target.h"

namespace Torvane {

/// A model element, compiled: its inputs, derived fields, mathematics, targets and outputs over the slots of one frame,
/// which the models of an ensemble share. Where it has several targets, each further one is a compiled model of its
/// own, whose outputs this one shows. Immutable: any number of threads score with one. The text pool outlives it.
class CompiledModel {
 public:
  /// Throws `PmmlError` for what is malformed, contradictory or not supported. Nothing of the element tree is kept.
  static std::unique_ptr<const CompiledModel> Build(const Element& model, const Document& document);
  /// A model in the ensemble of `ensemble`: that of a "Segment", or a "Regression" or "DecisionTree" without a schema.
  /// `outputs` are output fields of the ensemble that ask for this model's results.
  static std::unique_ptr<const CompiledModel> BuildMember(const Element& model, FieldScope& ensemble,
                                                          const std::vector<Element>& outputs);

  CompiledModel(const CompiledModel&) = delete;
  CompiledModel& operator=(const CompiledModel&) = delete;

  [[nodiscard]] const std::vector<InputField>& Inputs() const noexcept { return fInputs; }
  [[nodiscard]] const OutputTable& Outputs() const noexcept { return *fOutputs; }
  [[nodiscard]] std::uint32_t SlotCount() const noexcept { return fSlotCount; }
  [[nodiscard]] const Target& GetTarget() const noexcept { return *fTarget; }
  [[nodiscard]] const ModelBody& Body() const noexcept { return *fBody; }

  /// The body of a member whose results are its body's and nothing else: it has no inputs, derived fields or outputs of
  /// its own, and its target changes no result. Null otherwise.
  [[nodiscard]] const ModelBody* BareBody() const noexcept;

  /// The numbers that the arrays of a prediction take.
  [[nodiscard]] std::size_t NumberCount() const noexcept { return fNumberCount; }
  /// A prediction whose arrays stand in `numbers`.
  [[nodiscard]] Prediction MakePrediction(double* numbers) const noexcept {
    Prediction prediction;
    prediction.probabilities = numbers;
    prediction.confidences = prediction.probabilities + fCategoryCount;
    prediction.scratch = prediction.confidences + fCategoryCount;
    prediction.ranking = reinterpret_cast<RankedEntity*>(prediction.scratch + fScratchCount);
    return prediction;
  }

  /// Evaluates a frame whose input slots are filled. `prediction` has its arrays, and what is wanted, set.
  void Evaluate(KelTransformNS::Frame frame, Prediction& prediction) const;
  /// The same for a member of an ensemble, whose outputs become fields of the frame.
  void EvaluateMember(KelTransformNS::Frame frame, Prediction& prediction) const;

 private:
  CompiledModel() = default;
  // A target and what is predicted of it.
  struct TargetChoice {
    std::string_view field;  // empty: the only one that there may be
    MiningFunction function;
  };

  static std::vector<TargetChoice> ChooseTargets(const FieldScope& scope, const Element& model, const ModelKind& kind);
  static std::unique_ptr<CompiledModel> BuildIn(FieldScope& scope, const Element& model, const ModelKind& kind,
                                                const TargetChoice& choice);
  void AddFurther(FieldScope& scope, const Element& model, const ModelKind& kind, const TargetChoice& choice);
  void CountNumbers() noexcept;
  bool Prepare(KelTransformNS::Frame frame) const noexcept;
  void EvaluateFurther(KelTransformNS::Frame frame, const Prediction& prediction) const;

  std::vector<InputField> fInputs;           // of the model that is scored
  std::vector<SegmentInput> fSegmentInputs;  // of a member of an ensemble
  KelTransformNS::Program fDerived;
  bool fNeedsPreparation = false;
  std::vector<std::uint32_t> fDerivedSlots;  // of the fields whose cells can be invalid
  std::unique_ptr<Target> fTarget;
  std::unique_ptr<ModelBody> fBody;
  std::unique_ptr<OutputTable> fOutputs;                       // null for a member that has none
  std::vector<std::unique_ptr<const CompiledModel>> fFurther;  // without inputs and derived fields
  std::uint32_t fSlotCount = 0;
  std::uint32_t fCategoryCount = 0;
  std::size_t fScratchCount = 0;
  std::size_t fNumberCount = 0;
};

}  // namespace Torvane
