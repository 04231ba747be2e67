// A module that the loader's tests load.

#include "scoring/common/KelExport.h"

extern "C" KEL_EXPORT int KelProbeCountCalls() {
  static int calls = 0;
  return ++calls;
}
