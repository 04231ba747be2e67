#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tools/kelscore/Program.h"

// Runs of the program as people start it, on the examples.

namespace kelscore {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using Table = std::vector<std::vector<std::string>>;

struct LeafCase {
  const char* row;  // tenure, contract, charges, complaints
  const char* prediction;
  double yes;  // records with churn "yes" over all records of the leaf
  const char* leaf;
};

// Worked out by hand from the counts in churn.pmml.
const LeafCase kLeaves[] = {
    {"30,yearly,59.9,0", "no", 20.0 / 400, "yearly"},
    {"5,monthly,89.5,2", "yes", 72.0 / 80, "new-unhappy"},
    {"5,monthly,89.5,0", "no", 72.0 / 160, "new-quiet"},
    {"12,monthly,80,1", "no", 10.0 / 200, "old-cheap"},
    {"47,monthly,80.01,0", "yes", 96.0 / 160, "old-dear"},
    {"0,monthly,64.5,0", "no", 72.0 / 160, "new-quiet"},
    {"60,,95,0", "no", 270.0 / 1000, "all"},          // contract unknown: the last prediction on the way
    {",monthly,70,1", "no", 250.0 / 600, "monthly"},  // so with tenure, from which the standing is derived
    {"7,monthly,55,", "yes", 144.0 / 240, "new"},
    {"24,monthly,,2", "no", 106.0 / 360, "old"},
};

TEST(KelscoreScore, TreeExample_GivesLeavesAndPropensities) {
  std::string input = "tenure,contract,charges,complaints\n";
  for (const LeafCase& c : kLeaves) input += std::string(c.row) + "\n";
  const Outcome run = RunKelscore({"score", Example("tree/churn.pmml"), "-", "--no-input", "--outputs",
                                   "prediction,probability,probcategory,rawpropensity,adjustedpropensity,Risk,Leaf"},
                                  input);
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "");
  const Table table = Fields(run.out);
  ASSERT_EQ(table.size(), 1 + std::size(kLeaves));
  EXPECT_THAT(table[0], ElementsAre("prediction", "probability", "probcategory.no", "probcategory.yes", "rawpropensity",
                                    "adjustedpropensity", "Risk", "Leaf"));
  for (std::size_t i = 0; i < std::size(kLeaves); ++i) {
    const LeafCase& c = kLeaves[i];
    SCOPED_TRACE(c.row);
    const std::vector<std::string>& row = table[i + 1];
    EXPECT_EQ(row[0], c.prediction);
    EXPECT_NEAR(std::stod(row[1]), c.prediction == std::string("yes") ? c.yes : 1 - c.yes, 1e-12);
    EXPECT_NEAR(std::stod(row[2]), 1 - c.yes, 1e-12);
    EXPECT_NEAR(std::stod(row[3]), c.yes, 1e-12);
    EXPECT_NEAR(std::stod(row[4]), c.yes, 1e-12);
    EXPECT_NEAR(std::stod(row[5]), 0.5 + 0.5 * std::tanh(4 * c.yes - 2), 1e-12);
    EXPECT_NEAR(std::stod(row[6]), c.yes, 1e-12);
    EXPECT_EQ(row[7], c.leaf);
  }
}

TEST(KelscoreScore, RegressionExample_GivesRents) {
  // 300 + 9 * (square metres above 20, at most 100) + 40 with a balcony + 100 * demand + 5 * floor
  // + 30 from 1950, 120 from 2000. A district that isn't known counts as one in least demand.
  const double kRents[] = {400, 1030, 1685, 830, 860, 1025, 1115, 1570, 550, 840, 800, 830};
  const Outcome run = RunKelscore({"score", Example("regression/rent.pmml"), Example("regression/flats.csv")});
  ASSERT_EQ(run.status, 0) << run.err;
  const Table table = Fields(run.out);
  ASSERT_EQ(table.size(), 1 + std::size(kRents));
  EXPECT_THAT(table[0], ElementsAre("flat", "area", "built", "district", "balcony", "floor", "prediction", "Rent"));
  for (std::size_t i = 0; i < std::size(kRents); ++i) {
    EXPECT_EQ(table[i + 1][0], std::to_string(i + 1));
    EXPECT_NEAR(std::stod(table[i + 1][6]), kRents[i], 1e-9) << i;
    EXPECT_EQ(table[i + 1][6], table[i + 1][7]);
  }
}

// The document knows what these texts mean; other ones in a numeric field are faults.
TEST(KelscoreScore, TextsThatTheDocumentDeclaresForANumber_ReachTheModel) {
  const TestFolder folder;
  const std::string model = folder.Write("model.pmml", R"(<PMML version="4.2"><Header/><DataDictionary>
<DataField name="x" optype="continuous" dataType="double"><Value value="N/A" property="missing"/>
<Value value="-1" property="missing"/><Value value="bad" property="invalid"/></DataField>
<DataField name="t" optype="continuous" dataType="double"/></DataDictionary>
<RegressionModel functionName="regression"><MiningSchema><MiningField name="x" missingValueReplacement="7"/>
<MiningField name="t" usageType="target"/></MiningSchema>
<RegressionTable intercept="0"><NumericPredictor name="x" coefficient="1"/></RegressionTable></RegressionModel></PMML>)");
  const Outcome run = RunKelscore({"score", model, "-", "--on-error", "skip"}, "x\n3\nN/A\n-1\nbad\nworse\n");
  EXPECT_EQ(run.out, "x,prediction\n3,3\nN/A,7\n-1,7\nbad,\nworse,\n");
  EXPECT_THAT(run.err, AllOf(HasSubstr("\"worse\" is not a finite number"), Not(HasSubstr("\"bad\""))));
}

TEST(KelscoreScore, InputColumns_ComeOutAsTheyWere) {
  const Outcome run =
      RunKelscore({"score", Example("tree/churn.pmml"), Example("tree/customers.csv"), "--outputs", "prediction"});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_THAT(run.out, StartsWith("customer,tenure,contract,charges,complaints,prediction\n"
                                  "\"Adler, Nina\",30,yearly,59.9,0,no\nBarros,5,monthly,89.5,2,yes\n"));
  EXPECT_THAT(run.out, HasSubstr("\n\"Jones \"\"JJ\"\"\",1,monthly,64.5,0,no\n"));
}

struct InputCase {
  const char* name;
  std::string input;
  std::vector<std::string> options;
  std::string expected;
};

const InputCase kInputs[] = {
    {"byte order mark and CRLF",
     "\xEF\xBB\xBFtenure,contract,charges,complaints\r\n5,monthly,9,1\r\n",
     {},
     "tenure,contract,charges,complaints,prediction\n5,monthly,9,1,yes\n"},
    {"columns in another order, one more, line break in it",
     "note,complaints,charges,contract,tenure\n\"two\nlines, \"\"quoted\"\"\",1,9,monthly,5\n",
     {},
     "note,complaints,charges,contract,tenure,prediction\n\"two\nlines, \"\"quoted\"\"\",1,9,monthly,5,yes\n"},
    {"tokens for missing values",
     "tenure,contract,charges,complaints\n60,NA,95,?\n5,monthly,9,NA\n",
     {"--missing", "NA", "--missing", "?"},
     "tenure,contract,charges,complaints,prediction\n60,NA,95,?,no\n5,monthly,9,NA,yes\n"},
    {"another delimiter",
     "tenure;contract;charges;complaints;note\n5;monthly;9;1;a,b\n5;monthly;9;1;\"a;b\"\n",
     {"--delimiter", ";"},
     "tenure;contract;charges;complaints;note;prediction\n5;monthly;9;1;a,b;yes\n5;monthly;9;1;\"a;b\";yes\n"},
    {"header only", "tenure,contract,charges,complaints\n", {}, "tenure,contract,charges,complaints,prediction\n"},
};

TEST(KelscoreScore, OddTables_AreScored) {
  for (const InputCase& c : kInputs) {
    SCOPED_TRACE(c.name);
    std::vector<std::string> arguments = {"score", Example("tree/churn.pmml"), "-", "--outputs", "prediction"};
    arguments.insert(arguments.end(), c.options.begin(), c.options.end());
    const Outcome run = RunKelscore(arguments, c.input);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, c.expected);
    EXPECT_EQ(run.err, "");
  }
}

TEST(KelscoreScore, MissingColumn_IsToldOnceAndNull) {
  const Outcome run = RunKelscore({"score", Example("tree/churn.pmml"), "-", "--outputs", "prediction,Leaf"},
                                  "tenure,contract\n5,monthly\n30,yearly\n");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, "tenure,contract,prediction,Leaf\n5,monthly,yes,new\n30,yearly,no,yearly\n");
  EXPECT_EQ(run.err,
            "kelscore: standard input: warning: no column for \"charges\", \"complaints\"; null in every row\n");
}

TEST(KelscoreScore, OutputNameThatIsAColumn_GetsAnotherName) {
  const Outcome run = RunKelscore({"score", Example("tree/churn.pmml"), "-", "--outputs", "prediction"},
                                  "tenure,contract,charges,complaints,prediction\n5,monthly,9,1,maybe\n");
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.out, EndsWith(",prediction,prediction.output\n5,monthly,9,1,maybe,yes\n"));
  EXPECT_THAT(run.err, HasSubstr("\"prediction.output\""));
}

constexpr char kFaultyRows[] =
    "tenure,contract,charges,complaints\n"
    "5,monthly,9,1\n"
    "5,monthly,dear,1\n"
    "\"5\",\"monthly\",9\n"
    "5,monthly,9,0\n";

TEST(KelscoreScore, FaultyRow_StopsTheRunOrIsSkipped) {
  const std::string model = Example("tree/churn.pmml");
  const Outcome stopped = RunKelscore({"score", model, "-", "--no-input", "--outputs", "prediction"}, kFaultyRows);
  EXPECT_EQ(stopped.status, 1);
  EXPECT_EQ(stopped.out, "prediction\nyes\n");
  EXPECT_THAT(stopped.err, StartsWith("kelscore: standard input: row 2 (line 3): field \"charges\": \"dear\" is not a "
                                      "finite number"));

  const Outcome skipped = RunKelscore(
      {"score", model, "-", "--outputs", "prediction", "--on-error", "skip", "--error-column", "why"}, kFaultyRows);
  EXPECT_EQ(skipped.status, 1);
  EXPECT_EQ(
      skipped.out,
      "tenure,contract,charges,complaints,prediction,why\n"
      "5,monthly,9,1,yes,\n"
      "5,monthly,dear,1,,\"field \"\"charges\"\": \"\"dear\"\" is not a finite number (--missing names texts that "
      "stand for no value)\"\n"
      "5,monthly,9,,,has 3 fields where the header has 4\n"
      "5,monthly,9,0,no,\n");
  EXPECT_THAT(skipped.err, AllOf(HasSubstr("row 2 (line 3): field \"charges\""),
                                 HasSubstr("row 3 (line 4): has 3 fields where the header has 4\n"),
                                 EndsWith("kelscore: standard input: 2 of 4 rows failed; their outputs are empty\n")));
}

TEST(KelscoreScore, Threads_GiveTheSameAsOne) {
  std::string input = "id,tenure,contract,charges,complaints\n";
  for (int i = 0; i < 60'000; ++i) {
    input += std::to_string(i) + "," + std::to_string(i % 80) + (i % 3 ? ",monthly," : ",yearly,") +
             std::to_string(i % 150) + (i % 997 ? ",1\n" : ",\"x\"\n");
  }
  std::vector<std::string> arguments = {"score", Example("tree/churn.pmml"), "-", "--on-error", "skip"};
  const Outcome one = RunKelscore(arguments, input);
  EXPECT_EQ(one.status, 1);
  arguments.insert(arguments.end(), {"--threads", "4"});
  const Outcome four = RunKelscore(arguments, input);
  EXPECT_EQ(four.status, 1);
  EXPECT_TRUE(four.out == one.out);  // megabytes: no use in printing them
  EXPECT_TRUE(four.err == one.err);

  arguments = {"score", Example("tree/churn.pmml"), "-"};
  const Outcome oneStopped =
      RunKelscore(arguments, input.substr(0, input.size() / 2) + "\n1,x,,,\n" + input.substr(input.size() / 2));
  arguments.insert(arguments.end(), {"--threads", "3"});
  const Outcome threeStopped =
      RunKelscore(arguments, input.substr(0, input.size() / 2) + "\n1,x,,,\n" + input.substr(input.size() / 2));
  EXPECT_EQ(threeStopped.status, 1);
  EXPECT_TRUE(threeStopped.out == oneStopped.out);
  EXPECT_EQ(threeStopped.err, oneStopped.err);
}

TEST(KelscoreScore, Ensemble_GivesAColumnForEachMember) {
  // P(yes) of the logit member = 1 / (1 + exp(-y)), y = -1 - 0.05 tenure + complaints + 1 if monthly.
  const double kLogits[] = {-1 - 1.5, -0.25 + 2, -0.6 + 1};
  const std::string input = "tenure,contract,charges,complaints\n30,yearly,59.9,0\n5,monthly,89.5,2\n12,monthly,80,1\n";
  const std::vector<std::string> kWays[] = {
      {"--member", "tree=" + Example("tree/churn.pmml"), "--member", "logit=" + Example("ensemble/churn-logit.pmml")},
      {"--settings", Example("ensemble/ensemble.xml")},
  };
  for (const std::vector<std::string>& way : kWays) {
    std::vector<std::string> arguments = {"score", "-", "--no-input", "--outputs", "probcategory,Leaf,prediction"};
    arguments.insert(arguments.end(), way.begin(), way.end());
    const Outcome run = RunKelscore(arguments, input);
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    const Table table = Fields(run.out);
    ASSERT_EQ(table.size(), 1 + std::size(kLogits));
    EXPECT_THAT(table[0], ElementsAre("probcategory.tree.no", "probcategory.tree.yes", "probcategory.logit.no",
                                      "probcategory.logit.yes", "Leaf.tree", "prediction.tree", "prediction.logit"));
    for (std::size_t i = 0; i < std::size(kLogits); ++i) {
      EXPECT_NEAR(std::stod(table[i + 1][3]), 1 / (1 + std::exp(-kLogits[i])), 1e-12);
      EXPECT_EQ(table[i + 1][6], kLogits[i] > 0 ? "yes" : "no");
    }
    EXPECT_EQ(table[3][4], "old-cheap");
    EXPECT_EQ(table[3][5], "no");
  }
}

TEST(KelscoreScore, SplitModel_PicksTheDocumentByField) {
  // Lakeside: 200 + 15 per square metre + 120 for the view. Hilltop: 150 + 10 per square metre + 50 for the garden.
  const char* const kRents[] = {"920", "800", "600", "550", "1287.5", "1150", "750", "2120", "470", "950"};
  for (const char* threads : {"1", "2"}) {
    const Outcome run = RunKelscore({"score", "--threads", threads, "--split-field", "town", "--split-member",
                                     "Lakeside=" + Example("split/lakeside.pmml"), "--split-member",
                                     "Hilltop=" + Example("split/hilltop.pmml"), Example("split/flats.csv")});
    ASSERT_EQ(run.status, 0) << run.err;
    const Table table = Fields(run.out);
    ASSERT_EQ(table.size(), 1 + std::size(kRents));
    for (std::size_t i = 0; i < std::size(kRents); ++i) EXPECT_EQ(table[i + 1].back(), kRents[i]);
  }
}

TEST(KelscoreScore, SplitKeys_HaveTheTypeOfTheirField) {
  // area is a number in both documents, town is in none; an empty key is that of a missing value.
  const std::string lakeside = Example("split/lakeside.pmml");
  const std::string hilltop = Example("split/hilltop.pmml");
  const Outcome run =
      RunKelscore({"score", "-", "--split-field", "town", "--split-field", "area", "--split-member", "1,40=" + lakeside,
                   "--split-member", "1,=" + hilltop, "--split-member", ",40=" + hilltop, "--on-error", "skip"},
                  "town,area\n1,4e1\n,40.0\n1,\n1.0,40\n1,41\n");
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, "town,area,prediction\n1,4e1,800\n,40.0,550\n1,,\n1.0,40,\n1,41,\n");
  EXPECT_THAT(run.err, AllOf(HasSubstr("row 4 (line 5): status 260009 "),
                             HasSubstr("split fields: town = \"1.0\", area = \"40\"\n"),
                             HasSubstr("split fields: town = \"1\", area = \"41\"\n")));
}

TEST(KelscoreScore, OutputFile_HoldsWhatStandardOutputWould) {
  const TestFolder folder;
  const std::vector<std::string> arguments = {"score", Example("tree/churn.pmml"), Example("tree/customers.csv")};
  std::vector<std::string> toFile = arguments;
  toFile.insert(toFile.end(), {"-o", folder.Write("out.csv", "something longer that was there before")});
  const Outcome run = RunKelscore(toFile);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(ReadFile(folder.PathOf("out.csv")), RunKelscore(arguments).out);
}

TEST(Kelscore, NoArguments_GivesHelpWithExamples) {
  const Outcome run = RunKelscore({});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.out, AllOf(HasSubstr("score"), HasSubstr("describe"), HasSubstr("Examples:")));
  EXPECT_THAT(run.err, IsEmpty());
}

}  // namespace
}  // namespace kelscore
