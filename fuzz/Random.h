#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace KelFuzz {

/// Numbers that look like chance and are the same for the same seed everywhere.
class Random {
 public:
  explicit Random(std::uint64_t seed) noexcept : fState(seed) {}

  std::uint64_t Next() noexcept {
    fState += 0x9E3779B97F4A7C15U;
    std::uint64_t bits = fState;
    bits = (bits ^ (bits >> 30)) * 0xBF58476D1CE4E5B9U;
    bits = (bits ^ (bits >> 27)) * 0x94D049BB133111EBU;
    return bits ^ (bits >> 31);
  }
  /// Below `count`, which isn't 0.
  std::size_t Below(std::size_t count) noexcept { return static_cast<std::size_t>(Next() % count); }
  bool OneIn(std::size_t count) noexcept { return Below(count) == 0; }

  template <typename T>
  T& Pick(std::vector<T>& items) noexcept {
    return items[Below(items.size())];
  }
  template <typename T>
  const T& Pick(const std::vector<T>& items) noexcept {
    return items[Below(items.size())];
  }

 private:
  std::uint64_t fState;
};

}  // namespace KelFuzz
