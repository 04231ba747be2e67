#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "plugins/torvane/fields/FieldScope.h"
#include "plugins/torvane/models/ModelBody.h"
#include "plugins/torvane/models/Neighborhood.h"
#include "plugins/torvane/targets/Target.h"

namespace Torvane {

/// A prediction from the k training instances that are nearest to the record: the average or median of their numbers,
/// or the vote for their categories, of which the shares are the probabilities. A clustering predicts the nearest
/// instance itself: the instances are its categories.
class NearestNeighborModel final : public ModelBody {
 public:
  static std::unique_ptr<ModelBody> Build(const Element& model, FieldScope& scope, Target& target);
  /// The body of another target of the model that `first` was built of.
  static std::unique_ptr<ModelBody> BuildFurther(const ModelBody& first, const Element& model, FieldScope& scope,
                                                 Target& target);

  void Evaluate(KelTransformNS::Frame frame, Prediction& prediction) const noexcept override;
  /// The record, and then the numbers of the neighbours.
  [[nodiscard]] std::size_t ScratchCount() const noexcept override {
    return fNeighborhood->measure.RecordSize() + fNeighborhood->neighborCount;
  }
  [[nodiscard]] std::uint32_t RankingCapacity() const noexcept override { return fNeighborhood->neighborCount; }
  [[nodiscard]] bool GivesProbabilities() const noexcept override { return fIsVote; }
  [[nodiscard]] std::uint32_t EntityCount() const noexcept override { return fNeighborhood->measure.PointCount(); }
  void WriteEntity(std::uint32_t entity, KelCommon_1_3::Value& value) const override {
    fNeighborhood->ids.Write(entity, value);
  }
  [[nodiscard]] std::span<const KindOutput> KindOutputs() const noexcept override;

 private:
  friend class NearestNeighborReader;

  [[nodiscard]] double Average(const Prediction& prediction) const noexcept;
  [[nodiscard]] double Median(const Prediction& prediction) const noexcept;
  void Vote(Prediction& prediction) const noexcept;
  [[nodiscard]] double WeightOf(const RankedEntity& neighbor) const noexcept {
    return fIsWeighted ? 1.0 / (neighbor.affinity + fThreshold) : 1.0;
  }

  std::shared_ptr<const Neighborhood> fNeighborhood;
  bool fIsVote = false;
  bool fIsMedian = false;
  bool fIsWeighted = false;
  double fThreshold = 0.0;
  std::vector<double> fNumbers;            // of a regression: one for each instance
  std::vector<std::uint32_t> fCategories;  // of a classification: the same
  // All categories: those with more instances first, then by their texts. The first one wins a tie.
  std::vector<std::uint32_t> fWinningOrder;
};

}  // namespace Torvane
