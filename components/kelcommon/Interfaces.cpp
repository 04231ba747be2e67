// The destructors of the abstract interfaces. Defined here, they give each interface one home for its type
// information, so that casts work between libraries and plug-ins.

#include "scoring/common/IKelEncoder.h"
#include "scoring/common/IKelScore.h"
#include "scoring/common/IKelSettingValue.h"
#include "scoring/common/IKelVariable.h"
#include "scoring/common/ProgressReport.h"

namespace KelCommon_1_3 {

IKelScore::~IKelScore() = default;
ProgressReport::~ProgressReport() = default;

}  // namespace KelCommon_1_3

namespace KelXML_1_3 {

IKelEncoder::~IKelEncoder() = default;
IKelSettingValue::~IKelSettingValue() = default;
IKelVariable::~IKelVariable() = default;

}  // namespace KelXML_1_3
