#include <chrono>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <thread>

#include "tools/kelscore/Pipeline.h"

namespace kelscore {
namespace {

constexpr int kBatches = 200;

/// Batches with their number as text; a scorer copies it, the later ones of a group quicker than the first ones.
struct FakeRun {
  int read = 0;
  std::string written;
  int failRead = -1;
  int failScore = -1;
  int failWrite = -1;
  int stopWrite = -1;

  Stages MakeStages(std::size_t threads) {
    Stages stages;
    stages.read = [this](RowBatch& batch) {
      if (read == failRead) throw std::runtime_error("read");
      if (read == kBatches) return false;
      batch.Clear(',');
      batch.SetFirstRowNumber(static_cast<std::uint64_t>(read++));
      return true;
    };
    stages.score.assign(threads, [this](const RowBatch& batch, ScoredBatch& scored) {
      const auto number = static_cast<int>(batch.FirstRowNumber());
      if (number == failScore) throw std::runtime_error("score");
      std::this_thread::sleep_for(std::chrono::microseconds(number % 7 == 0 ? 300 : 10));
      scored.text = std::to_string(number) + " ";
    });
    stages.write = [this](const ScoredBatch& scored) {
      if (scored.text == std::to_string(failWrite) + " ") throw std::runtime_error("write");
      written += scored.text;
      return scored.text != std::to_string(stopWrite) + " ";
    };
    return stages;
  }
};

std::string UpTo(int end) {
  std::string text;
  for (int i = 0; i < end; ++i) text += std::to_string(i) + " ";
  return text;
}

class PipelineTest : public testing::TestWithParam<std::size_t> {};

TEST_P(PipelineTest, AllBatches_AreWrittenInOrder) {
  FakeRun run;
  RunPipeline(run.MakeStages(GetParam()));
  EXPECT_EQ(run.written, UpTo(kBatches));
}

TEST_P(PipelineTest, WriterHasEnough_EndsTheRun) {
  FakeRun run;
  run.stopWrite = 20;
  RunPipeline(run.MakeStages(GetParam()));
  EXPECT_EQ(run.written, UpTo(21));
}

TEST_P(PipelineTest, ReaderThrows_AfterEverythingBeforeIsWritten) {
  FakeRun run;
  run.failRead = 30;
  EXPECT_THROW(RunPipeline(run.MakeStages(GetParam())), std::runtime_error);
  EXPECT_EQ(run.written, UpTo(30));
}

TEST_P(PipelineTest, ScorerOrWriterThrows_EndsTheRunWithIt) {
  for (const bool atScorer : {true, false}) {
    FakeRun run;
    (atScorer ? run.failScore : run.failWrite) = 40;
    EXPECT_THROW(RunPipeline(run.MakeStages(GetParam())), std::runtime_error);
    EXPECT_EQ(run.written, UpTo(40).substr(0, run.written.size()));
  }
}

TEST_P(PipelineTest, NothingToRead_WritesNothing) {
  FakeRun run;
  run.read = kBatches;
  RunPipeline(run.MakeStages(GetParam()));
  EXPECT_EQ(run.written, "");
}

INSTANTIATE_TEST_SUITE_P(Threads, PipelineTest, testing::Values(1, 2, 5));

}  // namespace
}  // namespace kelscore
