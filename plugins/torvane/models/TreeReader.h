#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "plugins/torvane/models/SelectionTree.h"
#include "plugins/torvane/models/TreeModel.h"

namespace Torvane {

/// Reads a "TreeModel" element. Documents nest nodes thousands deep, so nothing here calls itself.
class TreeReader {
 public:
  TreeReader(const Element& model, FieldScope& scope, Target& target);
  std::unique_ptr<TreeModel> Read();
  /// The models that leaves hold, after `Read`.
  [[nodiscard]] std::vector<SelectionTree::Leaf> TakeModels() { return std::move(fModels); }

 private:
  using Strategy = TreeModel::MissingStrategy;

  // A "ScoreDistribution" as it stands.
  struct Entry {
    std::uint32_t category;
    double recordCount;
    std::optional<double> confidence;
    std::optional<double> probability;
  };
  // A node whose children are being read.
  struct OpenNode {
    std::uint32_t node;
    std::uint32_t lastChild;
    Element element;
    Element nextChild;
  };

  void ReadStrategies();
  void CheckStrategies() const;
  void ReadNodes(const Element& root);
  void ReadChild(OpenNode& parent, std::vector<OpenNode>& open);
  OpenNode AddNode(const Element& element);
  void ReadPredicate(const Element& element);
  void ReadResult(const Element& element, std::uint32_t node, bool isInner);
  void ReadDistribution(const Element& element);
  void StampCategory(const Element& distribution, std::uint32_t category);
  void ReadRecordCount(const Element& element, bool isInner);
  void AddEntries(const Element& element, bool isInner);
  void ReadModels(const Element& element, std::uint32_t node, bool isInner);
  void AddModel(const Element& element, std::uint32_t node);
  void MarkSplit(std::uint32_t node);
  void FindDefaultChild(const OpenNode& open);
  [[nodiscard]] std::uint32_t AddScore(const Element& element, std::string_view what, std::string_view text);
  [[nodiscard]] std::uint32_t BestEntry() const;
  [[nodiscard]] static Element MostFrequent(const Element& node);
  [[nodiscard]] static double Probability(const Entry& entry, bool allGiven, double countSum);
  [[nodiscard]] bool InnerNodesPredict() const;
  void ShareCategories();
  void Shrink();

  Element fElement;
  FieldScope& fScope;
  Target& fTarget;
  std::unique_ptr<TreeModel> fTree;
  PredicateCompiler fPredicates;
  std::vector<std::optional<std::string_view>> fIds;
  std::vector<Entry> fEntries;           // of the current node
  std::vector<std::size_t> fLastNodeOf;  // by category: how many nodes there were with the last one that names it
  bool fHasConfidences = false;
  std::vector<SelectionTree::Leaf> fModels;
};

}  // namespace Torvane
