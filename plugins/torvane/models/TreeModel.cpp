#include "plugins/torvane/models/TreeModel.h"

#include <algorithm>

#include "scoring/common/KelScoringConst.h"

namespace Torvane {

using KelTransformNS::Cell;

std::span<const KindOutput> TreeModel::KindOutputs() const noexcept {
  static constexpr KindOutput kOutputs[] = {{KelScoring_20::KelScoringConst::kOutputTreeNodeid, Feature::kEntityId}};
  return kOutputs;
}

void TreeModel::Evaluate(KelTransformNS::Frame cells, Prediction& prediction) const {
  const Cell* const frame = cells.data();
  bool surrogateUsed = false;
  const Node& root = fNodes[0];
  const bool isAlways = root.Kind() == TestKind::kAlways;
  if (!isAlways && fPredicates.Evaluate(root.ToTest(), frame, surrogateUsed) != Truth::kTrue) return;
  const std::uint32_t node = FollowSplits(0, frame);
  const Node& reached = fNodes[node];
  if (reached.isInner) return Descend(node, frame, prediction);
  if (fIsClassification || reached.result == kNoResult) return Conclude(node, 1.0, prediction);
  prediction.entity = node;
  prediction.outcome = Outcome::kValue;
  prediction.number = fScores[reached.result];
}

// What the usual step doesn't serve: any predicate, any strategy.
void TreeModel::Descend(std::uint32_t node, const Cell* frame, Prediction& prediction) const {
  double penalty = 1.0;
  while (fNodes[node].isInner) {
    std::uint32_t child = 0;
    bool surrogateUsed = false;
    const Found found = FindChild(node, frame, child, surrogateUsed);
    if (found == Found::kTrue) {
      if (surrogateUsed) penalty *= fPenalty;
      node = FollowSplits(child, frame);
      continue;
    }
    if (found == Found::kNothing) {
      if (fReturnsLast) Conclude(node, penalty, prediction);
      return;
    }
    switch (fMissingStrategy) {
      case MissingStrategy::kLastPrediction:
        return Conclude(node, penalty, prediction);
      case MissingStrategy::kDefaultChild:
        if (fDefaultChildren[node] == 0) return;
        node = FollowSplits(fDefaultChildren[node], frame);
        penalty *= fPenalty;
        continue;
      case MissingStrategy::kWeightedConfidence:
        return MixConfidences(node, penalty, frame, prediction);
      case MissingStrategy::kAggregateNodes:
        return AggregateNodes(node, penalty, frame, prediction);
      default:
        return;
    }
  }
  Conclude(node, penalty, prediction);
}

void TreeModel::Node::SetTest(const Test& test) noexcept {
  number = test.number;
  slot = test.slot;
  operand = test.operand;
  kind = static_cast<std::uint32_t>(test.kind) & 0x1FU;
}

// The usual step: of two children one takes the numbers up to a limit and the other one those above. Ends where
// something else must be looked at: at a leaf, another kind of predicate, or a missing value.
std::uint32_t TreeModel::FollowSplits(std::uint32_t node, const Cell* frame) const noexcept {
  const Node* const nodes = fNodes.data();
  const Node* at = nodes + node;
  while (at->isSplit) {
    const Node* const first = at + 1;
    const Cell& cell = frame[first->slot];
    if (cell.state != Cell::kNumber) break;
    const std::uint32_t isBelow = cell.number <= first->number ? 1 : 0;
    at = isBelow == at->firstTakesBelow ? first : nodes + first->nextSibling;
  }
  return static_cast<std::uint32_t>(at - nodes);
}

// The first child that is true, or the first that is unknown if that comes before; with the strategy "none" an unknown
// child is passed over.
TreeModel::Found TreeModel::FindChild(std::uint32_t node, const Cell* frame, std::uint32_t& child,
                                      bool& surrogateUsed) const {
  for (child = node + 1; child != 0; child = fNodes[child].nextSibling) {
    bool used = false;
    const Truth truth = fPredicates.Evaluate(fNodes[child].ToTest(), frame, used);
    if (truth == Truth::kTrue) {
      surrogateUsed = used;
      return Found::kTrue;
    }
    if (truth == Truth::kUnknown && fMissingStrategy != MissingStrategy::kNone) return Found::kUnknown;
  }
  return Found::kNothing;
}

// A leaf that says nothing is invalid; an inner node, which is asked as the last resort, has no prediction then.
void TreeModel::Conclude(std::uint32_t node, double penalty, Prediction& prediction) const noexcept {
  const Node& final = fNodes[node];
  prediction.entity = node;
  if (final.result == kNoResult) {
    prediction.outcome = final.isInner ? Outcome::kMissing : Outcome::kInvalid;
    return;
  }
  prediction.outcome = Outcome::kValue;
  if (!fIsClassification) {
    prediction.number = fScores[final.result];
    return;
  }
  prediction.category = final.result;
  if (prediction.wantsDistribution) FillDistribution(node, penalty, prediction);
}

void TreeModel::FillDistribution(std::uint32_t node, double penalty, Prediction& prediction) const noexcept {
  std::fill_n(prediction.probabilities, fCategoryCount, 0.0);
  std::fill_n(prediction.confidences, fCategoryCount, 0.0);
  AddDistribution({node, 1.0, penalty}, prediction);
  prediction.hasProbabilities = true;
  prediction.hasConfidences = true;
}

// A node without a distribution is sure of its score. The penalty is for confidences only.
void TreeModel::AddDistribution(const Branch& branch, Prediction& prediction) const noexcept {
  const std::uint32_t begin = fFirstEntry.empty() ? 0 : fFirstEntry[branch.node];
  const std::uint32_t end = fFirstEntry.empty() ? 0 : fFirstEntry[branch.node + 1];
  const std::uint32_t result = fNodes[branch.node].result;
  if (begin == end && result != kNoResult) {
    prediction.probabilities[result] += branch.weight;
    prediction.confidences[result] += branch.weight * branch.penalty;
  }
  const std::vector<double>& confidences = fConfidences.empty() ? fProbabilities : fConfidences;
  const std::uint32_t* categories = CategoriesFrom(begin);
  for (std::uint32_t entry = begin; entry < end; ++entry) {
    const std::uint32_t category = *categories++;
    prediction.probabilities[category] += branch.weight * fProbabilities[entry];
    prediction.confidences[category] += branch.weight * confidences[entry] * branch.penalty;
  }
}

// Goes down from a node one of whose children is unknown: a true child alone, or from the first unknown one on all
// that aren't false, each with its share of the parent's records. `reach` gets the nodes at which this ends, in
// document order.
template <typename Reach>
void TreeModel::FollowUnknown(std::uint32_t node, double penalty, const Cell* frame, Reach&& reach) const {
  thread_local std::vector<Branch> branches;  // keeps its memory from record to record
  branches.assign(1, {node, 1.0, penalty});
  while (!branches.empty()) {
    const Branch branch = branches.back();
    branches.pop_back();
    std::uint32_t child = 0;
    bool surrogateUsed = false;
    const Found found =
        fNodes[branch.node].isInner ? FindChild(branch.node, frame, child, surrogateUsed) : Found::kNothing;
    if (found == Found::kNothing) {
      if (fNodes[branch.node].isInner && !fReturnsLast) continue;
      reach(branch);
    } else if (found == Found::kTrue) {
      branches.push_back({child, branch.weight, branch.penalty * (surrogateUsed ? fPenalty : 1.0)});
    } else {
      const std::size_t first = branches.size();
      for (; child != 0; child = fNodes[child].nextSibling) {
        if (fPredicates.Evaluate(fNodes[child].ToTest(), frame, surrogateUsed) == Truth::kFalse) continue;
        const double share = fRecordCounts.empty() ? 1.0 : fRecordCounts[child] / fRecordCounts[branch.node];
        branches.push_back({child, branch.weight * share, branch.penalty});
      }
      std::reverse(branches.begin() + static_cast<std::ptrdiff_t>(first), branches.end());
    }
  }
}

// confidence[c] = sum over the children that aren't false of confidence_child[c] * records_child / records_parent, and
// so for the children of the children. A false child is left out, so the sums may stay below 1. If they all are 0, no
// category is better than another.
void TreeModel::MixConfidences(std::uint32_t node, double penalty, const Cell* frame, Prediction& prediction) const {
  std::fill_n(prediction.probabilities, fCategoryCount, 0.0);
  std::fill_n(prediction.confidences, fCategoryCount, 0.0);
  bool leafIsEmpty = false;
  const auto add = [&](const Branch& branch) {
    const Node& reached = fNodes[branch.node];
    leafIsEmpty = leafIsEmpty || (!reached.isInner && reached.result == kNoResult);
    AddDistribution(branch, prediction);
  };
  FollowUnknown(node, penalty, frame, add);
  const std::uint32_t best = BestCategory(prediction.confidences);
  if (!(prediction.confidences[best] > 0.0)) {
    if (leafIsEmpty) prediction.outcome = Outcome::kInvalid;
    return;
  }
  prediction.outcome = Outcome::kValue;
  prediction.category = best;
  prediction.entity = node;
  prediction.hasProbabilities = true;
  prediction.hasConfidences = true;
}

// The records of all leaves that can be reached are added up by category. Shares of the sum are the probability; for
// the confidence each leaf's records count less by the penalties on the way to it.
void TreeModel::AggregateNodes(std::uint32_t node, double penalty, const Cell* frame, Prediction& prediction) const {
  double* const counts = prediction.probabilities;
  double* const reduced = prediction.confidences;
  std::fill_n(counts, fCategoryCount, 0.0);
  std::fill_n(reduced, fCategoryCount, 0.0);
  double total = 0.0;
  const auto add = [&](const Branch& branch) {
    const std::uint32_t* categories = CategoriesFrom(fFirstEntry[branch.node]);
    for (std::uint32_t entry = fFirstEntry[branch.node]; entry < fFirstEntry[branch.node + 1]; ++entry) {
      const std::uint32_t category = *categories++;
      counts[category] += fEntryCounts[entry];
      reduced[category] += fEntryCounts[entry] * branch.penalty;
      total += fEntryCounts[entry];
    }
  };
  FollowUnknown(node, penalty, frame, add);
  if (total <= 0.0) return;
  prediction.outcome = Outcome::kValue;
  prediction.category = BestCategory(counts);
  prediction.entity = node;
  for (std::uint32_t i = 0; i < fCategoryCount; ++i) {
    prediction.probabilities[i] = counts[i] / total;
    prediction.confidences[i] = reduced[i] / total;
  }
  prediction.hasProbabilities = true;
  prediction.hasConfidences = true;
}

// The first one on a tie.
std::uint32_t TreeModel::BestCategory(const double* figures) const noexcept {
  return static_cast<std::uint32_t>(std::max_element(figures, figures + fCategoryCount) - figures);
}

}  // namespace Torvane
