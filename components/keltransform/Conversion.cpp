#include "components/keltransform/Conversion.h"

#include <array>
#include <charconv>
#include <cmath>
#include <optional>

#include "components/kelparsexml/ElementTree.h"
#include "components/keltransform/DateTime.h"
#include "components/keltransform/NumberText.h"

namespace KelTransformNS {
namespace {

// What the number of a cell counts.
enum class Unit { kPlain, kDays, kSeconds, kSecondsOfDay };

struct Scale {
  Unit unit;
  double epoch;  // the first day, in days since 1970-01-01
};

constexpr double kYear0 = -719528.0;
constexpr double kYear1960 = -3653.0;
constexpr double kYear1980 = 3652.0;

Scale ScaleOf(DataType type) {
  switch (type) {
    case DataType::kDate:
    case DataType::kDateDaysSince1970:
      return {Unit::kDays, 0.0};
    case DataType::kDateDaysSince0:
      return {Unit::kDays, kYear0};
    case DataType::kDateDaysSince1960:
      return {Unit::kDays, kYear1960};
    case DataType::kDateDaysSince1980:
      return {Unit::kDays, kYear1980};
    case DataType::kDateTime:
    case DataType::kDateTimeSecondsSince1970:
      return {Unit::kSeconds, 0.0};
    case DataType::kDateTimeSecondsSince0:
      return {Unit::kSeconds, kYear0};
    case DataType::kDateTimeSecondsSince1960:
      return {Unit::kSeconds, kYear1960};
    case DataType::kDateTimeSecondsSince1980:
      return {Unit::kSeconds, kYear1980};
    case DataType::kTime:
    case DataType::kTimeSeconds:
      return {Unit::kSecondsOfDay, 0.0};
    default:
      return {Unit::kPlain, 0.0};
  }
}

// The seconds of the day and the days of the moment that `number` is on a scale.
Moment MomentOf(double number, const Scale& scale) {
  if (scale.unit == Unit::kDays) return {number + scale.epoch, 0.0};
  const double days = std::floor(number / kSecondsPerDay);
  return {days + scale.epoch, number - days * kSecondsPerDay};
}

double NumberOf(const Moment& moment, const Scale& scale) {
  switch (scale.unit) {
    case Unit::kDays:
      return *moment.days - scale.epoch;
    case Unit::kSeconds:
      return (*moment.days - scale.epoch) * kSecondsPerDay + moment.seconds.value_or(0.0);
    default:
      return *moment.seconds;
  }
}

double Rescale(double number, DataType from, DataType to) {
  const Scale source = ScaleOf(from);
  const Scale target = ScaleOf(to);
  if (source.unit == Unit::kPlain || target.unit == Unit::kPlain) return number;
  return NumberOf(MomentOf(number, source), target);
}

// A text of the lexical form of `type`; nothing if it is none, and for types without such a form.
std::optional<double> ParseLexical(std::string_view text, DataType type) {
  if (type == DataType::kBoolean) {
    if (text == "true") return 1.0;
    return text == "false" ? std::optional(0.0) : std::nullopt;
  }
  const Scale scale = ScaleOf(type);
  if (scale.unit == Unit::kPlain) return std::nullopt;
  const std::optional<Moment> moment = ParseMoment(text);
  const bool isComplete = moment && (scale.unit == Unit::kSecondsOfDay ? moment->seconds : moment->days).has_value();
  return isComplete ? std::optional(NumberOf(*moment, scale)) : std::nullopt;
}

Cell NumberIf(bool isValid, double number) { return isValid ? Cell::Number(number) : Cell::Invalid(); }

// The number whose shortest text is that of a float: 0.1, not the 0.10000000149011612 that the float is as a double.
// Whole numbers keep all their digits.
double AsWrittenInSinglePrecision(double number) {
  if (number == std::trunc(number)) return number;
  std::array<char, 32> buffer;
  const char* const end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), static_cast<float>(number)).ptr;
  double written = number;
  std::from_chars(buffer.data(), end, written);
  return written;
}

Cell TextOfNumber(double number, const TextPool& pool) {
  NumberBuffer buffer;
  Cell cell = Cell::Number(number);
  cell.state = Cell::kText;
  cell.textId = pool.Find(ShortestText(number, buffer));
  return cell;
}

Cell TextOfBoolean(double number, const TextPool& pool) {
  static const std::string kTrue = "true";
  static const std::string kFalse = "false";
  const std::string& text = number != 0.0 ? kTrue : kFalse;
  return {number, &text, pool.Find(text), Cell::kText};
}

}  // namespace

Cell NumberToCell(double number, DataType type, const TextPool& pool) noexcept {
  switch (type) {
    case DataType::kString:
      return TextOfNumber(number, pool);
    case DataType::kDouble:
      return Cell::Number(number);
    case DataType::kFloat:
      return Cell::Number(static_cast<double>(static_cast<float>(number)));
    case DataType::kBoolean:
      return NumberIf(number == 0.0 || number == 1.0, number);
    case DataType::kTime:
      return NumberIf(number >= 0.0 && number < kSecondsPerDay, number);
    case DataType::kInteger:
    case DataType::kDate:
    case DataType::kDateDaysSince0:
    case DataType::kDateDaysSince1960:
    case DataType::kDateDaysSince1970:
    case DataType::kDateDaysSince1980:
      return NumberIf(std::isfinite(number) && number == std::trunc(number), number);
    default:
      return NumberIf(std::isfinite(number), number);
  }
}

Cell TextToCell(std::string_view text, DataType type, const TextPool& pool) noexcept {
  std::optional<double> number = KelXML_1_3::ParsePmmlNumber(text);
  if (!number) number = ParseLexical(text, type);
  if (!number) return Cell::Invalid();
  return std::isnan(*number) ? Cell::Missing() : NumberToCell(*number, type, pool);
}

bool IsSameCell(DataType from, DataType to) noexcept {
  if (from == to) return true;
  if (IsText(from) || IsText(to)) return false;
  const Scale source = ScaleOf(from);
  const Scale target = ScaleOf(to);
  if (target.unit != Unit::kPlain) return source.unit == target.unit && source.epoch == target.epoch;
  if (to == DataType::kDouble || from == DataType::kBoolean) return true;
  return to == DataType::kInteger && source.unit == Unit::kDays;
}

bool CanConvert(DataType from, DataType to) noexcept {
  if (from == to) return true;
  const bool hasLexicalForm = from == DataType::kDate || from == DataType::kTime || from == DataType::kDateTime;
  if (IsText(to)) return !hasLexicalForm;
  const Unit source = ScaleOf(from).unit;
  const Unit target = ScaleOf(to).unit;
  if (source == Unit::kPlain || target == Unit::kPlain || source == target) return true;
  return source == Unit::kSeconds || (source == Unit::kDays && target == Unit::kSeconds);
}

Cell Convert(const Cell& cell, DataType from, DataType to, const TextPool& pool) noexcept {
  if (cell.IsMissing() || cell.IsInvalid() || IsSameCell(from, to)) return cell;
  if (IsText(from)) {
    return cell.text == nullptr ? NumberToCell(cell.number, to, pool) : TextToCell(*cell.text, to, pool);
  }
  if (from == DataType::kBoolean && IsText(to)) return TextOfBoolean(cell.number, pool);
  if (from == DataType::kFloat && IsText(to)) return TextOfNumber(AsWrittenInSinglePrecision(cell.number), pool);
  return NumberToCell(Rescale(cell.number, from, to), to, pool);
}

}  // namespace KelTransformNS
