#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "scoring/common/ValueRecord.h"
#include "tools/kelscore/ModelField.h"
#include "tools/kelscore/RowBatch.h"

namespace kelscore {

/// Carries the fields of a row over into an input record, by positions that are worked out once.
///
/// One thread uses a binding at a time; copies are independent.
class RecordBinding {
 public:
  /// Binds by name. Columns that are no field are ignored; a needed field without a column is null in every row.
  RecordBinding(const std::vector<ModelField>& fields, const std::vector<std::string>& header,
                std::vector<std::string> missingTokens);

  /// A record with the names of all fields, to be used for every row.
  [[nodiscard]] const KelCommon_1_3::ValueRecord& Prototype() const { return fPrototype; }
  /// The needed fields that the table lacks.
  [[nodiscard]] const std::vector<std::string>& MissingColumns() const { return fMissingColumns; }
  [[nodiscard]] std::size_t ColumnCount() const { return fColumnCount; }

  /// Fills a record made from the prototype; what a model added behind it becomes null. False, and the reason, when a
  /// field of the row can't be read or the row is ragged.
  [[nodiscard]] bool Fill(const RowView& row, KelCommon_1_3::ValueRecord& record, std::string& reason);

 private:
  struct BoundField {
    std::size_t column;
    int position;  // in the record
    FieldKind kind;
    std::vector<std::string> markers;
  };

  [[nodiscard]] bool IsMissing(std::string_view text) const;
  [[nodiscard]] bool FillField(const BoundField& field, std::string_view text, KelCommon_1_3::Value& value);
  [[nodiscard]] std::string Reason(const BoundField& field, std::string_view text) const;

  std::vector<BoundField> fFields;
  std::vector<std::string> fMissingColumns;
  std::vector<std::string> fMissingTokens;
  std::size_t fColumnCount;
  KelCommon_1_3::ValueRecord fPrototype;
  std::string fText;  // scratch, so that a text field doesn't allocate
};

}  // namespace kelscore
