#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "components/keltransform/Cell.h"
#include "plugins/torvane/models/ModelBody.h"
#include "plugins/torvane/models/Prediction.h"
#include "scoring/common/ValueRecord.h"

namespace Torvane {

/// One output that a host can ask for.
struct Output {
  explicit Output(std::string name) : key(std::move(name)) {}

  KelCommon_1_3::FieldKey key;  ///< the name
  Feature feature = Feature::kNothing;
  KelTransformNS::DataType type = KelTransformNS::DataType::kDouble;
  std::uint32_t category = Prediction::kNone;  ///< the category that is asked for; none: the predicted one
  std::uint32_t entity = Prediction::kNone;    ///< the entity whose affinity is asked for; none: that of the rank
  std::uint32_t rank = 1;                      ///< of the entity; the first one is what the model decided by
  const std::vector<KelTransformNS::Cell>* byCategory = nullptr;  ///< what is shown for each category; none: a number
  bool isPlainNumber = false;              ///< the predicted number as it is, which needs no conversion
  bool isDeclared = false;                 ///< it is an "OutputField" of the document
  std::uint32_t slot = Prediction::kNone;  ///< where expressions find it, or where an expression leaves it

  /// Whether it shows a category, or what stands for it.
  [[nodiscard]] bool IsByCategory() const noexcept {
    return feature == Feature::kPredictedValue || feature == Feature::kPredictedDisplayValue ||
           feature == Feature::kAllPredictions;
  }
  /// Whether it reads the probabilities or the confidences.
  [[nodiscard]] bool IsDistribution() const noexcept {
    return feature == Feature::kProbability || feature == Feature::kConfidence ||
           feature == Feature::kAllProbabilities || feature == Feature::kResidual;
  }
  [[nodiscard]] bool IsOfEntity() const noexcept {
    return feature == Feature::kEntityId || feature == Feature::kAffinity;
  }
  /// Whether it reads the ranking of entities, and not just the first of them.
  [[nodiscard]] bool IsRanking() const noexcept { return IsOfEntity() && (rank != 1 || entity != Prediction::kNone); }
};

}  // namespace Torvane
