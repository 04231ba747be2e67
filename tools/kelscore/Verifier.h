#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "scoring/common/Value.h"
#include "tools/kelscore/Console.h"
#include "tools/kelscore/LoadedModel.h"
#include "tools/kelscore/Verification.h"

namespace kelscore {

/// A result that isn't the expected one.
struct Difference {
  std::string field;
  std::optional<std::string> expected;
  KelCommon_1_3::Value actual;
};

/// A row with differences, or one that couldn't be scored.
struct DifferingRow {
  std::size_t row = 0;  ///< from 1
  std::uint64_t line = 0;
  std::vector<Difference> differences;
  std::string failure;  ///< why the row couldn't be scored; empty if it could
};

struct VerificationReport {
  std::string model;
  std::vector<std::string> compared;  ///< the fields whose values were compared
  std::size_t rowCount = 0;
  std::vector<DifferingRow> differing;
};

/// Scores the verification rows of a document, and compares outputs of the document's own where the rows have any, else
/// the target's predicted value. Warns of inputs that no row has; throws `Failure` (input failed) where fields and
/// model don't fit together.
[[nodiscard]] VerificationReport Verify(const LoadedModel& model, const Verification& verification, Console& console);

}  // namespace kelscore
