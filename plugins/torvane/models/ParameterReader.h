#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "components/kelcommon/Hashing.h"
#include "plugins/torvane/Reading.h"
#include "plugins/torvane/fields/FieldScope.h"
#include "plugins/torvane/models/ParameterSums.h"

namespace Torvane {

/// Reads the parameters of a "GeneralRegressionModel": which there are ("ParameterList"), what they are products of
/// ("FactorList", "CovariateList", "PPMatrix") and how they count ("ParamMatrix").
class ParameterReader {
 public:
  static constexpr std::uint32_t kNoCategory = std::numeric_limits<std::uint32_t>::max();

  /// A "PCell".
  struct Coefficient {
    std::uint32_t parameter;
    std::uint32_t category;  ///< `kNoCategory` if it is for all of them
    double beta;
  };
  /// Gives the number of the category that a cell is for, `kNoCategory` if it names none.
  using ReadCategory = std::function<std::uint32_t(const Element& cell)>;

  /// Factors and contrasts go into `sums`. Throws `PmmlError`.
  ParameterReader(const Element& model, FieldScope& scope, ParameterSums& sums, const ReadCategory& readCategory);

  /// In the order of the document.
  [[nodiscard]] const std::vector<Coefficient>& Coefficients() const noexcept { return fCoefficients; }
  /// Whether a parameter has a value of its own for some categories.
  [[nodiscard]] bool IsByCategory(std::uint32_t parameter) const { return fParameters[parameter].isByCategory; }
  [[nodiscard]] double ReferencePoint(std::uint32_t parameter) const { return fParameters[parameter].referencePoint; }
  /// Adds the term of a coefficient to the last sum, which is that of `category`.
  void AddTerm(const Coefficient& coefficient, std::uint32_t category);

 private:
  struct Parameter {
    double referencePoint;
    bool isByCategory = false;
  };
  struct Predictor {
    Field field;
    bool isFactor;
    const Contrast* contrast = nullptr;
  };
  template <typename T>
  using ByName = std::unordered_map<std::string_view, T, KelCommon_1_3::NameHash>;

  void ReadParameterList();
  void ReadPredictors(const Element& list, bool areFactors);
  [[nodiscard]] std::vector<KelTransformNS::Cell> ReadCategories(const Element& predictor, const Field& field);
  [[nodiscard]] const Contrast* ReadContrast(const Element& predictor, const Field& field);
  void ReadProducts(const ReadCategory& readCategory);
  [[nodiscard]] ParameterFactor ReadFactor(const Element& cell, const Predictor& predictor);
  [[nodiscard]] static ParameterFactor ReadPower(const Element& cell, const Predictor& predictor);
  void ReadCoefficients(const ReadCategory& readCategory);
  [[nodiscard]] std::uint32_t FindParameter(const Element& cell) const;
  [[nodiscard]] ParameterSums::Factors FactorsOf(std::uint32_t parameter, std::uint32_t category) const;

  Element fModel;
  FieldScope& fScope;
  ParameterSums& fSums;
  std::vector<Parameter> fParameters;
  ByName<std::uint32_t> fParameterIndex;
  ByName<Predictor> fPredictors;
  std::map<std::pair<std::uint32_t, std::uint32_t>, ParameterSums::Factors> fFactors;  // of a parameter and category
  std::vector<Coefficient> fCoefficients;
};

}  // namespace Torvane
