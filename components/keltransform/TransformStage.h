#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "components/kelparsexml/ElementTree.h"
#include "components/keltransform/DataDictionary.h"
#include "components/keltransform/ExpressionCompiler.h"
#include "components/keltransform/Hashing.h"
#include "components/keltransform/TransformInput.h"

namespace KelTransformNS {

/// What a transformation has read from one text: the fields that it declares, and its derived fields, compiled over the
/// slots that the stages before it left free. Immutable; any number of threads may read it.
struct TransformStage {
  struct Derived {
    KelCommon_1_3::FieldKey key;
    DataType type;
    std::uint32_t slot;
  };

  DataDictionary data;
  std::vector<TransformInput> inputs;  ///< the data fields that this stage is the first to use
  std::vector<Derived> derived;        ///< in document order
  Program program;
  std::uint32_t slotCount = 0;  ///< of a frame for this stage and all before it
  /// The fields that have a slot of this stage, by name.
  std::unordered_map<std::string, ResolvedField, NameHash, std::equal_to<>> fields;
};

using TransformStages = std::vector<std::unique_ptr<const TransformStage>>;

/// Compiles every derived field of a "TransformationDictionary" on top of the `earlier` stages, whose fields it may
/// refer to, and the fields of a "DataDictionary"; either may be no element. `version` is that of the document, empty
/// if it isn't known. Throws `PmmlError`, also for a name that is declared a second time.
[[nodiscard]] std::unique_ptr<const TransformStage> BuildStage(const TransformStages& earlier,
                                                               const KelXML_1_3::Element& dataDictionary,
                                                               const KelXML_1_3::Element& transformations,
                                                               std::string_view version, TextPool& pool);

}  // namespace KelTransformNS
