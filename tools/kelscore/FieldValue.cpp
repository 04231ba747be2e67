#include "tools/kelscore/FieldValue.h"

#include <optional>

#include "tools/kelscore/CsvText.h"

namespace kelscore {

bool ReadFieldValue(FieldKind kind, std::string_view text, KelCommon_1_3::Value& value, std::string& scratch) {
  if (kind != FieldKind::kText) {
    if (const std::optional<double> number = ReadNumber(text)) {
      value = *number;
      return true;
    }
    if (kind == FieldKind::kNumber) return false;
  }
  value = scratch.assign(text);
  return true;
}

}  // namespace kelscore
