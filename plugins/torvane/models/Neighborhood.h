#pragma once

#include <cstdint>

#include "components/keltransform/Cell.h"
#include "plugins/torvane/models/ComparisonMeasure.h"
#include "plugins/torvane/models/EntityIds.h"
#include "plugins/torvane/models/Prediction.h"

namespace Torvane {

/// The instances of a nearest neighbour model, and what finds the nearest ones. Immutable once read; the bodies of
/// several targets share one.
struct Neighborhood {
  ComparisonMeasure measure;
  EntityIds ids;
  std::uint32_t neighborCount = 0;

  /// Puts the nearest instances into the ranking, the best first and the earlier one first on a tie. Fewer than wanted
  /// are found where others have no field in common with the record; none is a missing result.
  void Find(const KelTransformNS::Cell* frame, Prediction& prediction) const noexcept;
};

}  // namespace Torvane
