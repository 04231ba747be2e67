#pragma once

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "components/keltransform/Cell.h"
#include "plugins/torvane/Reading.h"

namespace Torvane {

enum class FieldUsage { kActive, kTarget, kUnused };
enum class OutlierTreatment { kAsIs, kAsMissing, kAsExtreme };
enum class InvalidTreatment { kReturnInvalid, kAsIs, kAsMissing, kAsValue };

/// A "MiningField" as it stands.
struct MiningField {
  std::string name;
  FieldUsage usage;
  std::optional<KelTransformNS::OpType> opType;
  OutlierTreatment outliers;
  std::optional<double> lowValue;
  std::optional<double> highValue;
  InvalidTreatment invalidTreatment;
  std::optional<std::string> invalidReplacement;
  std::optional<std::string> missingReplacement;
  bool missingReturnsInvalid;
  Element element;
};

/// A "MiningSchema": the fields that a model may see, and what becomes of their missing, invalid and extreme values.
struct MiningSchema {
  std::vector<MiningField> fields;  // with distinct names, in document order
  /// Derived fields that the library computes into the record: those of the "DerivedFields" extension.
  std::set<std::string, std::less<>> derivedInRecord;

  /// Null if the schema doesn't list the name.
  [[nodiscard]] const MiningField* Find(std::string_view name) const;

  NameMap<std::size_t> positions;  // of the names in `fields`
};

/// Makes a schema that of a model inside an ensemble: "returnInvalid" has no effect there, so that what the ensemble's
/// schema lets pass as it is passes this one as well, and models further inside may treat it after all.
void LetPassInside(const MiningSchema& ensemble, MiningSchema& schema);

/// Whether a model inside an ensemble must treat a field once more, whose values have been through the ensemble's
/// schema: `outer` is the field there, null if it isn't listed.
[[nodiscard]] bool NeedsAnotherTreatment(const MiningField& field, const MiningField* outer);

/// Throws for a duplicate field, an unknown word, a treatment that lacks its value.
[[nodiscard]] MiningSchema ReadMiningSchema(const Element& element);

}  // namespace Torvane
