#pragma once

#include <cstdint>
#include <vector>

#include "components/keltransform/Cell.h"
#include "plugins/torvane/fields/FieldScope.h"
#include "plugins/torvane/models/CategoryIndex.h"

namespace Torvane {

/// The cumulative hazards of a Cox regression's reference case over time, of one population or of several strata.
/// Immutable.
class CoxBaseline {
 public:
  CoxBaseline() = default;
  /// Reads "BaseCumHazardTables" of a model whose time, and stratum if it has any, are in fields of the scope. Throws
  /// `PmmlError`.
  CoxBaseline(const Element& model, FieldScope& scope);

  /// The cumulative hazard at the time of a frame: that of the last step up to it, 0 before the first one. Gives false
  /// where the time or the stratum is missing, the stratum isn't known, or the time lies behind what was observed.
  [[nodiscard]] bool Find(const KelTransformNS::Cell* frame, double& hazard) const noexcept;

 private:
  struct Table {
    double maxTime;
    std::uint32_t first;
    std::uint32_t end;
  };
  struct Step {
    double time;
    double hazard;
  };

  void ReadStrata(const Element& tables, const Element& model, FieldScope& scope);
  void ReadTable(const Element& table);

  std::uint32_t fTimeSlot = 0;
  std::uint32_t fStratumSlot = 0;
  bool fHasStrata = false;
  CategoryIndex fStrata;       // positions in fTables
  std::vector<Table> fTables;  // the only one where there are no strata
  std::vector<Step> fSteps;    // of each table in the order of time
};

}  // namespace Torvane
