#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "components/keltransform/Program.h"
#include "plugins/torvane/fields/FieldScope.h"
#include "plugins/torvane/models/InstanceTable.h"

namespace Torvane {

/// Makes the fields that a model compares out of the rows of its training instances, in the way in which they are made
/// out of records: through the mining schema and the derived fields.
class TrainingFrame {
 public:
  /// `names` are the fields that are compared. Throws `PmmlError`.
  TrainingFrame(const Element& model, const FieldScope& scope, const std::vector<std::string_view>& names,
                const InstanceTable& table);

  /// The cells of the fields in the table's current row, in the order of their names. They hold until the next call.
  const std::vector<KelTransformNS::Cell>& Read(const InstanceTable& table);

 private:
  struct Column {
    std::optional<std::size_t> position;  // in the table
    bool isText;
  };

  Document fDocument;
  FieldScope fFields;
  std::vector<std::uint32_t> fSlots;  // of the fields
  std::vector<InputField> fInputs;
  std::vector<Column> fColumns;  // of the inputs
  KelTransformNS::Program fProgram;
  std::vector<KelCommon_1_3::Value> fValues;  // of the inputs, which their cells refer to
  std::vector<KelTransformNS::Cell> fCells;
};

}  // namespace Torvane
