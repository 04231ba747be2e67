// Whatever the bytes are, no document and no record may break the default plug-in. Mutations keep the documents'
// structure, so that most of them get past the parser.

#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <xercesc/util/PlatformUtils.hpp>

#include "fuzz/Markup.h"
#include "fuzz/ModelTrial.h"
#include "fuzz/Mutator.h"
#include "fuzz/Random.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace {

using KelFuzz::Markup;
using KelFuzz::Mutator;
using KelFuzz::Random;

// Documents whose elements go into others: the first that are seen.
constexpr std::size_t kMostDonors = 300;

std::string TextOf(const std::uint8_t* data, std::size_t size) { return {reinterpret_cast<const char*>(data), size}; }

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  xercesc::XMLPlatformUtils::Initialize();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  KelFuzz::TryModel(TextOf(data, size));
  return 0;
}

// What grew too large stays as it was.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned int seed) {
  static Mutator mutator(Random{1});
  std::optional<Markup> root = KelFuzz::ReadMarkup(TextOf(data, size));
  if (!root || Random(seed).OneIn(50)) return LLVMFuzzerMutate(data, size, maxSize);
  if (mutator.DonorCount() < kMostDonors) mutator.AddDonor(*root);
  mutator.Restart(Random{seed});
  mutator.Mutate(*root);
  const std::string document = KelFuzz::WriteMarkup(*root);
  if (document.size() > maxSize) return size;
  std::memcpy(data, document.data(), document.size());
  return document.size();
}
