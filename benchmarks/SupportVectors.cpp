// The cost of one record of a support vector machine with 1,000 vectors of 50 numbers and the radial basis kernel,
// beside the plain loop over its vectors.

#include <cmath>
#include <random>

#include "benchmarks/Documents.h"
#include "benchmarks/ScoringLoop.h"

namespace {

using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;

using namespace ScoringLoop;

constexpr std::size_t kVectors = 1000;
constexpr std::size_t kFields = 50;
constexpr int kInputs = 50;
constexpr double kGamma = 0.01;
constexpr double kConstant = 0.25;

// The machine as one would write it.
class PlainLoop {
 public:
  PlainLoop() : fVectors(kVectors * kFields), fCoefficients(kVectors) {
    std::mt19937 random(12);
    std::uniform_real_distribution<double> number(-1.0, 1.0);
    for (double& cell : fVectors) cell = number(random);
    for (double& coefficient : fCoefficients) coefficient = number(random);
  }

  [[nodiscard]] double Score(const double* x) const {
    double f = 0.0;
    const double* cell = fVectors.data();
    for (const double coefficient : fCoefficients) {
      double distance = 0.0;
      for (std::size_t i = 0; i < kFields; ++i) {
        const double difference = x[i] - *cell++;
        distance += difference * difference;
      }
      f += coefficient * std::exp(-kGamma * distance);
    }
    return f + kConstant;
  }

  [[nodiscard]] double Cell(std::size_t vector, std::size_t field) const { return fVectors[vector * kFields + field]; }
  [[nodiscard]] double Coefficient(std::size_t vector) const { return fCoefficients[vector]; }

 private:
  std::vector<double> fVectors;
  std::vector<double> fCoefficients;
};

std::string Document(const PlainLoop& machine) {
  std::string fields, schema, references, instances, vectors, coefficients;
  for (std::size_t i = 0; i < kFields; ++i) {
    const std::string name = Documents::FieldName(static_cast<int>(i));
    fields += "<DataField name=\"" + name + "\" optype=\"continuous\" dataType=\"double\"/>\n";
    schema += "<MiningField name=\"" + name + "\"/>\n";
    references += "<FieldRef field=\"" + name + "\"/>\n";
  }
  for (std::size_t vector = 0; vector < kVectors; ++vector) {
    const std::string id = std::to_string(vector);
    instances += "<VectorInstance id=\"" + id + "\"><Array n=\"50\" type=\"real\">";
    for (std::size_t i = 0; i < kFields; ++i) instances += Documents::NumberText(machine.Cell(vector, i)) + " ";
    instances += "</Array></VectorInstance>\n";
    vectors += "<SupportVector vectorId=\"" + id + "\"/>\n";
    coefficients += "<Coefficient value=\"" + Documents::NumberText(machine.Coefficient(vector)) + "\"/>\n";
  }
  return "<PMML version=\"4.0\" xmlns=\"http://www.dmg.org/PMML-4_0\">\n<Header/>\n<DataDictionary>\n"
         "<DataField name=\"y\" optype=\"continuous\" dataType=\"double\"/>\n" +
         fields +
         "</DataDictionary>\n<SupportVectorMachineModel functionName=\"regression\">\n<MiningSchema>\n"
         "<MiningField name=\"y\" usageType=\"predicted\"/>\n" +
         schema + "</MiningSchema>\n<RadialBasisKernelType gamma=\"" + Documents::NumberText(kGamma) +
         "\"/>\n<VectorDictionary>\n<VectorFields>\n" + references + "</VectorFields>\n" + instances +
         "</VectorDictionary>\n<SupportVectorMachine>\n<SupportVectors>\n" + vectors +
         "</SupportVectors>\n<Coefficients absoluteValue=\"" + Documents::NumberText(kConstant) + "\">\n" +
         coefficients + "</Coefficients>\n</SupportVectorMachine>\n</SupportVectorMachineModel>\n</PMML>\n";
}

void VectorsLibrary(benchmark::State& state) {
  const PlainLoop expected;
  auto model = Documents::Load(Document(expected), Documents::PlugIn("torvane"));
  ValueRecord out(2);
  out.Add("prediction", Value::NULL_VALUE);
  ValueRecord in = InputRecord(kInputs);
  for (const auto& row : MakeRows(kInputs)) {
    SetAll(in, row);
    if (!model->Score(in, out).IsOK() || !Close(out.At(0).GetReal(), expected.Score(row.data()))) {
      WrongAnswer("support vector machine");
    }
  }
  ScoreRows(state, *model, out, kInputs);
}
BENCHMARK(VectorsLibrary)->Name("SupportVectors1000x50/library");

void VectorsArrays(benchmark::State& state) {
  const Rows rows = MakeRows(kInputs);
  const PlainLoop limit;
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(limit.Score(rows[i].data()));
    i = (i + 1) % kRows;
  }
}
BENCHMARK(VectorsArrays)->Name("SupportVectors1000x50/limit_arrays");

}  // namespace
