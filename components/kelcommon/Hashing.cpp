#include "components/kelcommon/Hashing.h"

#define XXH_INLINE_ALL
#include <array>
#include <random>
#include <xxhash.h>

namespace KelCommon_1_3 {
namespace {

std::uint64_t DrawSeed() {
  std::random_device device;
  const std::uint64_t high = device();
  return (high << 32U) ^ device();
}

// Drawn while the library is loaded, so that a hash needs no test whether it is there yet. Libraries that depend on
// this one are initialised after it.
const std::uint64_t kSeed = DrawSeed();

}  // namespace

std::uint64_t HashBytes(std::string_view bytes) { return XXH3_64bits_withSeed(bytes.data(), bytes.size(), kSeed); }

std::uint64_t HashChain(std::uint64_t sequence, std::uint64_t item) {
  const std::array<std::uint64_t, 2> link = {sequence, item};
  const std::uint64_t hash = XXH3_64bits_withSeed(link.data(), sizeof(link), kSeed);
  return hash == 0 ? 1 : hash;
}

std::uint64_t HashBits(std::uint64_t bits) { return XXH3_64bits_withSeed(&bits, sizeof(bits), kSeed); }

}  // namespace KelCommon_1_3
