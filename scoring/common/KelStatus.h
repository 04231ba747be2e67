#pragma once

#include "scoring/common/KelExport.h"

namespace KelCommon_1_3 {

/// The outcome of an operation: OK, a warning or an error, the latter two with a code.
///
/// A plain value; any thread may hold its own. The codes are listed in `KelScoringConst.h`.
class KEL_EXPORT KelStatus {
 public:
  /// OK, code 0.
  constexpr KelStatus() noexcept = default;
  /// A warning (`warning` true: neither `IsOK` nor `IsError`) or an error (`warning` false).
  constexpr KelStatus(long code, bool warning) noexcept
      : fCode(code), fSeverity(warning ? Severity::kWarning : Severity::kError) {}

  [[nodiscard]] constexpr bool IsOK() const noexcept { return fSeverity == Severity::kOK; }
  [[nodiscard]] constexpr bool IsError() const noexcept { return fSeverity == Severity::kError; }
  /// The code given to the constructor; 0 for OK.
  [[nodiscard]] constexpr long GetErrorCode() const noexcept { return fCode; }

  /// What the code means, for people. Never null; a static text that the caller doesn't own.
  [[nodiscard]] const char* GetMessage() const noexcept { return GetMessage(fCode); }
  /// The same for a code alone. A code that isn't known gives a text that says so.
  [[nodiscard]] static const char* GetMessage(long code) noexcept;

 private:
  enum class Severity : int { kOK, kWarning, kError };

  long fCode = 0;
  Severity fSeverity = Severity::kOK;
};

}  // namespace KelCommon_1_3
