#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace KelTransformNS {

inline constexpr double kSecondsPerDay = 86400.0;

/// A day of the proleptic Gregorian calendar. There is a year 0.
struct Date {
  std::int64_t year;
  int month;  ///< from 1
  int day;    ///< from 1
};

/// Beyond these, which are about a million years away, there are no dates.
inline constexpr double kMaxDays = 3.7e8;

/// Days since 1970-01-01.
[[nodiscard]] std::int64_t DaysFromDate(const Date& date) noexcept;
[[nodiscard]] Date DateFromDays(std::int64_t days) noexcept;

/// What the lexical form of a date, a time or both says. Proleptic Gregorian calendar.
struct Moment {
  std::optional<double> days;     ///< since 1970-01-01
  std::optional<double> seconds;  ///< of the day
};

/// Reads "YYYY-MM-DD", "hh:mm:ss[.fff]" and "YYYY-MM-DDThh:mm:ss[.fff]", each with an optional time zone and with white
/// space around it; nothing for any other text. Date and time together are brought to UTC by their zone; the zone of a
/// date alone or a time alone says nothing about its number and is dropped.
[[nodiscard]] std::optional<Moment> ParseMoment(std::string_view text) noexcept;

/// Room for a formatted moment.
using MomentBuffer = std::array<char, 48>;

/// The lexical forms, in `buffer`, ending with a null character; seconds to the microsecond. Empty for a number that
/// is no such moment.
[[nodiscard]] std::string_view FormatDate(double days, MomentBuffer& buffer) noexcept;
[[nodiscard]] std::string_view FormatTime(double seconds, MomentBuffer& buffer) noexcept;
[[nodiscard]] std::string_view FormatDateTime(double seconds, MomentBuffer& buffer) noexcept;

}  // namespace KelTransformNS
