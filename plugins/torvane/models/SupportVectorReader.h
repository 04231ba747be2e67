#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "components/kelcommon/Hashing.h"
#include "plugins/torvane/models/SupportVectorModel.h"

namespace Torvane {

/// Reads a "SupportVectorMachineModel" element.
class SupportVectorReader {
 public:
  SupportVectorReader(const Element& model, FieldScope& scope, Target& target);
  std::unique_ptr<SupportVectorModel> Read();

 private:
  using Decision = SupportVectorModel::Decision;
  using Machine = SupportVectorModel::Machine;

  void ReadKernel();
  void ReadFields(const Element& fields);
  SupportVectorModel::Input ReadCategoricalPredictor(const Element& predictor);
  void ListInstances();
  void ReadInstances();
  void ReadInstance(const Element& instance, SparseRows* rows) const;
  void PlaceTerms();
  void ReadMachine(const Element& element);
  void ReadTerms(const Element& machine, const Element& coefficients);
  std::vector<std::uint32_t> ReadPlaces(const Element& machine);
  [[nodiscard]] std::vector<std::uint32_t> FieldPlaces(const Element& machine) const;
  void ReadCategories();
  [[nodiscard]] Decision ChooseDecision(const Element& first) const;
  std::uint32_t AddCategory(const Element& machine, std::string_view what, std::string_view text);
  std::uint32_t ReadAlternate(const Element& element, const Machine& machine);
  [[nodiscard]] std::optional<std::string_view> FindAlternate(const Element& machine) const;
  [[nodiscard]] std::string_view OtherCategory(const Element& machine, std::uint32_t category) const;
  void CheckMachines() const;

  Element fElement;
  FieldScope& fScope;
  Target& fTarget;
  std::unique_ptr<SupportVectorModel> fModel;
  Kernel fKernel;
  Element fDictionary;
  std::unordered_map<std::string_view, std::uint32_t, KelCommon_1_3::NameHash> fInstances;  // by id
  std::vector<bool> fIsUsed;                                                                // of the instances
  std::unordered_set<std::uint32_t> fKnown;  // categories that a machine names
};

}  // namespace Torvane
