#pragma once

namespace KelCommon_1_3 {

/// The mark of a missing number.
struct KelMV {
  /// The lowest finite double. `Value::GetReal` gives it for everything that is no number, so a reader that must
  /// tell "no number" from "this very number" looks at `Value::GetType` first.
  static constexpr double gMissingValue = -1.7976931348623157e308;
};

}  // namespace KelCommon_1_3
