#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "plugins/torvane/fields/FieldScope.h"
#include "plugins/torvane/fields/ValueSets.h"
#include "plugins/torvane/models/ModelBody.h"
#include "plugins/torvane/targets/Target.h"

namespace Torvane {

/// Naive Bayes: the inputs tell of the category independently of each other.
///
/// ln L_k = ln count(k) + sum over the inputs of ln q_ik, and P(k) = L_k / sum of L. For a value of a counted input
/// q_ik is its share of the category's records that have the input; for a number it is the density of the category's
/// distribution. The threshold stands for shares of 0 and for densities below it. A missing input adds nothing, and so
/// does a value that no count tells of, because it speaks for all categories alike.
///
/// All logarithms of counts are taken when the model is built, so a counted input costs one addition per category.
/// Sums of logarithms don't underflow, however many inputs there are.
class NaiveBayesModel final : public ModelBody {
 public:
  static std::unique_ptr<ModelBody> Build(const Element& model, FieldScope& scope, Target& target);

  void Evaluate(KelTransformNS::Frame frame, Prediction& prediction) const noexcept override;

 private:
  friend class NaiveBayesReader;

  // A number's distribution within one category, ready for the logarithm of its density.
  struct Distribution {
    double mean;
    double factor;    // normal: -1 / (2 variance); Poisson: ln mean
    double constant;  // normal: -ln(2 pi variance) / 2
    bool isPoisson;
  };
  struct Input {
    std::uint32_t slot = 0;
    bool isCounted = true;
    bool hasPoisson = false;
    std::size_t first = 0;  // of its figures, in fLogShares or in fDistributions
    ValueRanks values;      // of a counted input: the row of each value
  };

  void AddShares(const Input& input, const KelTransformNS::Cell& cell, double* logs) const noexcept;
  void AddDensities(const Input& input, double x, double* logs) const noexcept;
  void Conclude(double* logs, Prediction& prediction) const noexcept;
  void FillProbabilities(double* logs, Prediction& prediction) const noexcept;

  // Categories without a record can't be the answer. Only the others, in the target's order, have figures here.
  std::vector<std::uint32_t> fCategories;
  std::vector<double> fLogCounts;  // of each of them
  std::vector<Input> fInputs;
  std::vector<double> fLogShares;            // a row for each value of a counted input, with a place per category
  std::vector<Distribution> fDistributions;  // for each input of numbers, one per category
  double fLogThreshold = 0.0;
  std::uint32_t fTargetCategoryCount = 0;
};

}  // namespace Torvane
