#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "components/keltransform/Program.h"
#include "plugins/torvane/fields/FieldScope.h"
#include "plugins/torvane/models/Member.h"
#include "plugins/torvane/models/ModelBody.h"
#include "plugins/torvane/models/TreeEnsemble.h"
#include "plugins/torvane/predicates/Predicate.h"
#include "plugins/torvane/targets/Target.h"

namespace Torvane {

/// An ensemble: models, each with a predicate that says whether it takes part, and the method that makes one result of
/// theirs.
///
/// All models work on one frame. The segments run in document order. Derived fields of the ensemble that may use the
/// outputs of segments, or that a segment needs which may not run, are computed when it is this segment's turn.
class MiningModel final : public ModelBody {
 public:
  static std::unique_ptr<ModelBody> Build(const Element& model, FieldScope& scope, Target& target);

  void Evaluate(KelTransformNS::Frame frame, Prediction& prediction) const override;
  [[nodiscard]] std::size_t ScratchCount() const noexcept override { return fOwnNumbers + fPartNumbers; }
  [[nodiscard]] std::uint32_t RankingCapacity() const noexcept override;
  [[nodiscard]] bool GivesProbabilities() const noexcept override { return fGivesProbabilities; }
  [[nodiscard]] bool GivesConfidences() const noexcept override { return fGivesConfidences; }
  [[nodiscard]] std::uint32_t EntityCount() const noexcept override {
    return static_cast<std::uint32_t>(fSegments.size());
  }
  void WriteEntity(std::uint32_t entity, KelCommon_1_3::Value& value) const override { value = fIds[entity]; }
  [[nodiscard]] bool IsEnsemble() const noexcept override { return true; }
  [[nodiscard]] bool GivesAllPredictions() const noexcept override { return fMethod == Method::kSelectAll; }

 private:
  friend class MiningReader;

  enum class Method : std::uint8_t {
    kMajorityVote,
    kAverage,
    kMedian,
    kMax,
    kSum,
    kSelectFirst,
    kSelectAll,
    kModelChain,
  };
  /// What becomes of the result if a segment gives none.
  enum class MissingTreatment : std::uint8_t { kContinue, kSkipSegment, kReturnMissing };

  struct Segment : Member {
    KelTransformNS::Program derived;  // fields of the ensemble that are computed when it is this segment's turn
    bool hasDerived = false;
    std::vector<std::uint32_t> derivedSlots;  // that the predicate reads
    Test predicate;
    double weight = 1.0;
    std::uint32_t weightSlot = Prediction::kNone;  // of a field that the weight is multiplied by
    bool givesResult = true;                       // that can be the ensemble's
  };
  // The results of the segments that took part so far, and the missing ones among them. Both are numbers of segments,
  // or sums of their weights where the method weighs.
  struct Tally {
    double results = 0.0;
    double missing = 0.0;
  };

  enum class Part { kSkipped, kMissing, kInvalid, kValue };
  Part Run(const Segment& segment, KelTransformNS::Frame frame, bool wantsDistribution, Prediction& part,
           double* numbers) const;
  template <typename Take>
  bool RunAll(KelTransformNS::Frame frame, bool wantsDistribution, Prediction& prediction, Tally& tally,
              const Take& take) const;
  void FinishDerived(std::size_t firstSegment, KelTransformNS::Frame frame) const noexcept;
  [[nodiscard]] double WeightOf(const Segment& segment, const KelTransformNS::Cell* frame) const noexcept;

  void SelectFirst(KelTransformNS::Frame frame, Prediction& prediction) const;
  void SelectAll(KelTransformNS::Frame frame, Prediction& prediction) const;
  void RunChain(KelTransformNS::Frame frame, Prediction& prediction) const;
  void CombineNumbers(KelTransformNS::Frame frame, Prediction& prediction) const;
  bool AddUpTrees(KelTransformNS::Frame frame, Prediction& prediction) const;
  void Vote(KelTransformNS::Frame frame, Prediction& prediction) const;
  void AverageProbabilities(KelTransformNS::Frame frame, Prediction& prediction) const;
  void CompareProbabilities(KelTransformNS::Frame frame, Prediction& prediction) const;
  void TakeMedians(const double* rows, std::size_t rowCount, Prediction& prediction) const;
  void TakeMaximum(const double* rows, std::size_t rowCount, std::size_t best, Prediction& prediction) const noexcept;
  void ConcludeByProbabilities(Prediction& prediction) const noexcept;

  PredicateTable fPredicates;
  std::vector<Segment> fSegments;
  std::unique_ptr<const TreeEnsemble> fTrees;  // the segments once more, if all of them are trees
  double fTreeWeight = 0.0;                    // of all trees
  std::vector<std::string> fIds;
  std::vector<std::uint32_t> fOutputSlots;  // of the segments' outputs, missing until their segment runs
  Method fMethod = Method::kMajorityVote;
  bool fIsWeighted = false;
  bool fIsNumeric = false;
  bool fIsSinglePrecision = false;  // numbers are added up in single precision
  bool fOutputsMayReadDerived = false;
  bool fTellsWinnersShares = false;  // a median tells the probabilities of the models that gave it
  bool fGivesProbabilities = false;
  bool fGivesConfidences = false;
  MissingTreatment fMissingTreatment = MissingTreatment::kContinue;
  double fMissingThreshold = 1.0;
  std::uint32_t fCategoryCount = 0;
  std::size_t fOwnNumbers = 0;   // scratch numbers of the ensemble itself, which come first
  std::size_t fPartNumbers = 0;  // of the segment that needs most
};

}  // namespace Torvane
