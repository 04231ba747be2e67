#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "components/keltransform/Cell.h"
#include "components/keltransform/DataDictionary.h"
#include "components/keltransform/Group.h"
#include "scoring/common/ValueRecord.h"

namespace KelTransformNS {

/// The values that a field declares as marks of a missing value. They are compared as texts, since a mark such as "N/A"
/// is often no value of the field's type, and as values of the type, since the mark "-9" also stands for -9.0.
class MissingMarks {
 public:
  MissingMarks(const FieldDeclaration& field, TextPool& pool);

  [[nodiscard]] bool IsEmpty() const noexcept { return fTexts.empty(); }
  /// Whether a record's value, which was read as `cell`, is one of the marks.
  [[nodiscard]] bool Contain(const KelCommon_1_3::Value& value, const Cell& cell, const TextPool& pool) const noexcept;

 private:
  std::vector<std::uint32_t> fTexts;
  std::vector<double> fNumbers;
};

/// A field of the data dictionary as an input of derived fields.
///
/// No mining schema is known here, so a value is taken as it is whatever the dictionary lists as valid; only what can't
/// be converted to the field's type is invalid.
class TransformInput {
 public:
  /// With a function, the field's values are joined by it.
  TransformInput(const FieldDeclaration& field, std::uint32_t slot, TextPool& pool,
                 std::optional<GroupFunction> function = std::nullopt);

  [[nodiscard]] const KelCommon_1_3::FieldKey& Key() const noexcept { return fKey; }
  [[nodiscard]] std::uint32_t Slot() const noexcept { return fSlot; }
  [[nodiscard]] DataType Type() const noexcept { return fType; }
  [[nodiscard]] Cell Read(const KelCommon_1_3::Value& value, const TextPool& pool) const noexcept {
    return fIsPlain ? ReadCell(value, fType, pool) : ReadOther(value, pool);
  }

 private:
  [[nodiscard]] Cell ReadOther(const KelCommon_1_3::Value& value, const TextPool& pool) const noexcept;
  [[nodiscard]] Cell ReadMarked(const KelCommon_1_3::Value& value, const TextPool& pool) const noexcept;

  KelCommon_1_3::FieldKey fKey;
  std::uint32_t fSlot;
  DataType fType;
  MissingMarks fMarks;
  std::optional<GroupFunction> fFunction;
  bool fIsPlain;  // without marks and function
};

}  // namespace KelTransformNS
