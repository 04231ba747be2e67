#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "plugins/torvane/models/RegressionModel.h"

namespace Torvane {

/// Reads a "RegressionModel" element.
class RegressionReader {
 public:
  RegressionReader(const Element& model, FieldScope& scope, Target& target);
  std::unique_ptr<RegressionModel> Read();

 private:
  // The normalization methods.
  enum class Method : std::uint8_t {
    kNone,
    kSimplemax,
    kSoftmax,
    kLogit,
    kProbit,
    kCloglog,
    kLoglog,
    kCauchit,
    kExp,
  };
  using Combination = RegressionModel::Combination;

  void ReadRegression();
  void ReadClassification();
  void ReadTables();
  void SortByCategory();
  [[nodiscard]] static Link LinkOf(Method method) noexcept;
  [[nodiscard]] Combination ChooseCombination() const;
  void CheckCumulative() const;
  [[nodiscard]] Combination ChooseForMany() const;

  Element fElement;
  FieldScope& fScope;
  Target& fTarget;
  std::unique_ptr<RegressionModel> fModel;
  Method fMethod = Method::kNone;
};

}  // namespace Torvane
