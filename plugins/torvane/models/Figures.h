#pragma once

#include <cstddef>
#include <cstdint>

namespace Torvane {

/// What kinds of models do with the figures of their categories, in place.

/// p_j = y_j / sum of y_i; NaN throughout if that is 0, as nothing has a share then.
void Share(double* figures, std::size_t count) noexcept;
/// p_j = exp(y_j) / sum of exp(y_i). No exponential overflows.
void Softmax(double* figures, std::size_t count) noexcept;

/// The index of the largest figure, the first one on a tie; `Prediction::kNone` if there is none or one of them is NaN.
[[nodiscard]] std::uint32_t IndexOfLargest(const double* figures, std::size_t count) noexcept;

}  // namespace Torvane
