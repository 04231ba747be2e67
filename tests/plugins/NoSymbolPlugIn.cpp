#include "scoring/common/KelExport.h"

// A library that loads and is no plug-in.
extern "C" KEL_EXPORT int NoScoreParserHere() { return 0; }
