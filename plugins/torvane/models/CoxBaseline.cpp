#include "plugins/torvane/models/CoxBaseline.h"

#include <algorithm>

#include "plugins/torvane/Reading.h"

namespace Torvane {

using KelTransformNS::Cell;

CoxBaseline::CoxBaseline(const Element& model, FieldScope& scope)
    : fTimeSlot(scope.ResolveNumeric(model.Required("endTimeVariable"), model).slot),
      fHasStrata(model.Attribute("baselineStrataVariable").has_value()) {
  const Element tables = model.RequiredChild("BaseCumHazardTables");
  if (fHasStrata) {
    RefuseUnknownChildren(tables, {"BaselineStratum"});
    ReadStrata(tables, model, scope);
  } else {
    RefuseUnknownChildren(tables, {"BaselineCell"});
    ReadTable(tables);
  }
}

void CoxBaseline::ReadStrata(const Element& tables, const Element& model, FieldScope& scope) {
  const Field& field = scope.Resolve(model.Required("baselineStrataVariable"), model);
  fStratumSlot = field.slot;
  std::vector<Cell> strata;
  for (Element stratum = tables.RequiredChild("BaselineStratum"); stratum; stratum = stratum.Next("BaselineStratum")) {
    RefuseUnknownChildren(stratum, {"BaselineCell"});
    strata.push_back(ReadComparand(stratum, "value", stratum.Required("value"), field.dataType, scope.Pool()));
    ReadTable(stratum);
  }
  fStrata = CategoryIndex(strata);
  if (fStrata.HasRepeated()) throw tables.Error("has two strata of the same value");
}

void CoxBaseline::ReadTable(const Element& table) {
  const auto first = static_cast<std::uint32_t>(fSteps.size());
  for (Element cell = table.Child("BaselineCell"); cell; cell = cell.Next("BaselineCell")) {
    RefuseUnknownChildren(cell, {});
    const Step step{RequiredFinite(cell, "time"), RequiredFinite(cell, "cumHazard")};
    if (step.hazard < 0.0) throw cell.AttributeError("cumHazard", "is below 0");
    fSteps.push_back(step);
  }
  if (fSteps.size() == first) throw table.Error("has no <BaselineCell>");
  std::sort(fSteps.begin() + first, fSteps.end(), [](const Step& a, const Step& b) { return a.time < b.time; });
  const auto repeated = std::adjacent_find(fSteps.begin() + first, fSteps.end(),
                                           [](const Step& a, const Step& b) { return a.time == b.time; });
  if (repeated != fSteps.end()) throw table.Error("has two cells of the same time");
  fTables.push_back({RequiredFinite(table, "maxTime"), first, static_cast<std::uint32_t>(fSteps.size())});
}

bool CoxBaseline::Find(const Cell* frame, double& hazard) const noexcept {
  const std::uint32_t index = fHasStrata ? fStrata.Find(frame[fStratumSlot]) : 0;
  if (index == CategoryIndex::kNone) return false;
  const Table& table = fTables[index];
  const Cell& time = frame[fTimeSlot];
  if (time.state != Cell::kNumber || !(time.number <= table.maxTime)) return false;
  const auto first = fSteps.begin() + table.first;
  const auto next = std::upper_bound(first, fSteps.begin() + table.end, time.number,
                                     [](double wanted, const Step& step) { return wanted < step.time; });
  hazard = next == first ? 0.0 : (next - 1)->hazard;
  return true;
}

}  // namespace Torvane
