// Tries models that are made from documents by mutation, for a number of documents or of seconds, without a fuzzing
// engine: a short run of it is one of the tests. The same arguments try the same documents. If one breaks something,
// it is kept in a file, which may be given as the only PATH, with --iterations 0, to try it again.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <unistd.h>
#include <vector>
#include <xercesc/util/PlatformUtils.hpp>

#include "fuzz/Markup.h"
#include "fuzz/ModelTrial.h"
#include "fuzz/Mutator.h"
#include "fuzz/Random.h"

// There in programs with sanitizers only.
extern "C" void __sanitizer_set_death_callback(void (*callback)()) __attribute__((weak));
extern "C" int __lsan_do_recoverable_leak_check() __attribute__((weak));

namespace {

using KelFuzz::Markup;
using KelFuzz::Mutator;
using KelFuzz::Random;

constexpr std::uintmax_t kLargestSeed = 100'000;
constexpr unsigned kMostSecondsForOne = 30;
constexpr std::size_t kMostChanged = 500;
constexpr std::size_t kTrialsBetweenLeakChecks = 5'000;

// What a handler of signals can reach.
std::string gDocument;
std::string gKeptFile = "broken-model.xml";

void KeepDocument() {
  const int file = open(gKeptFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  if (file < 0) return;
  (void)!write(file, gDocument.data(), gDocument.size());
  close(file);
  (void)!write(STDERR_FILENO, "The document is in ", 19);
  (void)!write(STDERR_FILENO, gKeptFile.data(), gKeptFile.size());
  (void)!write(STDERR_FILENO, "\n", 1);
}

void OnSignal(int signal) {
  if (signal == SIGALRM) (void)!write(STDERR_FILENO, "A model takes too long\n", 23);
  KeepDocument();
  std::signal(signal == SIGALRM ? SIGABRT : signal, SIG_DFL);
  signal == SIGALRM ? std::abort() : (void)raise(signal);
}

void KeepWhatBreaks() {
  if (__sanitizer_set_death_callback != nullptr) __sanitizer_set_death_callback(KeepDocument);
  for (const int signal : {SIGABRT, SIGALRM}) std::signal(signal, OnSignal);
  if (__sanitizer_set_death_callback != nullptr) return;  // sanitizers tell more of the others
  for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL}) std::signal(signal, OnSignal);
}

void CheckLeaks() {
  if (__lsan_do_recoverable_leak_check == nullptr || __lsan_do_recoverable_leak_check() == 0) return;
  std::fprintf(stderr, "Memory leaks\n");
  std::abort();
}

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

bool IsDocument(const std::filesystem::directory_entry& entry) {
  const std::string extension = entry.path().extension().string();
  return entry.is_regular_file() && (extension == ".xml" || extension == ".pmml") && entry.file_size() <= kLargestSeed;
}

// In the order of their names, whatever order the file system has.
std::vector<std::string> ReadSeeds(const std::vector<std::string>& paths) {
  std::vector<std::filesystem::path> files;
  for (const std::string& path : paths) {
    if (!std::filesystem::is_directory(path)) {
      files.emplace_back(path);
      continue;
    }
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path)) {
      if (IsDocument(entry)) files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  std::vector<std::string> seeds;
  std::transform(files.begin(), files.end(), std::back_inserter(seeds), ReadFile);
  return seeds;
}

class Run {
 public:
  explicit Run(std::uint64_t seed) : fRandom(seed), fMutator(Random(seed + 1)) {}

  void TrySeeds(const std::vector<std::string>& seeds) {
    for (const std::string& seed : seeds) {
      Try(seed);
      if (std::optional<Markup> root = KelFuzz::ReadMarkup(seed)) {
        fMutator.AddDonor(*root);
        fSeeds.push_back(std::move(*root));
      }
    }
  }

  // Documents that still load become seeds in their turn, so that changes add up.
  void TryMutation() {
    Markup root = PickSeed();
    fMutator.Mutate(root);
    if (!Try(KelFuzz::WriteMarkup(root))) return;
    if (fChanged.size() < kMostChanged) {
      fChanged.push_back(std::move(root));
    } else {
      fRandom.Pick(fChanged) = std::move(root);
    }
  }

  [[nodiscard]] bool HasSeeds() const noexcept { return !fSeeds.empty(); }

  void Tell() const {
    std::printf("%zu documents tried, %zu of them loaded, %zu records scored\n", fTried, fLoaded, fRecords);
    std::fflush(stdout);
  }

 private:
  bool Try(std::string document) {
    gDocument = std::move(document);
    alarm(kMostSecondsForOne);
    const KelFuzz::TrialResult result = KelFuzz::TryModel(gDocument);
    alarm(0);
    ++fTried;
    fLoaded += result.isLoaded ? 1 : 0;
    fRecords += result.recordCount;
    if (fTried % kTrialsBetweenLeakChecks == 0) {
      CheckLeaks();
      Tell();
    }
    return result.isLoaded;
  }

  // The smaller one of two: small documents take less time and break as much.
  const Markup& PickSeed() {
    if (!fChanged.empty() && fRandom.OneIn(2)) return fRandom.Pick(fChanged);
    const Markup& one = fRandom.Pick(fSeeds);
    const Markup& other = fRandom.Pick(fSeeds);
    return KelFuzz::CountElements(one) <= KelFuzz::CountElements(other) ? one : other;
  }

  Random fRandom;
  Mutator fMutator;
  std::vector<Markup> fSeeds;
  std::vector<Markup> fChanged;
  std::size_t fTried = 0;
  std::size_t fLoaded = 0;
  std::size_t fRecords = 0;
};

}  // namespace

int main(int argc, char** argv) {
  CLI::App options("Tries models that are made from documents by mutation.");
  std::size_t iterations = 1'000;
  long seconds = 0;
  std::uint64_t seed = 1;
  std::vector<std::string> paths;
  options.add_option("--iterations", iterations, "documents to make; without influence beside --seconds");
  options.add_option("--seconds", seconds, "go on for so long");
  options.add_option("--seed", seed, "of the numbers that choose the mutations");
  options.add_option("--keep", gKeptFile, "where a document goes that breaks something");
  options.add_option("PATH", paths, "documents, and folders of documents")->required()->check(CLI::ExistingPath);
  CLI11_PARSE(options, argc, argv);

  xercesc::XMLPlatformUtils::Initialize();
  KeepWhatBreaks();
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  {
    Run run(seed);
    run.TrySeeds(ReadSeeds(paths));
    if (!run.HasSeeds()) iterations = 0;
    for (std::size_t i = 0; seconds == 0 && i < iterations; ++i) run.TryMutation();
    while (std::chrono::steady_clock::now() < end && run.HasSeeds()) run.TryMutation();
    run.Tell();
  }
  xercesc::XMLPlatformUtils::Terminate();
  return 0;
}
