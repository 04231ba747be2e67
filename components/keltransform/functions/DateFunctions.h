#pragma once

#include "components/keltransform/functions/Function.h"

namespace KelTransformNS {

/// From the first day of a year to a day, which is given in days since 1970.
[[nodiscard]] double DaysSinceYear(double days, double year);
/// From the begin of a year to a moment, which is given in seconds since 1970.
[[nodiscard]] double SecondsSinceYear(double seconds, double year);

/// A moment by a pattern of POSIX strftime, in the C locale. A moment has no time zone, so %Z writes nothing.
[[nodiscard]] bool FormatDatetime(const TextArguments& arguments, TextSink& result);
/// Whether a pattern has only conversions that `FormatDatetime` knows.
[[nodiscard]] bool IsDatetimePattern(std::string_view pattern);

}  // namespace KelTransformNS
