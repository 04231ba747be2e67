// In a file of its own, so that no caller gets only one of the two operators inlined.

#include "tests/components/kelcommon/AllocationCount.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> allocationCount{0};
constexpr long kNoLimit = -1;
thread_local long allocationsLeft = kNoLimit;

}  // namespace

long AllocationCount() noexcept { return allocationCount; }

void FailAllocations(bool fail) noexcept { FailAllocationsAfter(fail ? 0 : kNoLimit); }

void FailAllocationsAfter(long count) noexcept { allocationsLeft = count < 0 ? kNoLimit : count; }

void* operator new(std::size_t size) {
  ++allocationCount;
  if (allocationsLeft == 0) throw std::bad_alloc();
  if (allocationsLeft > 0) --allocationsLeft;
  if (void* const memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}

void operator delete(void* memory) noexcept { std::free(memory); }

void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
