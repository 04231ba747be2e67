#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "scoring/common/KelExport.h"

namespace KelCommon_1_3 {

/// A hash of bytes under a seed of this process, so that no document can be made to collide on purpose.
[[nodiscard]] KEL_EXPORT std::uint64_t HashBytes(std::string_view bytes);

/// The hash of a sequence that had the hash `sequence` (0: empty) before an item of hash `item` came. Never 0.
[[nodiscard]] std::uint64_t HashChain(std::uint64_t sequence, std::uint64_t item);

/// A hash of a number's bits, under the same seed.
[[nodiscard]] KEL_EXPORT std::uint64_t HashBits(std::uint64_t bits);

/// The hash of a map from names, which looks a name up without making a string of it.
struct NameHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view name) const { return HashBytes(name); }
};

}  // namespace KelCommon_1_3
