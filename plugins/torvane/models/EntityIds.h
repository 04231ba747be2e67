#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "scoring/common/Value.h"

namespace Torvane {

/// The identifiers of a model's entities, such as the nodes of a tree. Most producers number them; numbers take four
/// bytes, and none at all if they count the entities.
class EntityIds {
 public:
  /// `ids` in the order of the entities; one that is absent becomes the entity's position from 1.
  void Assign(const std::vector<std::optional<std::string_view>>& ids);
  void Write(std::uint32_t entity, KelCommon_1_3::Value& value) const;

 private:
  void DropConsecutive();

  std::uint32_t fFirst = 0;  // the number of the first one if those of the others follow, and nothing else is stored
  std::vector<std::uint32_t> fNumbers;
  std::vector<std::uint32_t> fEnds;  // of each text in fTexts, if not all ids are numbers
  std::string fTexts;
};

}  // namespace Torvane
