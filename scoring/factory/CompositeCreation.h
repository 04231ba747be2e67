#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "scoring/common/KelStatus.h"

namespace KelXML_1_3 {
class KelSettings;
}

namespace KelScoring_20 {

class ScoringModel;

/// Makes the member at a position, or gives null with an error in the status that it works on.
using MakeMember = std::function<std::unique_ptr<ScoringModel>(std::size_t position)>;

/// A multi model with a member for each identifier, in order. Null with an error in `status`, which tells why a member
/// couldn't be made or stood there before; members made so far are destroyed. Warnings of members don't survive.
std::unique_ptr<ScoringModel> CreateMultiModel(const std::vector<std::string>& ids, const MakeMember& makeMember,
                                               KelCommon_1_3::KelStatus& status);

/// A split model after its description (see "scoring_splitModel"), with a member for each identifier that has a key
/// there. `status` as above. A member whose key is taken is destroyed.
std::unique_ptr<ScoringModel> CreateSplitModel(const KelXML_1_3::KelSettings& description, const MakeMember& makeMember,
                                               KelCommon_1_3::KelStatus& status);

}  // namespace KelScoring_20
