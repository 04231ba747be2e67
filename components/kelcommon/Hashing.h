#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace KelCommon_1_3 {

/// A hash of bytes under a seed of this process, so that no document can be made to collide on purpose.
[[nodiscard]] std::uint64_t HashBytes(std::string_view bytes);

/// The hash of a sequence that had the hash `sequence` (0: empty) before an item of hash `item` came. Never 0.
[[nodiscard]] std::uint64_t HashChain(std::uint64_t sequence, std::uint64_t item);

/// A hash of a number's bits, under the same seed.
[[nodiscard]] std::uint64_t HashBits(std::uint64_t bits);

}  // namespace KelCommon_1_3
