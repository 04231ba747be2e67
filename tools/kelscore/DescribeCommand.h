#pragma once

#include "tools/kelscore/Arguments.h"
#include "tools/kelscore/Console.h"
#include "tools/kelscore/Failure.h"

namespace kelscore {

/// Writes to standard output what a model reads and gives. Throws `Failure`.
[[nodiscard]] ExitStatus RunDescribe(const DescribeArguments& arguments, Console& console);

}  // namespace kelscore
