#include "plugins/torvane/models/ModelBody.h"

namespace Torvane {

void ModelBody::WriteEntity(std::uint32_t, KelCommon_1_3::Value& value) const { value.SetNull(); }

}  // namespace Torvane
