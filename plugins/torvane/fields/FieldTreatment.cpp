#include "plugins/torvane/fields/FieldTreatment.h"

#include <algorithm>
#include <limits>

#include "scoring/common/Value.h"

namespace Torvane {

using KelCommon_1_3::Value;
using KelTransformNS::Cell;
using KelTransformNS::FieldDeclaration;
using KelTransformNS::Interval;
using KelTransformNS::TextPool;

FieldTreatment::FieldTreatment(const FieldDeclaration& declaration, const MiningField& field, TextPool& pool)
    : fType(declaration.dataType),
      fInvalidTreatment(field.invalidTreatment),
      fMissingReturnsInvalid(field.missingReturnsInvalid) {
  if (KelTransformNS::IsText(fType) && !declaration.intervals.empty()) {
    throw field.element.AttributeError("name", "is a field of texts, but its declaration has intervals");
  }
  ReadDeclaredValues(declaration, pool);
  ReadReplacements(field, pool);
  ReadOutliers(field);
}

FieldTreatment::FieldTreatment(KelTransformNS::DataType type, const MiningField& field, TextPool& pool)
    : fType(type), fInvalidTreatment(field.invalidTreatment), fMissingReturnsInvalid(field.missingReturnsInvalid) {
  ReadReplacements(field, pool);
  ReadOutliers(field);
}

void FieldTreatment::ReadDeclaredValues(const FieldDeclaration& declaration, TextPool& pool) {
  using Declared = FieldDeclaration::DeclaredValue;
  for (const Declared& declared : declaration.values) {
    if (declared.property == Declared::kMissing) fMissingMarks.Add(pool.Intern(declared.value));
    if (declared.property == Declared::kValid) fIsRestricted = true;
    // What isn't of the type can equal no value of it, so it needs no place in a set.
    const std::optional<Cell> literal = FindComparand(declared.value, fType, pool);
    if (!literal) continue;
    ValueSet& values = declared.property == Declared::kMissing   ? fMissing
                       : declared.property == Declared::kInvalid ? fInvalid
                                                                 : fValid;
    values.Add(*literal);
  }
  for (ValueSet* values : {&fMissing, &fInvalid, &fValid}) values->Seal();
  fMissingMarks.Seal();
  fIntervals = declaration.intervals;
  fIsRestricted = fIsRestricted || !fIntervals.empty();
}

void FieldTreatment::ReadReplacements(const MiningField& field, TextPool& pool) {
  if (field.missingReplacement) {
    fMissingReplacement =
        ReadComparand(field.element, "missingValueReplacement", *field.missingReplacement, fType, pool);
  }
  if (field.invalidReplacement) {
    fInvalidReplacement =
        ReadComparand(field.element, "invalidValueReplacement", *field.invalidReplacement, fType, pool);
  }
}

void FieldTreatment::ReadOutliers(const MiningField& field) {
  fOutliers = field.outliers;
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  fLowValue = KelTransformNS::InPrecisionOf(fType, field.lowValue.value_or(-kInfinity));
  fHighValue = KelTransformNS::InPrecisionOf(fType, field.highValue.value_or(kInfinity));
  if (fOutliers != OutlierTreatment::kAsIs && KelTransformNS::IsText(fType)) {
    throw field.element.AttributeError("outliers", "is for fields of numbers only");
  }
}

void FieldTreatment::ValueSet::Add(const Cell& literal) {
  if (literal.state == Cell::kText) {
    texts.Add(literal.textId);
  } else {
    numbers.Add(literal.number);
  }
}

void FieldTreatment::ValueSet::Seal() {
  texts.Seal();
  numbers.Seal();
}

bool FieldTreatment::PassesNumbers() const noexcept {
  return fMissing.IsEmpty() && fInvalid.IsEmpty() && !fIsRestricted && fOutliers == OutlierTreatment::kAsIs;
}

Cell FieldTreatment::Treat(const Value& value, const TextPool& pool) const noexcept {
  const Cell cell = KelTransformNS::ReadCell(value, fType, pool);
  if (cell.IsMissing() || IsDeclaredMissing(value, cell, pool)) return TreatMissing();
  if (!IsValid(cell)) return TreatInvalid(cell);
  return TreatOutlier(cell);
}

Cell FieldTreatment::TreatAgain(const Cell& cell) const noexcept {
  if (cell.IsMissing()) return TreatMissing();
  const bool asksAgain =
      fInvalidTreatment == InvalidTreatment::kAsMissing || fInvalidTreatment == InvalidTreatment::kAsValue;
  if (asksAgain && !IsValid(cell)) return TreatInvalid(cell);
  return cell.IsInvalid() ? cell : TreatOutlier(cell);
}

// A mark such as "N/A" isn't of the type of a field of numbers, nor is 999 a boolean.
bool FieldTreatment::IsDeclaredMissing(const Value& value, const Cell& cell, const TextPool& pool) const noexcept {
  if (fMissingMarks.IsEmpty()) return false;
  if (!cell.IsInvalid()) return fMissing.Contains(cell);
  if (value.GetType() == Value::kNumber) return fMissing.numbers.Contains(value.GetReal());
  return value.GetType() == Value::kText && fMissingMarks.Contains(pool.Find(value.Text()));
}

// Valid values and intervals add up: a number is valid if it is listed or lies in an interval.
bool FieldTreatment::IsValid(const Cell& cell) const noexcept {
  if (cell.IsInvalid() || fInvalid.Contains(cell)) return false;
  if (!fIsRestricted || fValid.Contains(cell)) return true;
  return cell.state == Cell::kNumber &&
         std::any_of(fIntervals.begin(), fIntervals.end(),
                     [&](const Interval& interval) { return interval.Contains(cell.number); });
}

Cell FieldTreatment::TreatMissing() const noexcept {
  return fMissingReturnsInvalid ? Cell::Invalid() : fMissingReplacement;
}

Cell FieldTreatment::TreatInvalid(const Cell& cell) const noexcept {
  switch (fInvalidTreatment) {
    case InvalidTreatment::kAsMissing:
      return TreatMissing();
    case InvalidTreatment::kAsValue:
      return fInvalidReplacement;
    case InvalidTreatment::kAsIs:
      // A text in a field of numbers can't be used as it is; it stays invalid rather than being guessed at.
      return cell.IsInvalid() ? cell : TreatOutlier(cell);
    case InvalidTreatment::kReturnInvalid:
      break;
  }
  return Cell::Invalid();
}

// Values on the limits are none.
Cell FieldTreatment::TreatOutlier(const Cell& cell) const noexcept {
  if (fOutliers == OutlierTreatment::kAsIs || (cell.number >= fLowValue && cell.number <= fHighValue)) return cell;
  if (fOutliers == OutlierTreatment::kAsMissing) return TreatMissing();
  return Cell::Number(std::clamp(cell.number, fLowValue, fHighValue));
}

}  // namespace Torvane
