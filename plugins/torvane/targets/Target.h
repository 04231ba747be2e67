#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "components/keltransform/Cell.h"
#include "components/keltransform/DataDictionary.h"
#include "plugins/torvane/fields/FieldScope.h"
#include "plugins/torvane/models/Prediction.h"
#include "plugins/torvane/targets/CategoryList.h"

namespace Torvane {

/// What a model predicts: its field, its categories, and the "Targets" that are applied to the result.
///
/// Categories come from the data dictionary, then from "Targets", then from the model itself, each in the order of the
/// document. Immutable once the model is built.
class Target {
 public:
  /// `fieldHint` chooses among several targets (the "targetFieldName" of a regression). Throws `PmmlError`.
  Target(FieldScope& scope, const Element& model, MiningFunction function, std::string_view fieldHint);

  /// Of a field that `model` predicts: that of its "Target", else of its mining field, else of its declaration.
  [[nodiscard]] static KelTransformNS::OpType OpTypeOf(const FieldScope& scope, const Element& model,
                                                       const MiningField& field);

  [[nodiscard]] const std::string& Name() const noexcept { return fName; }
  [[nodiscard]] KelTransformNS::DataType Type() const noexcept { return fType; }
  [[nodiscard]] MiningFunction Function() const noexcept { return fFunction; }
  /// Whether it predicts a number; else it is one of the categories.
  [[nodiscard]] bool IsNumeric() const noexcept { return fFunction == MiningFunction::kRegression; }
  [[nodiscard]] bool IsOrdinal() const noexcept { return fOpType == KelTransformNS::OpType::kOrdinal; }
  [[nodiscard]] const std::vector<Category>& Categories() const noexcept { return fCategories->All(); }
  /// Whether both have the very same list: no category has another place in it.
  [[nodiscard]] bool SharesCategories(const Target& other) const noexcept { return fCategories == other.fCategories; }

  /// The category that a text of the model's body names; one that isn't known yet is added. Throws if the text isn't of
  /// the target's type.
  std::uint32_t AddCategory(const Element& element, std::string_view what, std::string_view text);
  /// The same for a category of a model inside this one, whose display value a new one takes over. A cluster that is
  /// known by another name is shown by its identifier from then on.
  std::uint32_t AddCategoryOf(const Element& element, const Category& category);
  /// Adds a cluster of a clustering, whose identifiers are texts; one that is known already throws.
  void AddCluster(const Element& element, std::string_view id, std::string_view displayName);
  /// The category of a text, nothing if the model doesn't know it.
  [[nodiscard]] std::optional<std::uint32_t> FindCategory(std::string_view text) const;

  /// Whether limits, scaling or rounding change a predicted number.
  [[nodiscard]] bool Adjusts() const noexcept { return fAdjusts; }
  /// Applies defaults, limits, scaling and rounding to what the model's body gave.
  void Finish(Prediction& prediction) const noexcept {
    const bool isDone = prediction.outcome == Outcome::kValue && !fAdjusts && prediction.number == prediction.number;
    if (!isDone) FinishRare(prediction);
  }

 private:
  enum class CastInteger { kNone, kRound, kCeiling, kFloor };

  void ChooseField(const FieldScope& scope, const Element& model, std::string_view fieldHint);
  [[nodiscard]] bool Suits(const FieldScope& scope, const Element& model, const MiningField& field) const;
  void ReadDeclaration(const FieldScope& scope);
  void ReadTargets(const MiningSchema& schema, const Element& targets);
  void ReadTarget(const Element& target);
  void ReadTargetValue(const Element& targetValue, std::unordered_set<std::uint32_t>& known);
  void CheckPriors(const Element& target) const;
  [[nodiscard]] bool ShowsItself(const KelTransformNS::Cell& cell) const;
  CategoryList& OwnCategories(const Element& element);
  void FinishRare(Prediction& prediction) const noexcept;
  [[nodiscard]] double Adjust(double number) const noexcept;
  void PredictFromPriors(Prediction& prediction) const noexcept;

  KelTransformNS::TextPool& fPool;
  Expansion& fExpansion;  // only while the model is built
  MiningFunction fFunction;
  std::string fName;
  KelTransformNS::DataType fType;
  KelTransformNS::OpType fOpType;
  std::shared_ptr<CategoryList> fCategories;  // changed only where nobody shares it
  bool fHasPriors = false;

  bool fAdjusts = false;
  std::optional<double> fMin;
  std::optional<double> fMax;
  double fRescaleFactor = 1.0;
  double fRescaleConstant = 0.0;
  CastInteger fCastInteger = CastInteger::kNone;
  std::optional<double> fDefaultValue;
};

}  // namespace Torvane
