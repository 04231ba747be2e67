#include "components/keltransform/Cell.h"

#include <cmath>

#include "components/keltransform/Conversion.h"
#include "components/keltransform/DateTime.h"
#include "components/keltransform/NumberText.h"

namespace KelTransformNS {

using KelCommon_1_3::KelMV;
using KelCommon_1_3::Value;

namespace {

Cell ReadNumber(double number, DataType type, const TextPool& pool) {
  if (std::isnan(number) || number == KelMV::gMissingValue) return Cell::Missing();
  return NumberToCell(number, type, pool);
}

void WriteText(const Cell& cell, Value& value) {
  if (cell.text != nullptr) {
    value = *cell.text;
    return;
  }
  NumberBuffer buffer;
  value = ShortestText(cell.number, buffer).data();
}

// A number without a lexical form, such as a date after the end of the calendar, is null rather than a wrong text.
void WriteMoment(std::string_view text, Value& value) {
  if (text.empty()) {
    value.SetNull();
  } else {
    value = text.data();
  }
}

void WriteNumber(double number, DataType type, Value& value) {
  MomentBuffer buffer;
  switch (type) {
    case DataType::kBoolean:
      value = number != 0.0 ? "true" : "false";
      return;
    case DataType::kDate:
      return WriteMoment(FormatDate(number, buffer), value);
    case DataType::kTime:
      return WriteMoment(FormatTime(number, buffer), value);
    case DataType::kDateTime:
      return WriteMoment(FormatDateTime(number, buffer), value);
    default:
      value = number;
  }
}

}  // namespace

Cell ReadAnyCell(const Value& value, DataType type, const TextPool& pool) noexcept {
  switch (value.GetType()) {
    case Value::kNull:
      return Cell::Missing();
    case Value::kNumber:
      return ReadNumber(value.GetReal(), type, pool);
    case Value::kText:
      if (!IsText(type)) return TextToCell(value.Text(), type, pool);
      return {0.0, &value.Text(), pool.Find(value.Text()), Cell::kText};
    default:
      return Cell::Invalid();
  }
}

Cell ReadLiteral(std::string_view text, DataType type, TextPool& pool) {
  return IsText(type) ? Cell::Text(pool, pool.Intern(text)) : TextToCell(text, type, pool);
}

void WriteAnyCell(const Cell& cell, DataType type, Value& value) {
  switch (cell.state) {
    case Cell::kNumber:
      return WriteNumber(cell.number, type, value);
    case Cell::kText:
      return WriteText(cell, value);
    default:
      value.SetNull();
  }
}

}  // namespace KelTransformNS
