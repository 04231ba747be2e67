// `kelscore score` on a numeric CSV through a small tree: throughput, threads, and memory against the number of rows.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "benchmarks/Documents.h"
#include "benchmarks/RatioReporter.h"

namespace {

namespace fs = std::filesystem;

struct Folder {
  Folder() : path(fs::temp_directory_path() / ("kelscore-bench-" + std::to_string(getpid()))) {
    fs::create_directories(path);
    std::ofstream(path / "model.pmml") << Documents::Tree20();
  }
  ~Folder() { fs::remove_all(path); }
  fs::path path;
};

const fs::path& WorkFolder() {
  static const Folder folder;
  return folder.path;
}

// Rows of about 60 bytes: four inputs that the tree uses and two that it doesn't.
fs::path Input(std::int64_t rows) {
  const fs::path path = WorkFolder() / ("input-" + std::to_string(rows) + ".csv");
  if (fs::exists(path)) return path;
  std::FILE* file = std::fopen(path.c_str(), "w");
  std::mt19937 random(20);
  std::uniform_real_distribution<double> number(-3.0, 3.0);
  std::fprintf(file, "id,x0,x1,x2,x3,y\n");
  for (std::int64_t row = 0; row < rows; ++row) {
    std::fprintf(file, "%08lld,%.7f,%.7f,%.7f,%.7f,%.4f\n", static_cast<long long>(row), number(random), number(random),
                 number(random), number(random), number(random));
  }
  std::fclose(file);
  return path;
}

struct Usage {
  double seconds = 0.0;
  double peakMegabytes = 0.0;
  bool succeeded = false;
};

Usage Run(const std::vector<std::string>& arguments) {
  std::vector<char*> argv;
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  const auto start = std::chrono::steady_clock::now();
  const pid_t child = fork();
  if (child == 0) {
    execv(argv[0], argv.data());
    _exit(127);
  }
  int status = 0;
  rusage usage{};
  wait4(child, &status, 0, &usage);
  return {std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(),
          static_cast<double>(usage.ru_maxrss) / 1024.0, WIFEXITED(status) && WEXITSTATUS(status) == 0};
}

void ScoreCsv(benchmark::State& state) {
  const fs::path input = Input(state.range(0));
  const fs::path output = WorkFolder() / "output.csv";
  double peak = 0.0;
  for (auto _ : state) {
    const Usage usage =
        Run({std::string(KEL_PROGRAM_FOLDER) + "/kelscore", "score", (WorkFolder() / "model.pmml").string(),
             input.string(), "-o", output.string(), "--threads", std::to_string(state.range(1))});
    if (!usage.succeeded) state.SkipWithError("kelscore failed");
    state.SetIterationTime(usage.seconds);
    peak = usage.peakMegabytes;
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * fs::file_size(input)));
  state.counters["peak_MB"] = peak;
}
BENCHMARK(ScoreCsv)
    ->Name("Kelscore")
    ->ArgNames({"rows", "threads"})
    ->Args({10'000, 1})
    ->Args({1'000'000, 1})
    ->Args({1'000'000, 2})
    ->Args({10'000'000, 1})
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) { return RunBenchmarks(argc, argv); }
