#include "plugins/torvane/models/TreeEnsemble.h"

#include <cmath>
#include <limits>
#include <utility>

#include "plugins/torvane/models/PlainTrees.h"

namespace Torvane {

using KelTransformNS::Cell;

namespace {

// Every test is evaluated for each record, which a walk that meets few of them doesn't make good.
bool TestsPay(std::size_t testCount, std::size_t treeCount) { return testCount <= 32 + 2 * treeCount; }

double Rounded(double number, bool isSinglePrecision) noexcept {
  return isSinglePrecision ? static_cast<double>(static_cast<float>(number)) : number;
}

// What a leaf adds to a sum of numbers. NaN if it has no result.
double NumberOf(const TreeEnsemble::Member& member, std::uint32_t node, bool isSinglePrecision) noexcept {
  if (node == PlainTrees::kNoNode) return std::numeric_limits<double>::quiet_NaN();
  const double score = Rounded(member.tree->ScoreOf(node), isSinglePrecision);
  return Rounded(Rounded(member.weight, isSinglePrecision) * score, isSinglePrecision);
}

std::uint32_t CategoryIn(const TreeEnsemble::Member& member, std::uint32_t category) noexcept {
  return member.categories->empty() ? category : (*member.categories)[category];
}

}  // namespace

std::unique_ptr<const TreeEnsemble> TreeEnsemble::TryBuild(const std::vector<Member>& members, Result result,
                                                           bool isSinglePrecision) {
  PlainTreesBuilder builder;
  for (const Member& member : members) {
    if (member.tree == nullptr || !builder.Add(*member.tree)) return nullptr;
    if (!TestsPay(builder.tests.size(), members.size())) return nullptr;
  }
  const PlainTrees trees = builder.Finish();
  std::unique_ptr<TreeEnsemble> ensemble(new TreeEnsemble);
  ensemble->fTreeCount = members.size();
  ensemble->fNumbers = std::move(builder.numbers);
  ensemble->fTests = std::move(builder.tests);
  ensemble->fIsSinglePrecision = isSinglePrecision;
  ensemble->fMembers = members;
  ensemble->fResult = result;
  for (const PlainTrees::Leaf& leaf : trees.leaves) {
    const Member& member = members[leaf.tree];
    if (result == Result::kNumber) {
      ensemble->fNumbersOfLeaves.push_back(NumberOf(member, leaf.node, isSinglePrecision));
    } else {
      ensemble->fNodesOfLeaves.push_back(leaf.node);
    }
  }
  ensemble->fNumbersOfLeaves.shrink_to_fit();
  ensemble->fNodesOfLeaves.shrink_to_fit();
  ensemble->fFinder = TryMakeMaskedTrees(trees);
  if (ensemble->fFinder == nullptr) ensemble->fFinder = MakeWalkedTrees(trees);
  return ensemble;
}

bool TreeEnsemble::FindLeaves(const Cell* frame, double* scratch, const std::uint32_t*& leaves) const {
  bool hasAll = true;
  double* feature = scratch;
  for (const NumberFeature& number : fNumbers) {
    const Cell& cell = frame[number.slot];
    const bool isNumber = cell.state == Cell::kNumber;
    *feature = isNumber ? cell.number : number.ifMissing;
    hasAll = hasAll && (isNumber || (cell.state == Cell::kMissing && !std::isnan(number.ifMissing)));
    ++feature;
  }
  for (const TestFeature& test : fTests) {
    bool surrogateUsed = false;
    const Truth truth = test.predicates->Evaluate(test.test, frame, surrogateUsed);
    hasAll = hasAll && (truth != Truth::kUnknown || (test.canBeUnknown && !frame[test.test.slot].IsInvalid()));
    *feature++ = truth == Truth::kTrue ? 1.0 : 0.0;
  }
  if (!hasAll) return false;
  auto* const found = reinterpret_cast<std::uint32_t*>(feature);
  fFinder->Find(scratch, found);
  leaves = found;
  return true;
}

// NaN comes of a leaf without a result; the trees know what that means.
bool TreeEnsemble::Sum(const Cell* frame, double* scratch, double& sum) const {
  const std::uint32_t* leaves = nullptr;
  if (!FindLeaves(frame, scratch, leaves)) return false;
  const double* const numbers = fNumbersOfLeaves.data();
  if (fIsSinglePrecision) {
    float narrow = 0.0F;
    for (std::size_t tree = 0; tree < fTreeCount; ++tree) narrow += static_cast<float>(numbers[leaves[tree]]);
    sum = narrow;
  } else {
    double wide = 0.0;
    for (std::size_t tree = 0; tree < fTreeCount; ++tree) wide += numbers[leaves[tree]];
    sum = wide;
  }
  return !std::isnan(sum);
}

bool TreeEnsemble::AddUp(const Cell* frame, double* scratch, double* sums) const {
  const std::uint32_t* leaves = nullptr;
  if (!FindLeaves(frame, scratch, leaves)) return false;
  for (std::size_t tree = 0; tree < fTreeCount; ++tree) {
    const Member& member = fMembers[tree];
    const std::uint32_t node = fNodesOfLeaves[leaves[tree]];
    if (node == PlainTrees::kNoNode) return false;
    if (fResult == Result::kVote) {
      sums[CategoryIn(member, member.tree->CategoryOf(node))] += member.weight;
    } else {
      member.tree->ForEachShare(node, [&](std::uint32_t category, double share) {
        sums[CategoryIn(member, category)] += member.weight * share;
      });
    }
  }
  return true;
}

}  // namespace Torvane
