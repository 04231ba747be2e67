#pragma once

/// How often this program has called the global operator new, which AllocationCount.cpp replaces.
[[nodiscard]] long AllocationCount() noexcept;
