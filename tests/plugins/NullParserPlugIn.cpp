#include "scoring/common/IKelScoreParser.h"
#include "scoring/common/KelExport.h"

extern "C" KEL_EXPORT KelScoring_20::IKelScoreParser* GetScoreParser() { return nullptr; }
