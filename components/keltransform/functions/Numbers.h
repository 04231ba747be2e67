#pragma once

#include <limits>

namespace KelTransformNS {

// Functions of numbers that take more than a call of the standard library. NaN where they have no value.

[[nodiscard]] inline double Quotient(double dividend, double divisor) {
  return divisor == 0.0 ? std::numeric_limits<double>::quiet_NaN() : dividend / divisor;
}
/// The sign is that of the divisor.
[[nodiscard]] double Modulo(double dividend, double divisor);
/// pow(0, 0) is 1.
[[nodiscard]] double Power(double base, double exponent);
[[nodiscard]] double NaturalLogarithm(double x);
[[nodiscard]] double CommonLogarithm(double x);
[[nodiscard]] double LogarithmOfOnePlus(double x);
/// Halves go up, those of negative numbers too: -2.5 becomes -2.
[[nodiscard]] double RoundHalfUp(double x);
/// Halves go to the even neighbour.
[[nodiscard]] double RoundHalfEven(double x);

[[nodiscard]] double NormalDensity(double x, double mean, double deviation);
[[nodiscard]] double NormalDistribution(double x, double mean, double deviation);
/// The x whose `NormalDistribution` is `probability`, which lies between 0 and 1, neither included.
[[nodiscard]] double NormalQuantile(double probability, double mean, double deviation);

}  // namespace KelTransformNS
