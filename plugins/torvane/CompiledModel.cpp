#include "plugins/torvane/CompiledModel.h"

#include <algorithm>

#include "plugins/torvane/models/ModelRegistry.h"

namespace Torvane {

using KelTransformNS::Cell;

namespace {

MiningFunction ReadFunction(const Element& model, const ModelKind& kind) {
  static constexpr Word<MiningFunction> kFunctions[] = {{"regression", MiningFunction::kRegression},
                                                        {"classification", MiningFunction::kClassification},
                                                        {"clustering", MiningFunction::kClustering}};
  const MiningFunction function = ReadRequiredWord(model, "functionName", kFunctions);
  if (!kind.Serves(function)) throw model.AttributeError("functionName", "isn't one of this kind of model");
  return function;
}

void CheckIsScorable(const Element& model) {
  if (!model.Boolean("isScorable", true)) {
    throw model.AttributeError("isScorable", "says that the model isn't meant for scoring");
  }
}

void CheckHasCategories(const Element& model, const Target& target) {
  if (!target.IsNumeric() && target.Categories().empty()) {
    throw model.Error("names no category that it could predict");
  }
}

}  // namespace

std::unique_ptr<const CompiledModel> CompiledModel::Build(const Element& model, const Document& document) {
  const ModelKind* const kind = FindKind(model.Name());
  if (kind == nullptr) throw model.Error("is not supported");
  CheckIsScorable(model);
  FieldScope scope(document, model);
  std::unique_ptr<CompiledModel> compiled(new CompiledModel);
  compiled->fTarget = std::make_unique<Target>(scope, model, ReadFunction(model, *kind),
                                               model.Attribute("targetFieldName").value_or(std::string_view()));
  compiled->fBody = kind->build(model, scope, *compiled->fTarget);
  CheckHasCategories(model, *compiled->fTarget);
  compiled->fDerived = scope.Compiler().Finish();
  compiled->fHasDerived = !compiled->fDerived.IsEmpty();
  compiled->fDerivedSlots = scope.DerivedSlots();
  compiled->fOutputs = std::make_unique<OutputTable>(scope, *compiled->fTarget, *compiled->fBody, model);
  compiled->fInputs = scope.TakeInputs();
  compiled->fSlotCount = scope.Compiler().SlotCount();
  compiled->fCategoryCount = static_cast<std::uint32_t>(compiled->fTarget->Categories().size());
  return compiled;
}

void CompiledModel::Evaluate(KelTransformNS::Frame frame, Prediction& prediction) const {
  if (fHasDerived) {
    fDerived.Run(frame);
    if (HasInvalidField(frame.data())) {
      prediction.outcome = Outcome::kInvalid;
      return;
    }
  }
  fBody->Evaluate(frame, prediction);
  fTarget->Finish(prediction);
}

bool CompiledModel::HasInvalidField(const Cell* frame) const noexcept {
  return std::any_of(fDerivedSlots.begin(), fDerivedSlots.end(),
                     [&](std::uint32_t slot) { return frame[slot].IsInvalid(); });
}

}  // namespace Torvane
