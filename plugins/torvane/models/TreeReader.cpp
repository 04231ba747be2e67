#include "plugins/torvane/models/TreeReader.h"

#include <algorithm>
#include <cmath>
#include <unordered_set>

namespace Torvane {
namespace {

// x < t and x <= the number below t are the same, and so are x >= t and x > that number. So that a split has to look at
// one kind of comparison only, strictness moves into the limit. Infinite limits stay as they are.
void Normalize(Test& test) {
  if (!std::isfinite(test.number)) return;
  const double below = std::nextafter(test.number, -std::numeric_limits<double>::infinity());
  if (!std::isfinite(below)) return;
  if (test.kind == TestKind::kLess) {
    test.kind = TestKind::kLessOrEqual;
    test.number = below;
  } else if (test.kind == TestKind::kGreaterOrEqual) {
    test.kind = TestKind::kGreater;
    test.number = below;
  }
}

bool AreComplements(const Test& a, const Test& b) {
  const bool areOpposed = (a.kind == TestKind::kLessOrEqual && b.kind == TestKind::kGreater) ||
                          (a.kind == TestKind::kGreater && b.kind == TestKind::kLessOrEqual);
  return areOpposed && a.slot == b.slot && a.number == b.number;
}

// Counts, probabilities and confidences. Rounding may carry a probability beyond 1, so there is no upper limit.
std::optional<double> ReadShare(const Element& element, std::string_view attribute) {
  const std::optional<double> number = element.Number(attribute);
  if (number && !(*number >= 0.0 && *number <= std::numeric_limits<double>::max())) {
    throw element.AttributeError(attribute, "isn't a number from 0 on");
  }
  return number;
}

double ReadCount(const Element& element) { return ReadShare(element, "recordCount").value_or(0.0); }

}  // namespace

std::unique_ptr<ModelBody> TreeModel::Build(const Element& model, FieldScope& scope, Target& target) {
  TreeReader reader(model, scope, target);
  std::unique_ptr<TreeModel> tree = reader.Read();
  std::vector<SelectionTree::Leaf> models = reader.TakeModels();
  if (models.empty()) return tree;
  return std::make_unique<SelectionTree>(std::move(tree), std::move(models), scope.SegmentSlots(),
                                         target.Categories().size());
}

TreeReader::TreeReader(const Element& model, FieldScope& scope, Target& target)
    : fElement(model),
      fScope(scope),
      fTarget(target),
      fTree(std::make_unique<TreeModel>()),
      fPredicates(scope, fTree->fPredicates) {}

std::unique_ptr<TreeModel> TreeReader::Read() {
  fTree->fIsClassification = fTarget.Function() == MiningFunction::kClassification;
  RefuseUnknownModelChildren(fElement, {"Node"});
  ReadStrategies();
  CheckStrategies();
  ReadNodes(fElement.RequiredChild("Node"));
  if (fElement.Child("Node").Next("Node")) throw fElement.Child("Node").Next("Node").Error("is a second root");
  fTree->fCategoryCount = static_cast<std::uint32_t>(fTarget.Categories().size());
  fTree->fIds.Assign(fIds);
  Shrink();
  return std::move(fTree);
}

void TreeReader::ReadStrategies() {
  static constexpr Word<Strategy> kMissings[] = {
      {"none", Strategy::kNone},
      {"lastPrediction", Strategy::kLastPrediction},
      {"nullPrediction", Strategy::kNullPrediction},
      {"defaultChild", Strategy::kDefaultChild},
      {"weightedConfidence", Strategy::kWeightedConfidence},
      {"aggregateNodes", Strategy::kAggregateNodes},
  };
  static constexpr Word<bool> kNoTrueChilds[] = {{"returnNullPrediction", false}, {"returnLastPrediction", true}};
  static constexpr Word<int> kSplits[] = {{"binarySplit", 2}, {"multiSplit", 0}};  // without influence
  fTree->fMissingStrategy = ReadWord(fElement, "missingValueStrategy", kMissings, Strategy::kNone);
  fTree->fReturnsLast = ReadWord(fElement, "noTrueChildStrategy", kNoTrueChilds, false);
  fTree->fPenalty = ReadShare(fElement, "missingValuePenalty").value_or(1.0);
  if (fTree->fPenalty > 1.0) throw fElement.AttributeError("missingValuePenalty", "is above 1");
  (void)ReadWord(fElement, "splitCharacteristic", kSplits, 0);
}

// Both strategies speak of the confidences of categories; for numbers the standard gives them no meaning.
void TreeReader::CheckStrategies() const {
  const Strategy strategy = fTree->fMissingStrategy;
  const bool needsCategories = strategy == Strategy::kWeightedConfidence || strategy == Strategy::kAggregateNodes;
  if (needsCategories && !fTree->fIsClassification) {
    throw fElement.AttributeError("missingValueStrategy", "has no meaning for a regression");
  }
}

void TreeReader::ReadNodes(const Element& root) {
  std::vector<OpenNode> open{AddNode(root)};
  while (!open.empty()) {
    OpenNode& node = open.back();
    if (node.nextChild) {
      ReadChild(node, open);
    } else {
      MarkSplit(node.node);
      FindDefaultChild(node);
      open.pop_back();
    }
  }
  if (!fTree->fFirstEntry.empty()) {
    fTree->fFirstEntry.push_back(static_cast<std::uint32_t>(fTree->fEntryCategories.size()));
  }
}

void TreeReader::ReadChild(OpenNode& parent, std::vector<OpenNode>& open) {
  OpenNode child = AddNode(parent.nextChild);
  if (parent.lastChild != 0) fTree->fNodes[parent.lastChild].nextSibling = child.node & TreeModel::kMostNodes;
  parent.lastChild = child.node;
  parent.nextChild = parent.nextChild.Next("Node");
  open.push_back(child);  // last: `parent` lies in `open`
}

TreeReader::OpenNode TreeReader::AddNode(const Element& element) {
  if (fTree->fNodes.size() >= TreeModel::kMostNodes) throw element.Error("is one node too many");
  RefuseUnknownChildren(element, {"SimplePredicate", "CompoundPredicate", "SimpleSetPredicate", "True", "False",
                                  "Partition", "ScoreDistribution", "Node", "Regression", "DecisionTree"});
  const auto node = static_cast<std::uint32_t>(fTree->fNodes.size());
  const Element firstChild = element.Child("Node");
  fTree->fNodes.emplace_back();
  fTree->fNodes.back().isInner = firstChild ? 1 : 0;
  fIds.push_back(element.Attribute("id"));
  ReadPredicate(element);
  ReadDistribution(element);
  ReadRecordCount(element, static_cast<bool>(firstChild));
  ReadResult(element, node, static_cast<bool>(firstChild));
  AddEntries(element, static_cast<bool>(firstChild));
  ReadModels(element, node, static_cast<bool>(firstChild));
  return {node, 0, element, firstChild};
}

void TreeReader::ReadPredicate(const Element& element) {
  Test test = fPredicates.Compile(PredicateCompiler::FindIn(element));
  Normalize(test);
  fTree->fNodes.back().SetTest(test);
}

void TreeReader::ReadDistribution(const Element& element) {
  fEntries.clear();
  for (Element child = element.Child("ScoreDistribution"); child; child = child.Next("ScoreDistribution")) {
    RefuseUnknownChildren(child, {});
    const double count = ReadCount(child);
    if (!fTree->fIsClassification) continue;
    const std::uint32_t category = fTarget.AddCategory(child, "value", child.Required("value"));
    StampCategory(child, category);
    fEntries.push_back({category, count, ReadShare(child, "confidence"), ReadShare(child, "probability")});
  }
}

// Refuses a category that its node names a second time.
void TreeReader::StampCategory(const Element& distribution, std::uint32_t category) {
  const std::size_t node = fTree->fNodes.size();
  if (category >= fLastNodeOf.size()) fLastNodeOf.resize(category + 1);
  if (fLastNodeOf[category] == node) throw distribution.AttributeError("value", "stands there twice");
  fLastNodeOf[category] = node;
}

// Two strategies add up records, so that every record count that they need must be there.
void TreeReader::ReadRecordCount(const Element& element, bool isInner) {
  if (fTree->fMissingStrategy == Strategy::kWeightedConfidence) {
    const double count = element.RequiredNumber("recordCount");
    if (!std::isfinite(count) || count < 0.0 || (isInner && count == 0.0)) {
      throw element.AttributeError("recordCount", "isn't a number above 0");
    }
    fTree->fRecordCounts.push_back(count);
  }
  if (fTree->fMissingStrategy != Strategy::kAggregateNodes || isInner) return;
  for (Element child = element.Child("ScoreDistribution"); child; child = child.Next("ScoreDistribution")) {
    (void)child.RequiredNumber("recordCount");
  }
  if (fEntries.empty()) {
    const double count = element.RequiredNumber("recordCount");
    fEntries.push_back({fTarget.AddCategory(element, "score", element.Required("score")), count, 1.0, 1.0});
  }
}

// The score decides; without one the value with the most records, the first one on a tie.
void TreeReader::ReadResult(const Element& element, std::uint32_t node, bool isInner) {
  if (isInner && !InnerNodesPredict()) return;
  std::uint32_t& result = fTree->fNodes[node].result;
  if (const auto score = element.Attribute("score")) {
    result = AddScore(element, "score", *score);
  } else if (!fEntries.empty()) {
    result = fEntries[BestEntry()].category;
  } else if (!fTree->fIsClassification) {
    const Element best = MostFrequent(element);
    if (best) result = AddScore(best, "value", best.Required("value"));
  }
}

// Of a regression, the distribution of the number that most records have.
Element TreeReader::MostFrequent(const Element& node) {
  Element best;
  std::unordered_set<double> numbers;
  for (Element child = node.Child("ScoreDistribution"); child; child = child.Next("ScoreDistribution")) {
    const bool isNew = numbers.insert(child.RequiredNumber("value")).second;
    if (!isNew) throw child.AttributeError("value", "stands there twice");
    if (!best || ReadCount(child) > ReadCount(best)) best = child;
  }
  return best;
}

std::uint32_t TreeReader::AddScore(const Element& element, std::string_view what, std::string_view text) {
  if (fTree->fIsClassification) return fTarget.AddCategory(element, what, text);
  const std::optional<double> number = KelXML_1_3::ParsePmmlNumber(text);
  if (!number) throw element.AttributeError(what, "is no number");
  fTree->fScores.push_back(*number);
  return static_cast<std::uint32_t>(fTree->fScores.size() - 1);
}

// The most records, the first entry on a tie; where no records are counted, the other figures speak for them.
std::uint32_t TreeReader::BestEntry() const {
  const bool isCounted =
      std::any_of(fEntries.begin(), fEntries.end(), [](const Entry& entry) { return entry.recordCount > 0.0; });
  const auto figure = [&](const Entry& entry) {
    return isCounted ? entry.recordCount : entry.probability.value_or(entry.confidence.value_or(0.0));
  };
  const auto best = std::max_element(fEntries.begin(), fEntries.end(),
                                     [&](const Entry& a, const Entry& b) { return figure(a) < figure(b); });
  return static_cast<std::uint32_t>(best - fEntries.begin());
}

// Producers fill the figures in different measure. Probability: as given for all categories, else the share of the
// records; where all counts are 0, the confidences stand in. Confidence: as given, else the share of the node's
// records.
void TreeReader::AddEntries(const Element& element, bool isInner) {
  TreeModel& tree = *fTree;
  if (!tree.fIsClassification) return;
  if (tree.fFirstEntry.empty()) {
    if (fEntries.empty()) return;
    tree.fFirstEntry.assign(tree.fNodes.size() - 1, 0);
  }
  tree.fFirstEntry.push_back(static_cast<std::uint32_t>(tree.fEntryCategories.size()));
  if (isInner && !InnerNodesPredict()) return;
  double sum = 0.0;
  bool allGiven = true;
  for (const Entry& entry : fEntries) {
    sum += entry.recordCount;
    allGiven = allGiven && entry.probability;
  }
  const double records = ReadCount(element) > 0.0 ? ReadCount(element) : sum;
  for (const Entry& entry : fEntries) {
    const double share = records > 0.0 ? entry.recordCount / records : 0.0;
    const double probability = Probability(entry, allGiven, sum);
    const double confidence = entry.confidence.value_or(records > 0.0 ? share : probability);
    tree.fEntryCategories.push_back(entry.category);
    tree.fProbabilities.push_back(probability);
    tree.fConfidences.push_back(confidence);
    if (tree.fMissingStrategy == Strategy::kAggregateNodes) tree.fEntryCounts.push_back(entry.recordCount);
    fHasConfidences = fHasConfidences || confidence != probability;
  }
}

double TreeReader::Probability(const Entry& entry, bool allGiven, double countSum) {
  if (allGiven) return *entry.probability;
  if (countSum > 0.0) return entry.recordCount / countSum;
  return entry.probability.value_or(entry.confidence.value_or(0.0));
}

bool TreeReader::InnerNodesPredict() const {
  return fTree->fReturnsLast || fTree->fMissingStrategy == Strategy::kLastPrediction;
}

void TreeReader::ReadModels(const Element& element, std::uint32_t node, bool isInner) {
  for (Element child = element.FirstChild(); child; child = child.NextSibling()) {
    if (!IsComposed(child)) continue;
    if (isInner) throw child.Error("is not supported beside nodes");
    if (!fModels.empty() && fModels.back().node == node) throw child.Error("is a second model of its node");
    AddModel(child, node);
  }
}

// A strategy that mixes the records of several leaves knows no models.
void TreeReader::AddModel(const Element& element, std::uint32_t node) {
  const Strategy strategy = fTree->fMissingStrategy;
  if (strategy == Strategy::kWeightedConfidence || strategy == Strategy::kAggregateNodes) {
    throw element.Error("is not supported with the missingValueStrategy of its tree");
  }
  SelectionTree::Leaf& leaf = fModels.emplace_back();
  leaf.node = node;
  leaf.model = CompiledModel::BuildMember(element, fScope, {});
  if (leaf.model->GetTarget().Function() != fTarget.Function()) {
    throw element.AttributeError("functionName", "isn't that of its tree");
  }
  if (!fTarget.IsNumeric()) leaf.MapCategories(element, fTarget);
}

void TreeReader::MarkSplit(std::uint32_t node) {
  std::vector<TreeModel::Node>& nodes = fTree->fNodes;
  if (nodes[node].isInner == 0) return;
  const TreeModel::Node& first = nodes[node + 1];
  if (first.nextSibling == 0 || nodes[first.nextSibling].nextSibling != 0) return;
  if (AreComplements(first.ToTest(), nodes[first.nextSibling].ToTest())) {
    nodes[node].isSplit = 1;
    nodes[node].firstTakesBelow = first.Kind() == TestKind::kLessOrEqual ? 1 : 0;
  }
}

// A node may lack a default child: it then predicts nothing where it would be needed. One that names another node than
// a child contradicts the document.
void TreeReader::FindDefaultChild(const OpenNode& open) {
  if (fTree->fMissingStrategy != Strategy::kDefaultChild) return;
  fTree->fDefaultChildren.resize(fTree->fNodes.size());
  const std::optional<std::string_view> name = open.element.Attribute("defaultChild");
  if (!name || fTree->fNodes[open.node].isInner == 0) return;
  for (std::uint32_t child = open.node + 1; child != 0; child = fTree->fNodes[child].nextSibling) {
    if (fIds[child] != name) continue;
    fTree->fDefaultChildren[open.node] = child;
    return;
  }
  throw open.element.AttributeError("defaultChild", "isn't the id of a child");
}

// Most producers list all categories at each node, in one order. One list then serves all.
void TreeReader::ShareCategories() {
  TreeModel& tree = *fTree;
  std::vector<std::uint32_t> shared;
  for (std::size_t node = 0; node + 1 < tree.fFirstEntry.size(); ++node) {
    const auto begin = tree.fEntryCategories.begin() + tree.fFirstEntry[node];
    const auto end = tree.fEntryCategories.begin() + tree.fFirstEntry[node + 1];
    if (begin == end) continue;
    if (shared.empty()) shared.assign(begin, end);
    if (!std::equal(begin, end, shared.begin(), shared.end())) return;
  }
  tree.fEntryCategories = std::move(shared);
  tree.fListsSameCategories = true;
}

void TreeReader::Shrink() {
  TreeModel& tree = *fTree;
  if (!fHasConfidences) tree.fConfidences = {};
  ShareCategories();
  tree.fNodes.shrink_to_fit();
  tree.fScores.shrink_to_fit();
  tree.fFirstEntry.shrink_to_fit();
  tree.fEntryCategories.shrink_to_fit();
  tree.fProbabilities.shrink_to_fit();
  tree.fConfidences.shrink_to_fit();
  tree.fEntryCounts.shrink_to_fit();
  tree.fRecordCounts.shrink_to_fit();
  tree.fDefaultChildren.shrink_to_fit();
}

}  // namespace Torvane
