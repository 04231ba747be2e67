#include "plugins/torvane/models/PlainTrees.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Torvane {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Until all features are known, those of tests are told from those of numbers by their highest bit.
constexpr std::uint32_t kTestBit = 0x80000000U;

bool IsAbove(TestKind kind) { return kind == TestKind::kGreater; }

bool ComparesNumber(const Test& test) {
  return (test.kind == TestKind::kLessOrEqual || test.kind == TestKind::kGreater) && std::isfinite(test.number);
}

// Predicates of texts and marks of missing values; sets and compound ones are numbered by the table of their tree.
bool IsSameInAllTables(TestKind kind) {
  return kind == TestKind::kTextEqual || kind == TestKind::kTextNotEqual || kind == TestKind::kNumberEqual ||
         kind == TestKind::kNumberNotEqual || kind == TestKind::kIsMissing || kind == TestKind::kIsNotMissing;
}

}  // namespace

bool PlainTreesBuilder::Add(const TreeModel& tree) {
  if (tree.TestOf(0).kind != TestKind::kAlways) return false;
  const auto firstLeaf = static_cast<std::uint32_t>(fTrees.leaves.size());
  fTrees.trees.push_back({static_cast<std::uint32_t>(fTrees.nodes.size()), firstLeaf, 0, 0});
  std::vector<Open> open{{0, 0, 0, PlainTrees::kNoNode, false}};
  while (!open.empty()) {
    const Open at = open.back();
    open.pop_back();
    AddNode(tree, at, open);
  }
  fTrees.trees.back().leafCount = static_cast<std::uint32_t>(fTrees.leaves.size()) - firstLeaf;
  return fIsPlain;
}

// The next child of the same node; behind the last the node itself is the result, or nothing is.
PlainTreesBuilder::Open PlainTreesBuilder::Passed(const TreeModel& tree, Open at, std::uint32_t child) {
  at.child = tree.NextSibling(child);
  if (at.child != 0) return at;
  at.child = PlainTrees::kNoNode;
  if (!tree.ReturnsLast()) at.node = PlainTrees::kNoNode;
  return at;
}

bool PlainTreesBuilder::IsEnd(const TreeModel& tree, const Open& at) {
  return at.node == PlainTrees::kNoNode || at.child == PlainTrees::kNoNode || tree.IsLeaf(at.node);
}

// Predicates that are always or never true need no split.
PlainTreesBuilder::Open PlainTreesBuilder::WithoutConstants(const TreeModel& tree, Open at) {
  while (!IsEnd(tree, at) && !(at.child == 0 && tree.IsSplit(at.node))) {
    if (at.child == 0) at.child = TreeModel::FirstChild(at.node);
    const TestKind kind = tree.TestOf(at.child).kind;
    if (kind == TestKind::kAlways) {
      at.node = at.child;
      at.child = 0;
    } else if (kind == TestKind::kNever) {
      at = Passed(tree, at, at.child);
    } else {
      return at;
    }
  }
  return at;
}

// Depth first, the child below before the one above, so that leaves get their numbers from the lowest on.
void PlainTreesBuilder::AddNode(const TreeModel& tree, Open at, std::vector<Open>& open) {
  const auto position = static_cast<std::uint32_t>(fTrees.nodes.size());
  if (at.parent != PlainTrees::kNoNode) {
    PlainTrees::Node& parent = fTrees.nodes[at.parent];
    (at.isBelow ? parent.below : parent.above) = position;
  }
  PlainTrees::Node& node = fTrees.nodes.emplace_back();
  PlainTrees::Tree& told = fTrees.trees.back();
  told.depth = std::max(told.depth, at.depth);
  at.parent = position;
  at = WithoutConstants(tree, at);
  node.isLeaf = IsEnd(tree, at);
  if (!node.isLeaf) return at.child == 0 ? AddSplit(tree, at, open) : AddTest(tree, at, open);
  const bool hasResult = at.node != PlainTrees::kNoNode && tree.HasResult(at.node);
  node.leaf = static_cast<std::uint32_t>(fTrees.leaves.size());
  fTrees.leaves.push_back(
      {static_cast<std::uint32_t>(fTrees.trees.size() - 1), hasResult ? at.node : PlainTrees::kNoNode});
}

// Both children at once. A missing value goes to the default child, if there is one.
void PlainTreesBuilder::AddSplit(const TreeModel& tree, const Open& at, std::vector<Open>& open) {
  const std::uint32_t first = TreeModel::FirstChild(at.node);
  const std::uint32_t second = tree.NextSibling(first);
  const Test& test = tree.TestOf(first);
  const bool firstIsAbove = IsAbove(test.kind);
  const std::uint32_t above = firstIsAbove ? first : second;
  const std::uint32_t below = firstIsAbove ? second : first;
  const std::uint32_t missing = std::isfinite(test.number) ? tree.DefaultChild(at.node) : 0;
  PlainTrees::Node& node = fTrees.nodes.back();
  node.feature = NumberOf(test.slot, missing == 0 ? kNaN : (missing == above ? kInfinity : -kInfinity));
  node.limit = test.number;
  open.push_back({above, 0, at.depth + 1, at.parent, false});
  open.push_back({below, 0, at.depth + 1, at.parent, true});
}

// One child: if it isn't true, the next one is tested.
void PlainTreesBuilder::AddTest(const TreeModel& tree, const Open& at, std::vector<Open>& open) {
  const Split split = SplitBy(tree, at.child);
  fTrees.nodes.back().feature = split.feature;
  fTrees.nodes.back().limit = split.limit;
  Open entered{at.child, 0, at.depth + 1, at.parent, !split.trueIsAbove};
  Open passed = Passed(tree, at, at.child);
  passed.depth = entered.depth;
  passed.isBelow = split.trueIsAbove;
  open.push_back(split.trueIsAbove ? entered : passed);
  open.push_back(split.trueIsAbove ? passed : entered);
}

// A missing number makes a comparison unknown. Where that passes for false, the number is one that makes it false.
PlainTreesBuilder::Split PlainTreesBuilder::SplitBy(const TreeModel& tree, std::uint32_t child) {
  const Test& test = tree.TestOf(child);
  if (!ComparesNumber(test)) return {TestOf(tree, test), 0.5, true};
  const bool isAbove = IsAbove(test.kind);
  const double ifMissing = tree.PassesUnknowns() ? (isAbove ? -kInfinity : kInfinity) : kNaN;
  return {NumberOf(test.slot, ifMissing), test.number, isAbove};
}

std::uint32_t PlainTreesBuilder::NumberOf(std::uint32_t slot, double ifMissing) {
  const int direction = std::isnan(ifMissing) ? 0 : (ifMissing > 0.0 ? 1 : -1);
  const auto [known, isNew] =
      fNumberByField.emplace(std::pair(slot, direction), static_cast<std::uint32_t>(numbers.size()));
  if (isNew) numbers.push_back({slot, ifMissing});
  return known->second;
}

std::uint32_t PlainTreesBuilder::TestOf(const TreeModel& tree, const Test& test) {
  if (test.kind == TestKind::kCompound) fIsPlain = false;  // it would have to be known which fields it reads
  const PredicateTable* const table = IsSameInAllTables(test.kind) ? nullptr : &tree.Predicates();
  const auto [known, isNew] =
      fTestByContent.emplace(std::tuple(test.kind, test.slot, test.operand, test.number, table, tree.PassesUnknowns()),
                             static_cast<std::uint32_t>(tests.size()));
  if (isNew) tests.push_back({&tree.Predicates(), test, tree.PassesUnknowns()});
  return known->second | kTestBit;
}

PlainTrees PlainTreesBuilder::Finish() {
  const auto numberCount = static_cast<std::uint32_t>(numbers.size());
  for (PlainTrees::Node& node : fTrees.nodes) {
    if ((node.feature & kTestBit) != 0) node.feature = numberCount + (node.feature & ~kTestBit);
  }
  fTrees.featureCount = numberCount + static_cast<std::uint32_t>(tests.size());
  return std::move(fTrees);
}

}  // namespace Torvane
