// A document of some hundred kilobytes can ask for gigabytes without writing them. Each way to do so is counted, and
// what many models share isn't asked for anew.

#include <gtest/gtest.h>
#include <string>

#include "tests/plugins/torvane/ModelHarness.h"

namespace TorvaneTest {
namespace {

constexpr char kTooMuch[] = "more memory than a document may";

std::string Repeat(int count, const std::string& before, const std::string& behind) {
  std::string text;
  for (int i = 0; i < count; ++i) text.append(before).append(std::to_string(i)).append(behind);
  return text;
}

// Vectors of 5,000 places, none of which is written.
Document FilledVectors(int count) {
  return {
      .kind = "SupportVectorMachineModel",
      .function = "regression",
      .body = "<LinearKernelType/><VectorDictionary><VectorFields>" +
              Repeat(5000, "<FieldRef field=\"x\"><!--", "--></FieldRef>") + "</VectorFields>" +
              Repeat(count, "<VectorInstance id=\"v", "\"><REAL-SparseArray defaultValue=\"1\"/></VectorInstance>") +
              "</VectorDictionary><SupportVectorMachine><SupportVectors><SupportVector vectorId=\"v0\"/>" +
              "</SupportVectors><Coefficients><Coefficient value=\"1\"/></Coefficients></SupportVectorMachine>"};
}

// Contrasts of the 2,000 categories of "s", each with a matrix of 2,000 x 2,000 cells, none of which is written.
Document Contrasts(int count) {
  const std::string contrast = "<Categories>" + Repeat(2000, "<Category value=\"", "\"/>") + "</Categories>" +
                               "<Matrix nbRows=\"2000\" nbCols=\"2000\" diagDefault=\"1\"/></Predictor>";
  return {.kind = "GeneralRegressionModel",
          .function = "regression",
          .attributes = "modelType=\"generalLinear\"",
          .body = "<ParameterList><Parameter name=\"p\"/></ParameterList><FactorList>" +
                  Repeat(count, "<Predictor name=\"s", "\">" + contrast) + "</FactorList>" +
                  "<ParamMatrix><PCell parameterName=\"p\" beta=\"1\"/></ParamMatrix>",
          .schema = Repeat(count, "<MiningField name=\"s", "\"/>"),
          .dictionary = Document::AllDeclarations() +
                        Repeat(count, "<DataField name=\"s", "\" optype=\"categorical\" dataType=\"string\"/>")};
}

// An ensemble over a target with 5,000 declared categories; each model predicts one of them, or one of its own.
Document Categories(int count, const std::string& score) {
  return {.kind = "MiningModel",
          .function = "classification",
          .body = "<Segmentation multipleModelMethod=\"majorityVote\">" +
                  Repeat(count,
                         "<Segment><True/><TreeModel functionName=\"classification\"><MiningSchema>"
                         "<MiningField name=\"y\" usageType=\"target\"/></MiningSchema><Node score=\"" +
                             score,
                         "\"><True/></Node></TreeModel></Segment>") +
                  "</Segmentation>",
          .schema = "",
          .dictionary = "<DataField name=\"y\" optype=\"categorical\" dataType=\"string\">" +
                        Repeat(5000, "<Value value=\"c", "\"/>") + "</DataField>"};
}

TEST(Expansion, DocumentThatAsksForMuchAndWritesLittle_IsRefused) {
  for (const Document& document : {FilledVectors(2000), Contrasts(5), Categories(300, "own")}) {
    EXPECT_NE(ReasonOf(document).find(kTooMuch), std::string::npos) << ReasonOf(document);
  }
}

TEST(Expansion, DocumentThatAsksForLittle_IsScored) {
  EXPECT_EQ(Number(Load(FilledVectors(20)).Score({{"x", 2.0}}), "prediction"), 10'000.0);
  EXPECT_EQ(Number(Load(Contrasts(2)).Score({{"s0", "1"}, {"s1", "2"}}), "prediction"), 1.0);
  EXPECT_EQ(Shown(Load(Categories(20, "own")).Score(ValueRecord()), "prediction"), "own0");
}

TEST(Expansion, CategoriesThatModelsShare_CostNothing) {
  const Scorer scorer = Load(Categories(300, "c"));
  EXPECT_EQ(Shown(scorer.Score(ValueRecord()), "prediction"), "c0");
  EXPECT_EQ(Probability(scorer.Score(ValueRecord()), "c299"), 1.0 / 300.0);
}

}  // namespace
}  // namespace TorvaneTest
