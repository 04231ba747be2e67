#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <tuple>
#include <utility>
#include <vector>

#include "plugins/torvane/models/TreeEnsemble.h"

namespace Torvane {

/// The trees of an ensemble as splits of one shape, from which layouts are made: features and leaves are numbered
/// across all trees. A leaf is where a tree's walk ends; an inner node of the document that predicts if none of its
/// children is true has one, too.
struct PlainTrees {
  static constexpr std::uint32_t kNoNode = Prediction::kNone;

  struct Node {
    bool isLeaf;
    std::uint32_t leaf;     ///< number of a leaf
    std::uint32_t feature;  ///< of an inner node, and likewise:
    double limit;
    std::uint32_t below;  ///< position of the node for features up to the limit
    std::uint32_t above;
  };
  struct Tree {
    std::uint32_t firstNode;  ///< the root
    std::uint32_t firstLeaf;  ///< its leaves have the numbers from here, from the lowest to the highest
    std::uint32_t leafCount;
    std::uint32_t depth;  ///< steps from the root to the deepest leaf
  };
  struct Leaf {
    std::uint32_t tree;
    std::uint32_t node;  ///< of the document's tree; `kNoNode`: there is no result
  };

  std::vector<Node> nodes;
  std::vector<Tree> trees;
  std::vector<Leaf> leaves;
  std::uint32_t featureCount = 0;
};

/// Turns trees as documents have them into plain ones.
class PlainTreesBuilder {
 public:
  /// False if the tree can't be turned: its root isn't always true, or it has compound predicates.
  bool Add(const TreeModel& tree);
  /// Gives numbers to the features: those of numbers first.
  [[nodiscard]] PlainTrees Finish();

  std::vector<NumberFeature> numbers;
  std::vector<TestFeature> tests;

 private:
  /// A place of a tree that becomes a node.
  struct Open {
    std::uint32_t node;
    std::uint32_t child;  // whose predicate is to be tested; 0: the node itself
    std::uint32_t depth;
    std::uint32_t parent;  // which wants to know the position
    bool isBelow;
  };
  struct Split {
    std::uint32_t feature;
    double limit;
    bool trueIsAbove;
  };

  static Open Passed(const TreeModel& tree, Open at, std::uint32_t child);
  static bool IsEnd(const TreeModel& tree, const Open& at);
  static Open WithoutConstants(const TreeModel& tree, Open at);
  void AddNode(const TreeModel& tree, Open at, std::vector<Open>& open);
  void AddSplit(const TreeModel& tree, const Open& at, std::vector<Open>& open);
  void AddTest(const TreeModel& tree, const Open& at, std::vector<Open>& open);
  [[nodiscard]] Split SplitBy(const TreeModel& tree, std::uint32_t child);
  std::uint32_t NumberOf(std::uint32_t slot, double ifMissing);
  std::uint32_t TestOf(const TreeModel& tree, const Test& test);

  PlainTrees fTrees;
  bool fIsPlain = true;
  std::map<std::pair<std::uint32_t, int>, std::uint32_t> fNumberByField;
  std::map<std::tuple<TestKind, std::uint32_t, std::uint32_t, double, const PredicateTable*, bool>, std::uint32_t>
      fTestByContent;
};

/// For ensembles of any shape: several trees are walked at a time, without a branch that depends on the data. A leaf
/// leads to itself, until all of them are at leaves.
std::unique_ptr<const LeafFinder> MakeWalkedTrees(const PlainTrees& trees);

/// For many small trees: each feature falls between two limits, and a table tells for each such interval which leaves
/// of each tree can still be reached. The leaf of a tree is the lowest that all features leave. Null if a tree has more
/// leaves than a mask has bits, or the tables wouldn't stay in the nearer caches.
std::unique_ptr<const LeafFinder> TryMakeMaskedTrees(const PlainTrees& trees);

}  // namespace Torvane
