#pragma once

#include "tools/kelscore/Arguments.h"
#include "tools/kelscore/Console.h"
#include "tools/kelscore/Failure.h"

namespace kelscore {

/// Compares a model's results with those in its document's verification rows, and reports differences on standard
/// output; any gives the status of failed rows. Throws `Failure`, also for a document without such rows.
[[nodiscard]] ExitStatus RunVerify(const VerifyArguments& arguments, Console& console);

}  // namespace kelscore
