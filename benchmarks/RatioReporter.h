#pragma once

#include <benchmark/benchmark.h>
#include <map>
#include <string>
#include <vector>

/// Reports like the console reporter, and ends with a table of ratios within this run: each "family/…" against those
/// of the same family whose name begins with "family/limit". Of repetitions the fastest counts, as noise only adds.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& reports) override;
  void Finalize() override;

 private:
  struct Family {
    std::map<std::string, double> seconds;  // per iteration, by the name behind the family
  };
  std::map<std::string, Family> fFamilies;
};

/// What `main` of a benchmark program does.
int RunBenchmarks(int argc, char** argv);
