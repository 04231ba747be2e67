// The cost of derived fields: a compiled program over a frame of cells, beside hand-written code that computes the same
// numbers from plain arrays and knows of no missing values.

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "benchmarks/Allocations.h"
#include "benchmarks/RatioReporter.h"
#include "components/kelparsexml/ElementTree.h"
#include "components/keltransform/ExpressionCompiler.h"
#include "components/keltransform/FrameStorage.h"
#include "scoring/factory/ScoringFactory.h"

namespace {

using KelTransformNS::Cell;
using KelTransformNS::ResolvedField;

constexpr std::size_t kRows = 256;   // enough that no branch predictor learns the data by heart
constexpr std::size_t kInputs = 25;  // each makes two derived fields, one of each kind
constexpr std::size_t kPoints = 4;   // of a piecewise linear function
constexpr std::size_t kFields = 2 * kInputs;

struct Point {
  double orig;
  double norm;
};

// What the derived fields compute: a piecewise linear function of x, and (x - center) * scale + y, where y is the
// next input.
struct Parameters {
  std::array<Point, kPoints> points;
  double center;
  double scale;
};

using Row = std::array<double, kInputs>;
using Results = std::array<double, kFields>;

// The same in every run, in tenths, which a document writes exactly.
std::vector<Parameters> MakeParameters() {
  std::mt19937 random(20);
  const auto whole = [&](int from, int to) { return std::uniform_int_distribution<int>(from, to)(random); };
  const auto tenths = [](int number) { return static_cast<double>(number) / 10.0; };
  std::vector<Parameters> all(kInputs);
  for (Parameters& one : all) {
    int orig = whole(-30, -15);
    for (Point& point : one.points) {
      point = {tenths(orig), tenths(whole(-10, 10))};
      orig += whole(5, 15);
    }
    one.center = tenths(whole(-20, 20));
    one.scale = tenths(whole(1, 40));
  }
  return all;
}

std::vector<Row> MakeRows() {
  std::mt19937 random(21);
  std::uniform_real_distribution<double> number(-3.0, 3.0);
  std::vector<Row> rows(kRows);
  for (Row& row : rows) std::generate(row.begin(), row.end(), [&] { return number(random); });
  return rows;
}

double Interpolate(const std::array<Point, kPoints>& points, double x) {
  std::size_t i = 0;
  while (i + 2 < kPoints && x > points[i + 1].orig) ++i;
  const Point& from = points[i];
  const Point& to = points[i + 1];
  return from.norm + (x - from.orig) / (to.orig - from.orig) * (to.norm - from.norm);
}

void ComputePlainly(const std::vector<Parameters>& parameters, const Row& x, Results& results) {
  for (std::size_t i = 0; i < kInputs; ++i) {
    results[2 * i] = Interpolate(parameters[i].points, x[i]);
    results[2 * i + 1] = (x[i] - parameters[i].center) * parameters[i].scale + x[(i + 1) % kInputs];
  }
}

std::string Number(double number) {
  std::ostringstream text;
  text << number;
  return text.str();
}

std::string Numbered(const char* prefix, std::size_t number) {
  std::string name = prefix;
  return name += std::to_string(number);
}

std::string InputName(std::size_t input) { return Numbered("x", input); }
std::string FieldName(std::size_t field) { return Numbered("d", field); }

std::string Derived(std::size_t field, const std::string& expression) {
  return "<DerivedField name=\"" + FieldName(field) + "\" optype=\"continuous\" dataType=\"double\">" + expression +
         "</DerivedField>";
}

std::string Call(const std::string& function, const std::string& left, const std::string& right) {
  return "<Apply function=\"" + function + "\">" + left + right + "</Apply>";
}

std::string Constant(double number) { return "<Constant dataType=\"double\">" + Number(number) + "</Constant>"; }
std::string Reference(std::size_t input) { return "<FieldRef field=\"" + InputName(input % kInputs) + "\"/>"; }

std::string NormContinuous(std::size_t input, const std::array<Point, kPoints>& points) {
  std::string norms;
  for (const Point& point : points) {
    norms += "<LinearNorm orig=\"" + Number(point.orig) + "\" norm=\"" + Number(point.norm) + "\"/>";
  }
  return "<NormContinuous field=\"" + InputName(input) + "\">" + norms + "</NormContinuous>";
}

std::string Document(const std::vector<Parameters>& parameters) {
  std::string fields;
  for (std::size_t i = 0; i < kInputs; ++i) {
    const Parameters& own = parameters[i];
    const std::string scaled = Call("*", Call("-", Reference(i), Constant(own.center)), Constant(own.scale));
    fields += Derived(2 * i, NormContinuous(i, own.points));
    fields += Derived(2 * i + 1, Call("+", scaled, Reference(i + 1)));
  }
  return "<LocalTransformations>" + fields + "</LocalTransformations>";
}

// The derived fields as a plug-in or a transformation runs them.
class Compiled {
 public:
  explicit Compiled(const std::vector<Parameters>& parameters) {
    std::istringstream text(Document(parameters));
    const auto tree = KelXML_1_3::ElementTree::Read(text);
    KelTransformNS::ExpressionCompiler compiler(fPool, fSlots, [&](std::string_view name) { return Input(name); });
    for (std::size_t i = 0; i < kInputs; ++i) (void)compiler.Find(InputName(i), tree->Root());
    compiler.DeclareDerivedFields(tree->Root());
    for (std::size_t field = 0; field < kFields; ++field) {
      fFields.push_back(compiler.Resolve(FieldName(field), tree->Root()).slot);
    }
    fProgram = compiler.Finish();
  }

  [[nodiscard]] std::uint32_t SlotCount() const { return fSlots.Count(); }
  [[nodiscard]] double Result(KelTransformNS::Frame frame, std::size_t field) const {
    return frame[fFields[field]].number;
  }

  void Run(const Row& row, KelTransformNS::Frame frame) const {
    for (std::size_t i = 0; i < kInputs; ++i) {
      KelTransformNS::SetCell(frame[i], [&] { return Cell::Number(row[i]); });
    }
    fProgram.Run(frame);
  }

 private:
  // The inputs get the first slots, in their order.
  std::optional<ResolvedField> Input(std::string_view name) {
    return ResolvedField{std::string(name), KelTransformNS::DataType::kDouble, KelTransformNS::OpType::kContinuous,
                         fSlots.NewSlot()};
  }

  KelTransformNS::TextPool fPool;
  KelTransformNS::SlotCounter fSlots;
  std::vector<std::uint32_t> fFields;
  KelTransformNS::Program fProgram;
};

void CheckAnswers(const Compiled& compiled, const std::vector<Parameters>& parameters, const std::vector<Row>& rows) {
  const KelTransformNS::FrameStorage storage(compiled.SlotCount());
  Results expected{};
  for (const Row& row : rows) {
    compiled.Run(row, storage.Cells());
    ComputePlainly(parameters, row, expected);
    for (std::size_t field = 0; field < kFields; ++field) {
      if (compiled.Result(storage.Cells(), field) == expected[field]) continue;
      std::fprintf(stderr, "wrong answer: derived field %zu\n", field);
      std::exit(1);
    }
  }
}

void RunProgram(benchmark::State& state) {
  const KelScoring_20::ScoringFactory keepsPlatformUp;
  const auto parameters = MakeParameters();
  const auto rows = MakeRows();
  const Compiled compiled(parameters);
  CheckAnswers(compiled, parameters, rows);
  std::size_t i = 0;
  const std::size_t before = Allocations::Count();
  for (auto _ : state) {
    const KelTransformNS::FrameStorage storage(compiled.SlotCount(), KelTransformNS::FrameStorage::kUninitialized);
    compiled.Run(rows[i], storage.Cells());
    benchmark::DoNotOptimize(storage.Cells().data());
    benchmark::ClobberMemory();
    i = (i + 1) % kRows;
  }
  state.counters["allocs/record"] =
      benchmark::Counter(static_cast<double>(Allocations::Count() - before), benchmark::Counter::kAvgIterations);
}
BENCHMARK(RunProgram)->Name("Derived50/program");

void RunPlainLoop(benchmark::State& state) {
  const auto parameters = MakeParameters();
  const auto rows = MakeRows();
  Results results{};
  std::size_t i = 0;
  for (auto _ : state) {
    ComputePlainly(parameters, rows[i], results);
    benchmark::DoNotOptimize(results.data());
    benchmark::ClobberMemory();
    i = (i + 1) % kRows;
  }
}
BENCHMARK(RunPlainLoop)->Name("Derived50/limit_plain_loop");

}  // namespace

int main(int argc, char** argv) { return RunBenchmarks(argc, argv); }
