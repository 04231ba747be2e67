#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "plugins/torvane/models/ComparisonReader.h"
#include "plugins/torvane/models/InstanceTable.h"
#include "plugins/torvane/models/Neighborhood.h"

namespace Torvane {

/// Reads of a "NearestNeighborModel" element what its targets share: the inputs and the instances that records are
/// compared with.
class NeighborhoodReader {
 public:
  NeighborhoodReader(const Element& model, FieldScope& scope);
  std::shared_ptr<const Neighborhood> Read();

 private:
  // A "KNNInput".
  struct Input {
    std::string_view name;
    Element element;
    KelTransformNS::DataType type;
    bool hasValue = false;  // in some instance
  };

  void ReadCount();
  void ReadInputs();
  void ReadInstances();
  void ReadTransformed();
  void ReadUntransformed();
  void AddInstance(const std::vector<KelTransformNS::Cell>& cells);
  void CheckInstances() const;

  Element fElement;
  FieldScope& fScope;
  std::shared_ptr<Neighborhood> fNeighborhood;
  ComparisonReader fComparison;
  InstanceTable fTable;
  std::vector<Input> fInputs;
  std::optional<std::size_t> fIdColumn;
  std::vector<std::optional<std::string_view>> fIds;
};

}  // namespace Torvane
