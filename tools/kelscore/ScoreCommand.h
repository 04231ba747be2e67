#pragma once

#include "tools/kelscore/Arguments.h"
#include "tools/kelscore/Console.h"
#include "tools/kelscore/Failure.h"

namespace kelscore {

/// Scores a table. Throws `Failure` when the run can't go on; failed rows are told and give the status.
[[nodiscard]] ExitStatus RunScore(const ScoreArguments& arguments, Console& console);

}  // namespace kelscore
