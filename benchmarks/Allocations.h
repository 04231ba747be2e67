#pragma once

#include <cstddef>

/// Counts what the program allocates through `operator new`, which is all that the library and the XML parser use.
namespace Allocations {

/// Number of allocations so far, of all threads.
std::size_t Count() noexcept;
/// Bytes held now, and the most that were held since `ResetPeak`.
std::size_t Held() noexcept;
std::size_t Peak() noexcept;
void ResetPeak() noexcept;

}  // namespace Allocations
