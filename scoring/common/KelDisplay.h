#pragma once

#include <iosfwd>
#include <string>

#include "scoring/common/KelExport.h"

/// The display functions of the family: plain lines for people, to standard output unless a host redirects them.
namespace KelDisplay_1_3 {

/// Writes "label: text" and a line end.
KEL_EXPORT void DisplayS(const std::string& label, const std::string& text);
/// Writes "label: number" and a line end.
KEL_EXPORT void DisplayI(const std::string& label, int number);
/// Writes `text` as it stands, behind two blanks for each level.
KEL_EXPORT void DisplayText(int level, const std::string& text);

/// Sends all further output to `stream`, which must outlive its use; null goes back to standard output. Process-wide:
/// set it before threads display.
KEL_EXPORT void SetDisplayStream(std::ostream* stream);

}  // namespace KelDisplay_1_3
