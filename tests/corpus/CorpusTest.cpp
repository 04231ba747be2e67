// Every case of a corpus of real documents either agrees with its expected results, or is one that is known to be
// refused, with its reason. The corpus stands beside the checkout, or where KELSCORING_CORPUS says.

#include <algorithm>
#include <gtest/gtest.h>
#include <iterator>
#include <vector>

#include "scoring/common/KelScoringConst.h"
#include "scoring/common/KelVarList.h"
#include "tests/corpus/CorpusCase.h"

namespace CorpusTest {
namespace {

using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;

// Kinds of model that the default plug-in scores.
constexpr const char* kServedKinds[] = {"ClusteringModel", "NearestNeighborModel", "GeneralRegressionModel",
                                        "MiningModel",     "NaiveBayesModel",      "NeuralNetwork",
                                        "RegressionModel", "RuleSetModel",         "SupportVectorMachineModel",
                                        "TreeModel"};

// Cases of the served kinds that are refused all the same, with a part of the reason.
struct Refusal {
  const char* name;
  const char* reason;
};
const std::vector<Refusal> kRefusals = {};

// What the reason of a refusal must name; null if the case must be scored.
const char* ExpectedRefusal(const CorpusCase& corpusCase) {
  for (const Refusal& refusal : kRefusals) {
    if (corpusCase.name == refusal.name) return refusal.reason;
  }
  const bool served =
      std::find(std::begin(kServedKinds), std::end(kServedKinds), corpusCase.modelKind) != std::end(kServedKinds);
  return served ? nullptr : corpusCase.modelKind.c_str();
}

void ExpectAgreement(const CorpusCase& corpusCase, const CsvTable& expected, KelScoring_20::ScoringModel& model) {
  const CsvTable input = CsvTable::Read(CorpusFolder() + "/" + corpusCase.name + "/input.csv");
  ASSERT_EQ(input.rows.size(), expected.rows.size());

  ValueRecord out(2);
  ASSERT_TRUE(model.Scorable(out).IsOK());
  std::vector<ExpectedColumn> columns;
  for (const std::string& name : expected.header) columns.push_back(FindColumn(name, corpusCase, out));

  InputRecord record(input, model.GetVarList());
  int differences = 0;
  for (std::size_t row = 0; row < input.rows.size(); ++row) {
    const auto status = model.Score(record.Fill(input.rows[row]), out);
    ASSERT_TRUE(status.IsOK()) << "row " << row + 1 << ": " << status.GetErrorCode();
    for (std::size_t i = 0; i < columns.size(); ++i) {
      const std::string difference = Difference(expected.rows[row][i], Lookup(columns[i], out), corpusCase.tolerance);
      if (difference.empty()) continue;
      if (++differences <= 5) ADD_FAILURE() << "row " << row + 1 << ", " << expected.header[i] << ": " << difference;
    }
  }
  EXPECT_EQ(differences, 0) << "of " << input.rows.size() * columns.size() << " values";
}

class Corpus : public testing::TestWithParam<CorpusCase> {};

TEST_P(Corpus, DocumentIsScoredAsItsProducerDoesOrRefusedWithAReason) {
  const CorpusCase& corpusCase = GetParam();
  const std::string folder = CorpusFolder() + "/" + corpusCase.name;
  const CsvTable expected = CsvTable::Read(folder + "/expected.csv");
  Loaded loaded = Load(folder + "/model.pmml", expected.header);
  const char* refusal = ExpectedRefusal(corpusCase);
  if (refusal != nullptr) {
    EXPECT_EQ(loaded.model, nullptr);
    EXPECT_EQ(loaded.code, KelScoring_20::KelScoringConst::kNoScorer);
    EXPECT_NE(loaded.reason.find(refusal), std::string::npos) << "reason: " << loaded.reason;
    return;
  }
  ASSERT_NE(loaded.model, nullptr) << loaded.code << ": " << loaded.reason;
  ExpectAgreement(corpusCase, expected, *loaded.model);
}

std::string TestName(const testing::TestParamInfo<CorpusCase>& info) {
  std::string name = info.param.name;
  std::replace_if(
      name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Documents, Corpus, testing::ValuesIn(AllCases()), TestName);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Corpus);

TEST(CorpusFolder, CorpusIsThere) {
  if (AllCases().empty()) GTEST_SKIP() << "There is no corpus at " << CorpusFolder() << "; set KELSCORING_CORPUS.";
  for (const Refusal& refusal : kRefusals) {
    EXPECT_TRUE(std::any_of(AllCases().begin(), AllCases().end(),
                            [&](const CorpusCase& corpusCase) { return corpusCase.name == refusal.name; }))
        << refusal.name << " is in no manifest: drop it from the table.";
  }
}

}  // namespace
}  // namespace CorpusTest
