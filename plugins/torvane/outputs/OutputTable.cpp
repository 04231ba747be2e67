#include "plugins/torvane/outputs/OutputTable.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "scoring/common/KelScoringConst.h"

namespace Torvane {

namespace Const = KelScoring_20::KelScoringConst;
using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;
using KelTransformNS::Cell;
using KelTransformNS::DataType;
using KelTransformNS::ResolvedField;
using KelTransformNS::TextPool;

namespace {

// The features of the kinds that are built here. A standard error takes covariances of the parameters: it isn't known
// of a model whose document holds none, and stays null. "warning" is null, too: there is nothing to warn of.
constexpr Word<Feature> kFeatures[] = {
    {"predictedValue", Feature::kPredictedValue},
    {"predictedDisplayValue", Feature::kPredictedDisplayValue},
    {"probability", Feature::kProbability},
    {"confidence", Feature::kConfidence},
    {"residual", Feature::kResidual},
    {"entityId", Feature::kEntityId},
    {"clusterId", Feature::kEntityId},
    {"affinity", Feature::kAffinity},
    {"entityAffinity", Feature::kAffinity},
    {"clusterAffinity", Feature::kAffinity},
    {"transformedValue", Feature::kExpression},
    {"decision", Feature::kExpression},
    {"standardError", Feature::kNothing},
    {"warning", Feature::kNothing},
};

bool IsByCategory(Feature feature) {
  return feature == Feature::kPredictedValue || feature == Feature::kPredictedDisplayValue ||
         feature == Feature::kAllPredictions;
}

bool IsDistribution(const Output& output) {
  return output.feature == Feature::kProbability || output.feature == Feature::kConfidence ||
         output.feature == Feature::kAllProbabilities || output.feature == Feature::kResidual;
}

bool IsOfEntity(const Output& output) {
  return output.feature == Feature::kEntityId || output.feature == Feature::kAffinity;
}

bool IsRanking(const Output& output) {
  return IsOfEntity(output) && (output.rank != 1 || output.entity != Prediction::kNone);
}

// A number as a value of another type; invalid if it can't be one.
Cell Converted(double number, DataType type) noexcept {
  switch (type) {
    case DataType::kString:
      return {number, nullptr, KelTransformNS::TextPool::kUnknown, Cell::kText};
    case DataType::kInteger:
      return number == std::trunc(number) ? Cell::Number(number) : Cell::Invalid();
    case DataType::kFloat:
      return Cell::Number(static_cast<double>(static_cast<float>(number)));
    case DataType::kBoolean:
      return number == 0.0 || number == 1.0 ? Cell::Number(number) : Cell::Invalid();
    default:
      return Cell::Number(number);
  }
}

// Producers also write the attribute in lower case, as printed examples of the standard do.
std::optional<DataType> ReadDataType(const Element& element) {
  const char* const name = element.Attribute("dataType") ? "dataType" : "datatype";
  const std::optional<std::string_view> text = element.Attribute(name);
  if (!text) return std::nullopt;
  DataType type;
  if (!KelTransformNS::ParseDataType(*text, type)) throw element.AttributeError(name, "is no data type");
  return type;
}

Cell NumberOrMissing(double number, DataType type) noexcept {
  return std::isnan(number) ? Cell::Missing() : Converted(number, type);
}

bool IsPassedOver(const Element& child) { return IsIgnorable(child) || child.Is("Decisions") || child.Is("Value"); }

Element SkipPassedOver(Element child) {
  while (child && IsPassedOver(child)) child = child.NextSibling();
  return child;
}

Element FindExpression(const Element& outputField) { return SkipPassedOver(outputField.FirstChild()); }

// What reads an output compares numbers, whatever order their list has.
void RefuseOtherOrder(const Element& outputField) {
  std::optional<double> last;
  for (Element child = outputField.Child("Value"); child; child = child.Next("Value")) {
    const std::optional<double> number = child.Number("value");
    if (last && number && *number <= *last) throw child.AttributeError("value", "isn't above the one before");
    last = number;
  }
}

void RefuseSecondExpression(const Element& outputField) {
  const Element second = SkipPassedOver(FindExpression(outputField).NextSibling());
  if (second) throw second.Error("stands beside the expression of its output");
}

}  // namespace

OutputTable::OutputTable(FieldScope& scope, const Target& target, const ModelBody& body, const Element& model,
                         const std::vector<const OutputTable*>& further)
    : fPool(scope.Pool()), fTarget(target), fBody(body), fHasCovariances(model.Child("PCovMatrix")), fFurther(further) {
  AddVocabulary(scope.Pool());
  const Element output = model.Child("Output");
  for (Element field = output.Child("OutputField"); field; field = field.Next("OutputField")) {
    fHasExpressions = fHasExpressions || FindExpression(field);
  }
  ReadOutputFields(scope, output, "OutputField");
  AddSegmentOutputs(scope);
  for (const OutputTable* table : further) ShowOf(*table, table->fTarget.Name());
  Finish(scope);
}

OutputTable::OutputTable(FieldScope& scope, const Target& target, const ModelBody& body, const Element& model,
                         OfFurtherTarget)
    : fPool(scope.Pool()),
      fTarget(target),
      fBody(body),
      fHasCovariances(model.Child("PCovMatrix")),
      fHasExpressions(true) {
  AddOutput(scope.Pool(), PredictedFeature(), target.Name().c_str());
  AddToScope(scope, fOutputs.back());
  const Element output = model.Child("Output");
  for (Element field = output.Child("OutputField"); field; field = field.Next("OutputField")) {
    if (field.Attribute("targetField") == target.Name()) ReadOutputField(scope, field);
  }
  Finish(scope);
}

OutputTable::OutputTable(FieldScope& scope, const Target& target, const ModelBody& body, const Element& model,
                         const std::vector<Element>& asked)
    : fPool(scope.Pool()),
      fTarget(target),
      fBody(body),
      fHasCovariances(model.Child("PCovMatrix")),
      fHasExpressions(true) {
  ReadOutputFields(scope, model.Child("Output"), "OutputField");
  if (IsComposed(model)) ReadOutputFields(scope, model, "ResultField");
  for (const Element& element : asked) ReadAsked(scope, element);
  ExportAll(scope, model);
  Finish(scope);
}

bool OutputTable::IsNeededBy(const Element& member, const FieldScope& scope, const std::vector<Element>& asked) {
  return member.Child("Output") || member.Child("ResultField") || !scope.SegmentOutputs().empty() || !asked.empty();
}

void OutputTable::ReadOutputFields(FieldScope& scope, const Element& parent, const char* name) {
  if (parent.Is("Output")) RefuseUnknownChildren(parent, {name});
  for (Element field = parent.Child(name); field; field = field.Next(name)) ReadOutputField(scope, field);
}

void OutputTable::ReadAsked(FieldScope& scope, const Element& element) {
  Output output = ReadOutput(scope, element);
  AddToScope(scope, output);
  const ResolvedField field{output.key.Name(), output.type, KelTransformNS::ImpliedOpType(output.type), output.slot};
  fHidden.push_back(std::move(output));
  fExports.push_back({field.slot, scope.Outer()->AddAnswer(field)});
}

// What the segments of an ensemble tell, a host may ask for, too.
void OutputTable::AddSegmentOutputs(const FieldScope& scope) {
  for (const ResolvedField& field : scope.SegmentOutputs()) {
    if (!fByName.emplace(field.name, fOutputs.size()).second) continue;
    Output& output = fOutputs.emplace_back(field.name);
    output.feature = Feature::kExpression;
    output.type = field.dataType;
    output.slot = field.slot;
  }
}

void OutputTable::ExportAll(FieldScope& scope, const Element& model) {
  AddSegmentOutputs(scope);
  for (const Output& output : fOutputs) {
    ExportTo(*scope.Outer(), {output.key.Name(), output.type, KelTransformNS::ImpliedOpType(output.type), output.slot},
             model);
  }
}

void OutputTable::ExportTo(FieldScope& ensemble, ResolvedField field, const Element& element) {
  const std::optional<std::uint32_t> slot = ensemble.AddSegmentOutput(field);
  if (!slot) throw element.Error("has an output " + Quoted(field.name) + " of another type than another segment's");
  fExports.push_back({field.slot, *slot});
}

void OutputTable::Finish(FieldScope& scope) {
  fHasDistributions = std::any_of(fOutputs.begin(), fOutputs.end(), IsDistribution) ||
                      std::any_of(fHidden.begin(), fHidden.end(), IsDistribution);
  fHasRankings = std::any_of(fOutputs.begin(), fOutputs.end(), IsRanking) ||
                 std::any_of(fHidden.begin(), fHidden.end(), IsRanking);
  fProgram = scope.Compiler().Finish();
  ValueRecord members;
  FillNames(members);
  fMemberLayout = members.Layout();
  if (!fBody.GivesAllPredictions()) return;
  ValueRecord segments;
  FillSegmentNames(segments);
  fSegmentLayout = segments.Layout();
}

void OutputTable::AddVocabulary(TextPool& pool) {
  AddOutput(pool, PredictedFeature(), Const::kOutputPrediction);
  if (!fTarget.IsNumeric() && fBody.GivesProbabilities()) {
    AddOutput(pool, Feature::kProbability, Const::kOutputProbability);
    AddOutput(pool, Feature::kAllProbabilities, Const::kOutputProbCategory);
  }
  if (GivesConfidences()) AddOutput(pool, Feature::kConfidence, Const::kOutputConfidence);
  for (const KindOutput& output : fBody.KindOutputs()) AddOutput(pool, output.feature, output.key);
}

void OutputTable::AddOutput(TextPool& pool, Feature feature, const char* name) {
  Output output(name);
  output.feature = feature;
  ChooseType(pool, std::nullopt, output);
  fByName.emplace(output.key.Name(), fOutputs.size());
  fOutputs.push_back(std::move(output));
}

void OutputTable::ReadOutputField(FieldScope& scope, const Element& element) {
  if (const OutputTable* further = FindFurther(element)) {
    const std::string name(element.Required("name"));
    if (!ShowOf(*further, name)) throw element.AttributeError("name", "stands there twice");
    return;
  }
  Output output = element.Attribute("segmentId") ? ReadFromSegment(scope, element) : ReadOutput(scope, element);
  AddToScope(scope, output);
  Place(std::move(output), element);
}

// The table of the further target that an output field names.
const OutputTable* OutputTable::FindFurther(const Element& element) const {
  const auto name = element.Attribute("targetField");
  const auto found = std::find_if(fFurther.begin(), fFurther.end(),
                                  [&](const OutputTable* table) { return name == table->fTarget.Name(); });
  return found == fFurther.end() ? nullptr : *found;
}

// A further target has left its output in the frame. False if the name is taken.
bool OutputTable::ShowOf(const OutputTable& further, const std::string& name) {
  const Output& shown = further.fOutputs[further.fByName.find(name)->second];
  if (!fByName.emplace(name, fOutputs.size()).second) return false;
  Output& output = fOutputs.emplace_back(name);
  output.isDeclared = true;
  output.feature = Feature::kExpression;
  output.type = shown.type;
  output.slot = shown.slot;
  return true;
}

// The segment has left its answer in the frame. Of a segment that isn't there it is missing.
Output OutputTable::ReadFromSegment(const FieldScope& scope, const Element& element) const {
  if (!fBody.IsEnsemble()) throw element.AttributeError("segmentId", "needs segments");
  (void)ReadWord(element, "feature", kFeatures, Feature::kNothing);
  Output output{std::string(element.Required("name"))};
  output.isDeclared = true;
  if (const ResolvedField* field = scope.FindAnswer(output.key.Name())) {
    output.feature = Feature::kExpression;
    output.type = field->dataType;
    output.slot = field->slot;
  } else if (FindEntity(element.Required("segmentId"))) {
    throw element.AttributeError("segmentId", "stands behind its segment");
  }
  return output;
}

Output OutputTable::ReadOutput(FieldScope& scope, const Element& element) {
  Output output{std::string(element.Required("name"))};
  output.isDeclared = true;
  ReadFeature(scope, element, output);
  CheckAttributes(element);
  ReadRank(element, output);
  if (output.feature == Feature::kExpression) {
    ReadExpression(scope, element, output);
  } else {
    if (FindExpression(element)) throw FindExpression(element).Error("belongs to the feature transformedValue");
    ReadCategory(element, output);
    ReadEntity(element, output);
    if (output.feature == Feature::kResidual) ReadResidual(scope, element, output);
    ChooseType(scope.Pool(), ReadDataType(element), output);
  }
  return output;
}

Feature OutputTable::PredictedFeature() const noexcept {
  return fBody.GivesAllPredictions() ? Feature::kAllPredictions : Feature::kPredictedValue;
}

// Without a feature it is the predicted value, or the expression if there is one.
void OutputTable::ReadFeature(const FieldScope& scope, const Element& element, Output& output) {
  const Feature absent = FindExpression(element) ? Feature::kExpression : Feature::kPredictedValue;
  output.feature = ReadWord(element, "feature", kFeatures, absent);
  if (fBody.GivesAllPredictions() && output.feature != Feature::kExpression) {
    if (output.feature != Feature::kPredictedValue || scope.Outer() != nullptr) {
      throw element.AttributeError("feature", "isn't known to a model whose segments all give a result");
    }
    output.feature = Feature::kAllPredictions;
  }
  if (element.Attribute("feature") == "standardError" && fHasCovariances) {
    throw element.AttributeError("feature", "is not supported: nothing is computed of the <PCovMatrix>");
  }
  if (output.feature == Feature::kProbability && fTarget.IsNumeric()) {
    throw element.AttributeError("feature", "needs a classification");
  }
  // The entities of an ensemble are its segments; the cluster is what it predicts.
  if (element.Attribute("feature") == "clusterId" && fBody.IsEnsemble()) output.feature = Feature::kPredictedValue;
  const bool isOfClusters = element.Attribute("feature").value_or("").starts_with("cluster");
  const bool isKnown = (output.feature != Feature::kProbability || fBody.GivesProbabilities()) &&
                       (output.feature != Feature::kConfidence || GivesConfidences()) &&
                       (output.feature != Feature::kEntityId || fBody.EntityCount() > 0) &&
                       (output.feature != Feature::kAffinity || fBody.RankingCapacity() > 0) &&
                       (!isOfClusters || fTarget.Function() == MiningFunction::kClustering);
  if (!isKnown) throw element.AttributeError("feature", "isn't known to this kind of model");
}

void OutputTable::CheckAttributes(const Element& element) const {
  const bool isOrdinal = KelTransformNS::ReadOpType(element) == KelTransformNS::OpType::kOrdinal;
  if (isOrdinal && !KelTransformNS::IsText(ReadDataType(element).value_or(DataType::kString)))
    RefuseOtherOrder(element);
  const auto target = element.Attribute("targetField");
  if (target && !fTarget.Name().empty() && *target != fTarget.Name()) {
    throw element.AttributeError("targetField", "isn't the target of the model");
  }
  if (element.Boolean("isMultiValued", false)) throw element.AttributeError("isMultiValued", "is not supported");
}

void OutputTable::ReadExpression(FieldScope& scope, const Element& element, Output& output) {
  const Element expression = FindExpression(element);
  RefuseSecondExpression(element);
  if (!expression) return ReadNamedOutput(element, output);
  const KelTransformNS::ResolvedField field = scope.Compiler().CompileExpression(expression, ReadDataType(element));
  output.slot = field.slot;
  output.type = field.dataType;
}

// An ensemble may ask a segment for one of its outputs, by its name.
void OutputTable::ReadNamedOutput(const Element& element, Output& output) const {
  const auto found = fByName.find(element.Attribute("value").value_or(""));
  if (!element.Attribute("segmentId") || found == fByName.end()) throw element.Error("has no expression");
  output.slot = fOutputs[found->second].slot;
  output.type = fOutputs[found->second].type;
}

void OutputTable::ReadCategory(const Element& element, Output& output) const {
  const auto value = element.Attribute("value");
  const bool isOfCategory = IsDistribution(output) && !fTarget.IsNumeric();
  if (!value || !isOfCategory) return;
  const std::optional<std::uint32_t> category = fTarget.FindCategory(*value);
  if (category) {
    output.category = *category;
  } else {
    output.feature = Feature::kNothing;  // a category that the model doesn't know has no probability
  }
}

// The place among the entities of a ranking, of which the best is the first. Nothing else has a second place.
void OutputTable::ReadRank(const Element& element, Output& output) const {
  static constexpr Word<bool> kOrders[] = {{"descending", true}};
  (void)ReadWord(element, "rankOrder", kOrders, true);
  const int rank = element.Integer("rank").value_or(1);
  if (rank < 1) throw element.AttributeError("rank", "isn't from 1 on");
  if (rank > 1 && (!IsOfEntity(output) || fBody.RankingCapacity() == 0)) {
    throw element.AttributeError("rank", "is not supported: a record has one only");
  }
  output.rank = static_cast<std::uint32_t>(rank);
}

// An affinity may be asked for by the entity's identifier instead of its rank.
void OutputTable::ReadEntity(const Element& element, Output& output) const {
  const std::optional<std::string_view> value = element.Attribute("value");
  if (!value || !IsOfEntity(output)) return;
  if (output.feature == Feature::kEntityId) throw element.AttributeError("value", "has no meaning for an entityId");
  if (output.rank != 1) throw element.AttributeError("value", "stands beside a rank");
  const std::optional<std::uint32_t> entity = FindEntity(*value);
  if (entity) {
    output.entity = *entity;
  } else {
    output.feature = Feature::kNothing;  // an entity that the model doesn't know has no affinity
  }
}

std::optional<std::uint32_t> OutputTable::FindEntity(std::string_view wanted) const {
  Value id;
  for (std::uint32_t entity = 0; entity < fBody.EntityCount(); ++entity) {
    fBody.WriteEntity(entity, id);
    if (id.GetString() == wanted) return entity;
  }
  return std::nullopt;
}

bool OutputTable::GivesConfidences() const noexcept { return !fTarget.IsNumeric() && fBody.GivesConfidences(); }

void OutputTable::ReadResidual(FieldScope& scope, const Element& element, Output& output) {
  if (fTarget.Name().empty()) throw element.AttributeError("feature", "needs a target field");
  fTargetSlot = scope.Resolve(fTarget.Name(), element).slot;
  output.type = DataType::kDouble;
}

// Categories are shown in the type of the target if nothing else is asked for, their display values are texts. What
// can't be converted is shown as null.
void OutputTable::ChooseType(TextPool& pool, std::optional<DataType> type, Output& output) {
  const bool isDisplay = output.feature == Feature::kPredictedDisplayValue;
  output.type = type.value_or(DataType::kDouble);
  if (output.feature == Feature::kEntityId) output.type = type.value_or(DataType::kString);
  if (!IsByCategory(output.feature)) return;
  if (fTarget.IsNumeric()) {
    if (isDisplay) output.type = type.value_or(DataType::kString);
    output.isPlainNumber = output.type == DataType::kDouble && output.feature == Feature::kPredictedValue;
    return;
  }
  output.type = type.value_or(isDisplay ? DataType::kString : fTarget.Type());
  output.byCategory = &Shown(pool, isDisplay, output.type);
}

const std::vector<Cell>& OutputTable::Shown(TextPool& pool, bool isDisplay, DataType type) {
  const auto [place, isNew] = fShown.try_emplace({isDisplay, type});
  if (!isNew) return place->second;
  const bool isAsItIs = !isDisplay && type == fTarget.Type();
  for (const Category& category : fTarget.Categories()) {
    const std::string& text = isDisplay ? category.displayValue : category.text;
    place->second.push_back(isAsItIs ? category.cell : FindComparand(text, type, pool).value_or(Cell::Invalid()));
  }
  return place->second;
}

void OutputTable::AddToScope(FieldScope& scope, Output& output) {
  if (!fHasExpressions) return;
  if (output.slot == Prediction::kNone) output.slot = scope.Compiler().NewSlot();
  scope.AddOutput({output.key.Name(), output.type, KelTransformNS::ImpliedOpType(output.type), output.slot});
  if (output.feature == Feature::kEntityId) InternEntities(scope.Pool());
}

void OutputTable::InternEntities(TextPool& pool) {
  if (!fEntities.empty()) return;
  Value id;
  for (std::uint32_t entity = 0; entity < fBody.EntityCount(); ++entity) {
    fBody.WriteEntity(entity, id);
    fEntities.push_back(Cell::Text(pool, pool.Intern(id.GetString())));
  }
}

void OutputTable::Place(Output output, const Element& element) {
  const auto [known, isNew] = fByName.emplace(output.key.Name(), fOutputs.size());
  if (isNew) {
    fOutputs.push_back(std::move(output));
    return;
  }
  Output& vocabulary = fOutputs[known->second];
  if (vocabulary.isDeclared) throw element.AttributeError("name", "stands there twice");
  if (output.key.Name() == Const::kOutputPrediction || output.key.Name() == Const::kOutputProbability) {
    vocabulary.isDeclared = true;
    fHidden.push_back(std::move(output));
  } else {
    vocabulary = std::move(output);
  }
}

bool OutputTable::NeedsDistribution(const Output& output) const noexcept {
  return output.feature == Feature::kExpression ? fHasDistributions : IsDistribution(output);
}

bool OutputTable::NeedsRanking(const Output& output) const noexcept {
  return output.feature == Feature::kExpression ? fHasRankings : IsRanking(output);
}

void OutputTable::RunExpressions(KelTransformNS::Frame frame, const Prediction& prediction) const {
  PutIntoFrame(fOutputs, frame, prediction);
  PutIntoFrame(fHidden, frame, prediction);
  fProgram.Run(frame);
}

void OutputTable::SetWants(Prediction& prediction) const noexcept {
  prediction.wantsDistribution = prediction.wantsDistribution || fHasDistributions;
  prediction.wantsRanking = prediction.wantsRanking || fHasRankings;
}

// An invalid result is one of the whole ensemble, so that nobody reads the fields.
void OutputTable::PutIntoEnsemble(KelTransformNS::Frame frame, const Prediction& prediction) const {
  if (prediction.outcome == Outcome::kInvalid) return;
  RunExpressions(frame, prediction);
  for (const Export& field : fExports) frame[field.to] = frame[field.from];
}

void OutputTable::PutIntoFrame(const std::vector<Output>& outputs, KelTransformNS::Frame frame,
                               const Prediction& prediction) const {
  for (const Output& output : outputs) {
    if (output.feature == Feature::kExpression || output.slot == Prediction::kNone) continue;
    frame[output.slot] = CellOf(output, frame.data(), prediction);
  }
}

Cell OutputTable::CellOf(const Output& output, const Cell* frame, const Prediction& prediction) const {
  if (prediction.outcome == Outcome::kInvalid) return Cell::Missing();
  if (output.feature == Feature::kExpression) return frame[output.slot];
  if (prediction.outcome != Outcome::kValue) return Cell::Missing();
  const std::uint32_t category = output.category == Prediction::kNone ? prediction.category : output.category;
  switch (output.feature) {
    case Feature::kPredictedValue:
    case Feature::kPredictedDisplayValue:
      return output.byCategory == nullptr ? Converted(prediction.number, output.type)
                                          : (*output.byCategory)[prediction.category];
    case Feature::kProbability:
      return prediction.hasProbabilities ? Converted(prediction.probabilities[category], output.type) : Cell::Missing();
    case Feature::kConfidence:
      return prediction.hasConfidences ? Converted(prediction.confidences[category], output.type) : Cell::Missing();
    case Feature::kResidual:
      return Residual(output, frame, prediction);
    case Feature::kEntityId: {
      const std::uint32_t entity = EntityOf(output, prediction);
      return entity == Prediction::kNone ? Cell::Missing() : EntityCell(output, entity);
    }
    case Feature::kAffinity:
      return NumberOrMissing(AffinityOf(output, prediction), output.type);
    case Feature::kAuxiliary:
      return NumberOrMissing(prediction.auxiliary, output.type);
    default:
      return Cell::Missing();
  }
}

std::uint32_t OutputTable::EntityOf(const Output& output, const Prediction& prediction) noexcept {
  if (output.rank == 1) return prediction.entity;
  return output.rank <= prediction.rankingCount ? prediction.ranking[output.rank - 1].entity : Prediction::kNone;
}

// NaN where there is none.
double OutputTable::AffinityOf(const Output& output, const Prediction& prediction) noexcept {
  if (!IsRanking(output)) return prediction.affinity;
  const RankedEntity* const begin = prediction.ranking;
  const RankedEntity* const end = begin + prediction.rankingCount;
  const RankedEntity* found = begin + std::min(output.rank - 1, prediction.rankingCount);
  if (output.entity != Prediction::kNone) {
    found = std::find_if(begin, end, [&](const RankedEntity& ranked) { return ranked.entity == output.entity; });
  }
  return found == end ? std::numeric_limits<double>::quiet_NaN() : found->affinity;
}

// Identifiers are texts. One that is asked for as another type is converted each time: that is rare.
Cell OutputTable::EntityCell(const Output& output, std::uint32_t entity) const {
  if (output.type == DataType::kString) return fEntities[entity];
  thread_local Value id;
  fBody.WriteEntity(entity, id);
  return KelTransformNS::ReadCell(id, output.type, fPool);
}

// Of a number: the true value minus the predicted one. Of a category: 1 or 0, as the true value is it or not, minus
// its probability.
Cell OutputTable::Residual(const Output& output, const Cell* frame, const Prediction& prediction) const noexcept {
  const Cell& actual = frame[fTargetSlot];
  if (actual.state != Cell::kNumber && actual.state != Cell::kText) return Cell::Missing();
  if (fTarget.IsNumeric()) {
    return actual.state == Cell::kNumber ? Converted(actual.number - prediction.number, output.type) : Cell::Missing();
  }
  if (!prediction.hasProbabilities) return Cell::Missing();
  const std::uint32_t index = output.category == Prediction::kNone ? prediction.category : output.category;
  const Cell& category = fTarget.Categories()[index].cell;
  const bool isActual =
      actual.state == Cell::kText ? actual.textId == category.textId : actual.number == category.number;
  return Converted((isActual ? 1.0 : 0.0) - prediction.probabilities[index], output.type);
}

void OutputTable::Write(const Output& output, const Cell* frame, const Prediction& prediction, Value& value) const {
  if (output.isPlainNumber && prediction.outcome == Outcome::kValue) {
    value = prediction.number;
    return;
  }
  if (output.feature == Feature::kAllProbabilities) return WriteProbabilities(prediction, value);
  if (output.feature == Feature::kAllPredictions) return WritePredictions(output, prediction, value);
  if (output.feature == Feature::kEntityId && output.type == DataType::kString) {
    const bool hasValue = prediction.outcome == Outcome::kValue;
    const std::uint32_t entity = hasValue ? EntityOf(output, prediction) : Prediction::kNone;
    return entity == Prediction::kNone ? value.SetNull() : fBody.WriteEntity(entity, value);
  }
  const Cell cell = CellOf(output, frame, prediction);
  if (cell.state == Cell::kNumber && output.type == DataType::kDouble) {
    value = cell.number;
  } else if (cell.state == Cell::kText && cell.text != nullptr) {
    value = *cell.text;
  } else {
    KelTransformNS::WriteCell(cell, output.type, value);
  }
}

// The members keep their places from record to record, so that nothing is looked up and nothing allocated. A record
// without a result has them, too, all null: a host sees the same columns in every row.
void OutputTable::WriteProbabilities(const Prediction& prediction, Value& value) const {
  ValueRecord& members = value.MakeMembers();
  if (members.Layout() != fMemberLayout) {
    members.Clear();
    FillNames(members);
  }
  if (prediction.outcome != Outcome::kValue || !prediction.hasProbabilities) return members.SetAllNull();
  const int count = static_cast<int>(fTarget.Categories().size());
  for (int i = 0; i < count; ++i) members[i] = prediction.probabilities[i];
}

// A member for each segment, null for one that gave no result. The ranking holds a category or a number for the others.
void OutputTable::WritePredictions(const Output& output, const Prediction& prediction, Value& value) const {
  ValueRecord& members = value.MakeMembers();
  if (members.Layout() != fSegmentLayout) {
    members.Clear();
    FillSegmentNames(members);
  }
  members.SetAllNull();
  if (prediction.outcome != Outcome::kValue) return;
  for (std::uint32_t i = 0; i < prediction.rankingCount; ++i) {
    const RankedEntity& part = prediction.ranking[i];
    const Cell cell = output.byCategory == nullptr ? Converted(part.affinity, output.type)
                                                   : (*output.byCategory)[static_cast<std::size_t>(part.affinity)];
    KelTransformNS::WriteCell(cell, output.type, members[static_cast<int>(part.entity)]);
  }
}

void OutputTable::FillSegmentNames(ValueRecord& members) const {
  Value id;
  for (std::uint32_t segment = 0; segment < fBody.EntityCount(); ++segment) {
    fBody.WriteEntity(segment, id);
    members.Add(id.GetString(), Value::NULL_VALUE);
  }
}

void OutputTable::Announce(ValueRecord& record) const {
  for (const Output& output : fOutputs) {
    const int position = record.Add(output.key, Value::NULL_VALUE);
    if (output.feature == Feature::kAllProbabilities) FillNames(record[position].MakeMembers());
    if (output.feature == Feature::kAllPredictions) FillSegmentNames(record[position].MakeMembers());
  }
}

void OutputTable::FillNames(ValueRecord& members) const {
  for (const Category& category : fTarget.Categories()) members.Add(category.text, Value::NULL_VALUE);
}

}  // namespace Torvane
