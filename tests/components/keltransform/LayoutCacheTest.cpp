#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>
#include <vector>

#include "components/keltransform/LayoutCache.h"

namespace {

using KelTransformNS::LayoutCache;

// A binding that knows its layout and counts how many of its kind are alive.
struct CountedBinding {
  CountedBinding(std::uint64_t boundLayout, std::atomic<int>& counter) : layout(boundLayout), alive(counter) {
    ++alive;
  }
  ~CountedBinding() { --alive; }
  CountedBinding(const CountedBinding&) = delete;
  CountedBinding& operator=(const CountedBinding&) = delete;

  std::uint64_t layout;
  std::atomic<int>& alive;
};

class LayoutCacheTest : public ::testing::Test {
 protected:
  auto Make(std::uint64_t layout) {
    return [this, layout] {
      ++made;
      return std::make_unique<const CountedBinding>(layout, alive);
    };
  }

  std::atomic<int> alive = 0;
  std::atomic<int> made = 0;
};

TEST_F(LayoutCacheTest, Get_LayoutsThatShareASlot_EachKeepsItsBinding) {
  LayoutCache<CountedBinding, 4> cache;
  for (int round = 0; round < 3; ++round) {
    for (const std::uint64_t layout : {0U, 4U, 8U, 3U}) EXPECT_EQ(cache.Get(layout, Make(layout))->layout, layout);
  }
  EXPECT_EQ(made, 4);
}

TEST_F(LayoutCacheTest, Get_MoreLayoutsThanCapacity_BindsTheRestForOneCallEach) {
  {
    LayoutCache<CountedBinding, 4> cache;
    for (std::uint64_t layout = 0; layout < 100; ++layout) EXPECT_EQ(cache.Get(layout, Make(layout))->layout, layout);
    EXPECT_EQ(alive, 4);
    EXPECT_EQ(cache.Get(2, Make(2))->layout, 2U);
    EXPECT_EQ(made, 100);
  }
  EXPECT_EQ(alive, 0);
}

TEST_F(LayoutCacheTest, Get_MakeThrows_NextCallBindsAgain) {
  LayoutCache<CountedBinding> cache;
  const auto fail = []() -> std::unique_ptr<const CountedBinding> { throw std::runtime_error("no"); };
  EXPECT_THROW((void)cache.Get(7, fail), std::runtime_error);
  EXPECT_EQ(cache.Get(7, Make(7))->layout, 7U);
}

TEST_F(LayoutCacheTest, Get_ThreadsRaceOnNewLayouts_AllSeeTheRightBinding) {
  LayoutCache<CountedBinding, 16> cache;
  std::atomic<int> wrong = 0;
  std::vector<std::thread> threads;
  threads.reserve(4);
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([&] {
      for (std::uint64_t step = 0; step < 2000; ++step) {
        const std::uint64_t layout = step % 24;  // more than the cache holds
        if (cache.Get(layout, Make(layout))->layout != layout) ++wrong;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(alive, 16);
}

}  // namespace
