#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "scoring/common/KelExport.h"

namespace KelTransformNS {

/// A hash of `size` bytes under a seed of this process, so that no document can be made to collide on purpose.
[[nodiscard]] KEL_EXPORT std::uint64_t HashBytes(const void* bytes, std::size_t size) noexcept;

/// The hash of a map from names, which looks a name up without making a string of it.
struct NameHash {
  using is_transparent = void;
  // Not marked noexcept: so the standard library's maps keep the hashes instead of working them out at each step.
  std::size_t operator()(std::string_view name) const { return HashBytes(name.data(), name.size()); }
};

}  // namespace KelTransformNS
