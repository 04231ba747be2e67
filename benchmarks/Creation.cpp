// From a document to a model: time against one bare SAX2 pass over the same bytes, and memory against their number.

#include <map>
#include <memory>
#include <string>
#include <xercesc/sax2/DefaultHandler.hpp>

#include "benchmarks/Allocations.h"
#include "benchmarks/BareSax2.h"
#include "benchmarks/Documents.h"
#include "benchmarks/MemoryStream.h"
#include "benchmarks/RatioReporter.h"
#include "scoring/common/KelStatus.h"
#include "scoring/factory/ScoringFactory.h"
#include "tests/support/TreeDocument.h"

namespace {

using KelScoring_20::ScoringFactory;

constexpr std::size_t kMegabyte = 1000 * 1000;

const std::string& Document(std::size_t megabytes) {
  static std::map<std::size_t, std::string> documents;
  std::string& document = documents[megabytes];
  if (document.empty()) document = KelTest::TreeDocument(megabytes * kMegabyte).Text();
  return document;
}

void BareSax2Pass(const std::string& document) {
  xercesc::DefaultHandler handler;
  ::BareSax2Pass(document, handler);
}

void Sax2Pass(benchmark::State& state) {
  ScoringFactory keepsPlatformUp;
  const std::string& document = Document(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) BareSax2Pass(document);
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * document.size()));
}

std::unique_ptr<KelScoring_20::ScoringModel> Create(const std::string& document, benchmark::State& state) {
  MemoryStream stream(document);
  ScoringFactory factory;
  KelXML_1_3::KelSettings settings = Documents::Settings(Documents::PlugIn("torvane"));
  if (factory.CreateScoringModel(settings, stream) == nullptr) state.SkipWithError("no model");
  return std::unique_ptr<KelScoring_20::ScoringModel>(factory.Detach());
}

void CreateTree(benchmark::State& state) {
  ScoringFactory keepsPlatformUp;
  const std::string& document = Document(static_cast<std::size_t>(state.range(0)));
  const double size = static_cast<double>(document.size());
  double peak = 0.0;
  double finished = 0.0;
  for (auto _ : state) {
    const std::size_t before = Allocations::Held();
    Allocations::ResetPeak();
    auto model = Create(document, state);
    peak = static_cast<double>(Allocations::Peak() - before) / size;
    finished = static_cast<double>(Allocations::Held() - before) / size;
    state.PauseTiming();
    model.reset();
    state.ResumeTiming();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * document.size()));
  state.counters["peak/document"] = peak;
  state.counters["model/document"] = finished;
}

#define CREATION(megabytes)                                                                                     \
  BENCHMARK(CreateTree)->Name("Create" #megabytes "MB/library")->Arg(megabytes)->Unit(benchmark::kMillisecond); \
  BENCHMARK(Sax2Pass)->Name("Create" #megabytes "MB/limit_sax2")->Arg(megabytes)->Unit(benchmark::kMillisecond)
CREATION(1);
CREATION(5);
CREATION(20);

// A small document, once the platform is up.
void CreateSmall(benchmark::State& state) {
  ScoringFactory keepsPlatformUp;
  const std::string document = Documents::RegressionOfSize(4096);
  for (auto _ : state) benchmark::DoNotOptimize(Create(document, state));
  state.counters["bytes"] = static_cast<double>(document.size());
}
BENCHMARK(CreateSmall)->Name("Create4KB/library")->Unit(benchmark::kMicrosecond);

void Sax2Small(benchmark::State& state) {
  ScoringFactory keepsPlatformUp;
  const std::string document = Documents::RegressionOfSize(4096);
  for (auto _ : state) BareSax2Pass(document);
}
BENCHMARK(Sax2Small)->Name("Create4KB/limit_sax2")->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) { return RunBenchmarks(argc, argv); }
