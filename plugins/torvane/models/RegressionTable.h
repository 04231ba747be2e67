#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "components/keltransform/Cell.h"
#include "plugins/torvane/fields/FieldScope.h"

namespace Torvane {

/// One "RegressionTable": a sum of terms over the fields of a frame. Terms are added in the order of the document, so
/// that the sum is the same to the last bit wherever it is computed. Immutable.
class RegressionTable {
 public:
  /// Throws `PmmlError` for an unknown field, a text where a number is needed, a malformed coefficient.
  RegressionTable(const Element& element, FieldScope& scope);

  /// Gives false, and no sum, if a field that the table can't do without is missing. A missing categorical field
  /// adds nothing.
  [[nodiscard]] bool Evaluate(const KelTransformNS::Cell* frame, double& sum) const noexcept;
  /// A table without predictors and with the intercept 0 stands for the reference category.
  [[nodiscard]] bool IsTrivial() const noexcept;

 private:
  struct NumericTerm {
    double coefficient;
    std::uint32_t slot;
    int exponent;
  };
  // A run of categorical predictors of one field: at most one of them is there, and it is found by a lookup.
  struct CategoryTerm {
    std::uint32_t slot;
    bool isText;
    std::uint32_t firstText = 0;
    std::vector<double> byText;  // coefficients from firstText on; 0 for a category without a predictor
    std::vector<std::pair<std::uint32_t, double>> textList;  // instead of byText where the numbers lie far apart
    std::vector<std::pair<double, double>> numberList;
  };
  struct ProductTerm {
    double coefficient;
    std::uint32_t firstSlot;  // in fProductSlots
    std::uint32_t endSlot;
  };
  void ReadNumericPredictor(const Element& element, FieldScope& scope);
  void ReadCategoricalPredictors(const Element& table, FieldScope& scope);
  void AddCategory(std::uint32_t slot, const KelTransformNS::Cell& category, double coefficient);
  static void Seal(CategoryTerm& term);
  void ReadTerm(const Element& element, FieldScope& scope);
  [[nodiscard]] static double Coefficient(const CategoryTerm& term, const KelTransformNS::Cell& cell) noexcept;

  double fIntercept;
  std::vector<NumericTerm> fNumericTerms;
  std::vector<CategoryTerm> fCategoryTerms;
  std::vector<ProductTerm> fProductTerms;
  std::vector<std::uint32_t> fProductSlots;
};

}  // namespace Torvane
