#include "plugins/torvane/outputs/OutputReader.h"

#include <algorithm>
#include <utility>

#include "components/keltransform/Attributes.h"
#include "scoring/common/KelScoringConst.h"

namespace Torvane {

namespace Const = KelScoring_20::KelScoringConst;
using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;
using KelTransformNS::Cell;
using KelTransformNS::DataType;
using KelTransformNS::ReadDataType;
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

ResolvedField FieldOf(const Output& output) {
  return {output.key.Name(), output.type, KelTransformNS::ImpliedOpType(output.type), output.slot};
}

}  // namespace

OutputReader::OutputReader(FieldScope& scope, const Target& target, const ModelBody& body, const Element& model)
    : fScope(scope),
      fTarget(target),
      fBody(body),
      fHasCovariances(model.Child("PCovMatrix")),
      fTable(std::make_unique<OutputTable>(scope.Pool(), target, body)),
      fOutputs(fTable->fOutputs) {}

std::unique_ptr<OutputTable> OutputReader::ReadModel(FieldScope& scope, const Target& target, const ModelBody& body,
                                                     const Element& model,
                                                     const std::vector<const OutputTable*>& further) {
  OutputReader reader(scope, target, body, model);
  reader.fFurther = further;
  reader.AddVocabulary();
  const Element output = model.Child("Output");
  for (Element field = output.Child("OutputField"); field; field = field.Next("OutputField")) {
    reader.fHasExpressions = reader.fHasExpressions || FindExpression(field);
  }
  reader.ReadOutputFields(output, "OutputField");
  reader.AddSegmentOutputs();
  for (const OutputTable* table : further) reader.ShowOf(*table, table->GetTarget().Name());
  return reader.Finish();
}

std::unique_ptr<OutputTable> OutputReader::ReadFurther(FieldScope& scope, const Target& target, const ModelBody& body,
                                                       const Element& model) {
  OutputReader reader(scope, target, body, model);
  reader.fHasExpressions = true;
  reader.AddOutput(reader.PredictedFeature(), target.Name().c_str());
  reader.AddToScope(reader.fOutputs.back());
  const Element output = model.Child("Output");
  for (Element field = output.Child("OutputField"); field; field = field.Next("OutputField")) {
    if (field.Attribute("targetField") == target.Name()) reader.ReadOutputField(field);
  }
  return reader.Finish();
}

std::unique_ptr<OutputTable> OutputReader::ReadMember(FieldScope& scope, const Target& target, const ModelBody& body,
                                                      const Element& model, const std::vector<Element>& asked) {
  const bool hasOutputs =
      model.Child("Output") || model.Child("ResultField") || !scope.SegmentOutputs().empty() || !asked.empty();
  if (!hasOutputs) return nullptr;
  OutputReader reader(scope, target, body, model);
  reader.fHasExpressions = true;
  reader.ReadOutputFields(model.Child("Output"), "OutputField");
  if (IsComposed(model)) reader.ReadOutputFields(model, "ResultField");
  for (const Element& element : asked) reader.ReadAsked(element);
  reader.ExportAll(model);
  return reader.Finish();
}

void OutputReader::ReadOutputFields(const Element& parent, const char* name) {
  if (parent.Is("Output")) RefuseUnknownChildren(parent, {name});
  for (Element field = parent.Child(name); field; field = field.Next(name)) ReadOutputField(field);
}

void OutputReader::ReadAsked(const Element& element) {
  Output output = ReadOutput(element);
  AddToScope(output);
  const ResolvedField field = FieldOf(output);
  fTable->fHidden.push_back(std::move(output));
  fTable->fExports.push_back({field.slot, fScope.Outer()->AddAnswer(field)});
}

// What the segments of an ensemble tell, a host may ask for, too.
void OutputReader::AddSegmentOutputs() {
  for (const ResolvedField& field : fScope.SegmentOutputs()) {
    if (!fByName.emplace(field.name, fOutputs.size()).second) continue;
    Output& output = fOutputs.emplace_back(field.name);
    output.feature = Feature::kExpression;
    output.type = field.dataType;
    output.slot = field.slot;
  }
}

void OutputReader::ExportAll(const Element& model) {
  AddSegmentOutputs();
  for (const Output& output : fOutputs) {
    ExportTo(*fScope.Outer(), FieldOf(output), model);
  }
}

void OutputReader::ExportTo(FieldScope& ensemble, const ResolvedField& field, const Element& element) {
  const std::optional<std::uint32_t> slot = ensemble.AddSegmentOutput(field);
  if (!slot) throw element.Error("has an output " + Quoted(field.name) + " of another type than another segment's");
  fTable->fExports.push_back({field.slot, *slot});
}

std::unique_ptr<OutputTable> OutputReader::Finish() {
  const auto anyIs = [&](bool (Output::*isOne)() const noexcept) {
    const auto is = [&](const Output& output) { return (output.*isOne)(); };
    return std::any_of(fOutputs.begin(), fOutputs.end(), is) ||
           std::any_of(fTable->fHidden.begin(), fTable->fHidden.end(), is);
  };
  fTable->fHasDistributions = anyIs(&Output::IsDistribution);
  fTable->fHasRankings = anyIs(&Output::IsRanking);
  fTable->fProgram = fScope.Compiler().Finish();
  fTable->RememberLayouts();
  return std::move(fTable);
}

void OutputReader::AddVocabulary() {
  AddOutput(PredictedFeature(), Const::kOutputPrediction);
  if (!fTarget.IsNumeric() && fBody.GivesProbabilities()) {
    AddOutput(Feature::kProbability, Const::kOutputProbability);
    AddOutput(Feature::kAllProbabilities, Const::kOutputProbCategory);
  }
  if (GivesConfidences()) AddOutput(Feature::kConfidence, Const::kOutputConfidence);
  for (const KindOutput& output : fBody.KindOutputs()) AddOutput(output.feature, output.key);
}

void OutputReader::AddOutput(Feature feature, const char* name) {
  Output output(name);
  output.feature = feature;
  ChooseType(std::nullopt, output);
  fByName.emplace(output.key.Name(), fOutputs.size());
  fOutputs.push_back(std::move(output));
}

void OutputReader::ReadOutputField(const Element& element) {
  if (const OutputTable* further = FindFurther(element)) {
    const std::string name(element.Required("name"));
    if (!ShowOf(*further, name)) throw element.AttributeError("name", "stands there twice");
    return;
  }
  Output output = element.Attribute("segmentId") ? ReadFromSegment(element) : ReadOutput(element);
  AddToScope(output);
  Place(std::move(output), element);
}

// The table of the further target that an output field names.
const OutputTable* OutputReader::FindFurther(const Element& element) const {
  const auto name = element.Attribute("targetField");
  const auto found = std::find_if(fFurther.begin(), fFurther.end(),
                                  [&](const OutputTable* table) { return name == table->GetTarget().Name(); });
  return found == fFurther.end() ? nullptr : *found;
}

// A further target has left its output in the frame. False if the name is taken.
bool OutputReader::ShowOf(const OutputTable& further, const std::string& name) {
  const Output& shown = *std::find_if(further.All().begin(), further.All().end(),
                                      [&](const Output& output) { return output.key.Name() == name; });
  if (!fByName.emplace(name, fOutputs.size()).second) return false;
  Output& output = fOutputs.emplace_back(name);
  output.isDeclared = true;
  output.feature = Feature::kExpression;
  output.type = shown.type;
  output.slot = shown.slot;
  return true;
}

// The segment has left its answer in the frame. Of a segment that isn't there it is missing.
Output OutputReader::ReadFromSegment(const Element& element) const {
  if (!fBody.IsEnsemble()) throw element.AttributeError("segmentId", "needs segments");
  (void)ReadWord(element, "feature", kFeatures, Feature::kNothing);
  Output output{std::string(element.Required("name"))};
  output.isDeclared = true;
  if (const ResolvedField* field = fScope.FindAnswer(output.key.Name())) {
    output.feature = Feature::kExpression;
    output.type = field->dataType;
    output.slot = field->slot;
  } else if (FindEntity(element.Required("segmentId"))) {
    throw element.AttributeError("segmentId", "stands behind its segment");
  }
  return output;
}

Output OutputReader::ReadOutput(const Element& element) {
  Output output{std::string(element.Required("name"))};
  output.isDeclared = true;
  ReadFeature(element, output);
  CheckAttributes(element);
  ReadRank(element, output);
  if (output.feature == Feature::kExpression) {
    ReadExpression(element, output);
  } else {
    if (FindExpression(element)) throw FindExpression(element).Error("belongs to the feature transformedValue");
    ReadCategory(element, output);
    ReadEntity(element, output);
    if (output.feature == Feature::kResidual) ReadResidual(element, output);
    ChooseType(ReadDataType(element), output);
  }
  return output;
}

Feature OutputReader::PredictedFeature() const noexcept {
  return fBody.GivesAllPredictions() ? Feature::kAllPredictions : Feature::kPredictedValue;
}

// Without a feature it is the predicted value, or the expression if there is one.
void OutputReader::ReadFeature(const Element& element, Output& output) const {
  const Feature absent = FindExpression(element) ? Feature::kExpression : Feature::kPredictedValue;
  output.feature = ReadWord(element, "feature", kFeatures, absent);
  if (fBody.GivesAllPredictions() && output.feature != Feature::kExpression) {
    if (output.feature != Feature::kPredictedValue || fScope.Outer() != nullptr) {
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

void OutputReader::CheckAttributes(const Element& element) const {
  const bool isOrdinal = KelTransformNS::ReadOpType(element) == KelTransformNS::OpType::kOrdinal;
  if (isOrdinal && !KelTransformNS::IsText(ReadDataType(element).value_or(DataType::kString)))
    RefuseOtherOrder(element);
  const auto target = element.Attribute("targetField");
  if (target && !fTarget.Name().empty() && *target != fTarget.Name()) {
    throw element.AttributeError("targetField", "isn't the target of the model");
  }
  if (element.Boolean("isMultiValued", false)) throw element.AttributeError("isMultiValued", "is not supported");
}

void OutputReader::ReadExpression(const Element& element, Output& output) {
  const Element expression = FindExpression(element);
  RefuseSecondExpression(element);
  if (!expression) return ReadNamedOutput(element, output);
  const KelTransformNS::ResolvedField field = fScope.Compiler().CompileExpression(expression, ReadDataType(element));
  output.slot = field.slot;
  output.type = field.dataType;
}

// An ensemble may ask a segment for one of its outputs, by its name.
void OutputReader::ReadNamedOutput(const Element& element, Output& output) const {
  const auto found = fByName.find(element.Attribute("value").value_or(""));
  if (!element.Attribute("segmentId") || found == fByName.end()) throw element.Error("has no expression");
  output.slot = fOutputs[found->second].slot;
  output.type = fOutputs[found->second].type;
}

void OutputReader::ReadCategory(const Element& element, Output& output) const {
  const auto value = element.Attribute("value");
  const bool isOfCategory = output.IsDistribution() && !fTarget.IsNumeric();
  if (!value || !isOfCategory) return;
  const std::optional<std::uint32_t> category = fTarget.FindCategory(*value);
  if (category) {
    output.category = *category;
  } else {
    output.feature = Feature::kNothing;  // a category that the model doesn't know has no probability
  }
}

// The place among the entities of a ranking, of which the best is the first. Nothing else has a second place.
void OutputReader::ReadRank(const Element& element, Output& output) const {
  static constexpr Word<bool> kOrders[] = {{"descending", true}};
  (void)ReadWord(element, "rankOrder", kOrders, true);
  const int rank = element.Integer("rank").value_or(1);
  if (rank < 1) throw element.AttributeError("rank", "isn't from 1 on");
  if (rank > 1 && (!output.IsOfEntity() || fBody.RankingCapacity() == 0)) {
    throw element.AttributeError("rank", "is not supported: a record has one only");
  }
  output.rank = static_cast<std::uint32_t>(rank);
}

// An affinity may be asked for by the entity's identifier instead of its rank.
void OutputReader::ReadEntity(const Element& element, Output& output) const {
  const std::optional<std::string_view> value = element.Attribute("value");
  if (!value || !output.IsOfEntity()) return;
  if (output.feature == Feature::kEntityId) throw element.AttributeError("value", "has no meaning for an entityId");
  if (output.rank != 1) throw element.AttributeError("value", "stands beside a rank");
  const std::optional<std::uint32_t> entity = FindEntity(*value);
  if (entity) {
    output.entity = *entity;
  } else {
    output.feature = Feature::kNothing;  // an entity that the model doesn't know has no affinity
  }
}

std::optional<std::uint32_t> OutputReader::FindEntity(std::string_view wanted) const {
  Value id;
  for (std::uint32_t entity = 0; entity < fBody.EntityCount(); ++entity) {
    fBody.WriteEntity(entity, id);
    if (id.GetString() == wanted) return entity;
  }
  return std::nullopt;
}

bool OutputReader::GivesConfidences() const noexcept { return !fTarget.IsNumeric() && fBody.GivesConfidences(); }

void OutputReader::ReadResidual(const Element& element, Output& output) {
  if (fTarget.Name().empty()) throw element.AttributeError("feature", "needs a target field");
  fTable->fTargetSlot = fScope.Resolve(fTarget.Name(), element).slot;
  output.type = DataType::kDouble;
}

// Categories are shown in the type of the target if nothing else is asked for, their display values are texts. What
// can't be converted is shown as null.
void OutputReader::ChooseType(std::optional<DataType> type, Output& output) {
  const bool isDisplay = output.feature == Feature::kPredictedDisplayValue;
  output.type = type.value_or(DataType::kDouble);
  if (output.feature == Feature::kEntityId) output.type = type.value_or(DataType::kString);
  if (!output.IsByCategory()) return;
  if (fTarget.IsNumeric()) {
    if (isDisplay) output.type = type.value_or(DataType::kString);
    output.isPlainNumber = output.type == DataType::kDouble && output.feature == Feature::kPredictedValue;
    return;
  }
  output.type = type.value_or(isDisplay ? DataType::kString : fTarget.Type());
  output.byCategory = &Shown(isDisplay, output.type);
}

const std::vector<Cell>& OutputReader::Shown(bool isDisplay, DataType type) {
  const auto [place, isNew] = fTable->fShown.try_emplace({isDisplay, type});
  if (!isNew) return place->second;
  const bool isAsItIs = !isDisplay && type == fTarget.Type();
  for (const Category& category : fTarget.Categories()) {
    const std::string& text = isDisplay ? category.displayValue : category.text;
    place->second.push_back(isAsItIs ? category.cell
                                     : FindComparand(text, type, fScope.Pool()).value_or(Cell::Invalid()));
  }
  return place->second;
}

void OutputReader::AddToScope(Output& output) {
  if (!fHasExpressions) return;
  if (output.slot == Prediction::kNone) output.slot = fScope.Compiler().NewSlot();
  fScope.AddOutput(FieldOf(output));
  if (output.feature == Feature::kEntityId) InternEntities();
}

void OutputReader::InternEntities() {
  if (!fTable->fEntities.empty()) return;
  Value id;
  for (std::uint32_t entity = 0; entity < fBody.EntityCount(); ++entity) {
    fBody.WriteEntity(entity, id);
    fTable->fEntities.push_back(Cell::Text(fScope.Pool(), fScope.Pool().Intern(id.GetString())));
  }
}

void OutputReader::Place(Output output, const Element& element) {
  const auto [known, isNew] = fByName.emplace(output.key.Name(), fOutputs.size());
  if (isNew) {
    fOutputs.push_back(std::move(output));
    return;
  }
  Output& vocabulary = fOutputs[known->second];
  if (vocabulary.isDeclared) throw element.AttributeError("name", "stands there twice");
  if (output.key.Name() == Const::kOutputPrediction || output.key.Name() == Const::kOutputProbability) {
    vocabulary.isDeclared = true;
    fTable->fHidden.push_back(std::move(output));
  } else {
    vocabulary = std::move(output);
  }
}

}  // namespace Torvane
