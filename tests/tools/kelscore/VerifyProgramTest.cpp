#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/tools/kelscore/Program.h"
#include "tools/kelscore/Failure.h"

namespace kelscore {
namespace {

using nlohmann::json;
using testing::HasSubstr;

const std::string& Rent() {
  static const std::string text = ReadFile(Example("regression/rent.pmml"));
  return text;
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  const std::size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

TEST(KelscoreVerify, Example_Agrees) {
  const Outcome run = RunKelscore({"verify", Example("regression/rent.pmml")});
  EXPECT_EQ(run.status, kSuccess);
  EXPECT_EQ(run.out, Example("regression/rent.pmml") + ": 4 verification rows, all agree\n");
  EXPECT_EQ(run.err, "");
}

// A wrong number, an expected number that is none, and a cell that can't be read.
TEST(KelscoreVerify, RowsThatDiffer_AreToldOneByOne) {
  std::string document = Replaced(Rent(), "<euros>1030</euros>", "<euros>1031</euros>");
  document = Replaced(document, "<euros>830</euros>", "<euros>dear</euros>");
  document = Replaced(document, "<area>20</area>", "<area>small</area>");
  document = Replaced(document, "<floor>1</floor>", "<floor>1</floor><euros>5</euros>");
  const TestFolder folder;
  const std::string path = folder.Write("model.pmml", document);

  const Outcome text = RunKelscore({"verify", path});
  EXPECT_EQ(text.status, kSomeRowsFailed);
  EXPECT_EQ(text.out,
            "row 1 (line 94): field \"area\": \"small\" is not a finite number\n"
            "row 2 (line 98): \"rent\": expected 1031, got 1030\n"
            "row 3 (line 102): \"rent\": expected \"dear\", got 830\n"
            "row 4 (line 106): \"rent\": expected 5, got no value\n" +
                path + ": 4 verification rows, 4 differ\n");
  EXPECT_EQ(text.err, "");

  const Outcome forPrograms = RunKelscore({"verify", path, "--format", "json"});
  EXPECT_EQ(forPrograms.status, kSomeRowsFailed);
  const json report = json::parse(forPrograms.out);
  EXPECT_EQ(report["rows"], 4);
  EXPECT_EQ(report["compared"], json({"rent"}));
  EXPECT_EQ(report["differingRows"][0],
            json::parse(R"({"row": 1, "line": 94, "failure": "field \"area\": \"small\" is not a finite number"})"));
  EXPECT_EQ(report["differingRows"][1],
            json::parse(R"({"row": 2, "line": 98, "differences": [{"field": "rent", "expected": "1031",
                "actual": 1030.0}]})"));
  EXPECT_EQ(report["differingRows"][3]["differences"][0]["actual"], json());
}

// An output of the document's own is compared where the rows have one; the target then tells what was observed.
TEST(KelscoreVerify, OutputsBesideTheTarget_AreComparedAlone) {
  const TestFolder folder;
  std::string document = Replaced(Rent(), "fieldCount=\"6\"", "fieldCount=\"7\"");
  document = Replaced(document, "</VerificationFields>", "<VerificationField field=\"Rent\"/></VerificationFields>");
  for (const char* rent : {"400", "1030", "830"}) {
    const std::string euros = std::string("<euros>").append(rent).append("</euros>");
    document = Replaced(document, euros, std::string("<euros>7</euros><Rent>").append(rent).append("</Rent>"));
  }
  const Outcome run = RunKelscore({"verify", folder.Write("model.pmml", document), "--format", "json"});
  EXPECT_EQ(run.status, kSuccess) << run.out;
  EXPECT_EQ(json::parse(run.out)["compared"], json({"Rent"}));
}

struct RowsCase {
  const char* from;  // in the example
  const char* to;
  ExitStatus status;
  const char* message;
};

const RowsCase kRows[] = {
    {"recordCount=\"4\"", "recordCount=\"5\"", kInputOutputFailed,
     "model.pmml: line 110: ModelVerification claims a recordCount of \"5\" and has 4 rows"},
    {"field=\"rent\" column", "field=\"lease\" column", kInputOutputFailed,
     "model.pmml: verification rows: \"lease\" is neither a field of the data dictionary nor an output of the model"},
    {"field=\"rent\" column=\"euros\"", "field=\"rent\"", kInputOutputFailed,
     "no VerificationField has the column \"euros\""},
    {"VerificationField field=\"floor\"", "VerificationField field=\"prediction\" column=\"floor\"", kSomeRowsFailed,
     "warning: the verification rows have no value for \"floor\""},
    {"RegressionModel modelName=\"Rent\"", "RegressionModel modelName=\"Rent\" functionName=\"roughly\"", kNoModel,
     "model.pmml: no model: status 260010 "},
};

TEST(KelscoreVerify, RowsThatDontFitTheModel_AreTold) {
  const TestFolder folder;
  for (const RowsCase& c : kRows) {
    SCOPED_TRACE(c.to);
    const Outcome run = RunKelscore({"verify", folder.Write("model.pmml", Replaced(Rent(), c.from, c.to))});
    EXPECT_EQ(run.status, c.status);
    EXPECT_THAT(run.err, HasSubstr(c.message));
    EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << run.err;
  }
}

TEST(KelscoreVerify, NothingToCompareWith_IsInputThatFails) {
  const Outcome none = RunKelscore({"verify", Example("tree/churn.pmml")});
  EXPECT_EQ(none.status, kInputOutputFailed);
  EXPECT_EQ(none.err, "kelscore: " + Example("tree/churn.pmml") + ": holds no verification rows (ModelVerification)\n");

  const TestFolder folder;
  std::string document =
      Replaced(Rent(), "<VerificationField field=\"rent\" column=\"euros\" precision=\"1E-9\"/>", "");
  document = Replaced(document, "fieldCount=\"6\"", "");
  for (const char* euros : {"<euros>400</euros>", "<euros>1030</euros>", "<euros>830</euros>"})
    document = Replaced(document, euros, "");
  const Outcome inputsOnly = RunKelscore({"verify", folder.Write("model.pmml", document)});
  EXPECT_EQ(inputsOnly.status, kInputOutputFailed);
  EXPECT_THAT(inputsOnly.err, HasSubstr("they expect nothing"));
}

TEST(KelscoreVerify, AnotherPlugIn_IsVerifiedInstead) {
  const Outcome run = RunKelscore(
      {"verify", Example("regression/rent.pmml"), "--plugin-dir", KEL_TEST_PLUGINS, "--dll", "Torvane=stream"});
  EXPECT_EQ(run.status, kSomeRowsFailed);
  EXPECT_THAT(run.out, HasSubstr("4 verification rows, 3 differ"));
  EXPECT_EQ(RunKelscore({"verify", Example("regression/rent.pmml"), "--dll", "Torvane=nowhere"}).status, kNoModel);
}

}  // namespace
}  // namespace kelscore
