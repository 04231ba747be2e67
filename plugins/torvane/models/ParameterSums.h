#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "components/kelparsexml/PmmlMatrix.h"
#include "components/keltransform/Cell.h"
#include "plugins/torvane/models/CategoryIndex.h"

namespace Torvane {

/// The numbers that stand for the categories of a factor: a row for each category that a record may have, a column for
/// each category that a parameter may be of. Immutable.
class Contrast {
 public:
  Contrast(const std::vector<KelTransformNS::Cell>& categories, KelXML_1_3::PmmlMatrix numbers)
      : fCategories(categories), fNumbers(std::move(numbers)) {}

  /// The column of a category; nothing if it has none.
  [[nodiscard]] std::optional<std::uint32_t> FindColumn(const KelTransformNS::Cell& category) const noexcept {
    const std::uint32_t column = fCategories.Find(category);
    if (column >= fNumbers.Columns()) return std::nullopt;
    return column;
  }
  /// Gives false for a category that has no row.
  [[nodiscard]] bool Find(const KelTransformNS::Cell& category, std::uint32_t column, double& number) const noexcept {
    const std::uint32_t row = fCategories.Find(category);
    if (row == CategoryIndex::kNone) return false;
    number = fNumbers.At(row, column);
    return true;
  }

 private:
  CategoryIndex fCategories;
  KelXML_1_3::PmmlMatrix fNumbers;
};

/// What a field adds to the value of a parameter, as a factor of a product.
struct ParameterFactor {
  enum Kind : std::uint8_t {
    kNumber,    ///< x
    kSquare,    ///< x * x
    kPower,     ///< x ^ `number`
    kIsText,    ///< 1 if the field is the text `index` of the pool, else 0
    kIsNumber,  ///< 1 if the field is `number`, else 0
    kContrast,  ///< the number of the field's category in column `index` of `contrast`
  };

  Kind kind;
  std::uint32_t slot;
  std::uint32_t index = 0;
  double number = 0.0;
  const Contrast* contrast = nullptr;
};

/// Sums of terms beta * x_P over the fields of a frame, where the value x_P of parameter P is a product of factors.
/// Terms are added in the order in which they came, so that a sum is the same to the last bit wherever it is computed.
/// Filled while a model is read, immutable afterwards.
class ParameterSums {
 public:
  static constexpr std::size_t kTermBytes = 24;

  /// Factors that were added together.
  struct Factors {
    std::uint32_t first = 0;
    std::uint32_t end = 0;
  };

  /// The contrast lives as long as the sums.
  const Contrast* Own(std::unique_ptr<const Contrast> contrast);
  Factors AddFactors(const std::vector<ParameterFactor>& factors);
  /// A term of the sum that was started last. Its parameter is the product of all factors of both; without any it is 1.
  void AddTerm(double beta, Factors factors, Factors more);
  /// Starts a sum and gives its number, from 0.
  std::uint32_t StartSum();
  /// Ends the last sum; nothing can be added any more.
  void Finish();

  /// Gives false, and no sum, if a field that the sum needs is missing or has a category that its contrast doesn't
  /// know.
  [[nodiscard]] bool Evaluate(std::uint32_t sum, const KelTransformNS::Cell* frame, double& result) const noexcept;

 private:
  // Most terms are of no factor or of a single one, which then stands in the term itself.
  struct Term {
    enum Kind : std::uint8_t { kConstant, kNumber, kIsText, kProduct };
    double beta;
    std::uint32_t slot;  // of kProduct: its position in fProducts
    std::uint32_t text;  // of kIsText
    Kind kind;
  };
  static_assert(sizeof(Term) == kTermBytes);
  struct Product {
    Factors factors;
    Factors more;
  };

  [[nodiscard]] bool Multiply(const Product& product, const KelTransformNS::Cell* frame, double& value) const noexcept;
  [[nodiscard]] bool Multiply(Factors factors, const KelTransformNS::Cell* frame, double& value) const noexcept;

  std::vector<Term> fTerms;
  std::vector<std::uint32_t> fFirstTerms;  // of each sum, and the end of the last one
  std::vector<Product> fProducts;
  std::vector<ParameterFactor> fFactors;
  std::vector<std::unique_ptr<const Contrast>> fContrasts;
};

}  // namespace Torvane
