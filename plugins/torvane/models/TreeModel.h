#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "plugins/torvane/fields/FieldScope.h"
#include "plugins/torvane/models/EntityIds.h"
#include "plugins/torvane/models/ModelBody.h"
#include "plugins/torvane/predicates/Predicate.h"
#include "plugins/torvane/targets/Target.h"

namespace Torvane {

/// A decision or regression tree.
///
/// Nodes stand in document order, so that a node's first child is the next node. Predicates are tested in the order of
/// the document, and the first true child is entered; what an unknown one does is the missing value strategy's affair.
/// Where strategies leave room, this is what holds: an unknown child ends the search at once, before its later
/// siblings are looked at (except for the strategy "none"); an unknown predicate of the root gives no prediction.
class TreeModel final : public ModelBody {
 public:
  static std::unique_ptr<ModelBody> Build(const Element& model, FieldScope& scope, Target& target);

  void Evaluate(KelTransformNS::Frame frame, Prediction& prediction) const override;
  [[nodiscard]] bool GivesConfidences() const noexcept override { return fIsClassification; }
  [[nodiscard]] std::uint32_t EntityCount() const noexcept override {
    return static_cast<std::uint32_t>(fNodes.size());
  }
  void WriteEntity(std::uint32_t entity, KelCommon_1_3::Value& value) const override { fIds.Write(entity, value); }
  [[nodiscard]] std::span<const KindOutput> KindOutputs() const noexcept override;

  // For ensembles, which lay the nodes of many trees out in a way of their own. The root is node 0.

  [[nodiscard]] bool IsLeaf(std::uint32_t node) const noexcept { return fNodes[node].isInner == 0; }
  /// Whether one number tells which of the node's two children is entered.
  [[nodiscard]] bool IsSplit(std::uint32_t node) const noexcept { return fNodes[node].isSplit != 0; }
  /// The predicate of a node; its children are tested in their order. 0 is no child.
  [[nodiscard]] Test TestOf(std::uint32_t node) const noexcept { return fNodes[node].ToTest(); }
  [[nodiscard]] const PredicateTable& Predicates() const noexcept { return fPredicates; }
  [[nodiscard]] static std::uint32_t FirstChild(std::uint32_t node) noexcept { return node + 1; }
  [[nodiscard]] std::uint32_t NextSibling(std::uint32_t node) const noexcept { return fNodes[node].nextSibling; }
  /// Where an unknown predicate is passed over as a false one is.
  [[nodiscard]] bool PassesUnknowns() const noexcept { return fMissingStrategy == MissingStrategy::kNone; }
  /// The child that is entered if a predicate is unknown; 0 if something else happens then.
  [[nodiscard]] std::uint32_t DefaultChild(std::uint32_t node) const noexcept {
    return fDefaultChildren.empty() ? 0 : fDefaultChildren[node];
  }
  /// Whether a node predicts if none of its children is true.
  [[nodiscard]] bool ReturnsLast() const noexcept { return fReturnsLast; }
  [[nodiscard]] bool HasResult(std::uint32_t node) const noexcept { return fNodes[node].result != kNoResult; }
  /// Of a node of a regression that has a result.
  [[nodiscard]] double ScoreOf(std::uint32_t node) const noexcept { return fScores[fNodes[node].result]; }
  /// Of a node of a classification that has a result.
  [[nodiscard]] std::uint32_t CategoryOf(std::uint32_t node) const noexcept { return fNodes[node].result; }
  /// Gives `take` the probabilities there, with their categories. A category may come more than once.
  template <typename Take>
  void ForEachShare(std::uint32_t node, const Take& take) const {
    const std::uint32_t begin = fFirstEntry.empty() ? 0 : fFirstEntry[node];
    const std::uint32_t end = fFirstEntry.empty() ? 0 : fFirstEntry[node + 1];
    if (begin == end) take(fNodes[node].result, 1.0);
    const std::uint32_t* category = CategoriesFrom(begin);
    for (std::uint32_t entry = begin; entry < end; ++entry) take(*category++, fProbabilities[entry]);
  }

 private:
  friend class TreeReader;

  enum class MissingStrategy : std::uint8_t {
    kNone,
    kLastPrediction,
    kNullPrediction,
    kDefaultChild,
    kWeightedConfidence,
    kAggregateNodes,
  };

  static constexpr std::uint32_t kNoResult = Prediction::kNone;

  static constexpr std::uint32_t kSiblingBits = 24;
  static constexpr std::uint32_t kMostNodes = (1U << kSiblingBits) - 1;

  // A test with the rest of a node packed around it: large documents consist of nodes.
  struct Node {
    double number = 0.0;  // of the test, and likewise:
    std::uint32_t slot = 0;
    std::uint32_t operand = 0;
    std::uint32_t nextSibling : kSiblingBits = 0;  // 0: it is the last child
    std::uint32_t kind : 5 = 0;
    std::uint32_t isInner : 1 = 0;
    std::uint32_t isSplit : 1 = 0;          // one comparison of a number tells which of the two children is true
    std::uint32_t firstTakesBelow : 1 = 0;  // of a split: the first child is that of numbers up to the limit
    std::uint32_t result = kNoResult;       // the category of a classification, else a position in fScores

    [[nodiscard]] TestKind Kind() const noexcept { return static_cast<TestKind>(kind); }
    [[nodiscard]] Test ToTest() const noexcept { return {number, slot, operand, Kind()}; }
    void SetTest(const Test& test) noexcept;
  };

  enum class Found { kTrue, kUnknown, kNothing };

  // A node that is reached by an unknown predicate, with what its result counts for.
  struct Branch {
    std::uint32_t node;
    double weight;
    double penalty;
  };

  // The categories of a node's entries, the first of which is given.
  [[nodiscard]] const std::uint32_t* CategoriesFrom(std::uint32_t firstEntry) const noexcept {
    return fEntryCategories.data() + (fListsSameCategories ? 0 : firstEntry);
  }
  [[nodiscard]] std::uint32_t FollowSplits(std::uint32_t node, const KelTransformNS::Cell* frame) const noexcept;
  [[gnu::noinline]] void Descend(std::uint32_t node, const KelTransformNS::Cell* frame, Prediction& prediction) const;
  Found FindChild(std::uint32_t node, const KelTransformNS::Cell* frame, std::uint32_t& child,
                  bool& surrogateUsed) const;
  void Conclude(std::uint32_t node, double penalty, Prediction& prediction) const noexcept;
  void FillDistribution(std::uint32_t node, double penalty, Prediction& prediction) const noexcept;
  void AddDistribution(const Branch& branch, Prediction& prediction) const noexcept;
  template <typename Reach>
  void FollowUnknown(std::uint32_t node, double penalty, const KelTransformNS::Cell* frame, Reach&& reach) const;
  void MixConfidences(std::uint32_t node, double penalty, const KelTransformNS::Cell* frame,
                      Prediction& prediction) const;
  void AggregateNodes(std::uint32_t node, double penalty, const KelTransformNS::Cell* frame,
                      Prediction& prediction) const;
  [[nodiscard]] std::uint32_t BestCategory(const double* figures) const noexcept;

  PredicateTable fPredicates;
  std::vector<Node> fNodes;
  std::vector<double> fScores;  // of a regression
  EntityIds fIds;

  // Score distributions: the entries of node i begin at fFirstEntry[i] and end at fFirstEntry[i + 1]. Empty without
  // any.
  std::vector<std::uint32_t> fFirstEntry;
  std::vector<std::uint32_t> fEntryCategories;  // of each entry, or those of one node if all list the same ones
  bool fListsSameCategories = false;
  std::vector<double> fProbabilities;
  std::vector<double> fConfidences;             // empty if they equal the probabilities throughout
  std::vector<double> fEntryCounts;             // for "aggregateNodes" only
  std::vector<double> fRecordCounts;            // of the nodes, for "weightedConfidence" only
  std::vector<std::uint32_t> fDefaultChildren;  // of the nodes, for "defaultChild" only; 0: none

  std::uint32_t fCategoryCount = 0;
  double fPenalty = 1.0;
  MissingStrategy fMissingStrategy = MissingStrategy::kNone;
  bool fReturnsLast = false;
  bool fIsClassification = false;
};

}  // namespace Torvane
