#include "benchmarks/Allocations.h"

#include <atomic>
#include <cstdlib>
#include <malloc.h>
#include <new>

namespace {

std::atomic<std::size_t> gCount{0};
std::atomic<std::size_t> gHeld{0};
std::atomic<std::size_t> gPeak{0};

void* Allocate(std::size_t size) {
  void* memory = std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) throw std::bad_alloc();
  gCount.fetch_add(1, std::memory_order_relaxed);
  const std::size_t held =
      gHeld.fetch_add(malloc_usable_size(memory), std::memory_order_relaxed) + malloc_usable_size(memory);
  if (held > gPeak.load(std::memory_order_relaxed)) gPeak.store(held, std::memory_order_relaxed);
  return memory;
}

void Release(void* memory) noexcept {
  if (memory == nullptr) return;
  gHeld.fetch_sub(malloc_usable_size(memory), std::memory_order_relaxed);
  std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) { return Allocate(size); }
void* operator new[](std::size_t size) { return Allocate(size); }
void operator delete(void* memory) noexcept { Release(memory); }
void operator delete[](void* memory) noexcept { Release(memory); }
void operator delete(void* memory, std::size_t) noexcept { Release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { Release(memory); }

namespace Allocations {

std::size_t Count() noexcept { return gCount.load(std::memory_order_relaxed); }
std::size_t Held() noexcept { return gHeld.load(std::memory_order_relaxed); }
std::size_t Peak() noexcept { return gPeak.load(std::memory_order_relaxed); }
void ResetPeak() noexcept { gPeak.store(Held(), std::memory_order_relaxed); }

}  // namespace Allocations
