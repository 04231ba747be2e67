#pragma once

#include <cstdint>

namespace Torvane {

/// The functions that link an expected value with a linear predictor y, by the names that the standard has for them.
enum class Link : std::uint8_t {
  kIdentity,
  kLog,
  kLogc,
  kLogit,
  kProbit,
  kCloglog,
  kLoglog,
  kCauchit,
  kNegbin,
  kOddspower,
  kPower,
};

/// The expected value for y: the inverse of the link. `parameter` is the exponent d of `kOddspower` and `kPower`, and
/// the dispersion c of `kNegbin`. NaN where y is outside of what the link can give.
[[nodiscard]] double InverseLink(Link link, double y, double parameter = 0.0) noexcept;

}  // namespace Torvane
