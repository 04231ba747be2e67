#include <algorithm>
#include <bit>
#include <numeric>

#include "plugins/torvane/models/PlainTrees.h"

namespace Torvane {
namespace {

// So many walks fit into the registers, and are enough to hide the latency of the second cache level.
constexpr std::size_t kLanes = 8;

// The child for features above the limit stands behind the one for the others. At a leaf the distance is 0 and the
// limit is no number, so that no feature is above it; its bits hold the number of the leaf.
struct Step {
  double limit;
  std::uint32_t distance;  // from this node to the child below
  std::uint32_t feature;
};

constexpr std::uint64_t kNoNumber = 0x7FF8000000000000;

Step LeafStep(std::uint32_t leaf) noexcept { return {std::bit_cast<double>(kNoNumber | leaf), 0, 0}; }
std::uint32_t LeafOf(const Step& step) noexcept {
  return static_cast<std::uint32_t>(std::bit_cast<std::uint64_t>(step.limit));
}

class WalkedTrees final : public LeafFinder {
 public:
  explicit WalkedTrees(const PlainTrees& trees);
  void Find(const double* features, std::uint32_t* leaves) const noexcept override;

 private:
  void AddTree(const PlainTrees& trees, const PlainTrees::Tree& tree);
  void FindOne(const double* features, std::size_t place, std::uint32_t* leaves) const noexcept;

  std::vector<Step> fSteps;
  std::vector<std::uint32_t> fRoots;  // in the order of the walks, which is by depth, so that lanes end together
  std::vector<std::uint32_t> fTrees;  // the tree of each walk
};

WalkedTrees::WalkedTrees(const PlainTrees& trees) {
  fSteps.reserve(trees.nodes.size());
  fTrees.resize(trees.trees.size());
  std::iota(fTrees.begin(), fTrees.end(), 0U);
  std::stable_sort(fTrees.begin(), fTrees.end(),
                   [&](std::uint32_t a, std::uint32_t b) { return trees.trees[a].depth < trees.trees[b].depth; });
  for (const std::uint32_t tree : fTrees) AddTree(trees, trees.trees[tree]);
}

// Breadth first: the upper levels, which each record visits, share cache lines.
void WalkedTrees::AddTree(const PlainTrees& trees, const PlainTrees::Tree& tree) {
  const auto root = static_cast<std::uint32_t>(fSteps.size());
  fRoots.push_back(root);
  std::vector<std::uint32_t> nodes{tree.firstNode};
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    const PlainTrees::Node& node = trees.nodes[nodes[i]];
    const auto position = static_cast<std::uint32_t>(fSteps.size());
    if (node.isLeaf) {
      fSteps.push_back(LeafStep(node.leaf));
      continue;
    }
    const auto child = root + static_cast<std::uint32_t>(nodes.size());
    fSteps.push_back({node.limit, child - position, node.feature});
    nodes.push_back(node.below);
    nodes.push_back(node.above);
  }
}

void WalkedTrees::Find(const double* features, std::uint32_t* leaves) const noexcept {
  const Step* const steps = fSteps.data();
  std::size_t place = 0;
  for (; place + kLanes <= fRoots.size(); place += kLanes) {
    std::uint32_t at[kLanes];
    for (std::size_t lane = 0; lane < kLanes; ++lane) at[lane] = fRoots[place + lane];
    std::uint32_t moved = 1;
    while (moved != 0) {
      moved = 0;
      for (std::size_t lane = 0; lane < kLanes; ++lane) {
        const Step& step = steps[at[lane]];
        moved |= step.distance;
        at[lane] += step.distance + static_cast<std::uint32_t>(features[step.feature] > step.limit);
      }
    }
    for (std::size_t lane = 0; lane < kLanes; ++lane) leaves[fTrees[place + lane]] = LeafOf(steps[at[lane]]);
  }
  for (; place < fRoots.size(); ++place) FindOne(features, place, leaves);
}

void WalkedTrees::FindOne(const double* features, std::size_t place, std::uint32_t* leaves) const noexcept {
  std::uint32_t at = fRoots[place];
  while (fSteps[at].distance != 0) {
    at += fSteps[at].distance + static_cast<std::uint32_t>(features[fSteps[at].feature] > fSteps[at].limit);
  }
  leaves[fTrees[place]] = LeafOf(fSteps[at]);
}

}  // namespace

std::unique_ptr<const LeafFinder> MakeWalkedTrees(const PlainTrees& trees) {
  return std::make_unique<WalkedTrees>(trees);
}

}  // namespace Torvane
