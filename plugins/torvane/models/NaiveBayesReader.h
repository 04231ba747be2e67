#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "plugins/torvane/models/NaiveBayesModel.h"

namespace Torvane {

/// Reads a "NaiveBayesModel" element.
class NaiveBayesReader {
 public:
  NaiveBayesReader(const Element& model, FieldScope& scope, Target& target);
  std::unique_ptr<NaiveBayesModel> Read();

 private:
  using Distribution = NaiveBayesModel::Distribution;
  using Input = NaiveBayesModel::Input;

  // Where the cell of an input comes from.
  struct Source {
    std::uint32_t slot;
    KelTransformNS::DataType dataType;
  };

  void ReadThreshold();
  void ReadOutput();
  void ChooseCategories();
  void ReadInputs();
  void ReadInput(const Element& element);
  Source ReadSource(const Element& element);
  Source CompileDerived(const Element& derived);
  void ReadPairCounts(const Element& element, const Source& source, Input& input);
  void ReadValue(const Element& pairCounts, const Source& source, Input& input);
  void ReadRow(const Element& pairCounts);
  void CheckSize(const Element& pairCounts) const;
  void TakeLogarithms(const Element& element, std::size_t first);
  void ReadStats(const Element& stats, Input& input);
  void ReadStat(const Element& stat, Input& input);
  [[nodiscard]] static Distribution ReadDistribution(const Element& stat);
  [[nodiscard]] static Distribution ReadNormal(const Element& normal);
  [[nodiscard]] std::uint32_t TakePlace(const Element& element);

  Element fElement;
  FieldScope& fScope;
  Target& fTarget;
  std::unique_ptr<NaiveBayesModel> fModel;
  double fThreshold = 0.0;
  std::vector<std::optional<double>> fCounts;  // of the target's categories; none: the output doesn't tell of it
  std::vector<std::uint32_t> fPlaces;          // of the target's categories among those of the model
  std::set<std::string, std::less<>> fFieldNames;

  std::set<std::pair<double, std::uint32_t>> fValues;  // of the input that is being read
  std::uint32_t fList = 0;                             // the number of the list that is being read
  std::vector<std::uint32_t> fToldIn;                  // of the target's categories: the last list that holds it
  std::size_t fToldCounts = 0;                         // of all inputs
};

}  // namespace Torvane
