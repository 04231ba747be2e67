#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "plugins/torvane/models/MiningModel.h"

namespace Torvane {

/// Reads a "MiningModel": a "Segmentation", or models that are composed by the older way.
class MiningReader {
 public:
  MiningReader(const Element& model, FieldScope& scope, Target& target);
  std::unique_ptr<MiningModel> Read();

 private:
  using Method = MiningModel::Method;
  using MissingTreatment = MiningModel::MissingTreatment;
  using Segment = MiningModel::Segment;

  void ReadSegmentation(const Element& segmentation);
  void ReadSegments(const Element& segmentation);
  void CheckOrder(const Element& segmentation) const;
  void ReadMethod(const Element& segmentation);
  void CheckMethod(const Element& segmentation) const;
  void ReadMissingTreatment(const Element& segmentation);
  void CollectAskedOutputs();
  void ReadSegment(const Element& element);
  void ReadWeight(const Element& element, Segment& segment);
  void AddId(const Element& element);
  void AddModel(const Element& element, const std::vector<Element>& asked, Segment segment);
  void CheckFunction(const Element& element, const Segment& segment) const;
  void ReadComposition();
  void ConcludeChain();
  void Conclude();
  void LayOutTrees();

  void SeparateDerivedFields(const Element& predicate);
  [[nodiscard]] bool PredictsTheSame(const Segment& segment) const;
  [[nodiscard]] bool IsSelection() const noexcept;

  const Element fElement;
  FieldScope& fScope;
  Target& fTarget;
  std::unique_ptr<MiningModel> fModel;
  PredicateCompiler fPredicates;
  NameMap<std::vector<Element>> fAsked;  // output fields of the ensemble that ask a segment, by the segment's id
  NameMap<bool> fKnownIds;
  bool fComputesAtOnce = true;  // the derived fields of all segments so far, before the first one
};

}  // namespace Torvane
