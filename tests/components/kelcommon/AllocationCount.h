#pragma once

/// How often this program has called the global operator new, which AllocationCount.cpp replaces.
[[nodiscard]] long AllocationCount() noexcept;
/// Whether this thread's further calls of it shall find no memory.
void FailAllocations(bool fail) noexcept;
/// Whether they shall find none after this many more that do. A negative count ends that.
void FailAllocationsAfter(long count) noexcept;
