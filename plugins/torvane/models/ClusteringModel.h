#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "plugins/torvane/fields/FieldScope.h"
#include "plugins/torvane/models/ComparisonMeasure.h"
#include "plugins/torvane/models/ModelBody.h"
#include "plugins/torvane/targets/Target.h"

namespace Torvane {

/// Clusters that are told by their centres, or by distributions of the fields' values. The best one by the model's
/// measure wins, the first one on a tie; clusters, categories and entities have the same numbers.
class ClusteringModel final : public ModelBody {
 public:
  static std::unique_ptr<ModelBody> Build(const Element& model, FieldScope& scope, Target& target);

  explicit ClusteringModel(const Target& target) : fTarget(target) {}
  void Evaluate(KelTransformNS::Frame frame, Prediction& prediction) const noexcept override;
  [[nodiscard]] std::size_t ScratchCount() const noexcept override { return fMeasure.RecordSize(); }
  [[nodiscard]] std::uint32_t RankingCapacity() const noexcept override { return fMeasure.PointCount(); }
  [[nodiscard]] bool GivesProbabilities() const noexcept override { return false; }
  [[nodiscard]] std::uint32_t EntityCount() const noexcept override { return fMeasure.PointCount(); }
  void WriteEntity(std::uint32_t entity, KelCommon_1_3::Value& value) const override;
  [[nodiscard]] std::span<const KindOutput> KindOutputs() const noexcept override;

 private:
  friend class ClusteringReader;

  const Target& fTarget;  // knows the identifiers
  ComparisonMeasure fMeasure;
};

}  // namespace Torvane
