#include "plugins/torvane/TorvaneScorer.h"

#include <new>
#include <utility>

#include "components/keltransform/FrameStorage.h"

namespace Torvane {

using KelCommon_1_3::KelStatus;
using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;
using KelTransformNS::Cell;
using KelTransformNS::FrameStorage;

namespace {

// The arrays of a prediction stand behind the cells of the frame, in the same memory.
constexpr std::size_t CellsFor(std::size_t numberCount) {
  return (numberCount * sizeof(double) + sizeof(Cell) - 1) / sizeof(Cell);
}

// A number that isn't one of the marks of a missing number, NaN and the lowest of all. The infinity below it is left to
// the slower way.
bool IsPlainNumber(const Value& value) noexcept {
  return value.GetType() == Value::kNumber && value.GetReal() > KelCommon_1_3::KelMV::gMissingValue;
}

}  // namespace

TorvaneScorer::TorvaneScorer(KelXML_1_3::KelSettings& settings, const KelXML_1_3::KelVarList& varList, std::string type,
                             std::unique_ptr<const KelTransformNS::TextPool> pool,
                             std::unique_ptr<const CompiledModel> model)
    : ScoringBaseScorer(settings, varList),
      fType(std::move(type)),
      fPool(std::move(pool)),
      fModel(std::move(model)),
      fCellCount(fModel->SlotCount() + CellsFor(fModel->NumberCount())) {}

KelStatus TorvaneScorer::Scorable(ValueRecord& record) {
  fModel->Outputs().Announce(record);
  return {};
}

KelStatus TorvaneScorer::Score(const ValueRecord& in, ValueRecord& out) {
  try {
    return ScoreBound(in, out);
  } catch (const std::bad_alloc&) {
    return {kOutOfMemory, false};
  }
}

KelStatus TorvaneScorer::ScoreBound(const ValueRecord& in, ValueRecord& out) {
  const auto inputs =
      fInputBindings.Get(in.Layout(), [&] { return std::make_unique<const InputBinding>(BindInputs(in)); });
  const auto outputs =
      fOutputBindings.Get(out.Layout(), [&] { return std::make_unique<const OutputBinding>(BindOutputs(out)); });
  if (!inputs->isComplete) return {kDerivedFieldMissing, false};

  FrameStorage storage(fCellCount, FrameStorage::kUninitialized, fPool->HasMadeTexts());
  const KelTransformNS::Frame frame = storage.Cells().first(fModel->SlotCount());
  Prediction prediction = fModel->MakePrediction(reinterpret_cast<double*>(frame.data() + frame.size()));
  prediction.wantsDistribution = outputs->wantsDistribution;
  prediction.wantsRanking = outputs->wantsRanking;
  if (Gather(in, *inputs, frame.data())) {
    fModel->Evaluate(frame, prediction);
  } else {
    prediction.outcome = Outcome::kInvalid;
  }

  if (outputs->wantsExpressions && prediction.outcome != Outcome::kInvalid) {
    fModel->Outputs().RunExpressions(frame, prediction);
  }
  for (const OutputBinding::Place& place : outputs->places) {
    fModel->Outputs().Write(*place.output, frame.data(), prediction, out[place.position]);
  }
  return {};
}

TorvaneScorer::InputBinding TorvaneScorer::BindInputs(const ValueRecord& in) const {
  InputBinding binding;
  binding.numbers.reserve(fModel->Inputs().size());
  for (const InputField& input : fModel->Inputs()) {
    const int position = in.IndexOf(input.Key());
    if (position < 0) {
      binding.absent.push_back(&input);
      if (input.mustBeInRecord) binding.isComplete = false;
    } else {
      std::vector<InputBinding::Place>& places = input.TakesDoubles() ? binding.numbers : binding.others;
      places.push_back({static_cast<std::uint32_t>(position), input.Slot(), &input});
    }
  }
  return binding;
}

TorvaneScorer::OutputBinding TorvaneScorer::BindOutputs(const ValueRecord& out) const {
  OutputBinding binding;
  binding.places.reserve(fModel->Outputs().All().size());
  for (const Output& output : fModel->Outputs().All()) {
    const int position = out.IndexOf(output.key);
    if (position < 0) continue;
    binding.places.push_back({position, &output});
    if (fModel->Outputs().NeedsDistribution(output)) binding.wantsDistribution = true;
    if (fModel->Outputs().NeedsRanking(output)) binding.wantsRanking = true;
    if (output.feature == Feature::kExpression) binding.wantsExpressions = true;
  }
  return binding;
}

// False if an input is invalid. All inputs are read even so: no slot stays without a cell.
bool TorvaneScorer::Gather(const ValueRecord& in, const InputBinding& binding, Cell* frame) const noexcept {
  bool isValid = true;
  const Value* const values = in.Values().data();
  for (const InputBinding::Place& place : binding.numbers) {
    const Value& value = values[place.position];
    if (IsPlainNumber(value)) {
      frame[place.slot] = Cell::Number(value.GetReal());
    } else {
      isValid = GatherOne(value, *place.field, frame) && isValid;
    }
  }
  for (const InputBinding::Place& place : binding.others) {
    isValid = GatherOne(values[place.position], *place.field, frame) && isValid;
  }
  for (const InputField* field : binding.absent) isValid = GatherOne(Value::NULL_VALUE, *field, frame) && isValid;
  return isValid;
}

bool TorvaneScorer::GatherOne(const Value& value, const InputField& field, Cell* frame) const noexcept {
  Cell& cell = frame[field.Slot()];
  cell = field.Read(value, *fPool);
  if (!cell.IsInvalid()) return true;
  if (field.isTarget) cell = Cell::Missing();
  return field.isTarget;
}

}  // namespace Torvane
