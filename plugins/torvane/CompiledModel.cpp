#include "plugins/torvane/CompiledModel.h"

#include <algorithm>

#include "plugins/torvane/outputs/OutputReader.h"

namespace Torvane {

namespace {

MiningFunction ReadFunction(const Element& model, const ModelKind& kind) {
  static constexpr Word<MiningFunction> kFunctions[] = {{"regression", MiningFunction::kRegression},
                                                        {"classification", MiningFunction::kClassification},
                                                        {"clustering", MiningFunction::kClustering}};
  const MiningFunction function = ReadRequiredWord(model, "functionName", kFunctions);
  if (!kind.Serves(function)) throw model.AttributeError("functionName", "isn't one of this kind of model");
  return function;
}

// What is predicted of one target of several.
MiningFunction FunctionOf(const FieldScope& scope, const Element& model, const MiningField& field) {
  const bool isNumeric = Target::OpTypeOf(scope, model, field) == KelTransformNS::OpType::kContinuous;
  return isNumeric ? MiningFunction::kRegression : MiningFunction::kClassification;
}

// Models inside models are built and evaluated by recursion, for which a thread's stack must have room.
constexpr int kDeepest = 100;

void CheckDepth(const Element& model, const FieldScope& outer) {
  int depth = 1;
  for (const FieldScope* scope = outer.Outer(); scope != nullptr; scope = scope->Outer()) ++depth;
  if (depth > kDeepest) throw model.Error("is a model inside too many others");
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

// A kind that predicts several targets does so for each in its own way, whatever function the model is said to have.
std::vector<CompiledModel::TargetChoice> CompiledModel::ChooseTargets(const FieldScope& scope, const Element& model,
                                                                      const ModelKind& kind) {
  std::vector<TargetChoice> targets;
  for (const MiningField& field : scope.Schema().fields) {
    const bool isChoice = kind.buildFurther != nullptr && field.usage == FieldUsage::kTarget;
    if (isChoice) targets.push_back({field.name, FunctionOf(scope, model, field)});
  }
  if (!targets.empty() && model.Attribute("functionName") == "mixed") return targets;
  const MiningFunction function = ReadFunction(model, kind);
  if (targets.size() > 1 && function != MiningFunction::kClustering) return targets;
  return {{model.Attribute("targetFieldName").value_or(std::string_view()), function}};
}

std::unique_ptr<CompiledModel> CompiledModel::BuildIn(FieldScope& scope, const Element& model, const ModelKind& kind,
                                                      const TargetChoice& choice) {
  CheckIsScorable(model);
  std::unique_ptr<CompiledModel> compiled(new CompiledModel);
  compiled->fTarget = std::make_unique<Target>(scope, model, choice.function, choice.field);
  compiled->fBody = kind.build(model, scope, *compiled->fTarget);
  CheckHasCategories(model, *compiled->fTarget);
  compiled->fDerivedSlots = scope.TakeDerivedSlots();
  compiled->fDerived = scope.Compiler().Finish();
  compiled->CountNumbers();
  return compiled;
}

std::unique_ptr<const CompiledModel> CompiledModel::Build(const Element& model, const Document& document) {
  const ModelKind* const kind = FindKind(model.Name());
  if (kind == nullptr) throw model.Error("is not supported");
  FieldScope scope(document, model);
  const std::vector<TargetChoice> targets = ChooseTargets(scope, model, *kind);
  std::unique_ptr<CompiledModel> compiled = BuildIn(scope, model, *kind, targets[0]);
  std::vector<const OutputTable*> furtherOutputs;
  for (std::size_t i = 1; i < targets.size(); ++i) {
    compiled->AddFurther(scope, model, *kind, targets[i]);
    furtherOutputs.push_back(compiled->fFurther.back()->fOutputs.get());
  }
  compiled->fOutputs = OutputReader::ReadModel(scope, *compiled->fTarget, *compiled->fBody, model, furtherOutputs);
  compiled->fInputs = scope.TakeInputs();
  compiled->fNeedsPreparation = !compiled->fDerived.IsEmpty();
  compiled->fSlotCount = scope.Slots().Count();
  return compiled;
}

std::unique_ptr<const CompiledModel> CompiledModel::BuildMember(const Element& model, FieldScope& ensemble,
                                                                const std::vector<Element>& outputs) {
  const ModelKind* const kind = FindMemberKind(model.Name());
  if (kind == nullptr) throw model.Error("is not supported");
  CheckDepth(model, ensemble);
  FieldScope scope(ensemble, model);
  const std::vector<TargetChoice> targets = ChooseTargets(scope, model, *kind);
  if (targets.size() > 1) throw model.Error("has several targets, of which an ensemble can't use one");
  std::unique_ptr<CompiledModel> compiled = BuildIn(scope, model, *kind, targets[0]);
  compiled->fOutputs = OutputReader::ReadMember(scope, *compiled->fTarget, *compiled->fBody, model, outputs);
  compiled->fSegmentInputs = scope.TakeSegmentInputs();
  compiled->fNeedsPreparation =
      !compiled->fSegmentInputs.empty() || !compiled->fDerived.IsEmpty() || !compiled->fDerivedSlots.empty();
  return compiled;
}

void CompiledModel::AddFurther(FieldScope& scope, const Element& model, const ModelKind& kind,
                               const TargetChoice& choice) {
  std::unique_ptr<CompiledModel> further(new CompiledModel);
  further->fTarget = std::make_unique<Target>(scope, model, choice.function, choice.field);
  further->fBody = kind.buildFurther(*fBody, model, scope, *further->fTarget);
  CheckHasCategories(model, *further->fTarget);
  further->CountNumbers();
  further->fOutputs = OutputReader::ReadFurther(scope, *further->fTarget, *further->fBody, model);
  fNumberCount += further->fNumberCount;
  fFurther.push_back(std::move(further));
}

// The ranking comes last: its entries have the alignment of a number.
void CompiledModel::CountNumbers() noexcept {
  static_assert(alignof(RankedEntity) == alignof(double) && sizeof(RankedEntity) % sizeof(double) == 0);
  fCategoryCount = static_cast<std::uint32_t>(fTarget->Categories().size());
  fScratchCount = fBody->ScratchCount();
  fNumberCount = std::size_t{2} * fCategoryCount + fScratchCount +
                 fBody->RankingCapacity() * (sizeof(RankedEntity) / sizeof(double));
}

const ModelBody* CompiledModel::BareBody() const noexcept {
  const bool isBare = fOutputs == nullptr && fSegmentInputs.empty() && fDerived.IsEmpty() && !fTarget->Adjusts();
  return isBare ? fBody.get() : nullptr;
}

void CompiledModel::Evaluate(KelTransformNS::Frame frame, Prediction& prediction) const {
  if (fNeedsPreparation && !Prepare(frame)) {
    prediction.outcome = Outcome::kInvalid;
    return;
  }
  fBody->Evaluate(frame, prediction);
  fTarget->Finish(prediction);
  if (!fFurther.empty()) EvaluateFurther(frame, prediction);
}

// The arrays of the further targets' predictions follow those of the first one.
void CompiledModel::EvaluateFurther(KelTransformNS::Frame frame, const Prediction& prediction) const {
  double* numbers = reinterpret_cast<double*>(prediction.ranking + fBody->RankingCapacity());
  for (const auto& further : fFurther) {
    Prediction other = further->MakePrediction(numbers);
    further->fOutputs->SetWants(other);
    further->Evaluate(frame, other);
    further->fOutputs->RunExpressions(frame, other);
    numbers += further->fNumberCount;
  }
}

void CompiledModel::EvaluateMember(KelTransformNS::Frame frame, Prediction& prediction) const {
  if (fOutputs == nullptr) return Evaluate(frame, prediction);
  fOutputs->SetWants(prediction);
  Evaluate(frame, prediction);
  fOutputs->PutIntoEnsemble(frame, prediction);
}

// False if a field is invalid.
bool CompiledModel::Prepare(KelTransformNS::Frame frame) const noexcept {
  for (const SegmentInput& input : fSegmentInputs) {
    frame[input.slot] = input.treatment.TreatAgain(frame[input.outerSlot]);
  }
  fDerived.Run(frame);
  return std::none_of(fDerivedSlots.begin(), fDerivedSlots.end(),
                      [&](std::uint32_t slot) { return frame[slot].IsInvalid(); });
}

}  // namespace Torvane
