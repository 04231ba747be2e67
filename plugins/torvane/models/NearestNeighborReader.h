#pragma once

#include <memory>

#include "plugins/torvane/models/InstanceTable.h"
#include "plugins/torvane/models/NearestNeighborModel.h"

namespace Torvane {

/// Reads of a "NearestNeighborModel" element what concerns one target: the method, and the target's value of each
/// instance.
class NearestNeighborReader {
 public:
  NearestNeighborReader(const Element& model, Target& target, std::shared_ptr<const Neighborhood> neighborhood);
  std::unique_ptr<NearestNeighborModel> Read();

 private:
  void ReadMethods();
  void ReadThreshold();
  void ReadTargetValues();
  void ReadTargetValue(const Element& row, std::string_view text);
  void NameInstances();
  void ChooseWinningOrder();

  Element fElement;
  Target& fTarget;
  std::unique_ptr<NearestNeighborModel> fModel;
};

}  // namespace Torvane
