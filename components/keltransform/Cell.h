#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <span>
#include <string>
#include <string_view>

#include "scoring/common/KelExport.h"
#include "scoring/common/KelMV.h"
#include "scoring/common/Value.h"

namespace KelTransformNS {

/// The data types of PMML. Booleans are numbers 0 and 1 in a cell; dates and times are numbers too (days or seconds, as
/// the type says; "date" counts days, "time" seconds of the day, "dateTime" seconds, from 1970).
enum class DataType : std::uint8_t {
  kString,
  kInteger,
  kFloat,
  kDouble,
  kBoolean,
  kDate,
  kTime,
  kDateTime,
  kDateDaysSince0,
  kDateDaysSince1960,
  kDateDaysSince1970,
  kDateDaysSince1980,
  kTimeSeconds,
  kDateTimeSecondsSince0,
  kDateTimeSecondsSince1960,
  kDateTimeSecondsSince1970,
  kDateTimeSecondsSince1980,
};

enum class OpType : std::uint8_t { kCategorical, kOrdinal, kContinuous };

/// The texts that a document knows (categories, constants, results of mappings), each with a small number, so that
/// a category is compared as a number while a record is scored. Grows while a document is compiled, immutable
/// afterwards. Texts keep their address.
class KEL_EXPORT TextPool {
 public:
  static constexpr std::uint32_t kUnknown = 0xFFFFFFFFU;

  TextPool();
  TextPool(const TextPool&) = delete;
  TextPool& operator=(const TextPool&) = delete;
  ~TextPool();

  std::uint32_t Intern(std::string_view text);
  /// The number of a text, `kUnknown` if the document doesn't know it. Allocates nothing.
  [[nodiscard]] std::uint32_t Find(std::string_view text) const noexcept;
  [[nodiscard]] const std::string& Text(std::uint32_t id) const noexcept;
  [[nodiscard]] std::size_t Size() const noexcept;

  /// Whether a function of the document makes new texts while a record is scored, so that its frames must hold them.
  [[nodiscard]] bool HasMadeTexts() const noexcept { return fHasMadeTexts; }
  void SetHasMadeTexts() noexcept { fHasMadeTexts = true; }

 private:
  struct Storage;
  bool fHasMadeTexts = false;
  std::unique_ptr<Storage> fStorage;
};

/// One value while a record is scored: what stands in a slot of a frame.
struct Cell {
  enum State : std::uint8_t { kMissing, kInvalid, kNumber, kText };

  double number = 0.0;                        ///< of `kNumber`, and of a `kText` that came as a number
  const std::string* text = nullptr;          ///< of `kText`; null if the text is the shortest text of `number`
  std::uint32_t textId = TextPool::kUnknown;  ///< of `kText`: its number in the pool
  State state = kMissing;

  static Cell Missing() noexcept { return {}; }
  static Cell Invalid() noexcept { return {0.0, nullptr, TextPool::kUnknown, kInvalid}; }
  static Cell Number(double value) noexcept { return {value, nullptr, TextPool::kUnknown, kNumber}; }
  static Cell Text(const TextPool& pool, std::uint32_t id) noexcept { return {0.0, &pool.Text(id), id, kText}; }
  [[nodiscard]] bool IsMissing() const noexcept { return state == kMissing; }
  [[nodiscard]] bool IsInvalid() const noexcept { return state == kInvalid; }
};

/// The slots of one record's scoring, owned by the call.
using Frame = std::span<Cell>;

/// Sets a cell to what `make()` gives, which is built in place: an assignment would go over a temporary whose parts are
/// written small and read back large, which stalls. `make` must not read the cell.
template <typename Make>
inline void SetCell(Cell& cell, const Make& make) {
  ::new (static_cast<void*>(&cell)) Cell(make());
}

/// The general case of `ReadCell`.
[[nodiscard]] KEL_EXPORT Cell ReadAnyCell(const KelCommon_1_3::Value& value, DataType type,
                                          const TextPool& pool) noexcept;

/// Turns a record's value into a cell of a data type. Null, NaN and the number `KelMV::gMissingValue` are missing; what
/// can't be converted is invalid. A text for a numeric type is read whole, one for a date or time also in its lexical
/// form; a number for a string type becomes its shortest text. "integer" takes numbers without a fraction only,
/// "boolean" 0 and 1 only, "float" rounds to single precision. The cell points into `value` and `pool`. Allocates
/// nothing.
[[nodiscard]] inline Cell ReadCell(const KelCommon_1_3::Value& value, DataType type, const TextPool& pool) noexcept {
  if (type == DataType::kDouble && value.GetType() == KelCommon_1_3::Value::kNumber) {
    const double number = value.GetReal();
    const bool isMissing = number != number || number == KelCommon_1_3::KelMV::gMissingValue;
    return isMissing ? Cell::Missing() : Cell::Number(number);
  }
  return ReadAnyCell(value, type, pool);
}

/// The same for a literal of a document, whose text is interned; `kInvalid` if the literal isn't of the type, missing
/// for the number NaN.
[[nodiscard]] KEL_EXPORT Cell ReadLiteral(std::string_view text, DataType type, TextPool& pool);

/// The general case of `WriteCell`.
KEL_EXPORT void WriteAnyCell(const Cell& cell, DataType type, KelCommon_1_3::Value& value);

/// Writes a cell into a record's value: missing and invalid as null, booleans as the texts "true" and "false", dates
/// and times of the types "date", "time" and "dateTime" in their lexical form, other numbers as numbers. `ReadCell` of
/// the same type reads the cell back (times to the microsecond).
inline void WriteCell(const Cell& cell, DataType type, KelCommon_1_3::Value& value) {
  if (cell.state == Cell::kNumber && type <= DataType::kDouble) {
    value = cell.number;
  } else {
    WriteAnyCell(cell, type, value);
  }
}

/// The type named by a "dataType" attribute (also with the prefix "xs:"); false if there is none of that name.
[[nodiscard]] KEL_EXPORT bool ParseDataType(std::string_view name, DataType& type) noexcept;
[[nodiscard]] KEL_EXPORT bool ParseOpType(std::string_view name, OpType& type) noexcept;
/// The name of a type as a "dataType" attribute has it.
[[nodiscard]] KEL_EXPORT std::string_view DataTypeName(DataType type) noexcept;
/// The kind of a field that declares its data type only: texts and booleans are categorical, numbers continuous, dates
/// and times ordinal.
[[nodiscard]] KEL_EXPORT OpType ImpliedOpType(DataType type) noexcept;
[[nodiscard]] inline bool IsText(DataType type) noexcept { return type == DataType::kString; }

/// A number of the document as fields of `type` hold it, so that 0.1 is what a "float" field has for 0.1.
[[nodiscard]] inline double InPrecisionOf(DataType type, double number) noexcept {
  return type == DataType::kFloat ? static_cast<double>(static_cast<float>(number)) : number;
}

}  // namespace KelTransformNS
