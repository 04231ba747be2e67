#pragma once

#include "components/keltransform/Cell.h"

namespace KelTransformNS {

/// A number as a value of a data type, see `ReadCell`. The number isn't NaN.
[[nodiscard]] Cell NumberToCell(double number, DataType type, const TextPool& pool) noexcept;
/// A text as a value of a data type other than "string".
[[nodiscard]] Cell TextToCell(std::string_view text, DataType type, const TextPool& pool) noexcept;

/// Whether a cell of type `from` is one of type `to` just as it stands.
[[nodiscard]] bool IsSameCell(DataType from, DataType to) noexcept;
/// Whether there is a conversion. There is none between a time of day and a date, and none from the types "date",
/// "time" and "dateTime" to "string".
[[nodiscard]] bool CanConvert(DataType from, DataType to) noexcept;
/// The cell of the other type; missing and invalid stay what they are, a value that the type can't hold is invalid.
[[nodiscard]] Cell Convert(const Cell& cell, DataType from, DataType to, const TextPool& pool) noexcept;

}  // namespace KelTransformNS
