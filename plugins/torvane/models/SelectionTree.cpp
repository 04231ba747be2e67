#include "plugins/torvane/models/SelectionTree.h"

#include <algorithm>
#include <utility>

namespace Torvane {

SelectionTree::SelectionTree(std::unique_ptr<const TreeModel> tree, std::vector<Leaf> leaves,
                             std::vector<std::uint32_t> outputSlots, std::size_t categoryCount)
    : fTree(std::move(tree)),
      fLeaves(std::move(leaves)),
      fOutputSlots(std::move(outputSlots)),
      fCategoryCount(categoryCount) {
  for (const Leaf& leaf : fLeaves) fScratchCount = std::max(fScratchCount, leaf.model->NumberCount());
}

// The tree says by its entity where the record ends. A leaf without a score is invalid there, but here it is the model
// that counts.
void SelectionTree::Evaluate(KelTransformNS::Frame frame, Prediction& prediction) const {
  for (const std::uint32_t slot : fOutputSlots) frame[slot] = KelTransformNS::Cell::Missing();
  fTree->Evaluate(frame, prediction);
  const Leaf* const leaf = FindLeaf(prediction.entity);
  if (leaf == nullptr) return;
  Prediction part = leaf->model->MakePrediction(prediction.scratch);
  part.wantsDistribution = prediction.wantsDistribution;
  leaf->model->EvaluateMember(frame, part);
  if (part.outcome == Outcome::kValue) {
    leaf->HandOver(part, fCategoryCount, prediction);
  } else if (part.outcome == Outcome::kInvalid) {
    prediction.outcome = Outcome::kInvalid;
  } else if (prediction.outcome == Outcome::kInvalid) {
    prediction.outcome = Outcome::kMissing;
  }
}

const SelectionTree::Leaf* SelectionTree::FindLeaf(std::uint32_t node) const noexcept {
  const auto found = std::lower_bound(fLeaves.begin(), fLeaves.end(), node,
                                      [](const Leaf& leaf, std::uint32_t wanted) { return leaf.node < wanted; });
  return found != fLeaves.end() && found->node == node ? &*found : nullptr;
}

}  // namespace Torvane
