#include "plugins/torvane/models/Figures.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "plugins/torvane/models/Prediction.h"

namespace Torvane {

void Share(double* figures, std::size_t count) noexcept {
  double sum = 0.0;
  for (std::size_t i = 0; i < count; ++i) sum += figures[i];
  if (sum == 0.0) sum = std::numeric_limits<double>::quiet_NaN();
  for (std::size_t i = 0; i < count; ++i) figures[i] /= sum;
}

// The largest y is taken off first.
void Softmax(double* figures, std::size_t count) noexcept {
  const double largest = *std::max_element(figures, figures + count);
  for (std::size_t i = 0; i < count; ++i) figures[i] = std::exp(figures[i] - largest);
  Share(figures, count);
}

std::uint32_t IndexOfLargest(const double* figures, std::size_t count) noexcept {
  std::uint32_t best = Prediction::kNone;
  for (std::uint32_t i = 0; i < count; ++i) {
    if (std::isnan(figures[i])) return Prediction::kNone;
    if (best == Prediction::kNone || figures[i] > figures[best]) best = i;
  }
  return best;
}

}  // namespace Torvane
