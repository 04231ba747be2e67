#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "components/keltransform/Cell.h"
#include "plugins/torvane/models/TreeModel.h"

namespace Torvane {

/// Finds the leaf of each tree of an ensemble for one record, whose numbers stand in an array. Trees have positions,
/// leaves have numbers across all trees. Immutable.
class LeafFinder {
 public:
  LeafFinder() = default;
  LeafFinder(const LeafFinder&) = delete;
  LeafFinder& operator=(const LeafFinder&) = delete;
  virtual ~LeafFinder() = default;

  /// Writes the leaf of each tree. `numbers` has one entry per feature.
  virtual void Find(const double* numbers, std::uint32_t* leaves) const noexcept = 0;
};

/// An ensemble whose members are all trees that split by numbers: much the most common large document. The trees stand
/// in flat arrays, and are walked side by side, so that their memory latencies overlap. What it computes is, bit for
/// bit, what the members compute one by one; a record with a missing value is left to them.
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

  /// Null if a member isn't a tree of plain splits.
  static std::unique_ptr<const TreeEnsemble> TryBuild(const std::vector<Member>& members, Result result,
                                                      bool isSinglePrecision);

  /// The numbers that `Sum` and `AddUp` need for themselves.
  [[nodiscard]] std::size_t ScratchCount() const noexcept { return fSlots.size() + (fTreeCount + 1) / 2; }

  /// The sum of what the trees add, in their order. False if a value that is needed is missing.
  bool Sum(const KelTransformNS::Cell* frame, double* scratch, double& sum) const noexcept;
  /// The same by category; `sums` are added to.
  bool AddUp(const KelTransformNS::Cell* frame, double* scratch, double* sums) const noexcept;

 private:
  TreeEnsemble() = default;
  bool FindLeaves(const KelTransformNS::Cell* frame, double* scratch, const std::uint32_t*& leaves) const noexcept;

  std::size_t fTreeCount = 0;
  std::vector<std::uint32_t> fSlots;  // of the features
  std::unique_ptr<const LeafFinder> fFinder;
  bool fIsSinglePrecision = false;
  // What the leaves add. A number: one for each leaf. Else the entries of leaf i begin at fFirstEntry[i] and end at
  // fFirstEntry[i + 1].
  std::vector<double> fFigures;
  std::vector<std::uint32_t> fFirstEntry;
  std::vector<std::uint32_t> fCategories;
};

}  // namespace Torvane
