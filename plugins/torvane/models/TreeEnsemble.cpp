#include "plugins/torvane/models/TreeEnsemble.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <utility>

#include "plugins/torvane/models/TreeLayout.h"

namespace Torvane {

using KelTransformNS::Cell;

namespace {

// Numbers the features and leaves of all trees.
class PlainTreesBuilder {
 public:
  void Add(const TreeModel& tree);
  PlainTrees trees;
  std::vector<std::uint32_t> slots;
  std::vector<std::pair<std::uint32_t, std::uint32_t>> leaves;  // tree and node of each

 private:
  std::uint32_t FeatureOf(std::uint32_t slot);

  std::unordered_map<std::uint32_t, std::uint32_t> fFeatures;
};

std::uint32_t PlainTreesBuilder::FeatureOf(std::uint32_t slot) {
  const auto [known, isNew] = fFeatures.emplace(slot, static_cast<std::uint32_t>(slots.size()));
  if (isNew) slots.push_back(slot);
  return known->second;
}

// Depth first, the child below before the one above, so that leaves get their numbers from the lowest on.
void PlainTreesBuilder::Add(const TreeModel& tree) {
  constexpr std::uint32_t kNoParent = Prediction::kNone;
  struct Open {
    std::uint32_t node;
    std::uint32_t depth;
    std::uint32_t parent;  // which wants to know the node's position
    bool isBelow;
  };
  const auto index = static_cast<std::uint32_t>(trees.trees.size());
  PlainTrees::Tree& told =
      trees.trees.emplace_back(PlainTrees::Tree{static_cast<std::uint32_t>(trees.nodes.size()), trees.leafCount, 0, 0});
  std::vector<Open> open{{0, 0, kNoParent, false}};
  while (!open.empty()) {
    const Open at = open.back();
    open.pop_back();
    const auto position = static_cast<std::uint32_t>(trees.nodes.size());
    if (at.parent != kNoParent) (at.isBelow ? trees.nodes[at.parent].below : trees.nodes[at.parent].above) = position;
    PlainTrees::Node& node = trees.nodes.emplace_back();
    told.depth = std::max(told.depth, at.depth);
    node.isLeaf = tree.IsLeaf(at.node);
    if (node.isLeaf) {
      node.leaf = trees.leafCount++;
      leaves.emplace_back(index, at.node);
      continue;
    }
    const TreeModel::Split split = tree.SplitOf(at.node);
    node.feature = FeatureOf(split.slot);
    node.limit = split.limit;
    open.push_back({split.above, at.depth + 1, position, false});
    open.push_back({split.below, at.depth + 1, position, true});
  }
  told.leafCount = trees.leafCount - told.firstLeaf;
  trees.featureCount = static_cast<std::uint32_t>(slots.size());
}

double Rounded(double number, bool isSinglePrecision) noexcept {
  return isSinglePrecision ? static_cast<double>(static_cast<float>(number)) : number;
}

bool HasTwice(const std::vector<std::pair<std::uint32_t, double>>& shares) {
  for (std::size_t i = 1; i < shares.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (shares[i].first == shares[j].first) return true;
    }
  }
  return false;
}

}  // namespace

std::unique_ptr<const TreeEnsemble> TreeEnsemble::TryBuild(const std::vector<Member>& members, Result result,
                                                           bool isSinglePrecision) {
  PlainTreesBuilder builder;
  for (const Member& member : members) {
    if (member.tree == nullptr || !member.tree->HasPlainSplits()) return nullptr;
  }
  for (const Member& member : members) builder.Add(*member.tree);
  std::unique_ptr<TreeEnsemble> ensemble(new TreeEnsemble);
  ensemble->fTreeCount = members.size();
  ensemble->fSlots = std::move(builder.slots);
  ensemble->fIsSinglePrecision = isSinglePrecision;
  for (const auto& [index, leaf] : builder.leaves) {
    const Member& member = members[index];
    if (result == Result::kNumber) {
      const double score = member.tree->ScoreOf(leaf);
      if (std::isnan(score)) return nullptr;  // such a leaf ends the whole ensemble
      ensemble->fFigures.push_back(
          Rounded(Rounded(member.weight, isSinglePrecision) * Rounded(score, isSinglePrecision), isSinglePrecision));
      continue;
    }
    const std::vector<std::uint32_t>& categories = *member.categories;
    std::vector<std::pair<std::uint32_t, double>> shares = {{member.tree->CategoryOf(leaf), 1.0}};
    if (result == Result::kShares) shares = member.tree->SharesOf(leaf);
    if (HasTwice(shares)) return nullptr;
    ensemble->fFirstEntry.push_back(static_cast<std::uint32_t>(ensemble->fFigures.size()));
    for (const auto& [category, share] : shares) {
      ensemble->fCategories.push_back(categories.empty() ? category : categories[category]);
      ensemble->fFigures.push_back(member.weight * share);
    }
  }
  if (result != Result::kNumber) ensemble->fFirstEntry.push_back(static_cast<std::uint32_t>(ensemble->fFigures.size()));
  ensemble->fFigures.shrink_to_fit();
  ensemble->fFirstEntry.shrink_to_fit();
  ensemble->fCategories.shrink_to_fit();
  ensemble->fFinder = TryMakeMaskedTrees(builder.trees);
  if (ensemble->fFinder == nullptr) ensemble->fFinder = MakeWalkedTrees(builder.trees);
  return ensemble;
}

bool TreeEnsemble::FindLeaves(const Cell* frame, double* scratch, const std::uint32_t*& leaves) const noexcept {
  bool hasAll = true;
  for (std::size_t i = 0; i < fSlots.size(); ++i) {
    const Cell& cell = frame[fSlots[i]];
    hasAll = hasAll && cell.state == Cell::kNumber;
    scratch[i] = cell.number;
  }
  if (!hasAll) return false;
  auto* const found = reinterpret_cast<std::uint32_t*>(scratch + fSlots.size());
  fFinder->Find(scratch, found);
  leaves = found;
  return true;
}

bool TreeEnsemble::Sum(const Cell* frame, double* scratch, double& sum) const noexcept {
  const std::uint32_t* leaves = nullptr;
  if (!FindLeaves(frame, scratch, leaves)) return false;
  const double* const figures = fFigures.data();
  if (fIsSinglePrecision) {
    float narrow = 0.0F;
    for (std::size_t tree = 0; tree < fTreeCount; ++tree) narrow += static_cast<float>(figures[leaves[tree]]);
    sum = narrow;
    return true;
  }
  double wide = 0.0;
  for (std::size_t tree = 0; tree < fTreeCount; ++tree) wide += figures[leaves[tree]];
  sum = wide;
  return true;
}

bool TreeEnsemble::AddUp(const Cell* frame, double* scratch, double* sums) const noexcept {
  const std::uint32_t* leaves = nullptr;
  if (!FindLeaves(frame, scratch, leaves)) return false;
  for (std::size_t tree = 0; tree < fTreeCount; ++tree) {
    const std::uint32_t end = fFirstEntry[leaves[tree] + 1];
    for (std::uint32_t entry = fFirstEntry[leaves[tree]]; entry < end; ++entry) {
      sums[fCategories[entry]] += fFigures[entry];
    }
  }
  return true;
}

}  // namespace Torvane
