#pragma once

#include <xercesc/util/XercesDefs.hpp>

namespace KelScoring_20 {

/// Reads the whole text as a decimal number, stricter than `atoi` and `atof`, which do the conversion in the end.
/// False, and `value` unchanged, for everything that they would stop at or skip. `text` must not be null.
bool ReadStrictInt(const XMLCh* text, int& value);
bool ReadStrictDouble(const XMLCh* text, double& value);

}  // namespace KelScoring_20
