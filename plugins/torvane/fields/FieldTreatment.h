#pragma once

#include <optional>
#include <vector>

#include "components/keltransform/Cell.h"
#include "components/keltransform/DataDictionary.h"
#include "plugins/torvane/fields/MiningSchema.h"
#include "plugins/torvane/fields/ValueSets.h"

namespace Torvane {

/// What a mining schema does with the value of one field before the model sees it. The order of the steps:
///
/// 1. missing: no value, NaN, or a value that the dictionary declares missing;
/// 2. invalid: not convertible to the data type, or outside the values and intervals of the dictionary;
/// 3. outliers of valid numbers;
/// 4. the replacement of everything that is missing after these.
///
/// Immutable once made; any number of threads may call `Treat`.
class FieldTreatment {
 public:
  /// A field that is only converted to its type. What isn't convertible is invalid.
  explicit FieldTreatment(KelTransformNS::DataType type) : fType(type) {}
  /// Interns the field's categories in `pool`. Throws `PmmlError` for a replacement that isn't of the field's type,
  /// and for outliers of a field of texts.
  FieldTreatment(const KelTransformNS::FieldDeclaration& declaration, const MiningField& field,
                 KelTransformNS::TextPool& pool);

  /// A field that has no declaration, such as a derived one.
  FieldTreatment(KelTransformNS::DataType type, const MiningField& field, KelTransformNS::TextPool& pool);

  /// The cell that the model sees. An invalid one means that the model must give no result.
  [[nodiscard]] KelTransformNS::Cell Treat(const KelCommon_1_3::Value& value,
                                           const KelTransformNS::TextPool& pool) const noexcept;
  /// What the schema of a model inside an ensemble does with a cell that the ensemble's own schema has treated. Values
  /// that were let pass there are looked at again only if this schema says what becomes of invalid ones.
  [[nodiscard]] KelTransformNS::Cell TreatAgain(const KelTransformNS::Cell& cell) const noexcept;
  /// Whether a number of the field's type passes as it is.
  [[nodiscard]] bool PassesNumbers() const noexcept;
  [[nodiscard]] KelTransformNS::DataType Type() const noexcept { return fType; }

 private:
  using Cell = KelTransformNS::Cell;

  // The values of one property, as far as they are of the field's type.
  struct ValueSet {
    TextSet texts;
    NumberSet numbers;

    void Add(const Cell& literal);
    void Seal();
    [[nodiscard]] bool IsEmpty() const noexcept { return texts.IsEmpty() && numbers.IsEmpty(); }
    [[nodiscard]] bool Contains(const Cell& cell) const noexcept {
      return cell.state == Cell::kText ? texts.Contains(cell.textId) : numbers.Contains(cell.number);
    }
  };

  void ReadDeclaredValues(const KelTransformNS::FieldDeclaration& declaration, KelTransformNS::TextPool& pool);
  void ReadReplacements(const MiningField& field, KelTransformNS::TextPool& pool);
  void ReadOutliers(const MiningField& field);
  [[nodiscard]] bool IsDeclaredMissing(const KelCommon_1_3::Value& value, const Cell& cell,
                                       const KelTransformNS::TextPool& pool) const noexcept;
  [[nodiscard]] bool IsValid(const Cell& cell) const noexcept;
  [[nodiscard]] Cell TreatMissing() const noexcept;
  [[nodiscard]] Cell TreatInvalid(const Cell& cell) const noexcept;
  [[nodiscard]] Cell TreatOutlier(const Cell& cell) const noexcept;

  KelTransformNS::DataType fType;
  TextSet fMissingMarks;  // the same values as in fMissing, and those that aren't of the type, as texts
  ValueSet fMissing;
  ValueSet fInvalid;
  ValueSet fValid;
  std::vector<KelTransformNS::Interval> fIntervals;
  bool fIsRestricted = false;  // there are valid values or intervals
  InvalidTreatment fInvalidTreatment = InvalidTreatment::kReturnInvalid;
  Cell fInvalidReplacement;
  bool fMissingReturnsInvalid = false;
  Cell fMissingReplacement;  // missing if there is none
  OutlierTreatment fOutliers = OutlierTreatment::kAsIs;
  double fLowValue = 0.0;  // of the outliers, and likewise:
  double fHighValue = 0.0;
};

}  // namespace Torvane
