#include "tools/kelscore/RecordBinding.h"

#include <algorithm>
#include <utility>

#include "tools/kelscore/CsvText.h"
#include "tools/kelscore/FieldValue.h"

namespace kelscore {

using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;

RecordBinding::RecordBinding(const std::vector<ModelField>& fields, const std::vector<std::string>& header,
                             std::vector<std::string> missingTokens)
    : fMissingTokens(std::move(missingTokens)), fColumnCount(header.size()) {
  for (const ModelField& field : fields) {
    const auto column = std::find(header.begin(), header.end(), field.name);
    if (column != header.end()) {
      const int position = fPrototype.Add(field.name, Value::NULL_VALUE);
      fFields.push_back({static_cast<std::size_t>(column - header.begin()), position, field.kind, field.markers});
    } else if (field.needed) {
      fPrototype.Add(field.name, Value::NULL_VALUE);
      fMissingColumns.push_back(field.name);
    }
  }
}

bool RecordBinding::Fill(const RowView& row, ValueRecord& record, std::string& reason) {
  if (row.FieldCount() != fColumnCount) {
    reason = "has " + std::to_string(row.FieldCount()) + " fields where the header has " + std::to_string(fColumnCount);
    return false;
  }
  for (const BoundField& field : fFields) {
    const std::string_view text = row.Field(field.column);
    if (!FillField(field, text, record[field.position])) {
      reason = Reason(field, text);
      return false;
    }
  }
  for (int added = fPrototype.Size(); added < record.Size(); ++added) record[added].SetNull();
  return true;
}

bool RecordBinding::IsMissing(std::string_view text) const {
  return text.empty() || std::find(fMissingTokens.begin(), fMissingTokens.end(), text) != fMissingTokens.end();
}

bool RecordBinding::FillField(const BoundField& field, std::string_view text, Value& value) {
  if (IsMissing(text)) {
    value.SetNull();
    return true;
  }
  return ReadFieldValue(field.kind, field.markers, text, value, fText);
}

std::string RecordBinding::Reason(const BoundField& field, std::string_view text) const {
  return "field " + Quoted(fPrototype.NameAt(field.position)) + ": " + Quoted(text) +
         " is not a finite number (--missing names texts that stand for no value)";
}

}  // namespace kelscore
