#pragma once

#include <mutex>

#include "scoring/common/KelExport.h"

namespace KelScoring_20 {

/// A lock. Any thread may call `lock`; the thread that holds it calls `unlock`, and doesn't lock it twice.
class KEL_EXPORT ScoringMutex {
 public:
  constexpr ScoringMutex() noexcept = default;
  ScoringMutex(const ScoringMutex&) = delete;
  ScoringMutex& operator=(const ScoringMutex&) = delete;

  void lock() { fMutex.lock(); }
  void unlock() { fMutex.unlock(); }

 private:
  std::mutex fMutex;
};

/// Holds a `ScoringMutex`, which must outlive it, from its construction to the end of its scope.
class KEL_EXPORT ScoringMutexLock {
 public:
  explicit ScoringMutexLock(ScoringMutex* const mutex) : fMutex(mutex) { fMutex->lock(); }
  ~ScoringMutexLock() { fMutex->unlock(); }
  ScoringMutexLock(const ScoringMutexLock&) = delete;
  ScoringMutexLock& operator=(const ScoringMutexLock&) = delete;

 private:
  ScoringMutex* fMutex;
};

/// The one lock of the process. It guards each start and end of the XML platform, and the making and deleting of the
/// DOM parsers that go with them; nothing on the scoring road takes it.
class KEL_EXPORT ScoringMutexContainer {
 public:
  static ScoringMutex* GetMutex() noexcept;

 private:
  static ScoringMutex fMutex;
};

}  // namespace KelScoring_20
