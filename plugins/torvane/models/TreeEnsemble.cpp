#include "plugins/torvane/models/TreeEnsemble.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "plugins/torvane/models/PlainTrees.h"

namespace Torvane {

using KelTransformNS::Cell;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Every test is evaluated for each record, which a walk that meets few of them doesn't make good.
bool TestsPay(std::size_t testCount, std::size_t treeCount) { return testCount <= 32 + 2 * treeCount; }

double Rounded(double number, bool isSinglePrecision) noexcept {
  return isSinglePrecision ? static_cast<double>(static_cast<float>(number)) : number;
}

// Two shares of one category were added up before they are weighted, which may round in another way.
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
    if (member.tree == nullptr || !builder.Add(*member.tree)) return nullptr;
    if (!TestsPay(builder.tests.size(), members.size())) return nullptr;
  }
  const PlainTrees trees = builder.Finish();
  std::unique_ptr<TreeEnsemble> ensemble(new TreeEnsemble);
  ensemble->fTreeCount = members.size();
  ensemble->fNumbers = std::move(builder.numbers);
  ensemble->fTests = std::move(builder.tests);
  ensemble->fIsSinglePrecision = isSinglePrecision;
  for (const PlainTrees::Leaf& leaf : trees.leaves) {
    if (!ensemble->AddFigures(members[leaf.tree], leaf.node, result)) return nullptr;
  }
  if (result != Result::kNumber) ensemble->fFirstEntry.push_back(static_cast<std::uint32_t>(ensemble->fFigures.size()));
  ensemble->fFigures.shrink_to_fit();
  ensemble->fFirstEntry.shrink_to_fit();
  ensemble->fCategories.shrink_to_fit();
  ensemble->fFinder = TryMakeMaskedTrees(trees);
  if (ensemble->fFinder == nullptr) ensemble->fFinder = MakeWalkedTrees(trees);
  return ensemble;
}

bool TreeEnsemble::AddFigures(const Member& member, std::uint32_t node, Result result) {
  const bool hasResult = node != PlainTrees::kNoNode;
  if (result == Result::kNumber) {
    const double score = hasResult ? Rounded(member.tree->ScoreOf(node), fIsSinglePrecision) : kNaN;
    fFigures.push_back(Rounded(Rounded(member.weight, fIsSinglePrecision) * score, fIsSinglePrecision));
    return true;
  }
  std::vector<std::pair<std::uint32_t, double>> shares = {{0, kNaN}};
  if (hasResult && result == Result::kVote) shares = {{member.tree->CategoryOf(node), 1.0}};
  if (hasResult && result == Result::kShares) shares = member.tree->SharesOf(node);
  if (HasTwice(shares)) return false;
  fFirstEntry.push_back(static_cast<std::uint32_t>(fFigures.size()));
  for (const auto& [category, share] : shares) {
    fCategories.push_back(member.categories->empty() ? category : (*member.categories)[category]);
    fFigures.push_back(member.weight * share);
  }
  return true;
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
  const double* const figures = fFigures.data();
  if (fIsSinglePrecision) {
    float narrow = 0.0F;
    for (std::size_t tree = 0; tree < fTreeCount; ++tree) narrow += static_cast<float>(figures[leaves[tree]]);
    sum = narrow;
  } else {
    double wide = 0.0;
    for (std::size_t tree = 0; tree < fTreeCount; ++tree) wide += figures[leaves[tree]];
    sum = wide;
  }
  return !std::isnan(sum);
}

bool TreeEnsemble::AddUp(const Cell* frame, double* scratch, double* sums, std::size_t categoryCount) const {
  const std::uint32_t* leaves = nullptr;
  if (!FindLeaves(frame, scratch, leaves)) return false;
  for (std::size_t tree = 0; tree < fTreeCount; ++tree) {
    const std::uint32_t end = fFirstEntry[leaves[tree] + 1];
    for (std::uint32_t entry = fFirstEntry[leaves[tree]]; entry < end; ++entry) {
      sums[fCategories[entry]] += fFigures[entry];
    }
  }
  return std::none_of(sums, sums + categoryCount, [](double sum) { return std::isnan(sum); });
}

}  // namespace Torvane
