#include "benchmarks/RatioReporter.h"

#include <algorithm>
#include <cstdio>

void RatioReporter::ReportRuns(const std::vector<Run>& reports) {
  ConsoleReporter::ReportRuns(reports);
  for (const Run& run : reports) {
    if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
    const std::string& name = run.run_name.function_name;
    const std::size_t slash = name.find('/');
    if (slash == std::string::npos) continue;
    // Processor time, which other programs on the machine disturb less; what is timed by hand says it itself.
    const double total = run.run_name.time_type == "manual_time" ? run.real_accumulated_time : run.cpu_accumulated_time;
    const double seconds = total / static_cast<double>(std::max<std::int64_t>(run.iterations, 1));
    const auto [entry, isNew] = fFamilies[name.substr(0, slash)].seconds.try_emplace(name.substr(slash + 1), seconds);
    if (!isNew) entry->second = std::min(entry->second, seconds);
  }
}

void RatioReporter::Finalize() {
  std::printf("\nRatios within this run\n");
  for (const auto& [familyName, family] : fFamilies) {
    for (const auto& [limitName, limit] : family.seconds) {
      if (!limitName.starts_with("limit")) continue;
      for (const auto& [name, seconds] : family.seconds) {
        if (name.starts_with("limit")) continue;
        std::printf("  %-28s %-24s %12.1f ns = %6.2f x %-28s %12.1f ns\n", familyName.c_str(), name.c_str(),
                    seconds * 1e9, seconds / limit, limitName.c_str(), limit * 1e9);
      }
    }
  }
}

int RunBenchmarks(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}
