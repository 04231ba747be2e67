#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "plugins/torvane/models/GeneralRegressionModel.h"
#include "plugins/torvane/models/ParameterReader.h"

namespace Torvane {

/// Reads a "GeneralRegressionModel" element.
class GeneralRegressionReader {
 public:
  GeneralRegressionReader(const Element& model, FieldScope& scope, Target& target);
  std::unique_ptr<GeneralRegressionModel> Read();

 private:
  using Form = GeneralRegressionModel::Form;
  using Equation = GeneralRegressionModel::Equation;
  using Quantity = GeneralRegressionModel::Quantity;
  using Coefficient = ParameterReader::Coefficient;

  enum class ModelType : std::uint8_t { kLinear, kGeneralized, kMultinomial, kOrdinal, kCox };

  void ReadModelType();
  void ReadLinks();
  void ReadLinkFunction();
  void CheckImpliedLink() const;
  [[nodiscard]] double ReadLinkParameter() const;
  void ReadOffset();
  void ReadTrials();
  [[nodiscard]] Quantity ReadQuantity(const char* variable, const char* value, double absent);

  [[nodiscard]] std::uint32_t ReadCategory(const Element& cell);
  [[nodiscard]] std::uint32_t ReadOnlyCategory(const Element& cell, std::string_view text);
  void ReadReference();
  void ReadEquations();
  void ReadSingle();
  void ReadBinary();
  [[nodiscard]] std::uint32_t FindEvent() const;
  [[nodiscard]] std::uint32_t FindOther(std::uint32_t category) const;
  void ReadMultinomial();
  [[nodiscard]] std::uint32_t FindReference() const;
  void ReadOrdinal();
  void ReadCox();

  void AddShared();
  void AddOwnTerms(std::uint32_t category);
  void GroupByCategory();
  [[nodiscard]] bool HasOwn(std::uint32_t category) const { return !fOwn[category].empty(); }

  Element fElement;
  FieldScope& fScope;
  Target& fTarget;
  std::unique_ptr<GeneralRegressionModel> fModel;
  ModelType fType = ModelType::kLinear;
  bool fIsClassification = false;
  bool fKnowsCategories = false;  // the target lists them
  std::optional<std::string> fOnlyCategory;
  std::uint32_t fReference = ParameterReader::kNoCategory;
  std::optional<ParameterReader> fParameters;
  std::vector<std::vector<Coefficient>> fOwn;  // by category
  std::vector<Coefficient> fShared;            // of all categories, the same for each
  std::vector<Coefficient> fVaried;  // of all categories, with a parameter that some have a value of their own of
};

}  // namespace Torvane
