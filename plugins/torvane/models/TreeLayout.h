#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "plugins/torvane/models/TreeEnsemble.h"

namespace Torvane {

/// The trees of an ensemble in the form that layouts are made from: features and leaves are numbered across all trees.
struct PlainTrees {
  struct Node {
    bool isLeaf;
    std::uint32_t leaf;     ///< number of a leaf
    std::uint32_t feature;  ///< of an inner node, and likewise:
    double limit;
    std::uint32_t below;  ///< position of the node for numbers up to the limit
    std::uint32_t above;
  };
  struct Tree {
    std::uint32_t firstNode;  ///< the root
    std::uint32_t firstLeaf;  ///< its leaves have the numbers from here, from the lowest to the highest
    std::uint32_t leafCount;
    std::uint32_t depth;  ///< steps from the root to the deepest leaf
  };
  std::vector<Node> nodes;
  std::vector<Tree> trees;
  std::uint32_t featureCount = 0;
  std::uint32_t leafCount = 0;
};

/// For ensembles of any shape: several trees are walked at a time, without a branch that depends on the data. A leaf
/// leads to itself, until all of them are at leaves.
std::unique_ptr<const LeafFinder> MakeWalkedTrees(const PlainTrees& trees);

/// For many small trees: each feature's number falls between two limits, and a table tells for each such interval which
/// leaves of each tree can still be reached. The leaf of a tree is the lowest that all features leave. Null if a tree
/// has more leaves than a mask has bits, or the tables wouldn't stay in the nearer caches.
std::unique_ptr<const LeafFinder> TryMakeMaskedTrees(const PlainTrees& trees);

}  // namespace Torvane
