#include "plugins/torvane/models/LinkFunctions.h"

#include <cmath>
#include <numbers>

namespace Torvane {
namespace {

double Logistic(double y) noexcept { return 1.0 / (1.0 + std::exp(-y)); }

// 1 / (1 + (1 + d y) ^ (-1 / d)), which tends to the logistic function where d goes to 0. The power by log1p keeps the
// digits of a small d y.
double InverseOddspower(double y, double d) noexcept {
  if (d == 0.0) return Logistic(y);
  return 1.0 / (1.0 + std::exp(-std::log1p(d * y) / d));
}

// y ^ (1 / d); the exponential function is what the standard puts at d = 0.
double InversePower(double y, double d) noexcept { return d == 0.0 ? std::exp(y) : std::pow(y, 1.0 / d); }

}  // namespace

// Each formula as the standard's tables of links and normalization methods have it, written so that it keeps its digits
// in the tails: 1 - e^u by expm1, Phi by the complementary error function.
double InverseLink(Link link, double y, double parameter) noexcept {
  switch (link) {
    case Link::kIdentity:
      return y;
    case Link::kLog:
      return std::exp(y);
    case Link::kLogc:  // 1 - e^y
      return -std::expm1(y);
    case Link::kLogit:
      return Logistic(y);
    case Link::kProbit:  // Phi(y)
      return 0.5 * std::erfc(-y / std::numbers::sqrt2);
    case Link::kCloglog:  // 1 - e^(-e^y)
      return -std::expm1(-std::exp(y));
    case Link::kLoglog:  // e^(-e^(-y))
      return std::exp(-std::exp(-y));
    case Link::kCauchit:
      return 0.5 + std::atan(y) / std::numbers::pi;
    case Link::kNegbin:  // 1 / (c (e^(-y) - 1)); at its limit 0 it is infinite above, whatever the sign of the zero
      return 1.0 / (parameter * (std::expm1(-y) + 0.0));
    case Link::kOddspower:
      return InverseOddspower(y, parameter);
    case Link::kPower:
      return InversePower(y, parameter);
  }
  return y;
}

}  // namespace Torvane
