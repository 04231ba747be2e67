#include "components/keltransform/Hashing.h"

#define XXH_INLINE_ALL
#include <random>
#include <xxhash.h>

namespace KelTransformNS {
namespace {

std::uint64_t DrawSeed() {
  std::random_device device;
  const std::uint64_t high = device();
  return (high << 32U) | device();
}

// Drawn while the library is loaded, so that a hash needs no test whether it is there yet.
const std::uint64_t kSeed = DrawSeed();

}  // namespace

std::uint64_t HashBytes(const void* bytes, std::size_t size) noexcept {
  return XXH3_64bits_withSeed(bytes, size, kSeed);
}

}  // namespace KelTransformNS
