#include "components/keltransform/functions/Numbers.h"

#include <cmath>
#include <limits>

namespace KelTransformNS {
namespace {

constexpr double kUndefined = std::numeric_limits<double>::quiet_NaN();
const double kRootOfTwo = std::sqrt(2.0);
const double kRootOfTwoPi = std::sqrt(2.0 * std::acos(-1.0));

double StandardDensity(double z) { return std::exp(-0.5 * z * z) / kRootOfTwoPi; }

// By the complement, which stays exact far below the mean.
double StandardDistribution(double z) { return 0.5 * std::erfc(-z / kRootOfTwo); }

// The quantile of a probability up to 0.5, to three digits: Abramowitz and Stegun, 26.2.22.
double EstimateLowerQuantile(double probability) {
  const double t = std::sqrt(-2.0 * std::log(probability));
  return (2.30753 + 0.27061 * t) / (1.0 + t * (0.99229 + 0.04481 * t)) - t;
}

// Halley's method triples the digits at each step, so three steps are enough for any estimate of three digits.
double LowerQuantile(double probability) {
  double z = EstimateLowerQuantile(probability);
  for (int step = 0; step < 3; ++step) {
    const double newton = (StandardDistribution(z) - probability) / StandardDensity(z);
    if (!std::isfinite(newton)) break;  // among the smallest numbers the density has no digits any more
    z -= newton / (1.0 + 0.5 * z * newton);
  }
  return z;
}

double StandardQuantile(double probability) {
  if (!(probability > 0.0 && probability < 1.0)) return kUndefined;
  if (probability == 0.5) return 0.0;  // exactly, where the search would leave the rounding error of its last step
  return probability <= 0.5 ? LowerQuantile(probability) : -LowerQuantile(1.0 - probability);
}

}  // namespace

double Modulo(double dividend, double divisor) {
  const double rest = std::fmod(dividend, divisor);  // NaN for a divisor of 0
  if (rest == 0.0) return std::copysign(rest, divisor);
  const bool hasOtherSign = (rest < 0.0) != (divisor < 0.0);
  return hasOtherSign ? rest + divisor : rest;
}

double Power(double base, double exponent) {
  return base == 0.0 && exponent < 0.0 ? kUndefined : std::pow(base, exponent);
}

double NaturalLogarithm(double x) { return x > 0.0 ? std::log(x) : kUndefined; }

double CommonLogarithm(double x) { return x > 0.0 ? std::log10(x) : kUndefined; }

double LogarithmOfOnePlus(double x) { return x > -1.0 ? std::log1p(x) : kUndefined; }

// Not floor(x + 0.5): that sum rounds up the number just below 0.5.
double RoundHalfUp(double x) {
  const double below = std::floor(x);
  return x - below >= 0.5 ? below + 1.0 : below;
}

double RoundHalfEven(double x) {
  const double up = RoundHalfUp(x);
  const bool isHalf = up - x == 0.5;
  return isHalf && std::fmod(up, 2.0) != 0.0 ? up - 1.0 : up;
}

double NormalDensity(double x, double mean, double deviation) {
  return deviation > 0.0 ? StandardDensity((x - mean) / deviation) / deviation : kUndefined;
}

double NormalDistribution(double x, double mean, double deviation) {
  return deviation > 0.0 ? StandardDistribution((x - mean) / deviation) : kUndefined;
}

double NormalQuantile(double probability, double mean, double deviation) {
  return deviation > 0.0 ? mean + deviation * StandardQuantile(probability) : kUndefined;
}

}  // namespace KelTransformNS
