#include "tools/kelscore/FieldValue.h"

#include <algorithm>
#include <optional>

#include "tools/kelscore/CsvText.h"

namespace kelscore {

bool ReadFieldValue(FieldKind kind, const std::vector<std::string>& markers, std::string_view text,
                    KelCommon_1_3::Value& value, std::string& scratch) {
  if (kind != FieldKind::kText) {
    if (const std::optional<double> number = ReadNumber(text)) {
      value = *number;
      return true;
    }
    const bool isMarker = std::find(markers.begin(), markers.end(), text) != markers.end();
    if (kind == FieldKind::kNumber && !isMarker) return false;
  }
  value = scratch.assign(text);
  return true;
}

}  // namespace kelscore
