#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <utility>

#include "scoring/common/ValueRecord.h"

namespace KelTransformNS {

/// Remembers what a reader of records worked out for each record layout: which position holds which field, and what
/// follows from it. `Binding` is immutable once made.
///
///     const auto binding = cache.Get(record.Layout(), [&] { return std::make_unique<const Binding>(Bind(record)); });
///     frame[0] = ReadCell(record.At(binding->position), ...);
///
/// Any number of threads may call `Get` at once. A known layout costs one atomic load and one comparison, no lock. At
/// most `kCapacity` layouts are remembered and die with the cache, so that a host whose records never look alike
/// doesn't fill the memory; a layout beyond that is bound for its one call.
template <typename Binding, std::size_t kCapacity = 64>
class LayoutCache {
  static_assert((kCapacity & (kCapacity - 1)) == 0, "the capacity masks the layout, so it is a power of two");

 public:
  /// A binding for the time of one call. It mustn't outlive the cache.
  class Handle {
   public:
    const Binding& operator*() const noexcept { return *fBinding; }
    const Binding* operator->() const noexcept { return fBinding; }

   private:
    friend class LayoutCache;
    explicit Handle(const Binding* remembered) noexcept : fBinding(remembered) {}
    explicit Handle(std::unique_ptr<const Binding> own) noexcept : fBinding(own.get()), fOwn(std::move(own)) {}

    const Binding* fBinding;
    std::unique_ptr<const Binding> fOwn;  // only of a layout that isn't remembered
  };

  LayoutCache() = default;
  LayoutCache(const LayoutCache&) = delete;
  LayoutCache& operator=(const LayoutCache&) = delete;
  ~LayoutCache() {
    for (auto& slot : fSlots) delete slot.load(std::memory_order_relaxed);
  }

  /// The binding of `layout`. If it isn't remembered, `make()` gives it as a `unique_ptr<const Binding>`; two threads
  /// that meet the same new layout may both make one, and the first to be published serves from then on. What `make`
  /// throws goes to the caller and leaves the cache as it was.
  template <typename Make>
  [[nodiscard]] Handle Get(KelCommon_1_3::RecordLayout layout, Make&& make) {
    const Entry* known = fSlots[layout & kMask].load(std::memory_order_acquire);
    if (known != nullptr && known->layout == layout) return Handle(known->binding.get());
    return GetSlowly(layout, std::forward<Make>(make));
  }

 private:
  static constexpr std::size_t kMask = kCapacity - 1;

  struct Entry {
    KelCommon_1_3::RecordLayout layout;
    std::unique_ptr<const Binding> binding;
  };

  // Layouts are hashes already: open addressing with steps of one. Entries are never removed, so that a reader may
  // hold one without saying so.
  template <typename Make>
  Handle GetSlowly(KelCommon_1_3::RecordLayout layout, Make&& make) {
    std::unique_ptr<Entry> own;
    for (std::size_t step = 0; step < kCapacity; ++step) {
      std::atomic<const Entry*>& slot = fSlots[(layout + step) & kMask];
      const Entry* known = slot.load(std::memory_order_acquire);
      if (known == nullptr) {
        if (!own) own = std::make_unique<Entry>(Entry{layout, make()});
        known = Publish(slot, own);
      }
      if (known->layout == layout) return Handle(known->binding.get());
    }
    return Handle(own ? std::move(own->binding) : make());
  }  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): a published entry belongs to its slot

  // Puts `own` into an empty slot, which owns it from then on. Gives what is in the slot: another thread may have been
  // the first.
  static const Entry* Publish(std::atomic<const Entry*>& slot, std::unique_ptr<Entry>& own) {
    const Entry* known = nullptr;
    if (!slot.compare_exchange_strong(known, own.get(), std::memory_order_acq_rel)) return known;
    return own.release();
  }

  std::array<std::atomic<const Entry*>, kCapacity> fSlots{};
};

}  // namespace KelTransformNS
