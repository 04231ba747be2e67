#pragma once

#include <cstdint>

#include "components/keltransform/Cell.h"
#include "plugins/torvane/models/Prediction.h"
#include "scoring/common/Value.h"

namespace Torvane {

/// The compiled mathematics of one model kind. It sees a frame whose inputs and derived fields are in place and free of
/// invalid cells. Immutable: any number of threads evaluate one body.
class ModelBody {
 public:
  ModelBody() = default;
  ModelBody(const ModelBody&) = delete;
  ModelBody& operator=(const ModelBody&) = delete;
  virtual ~ModelBody() = default;

  /// Fills the results of `prediction`; what isn't known stays as it is. Throws nothing but `std::bad_alloc`, where a
  /// thread needs more memory than before.
  virtual void Evaluate(const KelTransformNS::Cell* frame, Prediction& prediction) const = 0;

  /// Whether the kind tells a confidence beside the probability.
  [[nodiscard]] virtual bool GivesConfidences() const noexcept { return false; }
  /// The number of entities that a prediction may name; 0 if the kind knows none.
  [[nodiscard]] virtual std::uint32_t EntityCount() const noexcept { return 0; }
  /// Writes the identifier of an entity, a text.
  virtual void WriteEntity(std::uint32_t entity, KelCommon_1_3::Value& value) const;
  /// The output key of the kind that tells the entity; null if there is none.
  [[nodiscard]] virtual const char* EntityKey() const noexcept { return nullptr; }
};

}  // namespace Torvane
