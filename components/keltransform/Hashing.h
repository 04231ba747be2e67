#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "components/kelcommon/Hashing.h"

namespace KelTransformNS {

using KelCommon_1_3::NameHash;

/// A hash of `size` bytes under a seed of this process, so that no document can be made to collide on purpose.
[[nodiscard]] inline std::uint64_t HashBytes(const void* bytes, std::size_t size) noexcept {
  return KelCommon_1_3::HashBytes({static_cast<const char*>(bytes), size});
}

}  // namespace KelTransformNS
