#include <algorithm>
#include <limits>
#include <numeric>

#include "plugins/torvane/models/PlainTrees.h"

namespace Torvane {
namespace {

// So many walks fit into the registers, and are enough to hide the latency of the second cache level.
constexpr std::size_t kLanes = 8;

// The child for numbers above the limit stands behind the one for the others. At a leaf no number is above the limit,
// and the distance is 0.
struct Step {
  double limit;
  std::uint32_t distance;  // from this node to the child below
  std::uint32_t feature;
};

class WalkedTrees final : public LeafFinder {
 public:
  explicit WalkedTrees(const PlainTrees& trees);
  void Find(const double* features, std::uint32_t* leaves) const noexcept override;

 private:
  void AddTree(const PlainTrees& trees, const PlainTrees::Tree& tree);
  void FindOne(const double* features, std::size_t place, std::uint32_t* leaves) const noexcept;

  std::vector<Step> fSteps;
  std::vector<std::uint32_t> fLeaves;  // the number of the leaf at each node
  std::vector<std::uint32_t> fRoots;   // in the order of the walks, which is by depth, so that lanes end together
  std::vector<std::uint32_t> fTrees;   // the tree of each walk
};

WalkedTrees::WalkedTrees(const PlainTrees& trees) {
  fSteps.reserve(trees.nodes.size());
  fLeaves.reserve(trees.nodes.size());
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
    fLeaves.push_back(node.leaf);
    if (node.isLeaf) {
      fSteps.push_back({std::numeric_limits<double>::infinity(), 0, 0});
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
    for (std::size_t lane = 0; lane < kLanes; ++lane) leaves[fTrees[place + lane]] = fLeaves[at[lane]];
  }
  for (; place < fRoots.size(); ++place) FindOne(features, place, leaves);
}

void WalkedTrees::FindOne(const double* features, std::size_t place, std::uint32_t* leaves) const noexcept {
  std::uint32_t at = fRoots[place];
  while (fSteps[at].distance != 0) {
    at += fSteps[at].distance + static_cast<std::uint32_t>(features[fSteps[at].feature] > fSteps[at].limit);
  }
  leaves[fTrees[place]] = fLeaves[at];
}

}  // namespace

std::unique_ptr<const LeafFinder> MakeWalkedTrees(const PlainTrees& trees) {
  return std::make_unique<WalkedTrees>(trees);
}

}  // namespace Torvane
