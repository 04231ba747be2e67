#pragma once

#include "scoring/common/KelStatus.h"
#include "scoring/common/KelVarList.h"
#include "scoring/pmml/Field.h"

namespace KelScoring_20 {

/// Adds the variable that the field declares to the list, without a role. 111 if the list refuses it; what was added
/// by then stays.
KelCommon_1_3::KelStatus AddVariable(KelXML_1_3::KelVarList& list, Field field);

}  // namespace KelScoring_20
