#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "plugins/torvane/fields/FieldScope.h"
#include "plugins/torvane/models/CoxBaseline.h"
#include "plugins/torvane/models/LinkFunctions.h"
#include "plugins/torvane/models/ModelBody.h"
#include "plugins/torvane/models/ParameterSums.h"
#include "plugins/torvane/targets/Target.h"

namespace Torvane {

/// General regression: linear, generalized linear, multinomial, ordinal and Cox regression by parameters that are
/// products of factors and powers of covariates.
///
/// y = sum of beta * x_P over the parameters P. A missing predictor leaves the model without a result.
class GeneralRegressionModel final : public ModelBody {
 public:
  static std::unique_ptr<ModelBody> Build(const Element& model, FieldScope& scope, Target& target);

  void Evaluate(KelTransformNS::Frame frame, Prediction& prediction) const noexcept override;
  [[nodiscard]] std::span<const KindOutput> KindOutputs() const noexcept override;

 private:
  friend class GeneralRegressionReader;

  // How y becomes a result; G is the inverse of the link, a the offset, b the number of trials.
  enum class Form : std::uint8_t {
    kNumber,       // G(y + a) * b
    kBinary,       // p = G(y + a) of one category, 1 - p of the other
    kMultinomial,  // p_j = exp(y_j + a) / sum of exp(y_i + a), where the reference category has 0 in the exponent
    kCumulative,   // p_j = G(y_j + a) - G(y_(j-1) + a) along the order of the categories, of the last what remains to 1
    kCox,          // survival exp(-H) at a time, of the cumulative hazard H = H_0 * exp(y - y of the reference point)
  };

  // A number that the document gives, or that of a field.
  struct Quantity {
    static constexpr std::uint32_t kNoSlot = 0xFFFFFFFFU;
    double number;
    std::uint32_t slot = kNoSlot;
    [[nodiscard]] bool Read(const KelTransformNS::Cell* frame, double& value) const noexcept;
  };

  // A category that the model tells the probability of, and its sum.
  struct Equation {
    static constexpr std::uint32_t kNoSum = 0xFFFFFFFFU;  // of the reference category
    std::uint32_t category;
    std::uint32_t sum;
  };

  void PredictNumber(const KelTransformNS::Cell* frame, Prediction& prediction) const noexcept;
  void PredictSurvival(const KelTransformNS::Cell* frame, Prediction& prediction) const noexcept;
  void Classify(const KelTransformNS::Cell* frame, Prediction& prediction) const noexcept;
  [[nodiscard]] bool FillSums(const KelTransformNS::Cell* frame, double* y) const noexcept;
  void Combine(double* p) const noexcept;
  void Accumulate(double* p) const noexcept;

  ParameterSums fSums;
  Form fForm = Form::kNumber;
  Link fLink = Link::kIdentity;
  double fLinkParameter = 0.0;
  Quantity fOffset{0.0};
  Quantity fTrials{1.0};

  std::vector<Equation> fEquations;  // of a classification, in the order of the target's categories; kBinary: the
                                     // category whose sum it is comes first
  std::uint32_t fSharedSum = Equation::kNoSum;  // what is added to the sum of each equation
  std::uint32_t fCategoryCount = 0;

  CoxBaseline fBaseline;
  double fReferenceSum = 0.0;    // y at the reference point
  bool fPredictsHazard = false;  // the prediction is H instead of exp(-H)
};

}  // namespace Torvane
