#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>

#include "scoring/common/KelMV.h"
#include "scoring/model/ScoringMutex.h"
#include "scoring/model/ScoringReporter.h"

namespace KelScoring_20 {
namespace {

TEST(ScoringMutex, ManyThreads_CountWithoutLoss) {
  ScoringMutex mutex;
  int count = 0;
  const auto countUp = [&] {
    for (int i = 0; i < 10000; ++i) {
      const ScoringMutexLock lock(&mutex);
      ++count;
    }
  };
  std::thread other(countUp);
  countUp();
  other.join();
  EXPECT_EQ(count, 20000);
}

TEST(ScoringMutexLock, ScopeLeftByException_IsFreeAgain) {
  ScoringMutex mutex;
  const auto throwUnderLock = [&mutex] {
    const ScoringMutexLock lock(&mutex);
    throw std::runtime_error("under the lock");
  };
  EXPECT_THROW(throwUnderLock(), std::runtime_error);
  const ScoringMutexLock again(&mutex);  // would never return
}

TEST(ScoringMutexContainer, EveryThread_GetsTheSameMutex) {
  const ScoringMutex* elsewhere = nullptr;
  std::thread([&elsewhere] { elsewhere = ScoringMutexContainer::GetMutex(); }).join();
  EXPECT_NE(elsewhere, nullptr);
  EXPECT_EQ(elsewhere, ScoringMutexContainer::GetMutex());
}

TEST(ScoringReporter, Measures_DontDependOnTheStep) {
  ScoringReporter reporter;
  EXPECT_EQ(reporter.GetCurrentStepNum(), 0);
  for (const int step : {0, 7, -1}) {
    reporter.SetCurrentStepNum(step);
    EXPECT_EQ(reporter.GetCurrentStepNum(), step);
    EXPECT_EQ(reporter.DiscreteMeasure("rows"), 1);
    EXPECT_EQ(reporter.ScaleMeasure("rows"), KelCommon_1_3::KelMV::gMissingValue);
  }
}

}  // namespace
}  // namespace KelScoring_20
