#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "plugins/torvane/fields/FieldScope.h"
#include "plugins/torvane/models/LinkFunctions.h"
#include "plugins/torvane/models/ModelBody.h"
#include "plugins/torvane/models/RegressionTable.h"
#include "plugins/torvane/targets/Target.h"

namespace Torvane {

/// Regression by tables of predictors, to a number or to the probabilities of categories.
///
/// y = intercept + sum of coefficient * x ^ exponent + sum of the coefficients of the categories that are there
///   + sum of coefficient * product of the fields of a term.
/// A classification has a table for each category, whose y become probabilities by the normalization method.
class RegressionModel final : public ModelBody {
 public:
  static std::unique_ptr<ModelBody> Build(const Element& model, FieldScope& scope, Target& target);

  void Evaluate(KelTransformNS::Frame frame, Prediction& prediction) const noexcept override;

 private:
  friend class RegressionReader;

  // How the y of the tables become probabilities. F is the inverse of the link.
  enum class Combination : std::uint8_t {
    kEach,        // p_j = F(y_j)
    kEachShared,  // p_j = F(y_j) / sum of F(y_i)
    kSoftmax,     // p_j = exp(y_j) / sum of exp(y_i)
    kBinary,      // p = F(y) of the one table, 1 - p of the other
    kRemainder,   // p_j = F(y_j), of the last table what remains to 1
    kCumulative,  // p_j = F(y_j) - F(y_(j-1)) along the order of the categories, of the last what remains to 1
  };

  void Classify(const KelTransformNS::Cell* frame, Prediction& prediction) const noexcept;
  void Combine(double* p) const noexcept;
  void Accumulate(double* p) const noexcept;

  std::vector<RegressionTable> fTables;      // a classification's: in document order, but along the order of an ordinal
  std::vector<std::uint32_t> fCategories;    // of each table
  std::vector<std::uint32_t> fWinningOrder;  // of the tables, in document order: the first one wins a tie
  std::vector<std::uint32_t> fUntold;        // categories of the target without a table, whose probability is 0
  Link fLink = Link::kIdentity;
  Combination fCombination = Combination::kEach;
  std::uint32_t fBinaryTable = 0;  // of kBinary: the table whose y counts
  bool fIsClassification = false;
};

}  // namespace Torvane
