#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "components/keltransform/Cell.h"
#include "plugins/torvane/models/TreeModel.h"

namespace Torvane {

/// Finds the leaf of each tree of an ensemble for one record, whose features stand in an array. Trees have positions,
/// leaves have numbers across all trees. Immutable.
class LeafFinder {
 public:
  LeafFinder() = default;
  LeafFinder(const LeafFinder&) = delete;
  LeafFinder& operator=(const LeafFinder&) = delete;
  virtual ~LeafFinder() = default;

  /// Writes the leaf of each tree. None of the features is NaN.
  virtual void Find(const double* features, std::uint32_t* leaves) const noexcept = 0;
};

/// A number of a record that trees split by. A field that is missing can have a number that makes every split of this
/// feature go the way which the trees foresee.
struct NumberFeature {
  std::uint32_t slot;
  double ifMissing;  ///< NaN: there is no such number
};

/// A predicate that isn't a split by a number, as a feature: 1 if it is true, else 0.
struct TestFeature {
  const PredicateTable* predicates;
  Test test;
  bool canBeUnknown;  ///< an unknown one is 0 as well
};

/// An ensemble whose members are all trees: much the most common large document. The trees stand in flat arrays of
/// splits of one shape, and are walked side by side, so that their memory latencies overlap. What it computes is, bit
/// for bit, what the members compute one by one; a record for which the layout has no answer is left to them.
class TreeEnsemble {
 public:
  /// What a tree adds to the result.
  enum class Result {
    kNumber,  ///< weight * score
    kVote,    ///< its weight, to its category
    kShares,  ///< weight * probability, to each category
  };
  struct Member {
    const TreeModel* tree;
    double weight;
    const std::vector<std::uint32_t>* categories;  ///< of the ensemble, by those of the tree; empty: they are the same
  };

  /// Null if a member isn't a tree, or the layout wouldn't pay. The members must outlive the ensemble.
  static std::unique_ptr<const TreeEnsemble> TryBuild(const std::vector<Member>& members, Result result,
                                                      bool isSinglePrecision);

  /// The numbers that `Sum` and `AddUp` need for themselves.
  [[nodiscard]] std::size_t ScratchCount() const noexcept {
    return fNumbers.size() + fTests.size() + (fTreeCount + 1) / 2;
  }

  /// The sum of what the trees add, in their order. False if the trees must be asked one by one.
  bool Sum(const KelTransformNS::Cell* frame, double* scratch, double& sum) const;
  /// The same by category; `sums` are added to.
  bool AddUp(const KelTransformNS::Cell* frame, double* scratch, double* sums) const;

 private:
  TreeEnsemble() = default;
  bool FindLeaves(const KelTransformNS::Cell* frame, double* scratch, const std::uint32_t*& leaves) const;

  std::size_t fTreeCount = 0;
  std::vector<NumberFeature> fNumbers;  // the features are these,
  std::vector<TestFeature> fTests;      // and then these
  std::unique_ptr<const LeafFinder> fFinder;
  bool fIsSinglePrecision = false;
  std::vector<double> fNumbersOfLeaves;       // what each adds, where that is a number; NaN: it has no result
  std::vector<std::uint32_t> fNodesOfLeaves;  // else where its tree tells what it adds
  std::vector<Member> fMembers;
  Result fResult = Result::kNumber;
};

}  // namespace Torvane
