#include "plugins/torvane/models/MiningReader.h"

#include <algorithm>
#include <string>

#include "components/kelparsexml/SegmentCursor.h"

namespace Torvane {
namespace {

// From this version on a median tells the probabilities of the models that gave it.
constexpr int kClarifiedVersion = 403;

// Producers wrote an attribute or a word of a later version with a prefix.
constexpr Word<bool> kMathContexts[] = {{"double", false}, {"float", true}};

std::string_view WithoutPrefix(std::string_view text) { return text.starts_with("x-") ? text.substr(2) : text; }

const char* NameOf(const Element& element, const char* attribute, const char* prefixed) {
  return element.Attribute(attribute) ? attribute : prefixed;
}

bool IsModel(const Element& child) {
  return !PredicateCompiler::IsPredicate(child) && !IsIgnorable(child) && !child.Is("VariableWeight");
}

// The one child that is a predicate, or the one that is a model.
Element OnlyChild(const Element& segment, bool (*isWanted)(const Element&), const char* what) {
  Element found;
  for (Element child = segment.FirstChild(); child; child = child.NextSibling()) {
    if (!isWanted(child)) continue;
    if (found) throw child.Error(std::string("is a second ") + what + " of its segment");
    found = child;
  }
  if (!found) throw segment.Error(std::string("has no ") + what);
  return found;
}

bool IsPredicate(const Element& child) { return PredicateCompiler::IsPredicate(child); }

}  // namespace

MiningReader::MiningReader(const Element& model, FieldScope& scope, Target& target)
    : fElement(model),
      fScope(scope),
      fTarget(target),
      fModel(std::make_unique<MiningModel>()),
      fPredicates(scope, fModel->fPredicates) {}

std::unique_ptr<MiningModel> MiningReader::Read() {
  RefuseUnknownModelChildren(fElement, {"Segmentation", "Regression", "DecisionTree"});
  fModel->fIsNumeric = fTarget.IsNumeric();
  CollectAskedOutputs();
  const Element segmentation = fElement.Child("Segmentation");
  if (segmentation) {
    ReadSegmentation(segmentation);
  } else {
    ReadComposition();
  }
  Conclude();
  return std::move(fModel);
}

// Output fields with a "segmentId" are of the segment that they name.
void MiningReader::CollectAskedOutputs() {
  fModel->fOutputsMayReadDerived = fScope.Outer() != nullptr;  // the outer ensemble's outputs may ask this one
  const Element output = fElement.Child("Output");
  for (Element field = output.Child("OutputField"); field; field = field.Next("OutputField")) {
    if (const auto id = field.Attribute("segmentId")) {
      fAsked[std::string(*id)].push_back(field);
    } else if (KelTransformNS::FindExpression(field)) {
      fModel->fOutputsMayReadDerived = true;
    }
  }
}

void MiningReader::ReadSegmentation(const Element& segmentation) {
  for (const char* composed : {"Regression", "DecisionTree"}) {
    if (fElement.Child(composed)) throw fElement.Child(composed).Error("is not supported beside a Segmentation");
  }
  RefuseUnknownChildren(segmentation, {"Segment", "LocalTransformations"});
  ReadMethod(segmentation);
  CheckMethod(segmentation);
  ReadMissingTreatment(segmentation);
  fScope.Compiler().DeclareDerivedFields(segmentation.Child("LocalTransformations"));
  ReadSegments(segmentation);
  RefuseSecond(segmentation, {"LocalTransformations"});
  CheckOrder(segmentation);
}

// A segment that comes from a stream is gone when the next one comes.
void MiningReader::ReadSegments(const Element& segmentation) {
  KelXML_1_3::SegmentCursor cursor(segmentation, fScope.GetDocument().stream);
  for (Element segment = cursor.Next(); segment; segment = cursor.Next()) ReadSegment(segment);
  if (fModel->fSegments.empty()) throw segmentation.Error("has no Segment");
}

// What stands behind the segments may not have been read when they were built.
void MiningReader::CheckOrder(const Element& segmentation) const {
  RefuseUnknownModelChildren(fElement, {"Segmentation"});
  RefuseUnknownChildren(segmentation, {"Segment", "LocalTransformations"});
  for (Element child = segmentation.NextSibling(); child; child = child.NextSibling()) {
    for (const char* name : {"MiningSchema", "Output", "Targets", "LocalTransformations", "Segmentation"}) {
      if (child.Is(name)) throw child.Error("stands behind the Segmentation");
    }
  }
}

void MiningReader::ReadMethod(const Element& segmentation) {
  struct Entry {
    std::string_view word;
    Method method;
    bool isWeighted;
  };
  static constexpr Entry kMethods[] = {
      {"majorityVote", Method::kMajorityVote, false},
      {"weightedMajorityVote", Method::kMajorityVote, true},
      {"average", Method::kAverage, false},
      {"weightedAverage", Method::kAverage, true},
      {"median", Method::kMedian, false},
      {"weightedMedian", Method::kMedian, true},
      {"max", Method::kMax, false},
      {"sum", Method::kSum, false},
      {"weightedSum", Method::kSum, true},
      {"selectFirst", Method::kSelectFirst, false},
      {"selectAll", Method::kSelectAll, false},
      {"modelChain", Method::kModelChain, false},
  };
  const std::string_view word = WithoutPrefix(segmentation.Required("multipleModelMethod"));
  const auto* const found =
      std::find_if(std::begin(kMethods), std::end(kMethods), [&](const Entry& entry) { return entry.word == word; });
  if (found == std::end(kMethods)) {
    std::string known;
    for (const Entry& entry : kMethods) known += (known.empty() ? "" : ", ") + std::string(entry.word);
    ThrowUnknownWord(segmentation, "multipleModelMethod", known);
  }
  fModel->fMethod = found->method;
  fModel->fIsWeighted = found->isWeighted;
  // One producer whose trees add up in single precision says so.
  fModel->fIsSinglePrecision = ReadWord(fElement, "x-mathContext", kMathContexts, false);
  fModel->fTellsWinnersShares = fScope.GetDocument().version >= kClarifiedVersion;
}

void MiningReader::CheckMethod(const Element& segmentation) const {
  const Method method = fModel->fMethod;
  const bool isVote = method == Method::kMajorityVote;
  const bool isOfNumbers = method == Method::kSum || (method == Method::kMedian && fModel->fIsWeighted);
  const bool isOfShares = method == Method::kMax;
  const bool isOfBoth = method == Method::kAverage || method == Method::kMedian;
  const bool isNumeric = fTarget.IsNumeric();
  const bool isClustering = fTarget.Function() == MiningFunction::kClustering;
  const bool isMeaningful = !(isVote && isNumeric) && !(isOfNumbers && !isNumeric) && !(isOfShares && isNumeric) &&
                            !((isOfShares || isOfBoth) && isClustering);
  if (!isMeaningful) {
    throw segmentation.AttributeError("multipleModelMethod", "has no meaning for the function of its model");
  }
  if (method == Method::kSelectAll && fTarget.Adjusts()) {
    throw segmentation.AttributeError("multipleModelMethod", "gives results that Targets can't adjust");
  }
  if (method == Method::kSelectAll && fScope.Outer() != nullptr) {
    throw segmentation.AttributeError("multipleModelMethod", "gives no result that an ensemble could use");
  }
}

void MiningReader::ReadMissingTreatment(const Element& segmentation) {
  static constexpr Word<MissingTreatment> kTreatments[] = {{"continue", MissingTreatment::kContinue},
                                                           {"skipSegment", MissingTreatment::kSkipSegment},
                                                           {"returnMissing", MissingTreatment::kReturnMissing}};
  const char* const treatment = NameOf(segmentation, "missingPredictionTreatment", "x-missingPredictionTreatment");
  const char* const threshold = NameOf(segmentation, "missingThreshold", "x-missingThreshold");
  fModel->fMissingTreatment = ReadWord(segmentation, treatment, kTreatments, MissingTreatment::kContinue);
  fModel->fMissingThreshold = ReadFinite(segmentation, threshold).value_or(1.0);
  if (fModel->fMissingThreshold < 0.0 || fModel->fMissingThreshold > 1.0) {
    throw segmentation.AttributeError(threshold, "isn't between 0 and 1");
  }
}

void MiningReader::ReadSegment(const Element& element) {
  AddId(element);
  Segment segment;
  const Element predicate = OnlyChild(element, IsPredicate, "predicate");
  SeparateDerivedFields(predicate);
  segment.predicate = fPredicates.Compile(predicate);
  ReadWeight(element, segment);
  if (!fComputesAtOnce) segment.derivedSlots = fScope.TakeDerivedSlots();
  const auto asked = fAsked.find(fModel->fIds.back());
  AddModel(OnlyChild(element, IsModel, "model"), asked == fAsked.end() ? std::vector<Element>() : asked->second,
           std::move(segment));
}

// While all segments take part in each record and none has outputs, which a derived field might use, the ensemble
// computes the fields of all of them together. From the first other segment on each computes those that are new.
void MiningReader::SeparateDerivedFields(const Element& predicate) {
  const bool atOnce = fComputesAtOnce && predicate.Is("True") && fModel->fMethod != Method::kSelectFirst &&
                      fScope.SegmentOutputs().empty();
  if (fComputesAtOnce && !atOnce && !fModel->fSegments.empty()) {
    Segment& first = fModel->fSegments.front();
    first.derived = fScope.Compiler().Finish();
    first.hasDerived = !first.derived.IsEmpty();
    first.derivedSlots = fScope.TakeDerivedSlots();
  }
  fComputesAtOnce = atOnce;
}

// Without an identifier a segment has its position, from 1 on.
void MiningReader::AddId(const Element& element) {
  const std::optional<std::string_view> id = element.Attribute("id");
  std::string known = id ? std::string(*id) : std::to_string(fModel->fSegments.size() + 1);
  if (!fKnownIds.emplace(known, true).second) {
    throw element.Error("has the identifier " + Quoted(known) + " of another one");
  }
  fModel->fIds.push_back(std::move(known));
}

void MiningReader::ReadWeight(const Element& element, Segment& segment) {
  segment.weight = ReadFinite(element, "weight").value_or(1.0);
  if (segment.weight < 0.0) throw element.AttributeError("weight", "is below 0");
  const Element variable = element.Child("VariableWeight");
  if (!variable) return;
  RefuseUnknownChildren(variable, {});
  if (variable.Next("VariableWeight")) throw variable.Next("VariableWeight").Error("is a second one of its segment");
  segment.weightSlot = fScope.ResolveNumeric(variable.Required("field"), variable).slot;
}

void MiningReader::AddModel(const Element& element, const std::vector<Element>& asked, Segment segment) {
  segment.model = CompiledModel::BuildMember(element, fScope, asked);
  CheckFunction(element, segment);
  segment.givesResult = PredictsTheSame(segment);
  if (segment.givesResult && !fTarget.IsNumeric()) segment.MapCategories(element, fTarget);
  if (!fComputesAtOnce) {
    segment.derived = fScope.Compiler().Finish();
    segment.hasDerived = !segment.derived.IsEmpty();
  }
  fModel->fPartNumbers = std::max(fModel->fPartNumbers, segment.model->NumberCount());
  fModel->fSegments.push_back(std::move(segment));
}

// Models of a chain, but for the last, may predict something else.
bool MiningReader::PredictsTheSame(const Segment& segment) const {
  const Target& target = segment.model->GetTarget();
  if (target.Function() != fTarget.Function()) return false;
  const bool isNamed = !target.Name().empty() && !fTarget.Name().empty();
  return fModel->fMethod != Method::kModelChain || !isNamed || target.Name() == fTarget.Name();
}

void MiningReader::CheckFunction(const Element& element, const Segment& segment) const {
  if (fModel->fMethod == Method::kModelChain) return;
  if (segment.model->GetTarget().Function() != fTarget.Function()) {
    throw element.AttributeError("functionName", "isn't that of the ensemble");
  }
  const bool needsShares =
      !fTarget.IsNumeric() &&
      (fModel->fMethod == Method::kAverage || fModel->fMethod == Method::kMedian || fModel->fMethod == Method::kMax);
  if (needsShares && !segment.model->Body().GivesProbabilities()) {
    throw element.Error("gives no probabilities, which its ensemble combines");
  }
}

// Models without a segment each: they run one after the other, and hand on their results by "ResultField"s.
void MiningReader::ReadComposition() {
  fModel->fMethod = Method::kModelChain;
  for (Element child = fElement.FirstChild(); child; child = child.NextSibling()) {
    if (!IsComposed(child)) continue;
    Segment segment;
    segment.predicate.kind = TestKind::kAlways;
    fComputesAtOnce = false;
    fModel->fIds.push_back(std::to_string(fModel->fSegments.size() + 1));
    AddModel(child, {}, std::move(segment));
  }
  if (fModel->fSegments.empty()) throw fElement.Error("has no model");
}

bool MiningReader::IsSelection() const noexcept {
  return fModel->fMethod == Method::kSelectFirst || fModel->fMethod == Method::kModelChain;
}

// The last model gives the result, whatever its target is called.
void MiningReader::ConcludeChain() {
  Segment& last = fModel->fSegments.back();
  if (last.givesResult) return;
  if (last.model->GetTarget().Function() != fTarget.Function()) {
    throw fElement.AttributeError("functionName", "isn't that of its last model");
  }
  last.givesResult = true;
  if (!fTarget.IsNumeric()) last.MapCategories(fElement, fTarget);
}

void MiningReader::Conclude() {
  MiningModel& model = *fModel;
  ConcludeChain();
  model.fOutputSlots = fScope.SegmentSlots();
  const auto gives = [&](auto question) {
    return std::all_of(model.fSegments.begin(), model.fSegments.end(), [&](const Segment& segment) {
      return !segment.givesResult || (segment.model->Body().*question)();
    });
  };
  const bool isClassification = fTarget.Function() == MiningFunction::kClassification;
  model.fGivesProbabilities = isClassification && model.fMethod != Method::kSelectAll &&
                              (!IsSelection() || gives(&ModelBody::GivesProbabilities));
  model.fGivesConfidences = isClassification && IsSelection() && gives(&ModelBody::GivesConfidences);
  model.fCategoryCount = static_cast<std::uint32_t>(fTarget.Categories().size());
  const std::size_t count = model.fSegments.size();
  const bool comparesShares = model.fMethod == Method::kMedian || model.fMethod == Method::kMax;
  if (model.fIsNumeric && !IsSelection()) model.fOwnNumbers = 2 * count;
  if (!model.fIsNumeric && comparesShares) model.fOwnNumbers = count * (model.fCategoryCount + 1);
  model.fSegments.shrink_to_fit();
  LayOutTrees();
}

// Where all segments are trees that do nothing but split by numbers, and take part in each record.
void MiningReader::LayOutTrees() {
  MiningModel& model = *fModel;
  const bool isSum = model.fMethod == Method::kSum || model.fMethod == Method::kAverage;
  if (!isSum && model.fMethod != Method::kMajorityVote) return;
  std::vector<TreeEnsemble::Member> members;
  double weights = 0.0;
  for (const Segment& segment : model.fSegments) {
    const bool isPlain = segment.predicate.kind == TestKind::kAlways && segment.weightSlot == Prediction::kNone &&
                         segment.derivedSlots.empty() && !segment.hasDerived;
    if (!isPlain) return;
    const double weight = model.fIsWeighted ? segment.weight : 1.0;
    members.push_back({dynamic_cast<const TreeModel*>(segment.model->BareBody()), weight, &segment.categories});
    weights += weight;
  }
  if (weights == 0.0) return;
  const auto result = model.fIsNumeric ? TreeEnsemble::Result::kNumber
                                       : (isSum ? TreeEnsemble::Result::kShares : TreeEnsemble::Result::kVote);
  model.fTrees = TreeEnsemble::TryBuild(members, result, model.fIsSinglePrecision);
  model.fTreeWeight = weights;
  if (model.fTrees) model.fOwnNumbers = std::max(model.fOwnNumbers, model.fTrees->ScratchCount());
}

}  // namespace Torvane
