#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "plugins/torvane/models/Member.h"
#include "plugins/torvane/models/ModelBody.h"
#include "plugins/torvane/models/TreeModel.h"

namespace Torvane {

/// A tree that chooses among models: some of its leaves hold one, which gives the result for the records that end
/// there. Where it has none, the leaf's own score stands in.
class SelectionTree final : public ModelBody {
 public:
  struct Leaf : Member {
    std::uint32_t node;
  };

  /// `leaves` in the order of their nodes. `outputSlots` hold what the models tell by output fields.
  SelectionTree(std::unique_ptr<const TreeModel> tree, std::vector<Leaf> leaves, std::vector<std::uint32_t> outputSlots,
                std::size_t categoryCount);

  void Evaluate(KelTransformNS::Frame frame, Prediction& prediction) const override;
  [[nodiscard]] std::size_t ScratchCount() const noexcept override { return fScratchCount; }
  [[nodiscard]] bool GivesConfidences() const noexcept override { return fTree->GivesConfidences(); }
  [[nodiscard]] std::uint32_t EntityCount() const noexcept override { return fTree->EntityCount(); }
  void WriteEntity(std::uint32_t entity, KelCommon_1_3::Value& value) const override {
    fTree->WriteEntity(entity, value);
  }
  [[nodiscard]] std::span<const KindOutput> KindOutputs() const noexcept override { return fTree->KindOutputs(); }

 private:
  [[nodiscard]] const Leaf* FindLeaf(std::uint32_t node) const noexcept;

  std::unique_ptr<const TreeModel> fTree;
  std::vector<Leaf> fLeaves;
  std::vector<std::uint32_t> fOutputSlots;  // missing unless their model is chosen
  std::size_t fCategoryCount;
  std::size_t fScratchCount = 0;
};

}  // namespace Torvane
