#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

#include "plugins/torvane/models/PlainTrees.h"

namespace Torvane {
namespace {

// The tables of all features together. Beyond that a walk costs less than fetching them.
constexpr std::size_t kLargestTables = std::size_t{192} * 1024;
constexpr std::uint32_t kMostFeatures = 64;

// One split of a tree, and the leaves that numbers above its limit, or up to it, rule out.
struct Cut {
  std::uint32_t tree;
  std::uint32_t feature;
  double limit;
  std::uint64_t leavesBelow;
  std::uint64_t leavesAbove;
};

// The leaves under a node as bits, and the cuts of the inner nodes under it. Trees here are small, so recursion is
// safe.
std::uint64_t CollectCuts(const PlainTrees& trees, std::uint32_t tree, std::uint32_t at, std::vector<Cut>& cuts) {
  const PlainTrees::Node& node = trees.nodes[at];
  if (node.isLeaf) return std::uint64_t{1} << (node.leaf - trees.trees[tree].firstLeaf);
  const std::uint64_t below = CollectCuts(trees, tree, node.below, cuts);
  const std::uint64_t above = CollectCuts(trees, tree, node.above, cuts);
  cuts.push_back({tree, node.feature, node.limit, below, above});
  return below | above;
}

template <typename Mask>
class MaskedTrees final : public LeafFinder {
 public:
  MaskedTrees(const PlainTrees& trees, const std::vector<Cut>& cuts, std::vector<std::vector<double>> limits);
  void Find(const double* features, std::uint32_t* leaves) const noexcept override;

 private:
  // Rows are whole vectors of the machine. A compiler left to itself ands them mask by mask.
  static constexpr std::size_t kPadding = 16 / sizeof(Mask);
  using Masks [[gnu::vector_size(16)]] = Mask;

  static Masks Load(const Mask* row) noexcept {
    Masks masks;
    std::memcpy(&masks, row, sizeof(masks));
    return masks;
  }

  // The limits of one feature, ascending, and its table: a row for each interval, with a mask for each tree.
  struct Feature {
    std::uint32_t feature;
    std::vector<double> limits;
    std::vector<Mask> rows;
  };

  [[nodiscard]] const Mask* RowOf(const Feature& feature, double number) const noexcept {
    const double* first = feature.limits.data();
    for (std::size_t length = feature.limits.size(); length > 1;) {
      const std::size_t half = length / 2;
      first += half * static_cast<std::size_t>(first[half - 1] < number);  // no branch that can't be foretold
      length -= half;
    }
    const auto interval = static_cast<std::size_t>(first - feature.limits.data()) + (*first < number ? 1 : 0);
    return feature.rows.data() + interval * fStride;
  }

  std::size_t fTreeCount;
  std::size_t fStride;  // masks of a row
  std::vector<Feature> fFeatures;
  std::vector<std::uint32_t> fFirstLeaves;  // of the trees
};

template <typename Mask>
MaskedTrees<Mask>::MaskedTrees(const PlainTrees& trees, const std::vector<Cut>& cuts,
                               std::vector<std::vector<double>> limits)
    : fTreeCount(trees.trees.size()), fStride((fTreeCount + kPadding - 1) / kPadding * kPadding) {
  for (const PlainTrees::Tree& tree : trees.trees) fFirstLeaves.push_back(tree.firstLeaf);
  std::vector<std::size_t> place(limits.size());
  for (std::uint32_t feature = 0; feature < limits.size(); ++feature) {
    if (limits[feature].empty()) continue;
    place[feature] = fFeatures.size();
    const std::size_t rowCount = limits[feature].size() + 1;
    fFeatures.push_back({feature, std::move(limits[feature]), std::vector<Mask>(rowCount * fStride)});
    std::fill(fFeatures.back().rows.begin(), fFeatures.back().rows.end(), static_cast<Mask>(~Mask{0}));
  }
  for (const Cut& cut : cuts) {
    Feature& feature = fFeatures[place[cut.feature]];
    for (std::size_t row = 0; row <= feature.limits.size(); ++row) {
      const bool isAbove = row > 0 && feature.limits[row - 1] >= cut.limit;
      Mask& mask = feature.rows[row * fStride + cut.tree];
      mask = static_cast<Mask>(mask & ~(isAbove ? cut.leavesBelow : cut.leavesAbove));
    }
  }
}

// Blocks of trees, so that the masks stay in a register from feature to feature.
template <typename Mask>
void MaskedTrees<Mask>::Find(const double* features, std::uint32_t* leaves) const noexcept {
  const Mask* rows[kMostFeatures];
  const std::size_t featureCount = fFeatures.size();
  for (std::size_t i = 0; i < featureCount; ++i) rows[i] = RowOf(fFeatures[i], features[fFeatures[i].feature]);
  for (std::size_t first = 0; first < fStride; first += kPadding) {
    Masks masks = ~Masks{};
    for (std::size_t feature = 0; feature < featureCount; ++feature) masks &= Load(rows[feature] + first);
    const std::size_t count = std::min(kPadding, fTreeCount - first);
    for (std::size_t i = 0; i < count; ++i) {
      leaves[first + i] = fFirstLeaves[first + i] + static_cast<std::uint32_t>(std::countr_zero<Mask>(masks[i]));
    }
  }
}

std::vector<std::vector<double>> LimitsOf(const std::vector<Cut>& cuts, std::uint32_t featureCount) {
  std::vector<std::vector<double>> limits(featureCount);
  for (const Cut& cut : cuts) limits[cut.feature].push_back(cut.limit);
  for (std::vector<double>& list : limits) {
    std::sort(list.begin(), list.end());
    list.erase(std::unique(list.begin(), list.end()), list.end());
  }
  return limits;
}

}  // namespace

std::unique_ptr<const LeafFinder> TryMakeMaskedTrees(const PlainTrees& trees) {
  std::uint32_t leafCount = 0;
  for (const PlainTrees::Tree& tree : trees.trees) leafCount = std::max(leafCount, tree.leafCount);
  if (leafCount > 64 || trees.featureCount == 0 || trees.featureCount > kMostFeatures) return nullptr;
  const std::size_t maskBytes = std::bit_ceil(std::max(leafCount, 8U)) / 8;
  // A quick look before anything is collected: a table has at least a row for each split of its feature.
  std::vector<Cut> cuts;
  for (std::uint32_t tree = 0; tree < trees.trees.size(); ++tree) {
    (void)CollectCuts(trees, tree, trees.trees[tree].firstNode, cuts);
  }
  std::vector<std::vector<double>> limits = LimitsOf(cuts, trees.featureCount);
  std::size_t rowCount = 0;
  for (const std::vector<double>& list : limits) rowCount += list.empty() ? 0 : list.size() + 1;
  if (rowCount * trees.trees.size() * maskBytes > kLargestTables) return nullptr;
  switch (maskBytes) {
    case 1:
      return std::make_unique<MaskedTrees<std::uint8_t>>(trees, cuts, std::move(limits));
    case 2:
      return std::make_unique<MaskedTrees<std::uint16_t>>(trees, cuts, std::move(limits));
    case 4:
      return std::make_unique<MaskedTrees<std::uint32_t>>(trees, cuts, std::move(limits));
    default:
      return std::make_unique<MaskedTrees<std::uint64_t>>(trees, cuts, std::move(limits));
  }
}

}  // namespace Torvane
