#include <gtest/gtest.h>
#include <string>

#include "tests/plugins/torvane/ModelHarness.h"
#include "tests/support/CaseName.h"

namespace TorvaneTest {
namespace {

const Value kNull = Value::NULL_VALUE;

std::string Regression(const std::string& intercept, const std::string& field, const std::string& head = "") {
  return "<Regression functionName=\"regression\">" + head + "<RegressionTable intercept=\"" + intercept +
         "\"><NumericPredictor name=\"" + field + "\" coefficient=\"1\"/></RegressionTable></Regression>";
}

// Leaves 2 and 3 hold a model, the second one with a score besides; leaf 4 is a plain one.
std::string Tree(const std::string& model, const std::string& attributes = "") {
  return "<Node id=\"1\" " + attributes + R"(><True/>
<Node id="2"><SimplePredicate field="s" operator="equal" value="a"/>)" +
         model + R"(</Node><Node id="3" score="7"><SimplePredicate field="s" operator="equal" value="b"/>)" + model +
         R"(</Node><Node id="4" score="9"><SimplePredicate field="s" operator="equal" value="c"/></Node></Node>)";
}

Document RegressionTree(const std::string& body, const std::string& attributes = "") {
  return {.function = "regression", .attributes = attributes, .body = body, .version = "3.2"};
}

TEST(SelectionTree, ModelOfTheLeaf_GivesTheResult) {
  const Scorer scorer = Load(RegressionTree(Tree(Regression("100", "x"))));
  struct Row {
    Value s;
    Value x;
    const char* prediction;
    const char* node;
  };
  const Row rows[] = {
      {"a", 5.0, "105", "2"},       {"b", 6.0, "106", "3"}, {"c", 5.0, "9", "4"},
      {"a", kNull, "null", "null"},  // there is no score to fall back on
      {"b", kNull, "7", "3"},       {"c", kNull, "9", "4"}, {kNull, 5.0, "null", "null"},
  };
  for (const Row& row : rows) {
    const ValueRecord out = scorer.Score({{"s", row.s}, {"x", row.x}});
    EXPECT_EQ(Shown(out, "prediction"), row.prediction) << row.s.GetString() << ", " << row.x.GetString();
    EXPECT_EQ(Shown(out, "tree-nodeid"), row.node) << row.s.GetString() << ", " << row.x.GetString();
  }
}

TEST(SelectionTree, InnerNode_PredictsItselfWhereTheStrategyEndsThere) {
  const Document document =
      RegressionTree(Tree(Regression("100", "x"), "score=\"3\""), "missingValueStrategy=\"lastPrediction\"");
  EXPECT_EQ(Load(document).Predict({{"x", 5.0}}).GetReal(), 3.0);
}

TEST(SelectionTree, ModelOfCategories_HandsOverItsProbabilities) {
  const std::string model = R"(<DecisionTree functionName="classification">
<Node score="maybe"><SimplePredicate field="x" operator="greaterThan" value="0"/>
<ScoreDistribution value="maybe" recordCount="3"/><ScoreDistribution value="new" recordCount="1"/></Node></DecisionTree>)";
  const Scorer scorer = Load(
      {.body =
           R"(<Node id="1"><True/><Node id="2" score="no"><SimplePredicate field="s" operator="equal" value="a"/>)" +
           model + R"(</Node><Node id="3" score="yes"><True/></Node></Node>)",
       .version = "3.2"});
  const ValueRecord out = scorer.Score({{"s", "a"}, {"x", 1.0}});
  EXPECT_EQ(Shown(out, "prediction"), "maybe");
  EXPECT_EQ(Probability(out, "maybe"), 0.75);
  EXPECT_EQ(Probability(out, "new"), 0.25);
  EXPECT_EQ(Probability(out, "no"), 0.0);
  const ValueRecord fallback = scorer.Score({{"s", "a"}, {"x", -1.0}});
  EXPECT_EQ(Shown(fallback, "prediction"), "no");
  EXPECT_EQ(Probability(fallback, "no"), 1.0);
  EXPECT_EQ(Shown(scorer.Score({{"s", "b"}}), "prediction"), "yes");
}

TEST(SelectionTree, FieldsAndResultsOfTheModel_AreThoseOfTheTree) {
  const std::string head = R"(<LocalTransformations><DerivedField name="own" optype="continuous" dataType="double">
<Apply function="+"><FieldRef field="d"/><Constant>1</Constant></Apply></DerivedField></LocalTransformations><ResultField name="told"/>)";
  const std::string before =
      R"(<Output><OutputField name="copy" feature="transformedValue"><FieldRef field="told"/></OutputField></Output>
<LocalTransformations><DerivedField name="d" optype="continuous" dataType="double">
<Apply function="*"><FieldRef field="x"/><Constant>10</Constant></Apply></DerivedField></LocalTransformations>)";
  Document document = RegressionTree(before + Tree(Regression("0", "own", head)));
  document.version = "4.1";
  const Scorer scorer = Load(document);
  const ValueRecord out = scorer.Score({{"s", "a"}, {"x", 2.0}});
  for (const char* name : {"prediction", "told", "copy"}) EXPECT_EQ(Shown(out, name), "21") << name;
  const ValueRecord other = scorer.Score({{"s", "c"}, {"x", 2.0}});
  for (const char* name : {"told", "copy"}) EXPECT_EQ(Shown(other, name), "null") << name;
}

// In an ensemble of trees, which are laid out in another way otherwise.
TEST(SelectionTree, InAnEnsemble_StaysItself) {
  const std::string segment =
      "<Segment><True/><TreeModel functionName=\"regression\"><MiningSchema><MiningField name=\"s\"/><MiningField "
      "name=\"x\"/></MiningSchema>" +
      Tree(Regression("100", "x")) + "</TreeModel></Segment>";
  const Scorer scorer =
      Load({.kind = "MiningModel",
            .function = "regression",
            .body = "<Segmentation multipleModelMethod=\"sum\">" + segment + segment + "</Segmentation>"});
  EXPECT_EQ(scorer.Predict({{"s", "a"}, {"x", 5.0}}).GetReal(), 210.0);
}

struct Refusal {
  const char* name;
  std::string body;
  const char* attributes;
  const char* reason;
};

void PrintTo(const Refusal& refusal, std::ostream* stream) { *stream << refusal.name; }

class RefusedSelection : public testing::TestWithParam<Refusal> {};

TEST_P(RefusedSelection, Reason_NamesWhatIsWrong) {
  const std::string reason = ReasonOf(RegressionTree(GetParam().body, GetParam().attributes));
  EXPECT_NE(reason.find(GetParam().reason), std::string::npos) << reason;
}

std::string Deep(int levels) {
  std::string text = "<Node score=\"1\"><True/></Node>";
  for (int i = 0; i < levels; ++i) {
    text = "<Node><True/><DecisionTree functionName=\"regression\">" + text + "</DecisionTree></Node>";
  }
  return text;
}

const std::string kModel = Regression("1", "x");

INSTANTIATE_TEST_SUITE_P(
    Refusals, RefusedSelection,
    testing::Values(Refusal{"beside_nodes", "<Node><True/>" + kModel + "<Node score=\"1\"><True/></Node></Node>", "",
                            "is not supported beside nodes"},
                    Refusal{"two_models", "<Node><True/>" + kModel + kModel + "</Node>", "", "is a second model"},
                    Refusal{"another_function",
                            "<Node><True/><DecisionTree functionName=\"classification\"><Node score=\"a\"><True/>"
                            "</Node></DecisionTree></Node>",
                            "", "isn't that of its tree"},
                    Refusal{"unknown_field", "<Node><True/>" + Regression("1", "q") + "</Node>", "", "\"q\""},
                    Refusal{"too_deep", Deep(101), "", "is a model inside too many others"}),
    KelTest::CaseName());

TEST(RefusedSelections, StrategiesThatMixLeaves_KnowNoModels) {
  const std::string body = R"(<Node recordCount="1"><True/><DecisionTree functionName="classification">
<Node score="yes"><True/></Node></DecisionTree></Node>)";
  const std::string reason =
      ReasonOf({.attributes = "missingValueStrategy=\"weightedConfidence\"", .body = body, .version = "3.2"});
  EXPECT_NE(reason.find("is not supported with the missingValueStrategy"), std::string::npos) << reason;
}

TEST(SelectionTree, HundredTreesInsideEachOther_AreScored) {
  EXPECT_EQ(Load(RegressionTree(Deep(100))).Predict({}).GetReal(), 1.0);
}

}  // namespace
}  // namespace TorvaneTest
