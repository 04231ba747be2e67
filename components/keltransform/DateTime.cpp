#include "components/keltransform/DateTime.h"

#include <charconv>
#include <cmath>
#include <cstdint>

#include "components/keltransform/NumberText.h"

namespace KelTransformNS {
namespace {

// The calendar repeats every 400 years, which are 146097 days. Years are counted from March, so that the leap day is
// the last one of a year and the lengths of the months before it follow one linear rule.
constexpr std::int64_t kDaysPerEra = 146097;
constexpr std::int64_t kDaysToMarchOfYear0 = 719468;  // from 0000-03-01 to 1970-01-01

std::int64_t FloorDivide(std::int64_t number, std::int64_t divisor) {
  return number / divisor - (number % divisor < 0 ? 1 : 0);
}

int DaysOfMonth(std::int64_t year, int month) {
  constexpr std::array<int, 12> kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool isLeap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
  return month == 2 && isLeap ? 29 : kDays[static_cast<std::size_t>(month - 1)];
}

// Walks over a text; each step takes what it expects or leaves the text alone and says no.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : fRest(text) {}

  [[nodiscard]] bool AtEnd() const { return fRest.empty(); }
  [[nodiscard]] std::string_view Rest() const { return fRest; }

  bool Take(char expected) {
    if (!fRest.starts_with(expected)) return false;
    fRest.remove_prefix(1);
    return true;
  }

  bool TakeTwoDigits(int lowest, int highest, int& number) {
    if (CountDigits() < 2) return false;
    number = (fRest[0] - '0') * 10 + (fRest[1] - '0');
    fRest.remove_prefix(2);
    return number >= lowest && number <= highest;
  }

  bool TakeYear(std::int64_t& year) {
    const bool isNegative = Take('-');
    const std::size_t digits = CountDigits();
    if (digits < 4 || digits > 6) return false;
    std::from_chars(fRest.data(), fRest.data() + digits, year);
    if (isNegative) year = -year;
    fRest.remove_prefix(digits);
    return true;
  }

  // The digits behind a decimal point, which the caller has taken.
  bool TakeFraction(double& fraction) {
    const std::size_t digits = CountDigits();
    const char* const point = fRest.data() - 1;
    if (digits == 0) return false;
    std::from_chars(point, fRest.data() + digits, fraction, std::chars_format::fixed);
    fRest.remove_prefix(digits);
    return true;
  }

 private:
  [[nodiscard]] std::size_t CountDigits() const {
    std::size_t count = 0;
    while (count < fRest.size() && fRest[count] >= '0' && fRest[count] <= '9') ++count;
    return count;
  }

  std::string_view fRest;
};

bool ScanDate(Scanner& scanner, Moment& moment) {
  Date date{};
  if (!scanner.TakeYear(date.year) || !scanner.Take('-')) return false;
  if (!scanner.TakeTwoDigits(1, 12, date.month) || !scanner.Take('-')) return false;
  if (!scanner.TakeTwoDigits(1, DaysOfMonth(date.year, date.month), date.day)) return false;
  moment.days = static_cast<double>(DaysFromDate(date));
  return true;
}

bool ScanTime(Scanner& scanner, Moment& moment) {
  int hour = 0;
  int minute = 0;
  int second = 0;
  double fraction = 0.0;
  if (!scanner.TakeTwoDigits(0, 24, hour) || !scanner.Take(':')) return false;
  if (!scanner.TakeTwoDigits(0, 59, minute) || !scanner.Take(':')) return false;
  if (!scanner.TakeTwoDigits(0, 59, second)) return false;
  if (scanner.Take('.') && !scanner.TakeFraction(fraction)) return false;
  moment.seconds = hour * 3600 + minute * 60 + second + fraction;
  return *moment.seconds <= kSecondsPerDay;  // 24:00:00 is the end of the day
}

// A zone "Z" or "+hh:mm", or none. Its distance from UTC in seconds.
bool ScanZone(Scanner& scanner, double& distance) {
  if (scanner.AtEnd() || scanner.Take('Z')) return true;
  const bool isWest = scanner.Take('-');
  int hours = 0;
  int minutes = 0;
  if (!isWest && !scanner.Take('+')) return false;
  if (!scanner.TakeTwoDigits(0, 14, hours) || !scanner.Take(':') || !scanner.TakeTwoDigits(0, 59, minutes))
    return false;
  distance = (hours * 3600 + minutes * 60) * (isWest ? -1.0 : 1.0);
  return true;
}

// A moment's seconds may lie outside its day by its zone, or at the very end.
void Normalize(Moment& moment) {
  const double days = std::floor(*moment.seconds / kSecondsPerDay);
  *moment.seconds -= days * kSecondsPerDay;
  if (moment.days) *moment.days += days;
}

std::string_view TrimXmlSpace(std::string_view text) {
  constexpr std::string_view kSpace = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kSpace);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

bool LooksLikeTime(std::string_view text) { return text.size() > 2 && text[2] == ':'; }

// Writes into a buffer that is known to be large enough.
class Writer {
 public:
  explicit Writer(MomentBuffer& buffer) : fBuffer(buffer), fEnd(buffer.data()) {}

  void Put(char character) { *fEnd++ = character; }

  void PutDigits(std::int64_t number, int digits) {
    if (number < 0) Put('-');
    char* const last = std::to_chars(fEnd, fBuffer.data() + fBuffer.size(), number < 0 ? -number : number).ptr;
    const auto written = static_cast<int>(last - fEnd);
    const int zeros = written < digits ? digits - written : 0;
    for (int index = written - 1; index >= 0; --index) fEnd[index + zeros] = fEnd[index];
    for (int index = 0; index < zeros; ++index) fEnd[index] = '0';
    fEnd += written + zeros;
  }

  void PutDate(const Date& date) {
    PutDigits(date.year, 4);
    Put('-');
    PutDigits(date.month, 2);
    Put('-');
    PutDigits(date.day, 2);
  }

  void PutTime(std::int64_t microseconds) {
    const std::int64_t seconds = microseconds / 1000000;
    PutDigits(seconds / 3600, 2);
    Put(':');
    PutDigits(seconds / 60 % 60, 2);
    Put(':');
    PutDigits(seconds % 60, 2);
    PutFraction(microseconds % 1000000);
  }

  [[nodiscard]] std::string_view Finish() {
    *fEnd = '\0';
    return {fBuffer.data(), static_cast<std::size_t>(fEnd - fBuffer.data())};
  }

 private:
  void PutFraction(std::int64_t microseconds) {
    if (microseconds == 0) return;
    Put('.');
    PutDigits(microseconds, 6);
    while (fEnd[-1] == '0') --fEnd;
  }

  MomentBuffer& fBuffer;
  char* fEnd;
};

}  // namespace

std::int64_t DaysFromDate(const Date& date) noexcept {
  const std::int64_t year = date.year - (date.month <= 2 ? 1 : 0);
  const std::int64_t era = FloorDivide(year, 400);
  const std::int64_t yearOfEra = year - era * 400;
  const std::int64_t monthFromMarch = (date.month + 9) % 12;
  const std::int64_t dayOfYear = (153 * monthFromMarch + 2) / 5 + date.day - 1;
  return era * kDaysPerEra + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear - kDaysToMarchOfYear0;
}

Date DateFromDays(std::int64_t days) noexcept {
  days += kDaysToMarchOfYear0;
  const std::int64_t era = FloorDivide(days, kDaysPerEra);
  const std::int64_t dayOfEra = days - era * kDaysPerEra;
  const std::int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const std::int64_t monthFromMarch = (5 * dayOfYear + 2) / 153;
  const auto day = static_cast<int>(dayOfYear - (153 * monthFromMarch + 2) / 5 + 1);
  const auto month = static_cast<int>(monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9);
  return {yearOfEra + era * 400 + (month <= 2 ? 1 : 0), month, day};
}

std::optional<Moment> ParseMoment(std::string_view text) noexcept {
  Scanner scanner(TrimXmlSpace(text));
  Moment moment;
  double distance = 0.0;
  const bool hasDate = !LooksLikeTime(scanner.Rest());
  if (hasDate && !ScanDate(scanner, moment)) return std::nullopt;
  const bool hasTime = !hasDate || scanner.Take('T');
  if (hasTime && !ScanTime(scanner, moment)) return std::nullopt;
  if (!ScanZone(scanner, distance) || !scanner.AtEnd()) return std::nullopt;
  if (hasDate && hasTime) *moment.seconds -= distance;
  if (hasTime) Normalize(moment);
  return moment;
}

std::string_view FormatDate(double days, MomentBuffer& buffer) noexcept {
  if (!(std::fabs(days) <= kMaxDays)) return {};
  Writer writer(buffer);
  writer.PutDate(DateFromDays(static_cast<std::int64_t>(std::floor(days))));
  return writer.Finish();
}

std::string_view FormatTime(double seconds, MomentBuffer& buffer) noexcept {
  if (!(seconds >= 0.0 && seconds < kSecondsPerDay)) return {};
  Writer writer(buffer);
  // Rounding must not turn the last instant of the day into a time that there isn't.
  writer.PutTime(std::min<std::int64_t>(std::llround(seconds * 1e6), 86399999999));
  return writer.Finish();
}

std::string_view FormatDateTime(double seconds, MomentBuffer& buffer) noexcept {
  if (!(std::fabs(seconds) <= kMaxDays * kSecondsPerDay)) return {};
  const double days = std::floor(seconds / kSecondsPerDay);
  const std::int64_t microseconds = std::llround((seconds - days * kSecondsPerDay) * 1e6);
  constexpr std::int64_t kMicrosecondsPerDay = 86400000000;
  Writer writer(buffer);
  writer.PutDate(DateFromDays(static_cast<std::int64_t>(days) + microseconds / kMicrosecondsPerDay));
  writer.Put('T');
  writer.PutTime(microseconds % kMicrosecondsPerDay);
  return writer.Finish();
}

}  // namespace KelTransformNS
