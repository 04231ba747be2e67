#include "plugins/torvane/models/Neighborhood.h"

#include <algorithm>
#include <cmath>

namespace Torvane {

void Neighborhood::Find(const KelTransformNS::Cell* frame, Prediction& prediction) const noexcept {
  prediction.outcome = measure.ReadRecord(frame, prediction.scratch);
  if (prediction.outcome != Outcome::kValue) return;
  // A heap with the worst of the nearest so far in front. One that is as good comes later, and so goes without.
  const auto isBetter = [&](const RankedEntity& a, const RankedEntity& b) { return measure.IsBetter(a, b); };
  RankedEntity* const nearest = prediction.ranking;
  std::uint32_t count = 0;
  bool isDefined = true;
  measure.ForEachPoint(prediction.scratch, [&](std::uint32_t instance, double affinity) {
    isDefined = isDefined && !std::isnan(affinity);
    if (count == neighborCount) {
      if (!measure.IsBetter(affinity, nearest[0].affinity)) return;
      std::pop_heap(nearest, nearest + count--, isBetter);
    }
    nearest[count++] = {instance, affinity};
    std::push_heap(nearest, nearest + count, isBetter);
  });
  if (!isDefined || count == 0) {
    prediction.outcome = isDefined ? Outcome::kMissing : Outcome::kInvalid;
    return;
  }
  if (std::isinf(nearest[0].affinity)) {  // the worst: which of the infinite ones are the nearest isn't known
    prediction.outcome = Outcome::kInvalid;
    return;
  }
  std::sort_heap(nearest, nearest + count, isBetter);
  prediction.rankingCount = count;
  prediction.entity = nearest[0].entity;
  prediction.affinity = nearest[0].affinity;
}

}  // namespace Torvane
