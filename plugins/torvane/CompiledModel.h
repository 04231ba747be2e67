#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "components/keltransform/Program.h"
#include "plugins/torvane/fields/FieldScope.h"
#include "plugins/torvane/models/ModelBody.h"
#include "plugins/torvane/outputs/OutputTable.h"
#include "plugins/torvane/targets/Target.h"

namespace Torvane {

/// A model element, compiled: its inputs, derived fields, mathematics, targets and outputs over the slots of one frame.
/// Immutable: any number of threads score with one. The text pool outlives it.
class CompiledModel {
 public:
  /// Throws `PmmlError` for what is malformed, contradictory or not supported. Nothing of the element tree is kept.
  static std::unique_ptr<const CompiledModel> Build(const Element& model, const Document& document);

  CompiledModel(const CompiledModel&) = delete;
  CompiledModel& operator=(const CompiledModel&) = delete;

  [[nodiscard]] const std::vector<InputField>& Inputs() const noexcept { return fInputs; }
  [[nodiscard]] const OutputTable& Outputs() const noexcept { return *fOutputs; }
  [[nodiscard]] std::uint32_t SlotCount() const noexcept { return fSlotCount; }
  [[nodiscard]] std::uint32_t CategoryCount() const noexcept { return fCategoryCount; }
  [[nodiscard]] const ModelBody& Body() const noexcept { return *fBody; }

  /// Evaluates a frame whose input slots are filled. `prediction` has its arrays, and what is wanted, set.
  void Evaluate(KelTransformNS::Frame frame, Prediction& prediction) const;

 private:
  CompiledModel() = default;
  [[nodiscard]] bool HasInvalidField(const KelTransformNS::Cell* frame) const noexcept;

  std::vector<InputField> fInputs;
  KelTransformNS::Program fDerived;
  bool fHasDerived = false;
  std::vector<std::uint32_t> fDerivedSlots;  // those that the body reads
  std::unique_ptr<Target> fTarget;
  std::unique_ptr<ModelBody> fBody;
  std::unique_ptr<OutputTable> fOutputs;
  std::uint32_t fSlotCount = 0;
  std::uint32_t fCategoryCount = 0;
};

}  // namespace Torvane
