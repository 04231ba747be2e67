#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "components/keltransform/Cell.h"
#include "plugins/torvane/models/Prediction.h"
#include "scoring/common/Value.h"

namespace Torvane {

/// What an output tells of a prediction.
enum class Feature : std::uint8_t {
  kPredictedValue,
  kPredictedDisplayValue,
  kProbability,
  kConfidence,
  kAllProbabilities,  ///< a composite value with a member per category
  kAllPredictions,    ///< a composite value with a member per segment of an ensemble
  kResidual,
  kEntityId,    ///< of the entity that decided, or of one further down the ranking
  kAffinity,    ///< the distance or similarity of an entity
  kAuxiliary,   ///< the second number of the model kind
  kExpression,  ///< computed from fields and from outputs before it
  kNothing,     ///< always null
};

/// An output of the vocabulary that only some kinds of model give.
struct KindOutput {
  const char* key;
  Feature feature;
};

/// The compiled mathematics of one model kind. It sees a frame whose inputs and derived fields are in place and free of
/// invalid cells. Immutable: any number of threads evaluate one body.
class ModelBody {
 public:
  ModelBody() = default;
  ModelBody(const ModelBody&) = delete;
  ModelBody& operator=(const ModelBody&) = delete;
  virtual ~ModelBody() = default;

  /// Fills the results of `prediction`; what isn't known stays as it is. Throws nothing but `std::bad_alloc`, where a
  /// thread needs more memory than before. Cells of the frame that don't belong to the body stay as they are.
  virtual void Evaluate(KelTransformNS::Frame frame, Prediction& prediction) const = 0;

  /// The numbers that `Evaluate` needs for itself.
  [[nodiscard]] virtual std::size_t ScratchCount() const noexcept { return 0; }
  /// The largest number of entities that `Evaluate` ranks; 0 if the kind ranks none.
  [[nodiscard]] virtual std::uint32_t RankingCapacity() const noexcept { return 0; }
  /// Whether the kind tells a probability of each category.
  [[nodiscard]] virtual bool GivesProbabilities() const noexcept { return true; }
  /// Whether the kind tells a confidence beside the probability.
  [[nodiscard]] virtual bool GivesConfidences() const noexcept { return false; }
  /// The number of entities that a prediction may name; 0 if the kind knows none.
  [[nodiscard]] virtual std::uint32_t EntityCount() const noexcept { return 0; }
  /// Writes the identifier of an entity, a text.
  virtual void WriteEntity(std::uint32_t entity, KelCommon_1_3::Value& value) const;
  /// Whether the entities are the segments of an ensemble.
  [[nodiscard]] virtual bool IsEnsemble() const noexcept { return false; }
  /// Whether each segment of the ensemble gives a result of its own. The ranking then holds the segments that took
  /// part, with the number or the category of each in the place of the affinity.
  [[nodiscard]] virtual bool GivesAllPredictions() const noexcept { return false; }
  /// The output keys that tell what is special to the kind.
  [[nodiscard]] virtual std::span<const KindOutput> KindOutputs() const noexcept { return {}; }
};

}  // namespace Torvane
