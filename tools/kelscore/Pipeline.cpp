#include "tools/kelscore/Pipeline.h"

#include <condition_variable>
#include <cstdint>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>

namespace kelscore {
namespace {

void RunInline(const Stages& stages) {
  RowBatch batch;
  ScoredBatch scored;
  while (stages.read(batch)) {
    stages.score.front()(batch, scored);
    if (!stages.write(scored)) return;
  }
}

/// The batches that are on their way, each in the slot that its sequence number tells.
class Ring {
 public:
  // What a slot waits for, in this order, over and over.
  enum Stage : std::uint64_t { kToRead, kToScore, kToWrite, kStageCount };
  struct Slot {
    RowBatch batch;
    ScoredBatch scored;
    std::uint64_t stagesDone = 0;  // since the start: tells stage and batch in one number
  };

  explicit Ring(std::size_t size) : fSlots(size) {}

  // The slot of a batch once it has come to a stage; null when the run has ended or the batch will never come.
  Slot* WaitFor(std::uint64_t sequence, Stage stage) {
    std::unique_lock lock(fMutex);
    Slot& slot = fSlots[sequence % fSlots.size()];
    const std::uint64_t stagesBefore = sequence / fSlots.size() * kStageCount + stage;
    fChanged.wait(lock, [&] { return fStopped || sequence >= fEnd || slot.stagesDone == stagesBefore; });
    return fStopped || sequence >= fEnd ? nullptr : &slot;
  }

  // The next batch that no scorer has taken.
  Slot* TakeToScore() {
    std::unique_lock lock(fMutex);
    const std::uint64_t sequence = fNextToScore++;
    lock.unlock();
    return WaitFor(sequence, kToScore);
  }

  void FinishStage(Slot& slot) {
    {
      const std::lock_guard lock(fMutex);
      ++slot.stagesDone;
    }
    fChanged.notify_all();
  }

  // No batch from this number on will come.
  void SetEnd(std::uint64_t sequence) {
    {
      const std::lock_guard lock(fMutex);
      fEnd = sequence;
    }
    fChanged.notify_all();
  }

  // Ends the run at once; of several reasons the first one counts.
  void Stop(std::exception_ptr reason) {
    {
      const std::lock_guard lock(fMutex);
      if (!fStopped) fReason = std::move(reason);
      fStopped = true;
    }
    fChanged.notify_all();
  }

  [[nodiscard]] bool Stopped() const { return fStopped; }
  [[nodiscard]] std::exception_ptr Reason() const { return fReason; }

 private:
  std::mutex fMutex;
  std::condition_variable fChanged;
  std::vector<Slot> fSlots;
  std::uint64_t fNextToScore = 0;
  std::uint64_t fEnd = UINT64_MAX;
  bool fStopped = false;
  std::exception_ptr fReason;
};

std::exception_ptr ReadAll(Ring& ring, const Stages& stages) {
  std::uint64_t sequence = 0;
  std::exception_ptr failure;
  try {
    while (Ring::Slot* slot = ring.WaitFor(sequence, Ring::kToRead)) {
      if (!stages.read(slot->batch)) break;
      ring.FinishStage(*slot);
      ++sequence;
    }
  } catch (...) {
    failure = std::current_exception();
  }
  ring.SetEnd(sequence);
  return failure;
}

void ScoreAll(Ring& ring, const std::function<void(const RowBatch&, ScoredBatch&)>& score) {
  try {
    while (Ring::Slot* slot = ring.TakeToScore()) {
      score(slot->batch, slot->scored);
      ring.FinishStage(*slot);
    }
  } catch (...) {
    ring.Stop(std::current_exception());
  }
}

void WriteAll(Ring& ring, const Stages& stages) {
  try {
    for (std::uint64_t sequence = 0; Ring::Slot* slot = ring.WaitFor(sequence, Ring::kToWrite); ++sequence) {
      if (!stages.write(slot->scored)) {
        ring.Stop(nullptr);
        return;
      }
      ring.FinishStage(*slot);
    }
  } catch (...) {
    ring.Stop(std::current_exception());
  }
}

void RunThreaded(const Stages& stages) {
  Ring ring(2 * stages.score.size() + 2);
  std::exception_ptr readFailure;
  {
    std::vector<std::jthread> threads;
    try {
      for (const auto& score : stages.score) threads.emplace_back([&ring, &score] { ScoreAll(ring, score); });
      threads.emplace_back([&ring, &stages] { WriteAll(ring, stages); });
      readFailure = ReadAll(ring, stages);
    } catch (...) {
      ring.Stop(std::current_exception());  // a thread couldn't be started
    }
  }
  if (ring.Stopped()) {
    if (ring.Reason()) std::rethrow_exception(ring.Reason());
  } else if (readFailure) {
    std::rethrow_exception(readFailure);
  }
}

}  // namespace

void RunPipeline(const Stages& stages) {
  if (stages.score.size() == 1) {
    RunInline(stages);
  } else {
    RunThreaded(stages);
  }
}

}  // namespace kelscore
