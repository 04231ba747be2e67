#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "plugins/torvane/models/ComparisonReader.h"
#include "plugins/torvane/models/InstanceTable.h"
#include "plugins/torvane/models/NearestNeighborModel.h"

namespace Torvane {

/// Reads a "NearestNeighborModel" element.
class NearestNeighborReader {
 public:
  NearestNeighborReader(const Element& model, FieldScope& scope, Target& target);
  std::unique_ptr<NearestNeighborModel> Read();

 private:
  // A "KNNInput".
  struct Input {
    std::string_view name;
    Element element;
    KelTransformNS::DataType type;
    bool hasValue = false;  // in some instance
  };

  void ReadMethods();
  void ReadInputs();
  void ReadInstances();
  void ReadTransformed();
  void ReadUntransformed();
  void AddInstance(const std::vector<KelTransformNS::Cell>& cells);
  void ChooseWinningOrder();
  [[nodiscard]] std::size_t RequiredColumn(const Element& referrer, std::string_view field) const;
  [[nodiscard]] std::string_view RequiredText(std::size_t column, std::string_view field) const;

  Element fElement;
  FieldScope& fScope;
  Target& fTarget;
  std::unique_ptr<NearestNeighborModel> fModel;
  std::shared_ptr<Neighborhood> fNeighborhood;
  ComparisonReader fComparison;
  InstanceTable fTable;
  std::vector<Input> fInputs;
  std::optional<std::size_t> fIdColumn;
  std::optional<std::size_t> fTargetColumn;
  std::vector<std::optional<std::string_view>> fIds;
};

}  // namespace Torvane
