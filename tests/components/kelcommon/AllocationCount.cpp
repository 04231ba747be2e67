// In a file of its own, so that no caller gets only one of the two operators inlined.

#include "tests/components/kelcommon/AllocationCount.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> allocationCount{0};
thread_local bool failsAllocations = false;

}  // namespace

long AllocationCount() noexcept { return allocationCount; }

void FailAllocations(bool fail) noexcept { failsAllocations = fail; }

void* operator new(std::size_t size) {
  ++allocationCount;
  if (failsAllocations) throw std::bad_alloc();
  if (void* const memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}

void operator delete(void* memory) noexcept { std::free(memory); }

void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
