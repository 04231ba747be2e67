#include "components/keltransform/functions/DateFunctions.h"

#include <charconv>
#include <cmath>
#include <limits>

#include "components/keltransform/DateTime.h"

namespace KelTransformNS {
namespace {

constexpr std::array<std::string_view, 7> kDays = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                   "Thursday", "Friday", "Saturday"};
constexpr std::array<std::string_view, 12> kMonths = {"January",   "February", "March",    "April",
                                                      "May",       "June",     "July",     "August",
                                                      "September", "October",  "November", "December"};
constexpr std::size_t kShortName = 3;

// The first day of a year, in days since 1970; NaN for what is no year.
double FirstDay(double year) {
  constexpr double kMaxYear = 1e6;
  if (!(std::fabs(year) <= kMaxYear) || year != std::trunc(year)) return std::numeric_limits<double>::quiet_NaN();
  return static_cast<double>(DaysFromDate({static_cast<std::int64_t>(year), 1, 1}));
}

// A moment taken apart, counted as people do.
struct Calendar {
  Date date;
  int dayOfWeek;  // 0 is Sunday
  int dayOfYear;  // from 0
  int hour;
  int minute;
  int second;
};

Calendar CalendarOf(double moment) {
  const double days = std::floor(moment / kSecondsPerDay);
  const auto day = static_cast<std::int64_t>(days);
  const auto seconds = static_cast<int>(moment - days * kSecondsPerDay);
  const Date date = DateFromDays(day);
  return {date,
          static_cast<int>(((day + 4) % 7 + 7) % 7),  // 1970-01-01 was a Thursday
          static_cast<int>(day - DaysFromDate({date.year, 1, 1})),
          seconds / 3600,
          seconds / 60 % 60,
          seconds % 60};
}

void PutNumber(std::int64_t number, int digits, TextSink& result) {
  std::array<char, 24> buffer;
  const std::int64_t magnitude = number < 0 ? -number : number;
  const char* const end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), magnitude).ptr;
  if (number < 0) result.Append('-');
  for (auto written = end - buffer.data(); written < digits; ++written) result.Append('0');
  result.Append({buffer.data(), static_cast<std::size_t>(end - buffer.data())});
}

int HourOfHalfDay(int hour) { return hour % 12 == 0 ? 12 : hour % 12; }

// The number of the week, whose first day is `firstDay`; the days before the first one belong to week 0.
int WeekOfYear(const Calendar& moment, int firstDay) {
  const int daysIntoWeek = (moment.dayOfWeek - firstDay + 7) % 7;
  return (moment.dayOfYear + 7 - daysIntoWeek) / 7;
}

bool PutPattern(std::string_view pattern, const Calendar& moment, TextSink& result);

bool PutConversion(char conversion, const Calendar& moment, TextSink& result) {
  const std::string_view day = kDays[static_cast<std::size_t>(moment.dayOfWeek)];
  const std::string_view month = kMonths[static_cast<std::size_t>(moment.date.month - 1)];
  switch (conversion) {
    case 'a':
      return result.Append(day.substr(0, kShortName)), true;
    case 'A':
      return result.Append(day), true;
    case 'b':
      return result.Append(month.substr(0, kShortName)), true;
    case 'B':
      return result.Append(month), true;
    case 'c':
      PutPattern("%a %b ", moment, result);
      if (moment.date.day < 10) result.Append(' ');
      PutNumber(moment.date.day, 1, result);
      return PutPattern(" %H:%M:%S %Y", moment, result);
    case 'd':
      return PutNumber(moment.date.day, 2, result), true;
    case 'H':
      return PutNumber(moment.hour, 2, result), true;
    case 'I':
      return PutNumber(HourOfHalfDay(moment.hour), 2, result), true;
    case 'j':
      return PutNumber(moment.dayOfYear + 1, 3, result), true;
    case 'm':
      return PutNumber(moment.date.month, 2, result), true;
    case 'M':
      return PutNumber(moment.minute, 2, result), true;
    case 'p':
      return result.Append(moment.hour < 12 ? "AM" : "PM"), true;
    case 'S':
      return PutNumber(moment.second, 2, result), true;
    case 'U':
      return PutNumber(WeekOfYear(moment, 0), 2, result), true;
    case 'w':
      return PutNumber(moment.dayOfWeek, 1, result), true;
    case 'W':
      return PutNumber(WeekOfYear(moment, 1), 2, result), true;
    case 'x':
      return PutPattern("%m/%d/%y", moment, result);
    case 'X':
      return PutPattern("%H:%M:%S", moment, result);
    case 'y':
      return PutNumber((moment.date.year % 100 + 100) % 100, 2, result), true;
    case 'Y':
      return PutNumber(moment.date.year, 1, result), true;
    case 'Z':
      return true;
    case '%':
      return result.Append('%'), true;
    default:
      return false;
  }
}

bool PutPattern(std::string_view pattern, const Calendar& moment, TextSink& result) {
  for (std::size_t index = 0; index < pattern.size(); ++index) {
    if (pattern[index] != '%') {
      result.Append(pattern[index]);
      continue;
    }
    if (++index == pattern.size() || !PutConversion(pattern[index], moment, result)) return false;
  }
  return true;
}

}  // namespace

double DaysSinceYear(double days, double year) { return days - FirstDay(year); }

double SecondsSinceYear(double seconds, double year) { return std::floor(seconds) - FirstDay(year) * kSecondsPerDay; }

bool FormatDatetime(const TextArguments& arguments, TextSink& result) {
  NumberBuffer buffer;
  const double moment = arguments.Number(0);
  if (!(std::fabs(moment) <= kMaxDays * kSecondsPerDay)) return false;
  return PutPattern(arguments.Text(1, buffer), CalendarOf(moment), result);
}

bool IsDatetimePattern(std::string_view pattern) {
  std::string text;
  TextSink sink(text, MadeTexts::kMaxBytes);
  return PutPattern(pattern, CalendarOf(0.0), sink);
}

}  // namespace KelTransformNS
