#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "plugins/torvane/models/ClusteringModel.h"
#include "plugins/torvane/models/ComparisonReader.h"

namespace Torvane {

/// Reads a "ClusteringModel" element.
class ClusteringReader {
 public:
  ClusteringReader(const Element& model, FieldScope& scope, Target& target);
  std::unique_ptr<ClusteringModel> Read();

 private:
  // A field of a model of distributions.
  struct Distribution {
    std::string_view name;
    std::size_t size;
  };

  void ReadClusteringFields();
  void ReadStatistics();
  void ReadClusteringField(const Element& element);
  void ReadCenterFields(const Element& centerFields);
  [[nodiscard]] Element FindSettings(const Element& derivedField) const;
  [[nodiscard]] ListedValues ListValues(const Element& element, std::string_view name, const Field& field);
  void ReadMissingWeights();
  void ReadClusters();
  void ReadPartition(const Element& partition);
  void ReadShares(const Element& stats, const Distribution& distribution);

  Element fElement;
  FieldScope& fScope;
  Target& fTarget;
  std::unique_ptr<ClusteringModel> fModel;
  ComparisonReader fComparison;
  bool fHasCenters = true;
  std::vector<bool> fIsCenterField;   // of each "ClusteringField"
  NameMap<Element> fSettings;         // the "ClusteringField" of each name
  NameMap<Element> fUnivariateStats;  // of each field that has some
  std::vector<Distribution> fDistributions;
  std::vector<double> fShares;  // of the cluster that is being read
};

}  // namespace Torvane
