// Reading a large ensemble a segment at a time, every number of it included, and making a model of it: time against
// bare SAX2 passes that parse the same numbers, and memory against the document's size.

#include <benchmark/benchmark.h>
#include <charconv>
#include <cmath>
#include <memory>
#include <string>
#include <string_view>
#include <vector>
#include <xercesc/sax2/Attributes.hpp>

#include "benchmarks/Allocations.h"
#include "benchmarks/BareSax2.h"
#include "benchmarks/Documents.h"
#include "benchmarks/ForestDocument.h"
#include "benchmarks/MemoryStream.h"
#include "components/kelparsexml/SegmentCursor.h"
#include "scoring/factory/ScoringFactory.h"

namespace {

using KelXML_1_3::Element;
using KelXML_1_3::ElementStream;
using KelXML_1_3::ElementTree;
using KelXML_1_3::SegmentCursor;

const std::string& Document() {
  static const std::string document = Documents::Forest(50'000'000, 200);
  return document;
}

bool LooksLikeNumber(char first) { return (first >= '0' && first <= '9') || first == '-' || first == '.'; }

double Number(const char* begin, const char* end) {
  double number = 0.0;
  if (begin != end && LooksLikeNumber(*begin)) std::from_chars(begin, end, number);
  return number;
}

// Adds up all attributes within segments that are numbers.
class NumberHandler : public xercesc::DefaultHandler {
 public:
  void startElement(const XMLCh*, const XMLCh*, const XMLCh* name, const xercesc::Attributes& attributes) override {
    fIsInSegments = fIsInSegments || std::u16string_view(name) == u"Segment";
    if (!fIsInSegments) return;
    for (XMLSize_t i = 0; i < attributes.getLength(); ++i) fSum += Parse(attributes.getValue(i));
  }

  [[nodiscard]] double Sum() const { return fSum; }

 private:
  static double Parse(const XMLCh* text) {
    char narrow[64];
    char* end = narrow;
    while (*text != 0 && end != narrow + sizeof narrow) *end++ = static_cast<char>(*text++);
    return Number(narrow, end);
  }

  bool fIsInSegments = false;
  double fSum = 0.0;
};

double SumOf(const Element& element) {
  double sum = 0.0;
  for (int i = 0; i < element.AttributeCount(); ++i) {
    const std::string_view text = element.AttributeValue(i);
    sum += Number(text.data(), text.data() + text.size());
  }
  return sum;
}

double SumOfAll(const Element& root, std::vector<Element>& open) {
  double sum = 0.0;
  open.assign(1, root);
  while (!open.empty()) {
    const Element element = open.back();
    open.pop_back();
    sum += SumOf(element);
    for (Element child = element.FirstChild(); child; child = child.NextSibling()) open.push_back(child);
  }
  return sum;
}

double SumOfSegments(const Element& root, ElementStream* stream) {
  std::vector<Element> open;
  double sum = 0.0;
  SegmentCursor cursor(root.Child("MiningModel").Child("Segmentation"), stream);
  for (Element segment = cursor.Next(); segment; segment = cursor.Next()) sum += SumOfAll(segment, open);
  return sum;
}

double ReadStream() {
  MemoryStream text(Document());
  const auto stream = ElementStream::Open(text, "MiningModel");
  return SumOfSegments(stream->Root(), stream.get());
}

double ReadTree() {
  MemoryStream text(Document());
  return SumOfSegments(ElementTree::Read(text, "MiningModel")->Root(), nullptr);
}

template <Scanner kScanner>
double ReadBare() {
  NumberHandler handler;
  BareSax2Pass(Document(), handler, kScanner);
  return handler.Sum();
}

// The sums are of the same numbers, but not in the same order.
template <double (*kRead)()>
void Read(benchmark::State& state) {
  KelScoring_20::ScoringFactory keepsPlatformUp;
  static const double expected = ReadBare<Scanner::kDefault>();
  const std::size_t before = Allocations::Held();
  Allocations::ResetPeak();
  for (auto _ : state) {
    const double sum = kRead();
    if (sum == 0.0 || !(std::abs(sum - expected) <= 1e-9 * expected)) state.SkipWithError("wrong sum");
  }
  const auto size = static_cast<double>(Document().size());
  state.counters["peak/document"] = static_cast<double>(Allocations::Peak() - before) / size;
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * Document().size()));
}

// From the document to a model that is ready to score.
void Load(benchmark::State& state) {
  KelScoring_20::ScoringFactory keepsPlatformUp;
  const auto size = static_cast<double>(Document().size());
  for (auto _ : state) {
    const std::size_t before = Allocations::Held();
    Allocations::ResetPeak();
    MemoryStream text(Document());
    KelScoring_20::ScoringFactory factory;
    KelXML_1_3::KelSettings settings = Documents::Settings(Documents::PlugIn("torvane"));
    if (factory.CreateScoringModel(settings, text) == nullptr) state.SkipWithError("no model");
    const std::unique_ptr<KelScoring_20::ScoringModel> model(factory.Detach());
    state.counters["peak/document"] = static_cast<double>(Allocations::Peak() - before) / size;
    state.counters["model/document"] = static_cast<double>(Allocations::Held() - before) / size;
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * Document().size()));
}

BENCHMARK(Load)->Name("Read50MB/model")->Unit(benchmark::kMillisecond);
BENCHMARK(Read<ReadStream>)->Name("Read50MB/stream")->Unit(benchmark::kMillisecond);
BENCHMARK(Read<ReadTree>)->Name("Read50MB/tree")->Unit(benchmark::kMillisecond);
BENCHMARK(Read<ReadBare<Scanner::kDefault>>)->Name("Read50MB/limit_sax2_numbers")->Unit(benchmark::kMillisecond);
BENCHMARK(Read<ReadBare<Scanner::kFastest>>)
    ->Name("Read50MB/limit_fastest_sax2_numbers")
    ->Unit(benchmark::kMillisecond);

}  // namespace
