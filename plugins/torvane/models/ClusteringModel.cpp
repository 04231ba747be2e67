#include "plugins/torvane/models/ClusteringModel.h"

#include <algorithm>
#include <cmath>

#include "scoring/common/KelScoringConst.h"

namespace Torvane {

void ClusteringModel::Evaluate(KelTransformNS::Frame frame, Prediction& prediction) const noexcept {
  prediction.outcome = fMeasure.ReadRecord(frame.data(), prediction.scratch);
  if (prediction.outcome != Outcome::kValue) return;
  RankedEntity best{Prediction::kNone, 0.0};
  bool isDefined = true;
  fMeasure.ForEachPoint(prediction.scratch, [&](std::uint32_t cluster, double affinity) {
    isDefined = isDefined && !std::isnan(affinity);
    if (cluster == 0 || fMeasure.IsBetter(affinity, best.affinity)) best = {cluster, affinity};
    if (prediction.wantsRanking) prediction.ranking[cluster] = {cluster, affinity};
  });
  if (!isDefined || std::isinf(best.affinity)) {  // if even the best is infinite, none is better than another
    prediction.outcome = Outcome::kInvalid;
    return;
  }
  prediction.category = best.entity;
  prediction.entity = best.entity;
  prediction.affinity = best.affinity;
  if (!prediction.wantsRanking) return;
  prediction.rankingCount = fMeasure.PointCount();
  std::sort(prediction.ranking, prediction.ranking + prediction.rankingCount,
            [&](const RankedEntity& a, const RankedEntity& b) { return fMeasure.IsBetter(a, b); });
}

void ClusteringModel::WriteEntity(std::uint32_t entity, KelCommon_1_3::Value& value) const {
  value = fTarget.Categories()[entity].text;
}

std::span<const KindOutput> ClusteringModel::KindOutputs() const noexcept {
  static constexpr KindOutput kOutputs[] = {
      {KelScoring_20::KelScoringConst::kOutputClusteringClusterid, Feature::kEntityId}};
  return kOutputs;
}

}  // namespace Torvane
