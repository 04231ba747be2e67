// What the models of an ensemble tell each other, the ensemble and the host.

#include <gtest/gtest.h>
#include <string>
#include <utility>

#include "tests/plugins/torvane/EnsembleParts.h"

namespace TorvaneTest {
namespace {

const Value kNull = Value::NULL_VALUE;

std::string Refer(const std::string& name, const std::string& field, const std::string& further = "") {
  return "<OutputField name=\"" + name + "\" optype=\"continuous\" dataType=\"double\" feature=\"transformedValue\" " +
         further + "><FieldRef field=\"" + field + "\"/></OutputField>";
}

TEST(OutputsOfSegments, Chain_HandsResultsOn) {
  const std::string outputs = R"(<Output><OutputField name="first" feature="predictedValue"/>
<OutputField name="doubled" optype="continuous" dataType="double" feature="transformedValue"><Apply function="*"><FieldRef field="first"/><Constant>2</Constant></Apply></OutputField></Output>)";
  const std::string derived = R"(<LocalTransformations><DerivedField name="more" optype="continuous" dataType="double">
<Apply function="+"><FieldRef field="first"/><Constant>100</Constant></Apply></DerivedField></LocalTransformations>)";
  const std::string segments = Segment(Linear("1", "x", outputs)) +
                               Segment(Linear("0", "doubled"), "", When("first", "greaterThan", "10")) +
                               Segment(Linear("0", "more"), "", When("first", "lessOrEqual", "10"));
  const Scorer scorer = Load(Ensemble("regression", derived + Segmentation("modelChain", segments)));
  EXPECT_EQ(scorer.Predict({{"x", 19.0}}).GetReal(), 40.0);
  const ValueRecord out = scorer.Score({{"x", 4.0}});
  EXPECT_EQ(Shown(out, "prediction"), "105");
  EXPECT_EQ(Shown(out, "first"), "5");
  EXPECT_EQ(Shown(out, "doubled"), "10");
  EXPECT_EQ(Shown(scorer.Score({}), "first"), "null");
}

// The categories of a chain are those of its target, whatever the models before the last predict.
TEST(OutputsOfSegments, ChainOverAnotherTarget_KeepsItsOwnCategories) {
  const std::string first =
      R"(<TreeModel functionName="classification"><MiningSchema><MiningField name="x"/><MiningField name="s" usageType="target"/></MiningSchema>
<Output><OutputField name="kind" feature="predictedValue"/></Output>
<Node><True/><Node score="a"><SimplePredicate field="x" operator="lessThan" value="0"/></Node><Node score="b"><True/></Node></Node></TreeModel>)";
  const std::string last =
      R"(<TreeModel functionName="classification"><MiningSchema><MiningField name="kind"/><MiningField name="y" usageType="target"/></MiningSchema>
<Node><True/><Node score="yes"><SimplePredicate field="kind" operator="equal" value="a"/></Node><Node score="no"><SimplePredicate field="kind" operator="equal" value="b"/></Node></Node></TreeModel>)";
  const Scorer scorer = Load(Ensemble("classification", Segmentation("modelChain", Segment(first) + Segment(last))));
  const ValueRecord out = scorer.Score({{"x", -1.0}});
  EXPECT_EQ(Shown(out, "prediction"), "yes");
  EXPECT_EQ(Shown(out, "kind"), "a");
  EXPECT_EQ(out.At(out.IndexOf("probcategory")).Members()->Size(), 3U);
  EXPECT_EQ(Shown(scorer.Score({{"x", 1.0}}), "prediction"), "no");
  // Without the last one there is no result.
  const std::string never = Segmentation("modelChain", Segment(first) + Segment(last, "", "<False/>"));
  EXPECT_EQ(Shown(Load(Ensemble("classification", never)).Score({{"x", -1.0}}), "prediction"), "null");
}

TEST(OutputsOfSegments, OutputFieldWithASegmentId_TellsThatSegmentsResult) {
  const std::string output = R"(<Output><OutputField name="p1" feature="probability" value="no" segmentId="one"/>
<OutputField name="r2" feature="predictedValue" segmentId="2"/><OutputField name="r3" feature="predictedValue" segmentId="three"/>
<OutputField name="named" feature="transformedValue" value="inner" segmentId="one"/>
<OutputField name="gone" feature="predictedValue" segmentId="nobody"/>
<OutputField name="node" feature="entityId" segmentId="one"/>)" +
                             Refer("used", "p1") + "</Output>";
  const std::string inner = "<Output>" + Refer("inner", "x") + "</Output>";
  const std::string segments = Segment(Leaf("yes", {"0.5", "0.3", "0.2"}, "<True/>", inner), "id=\"one\"") +
                               Segment(Leaf("maybe")) + Segment(Leaf("no"), "id=\"three\"", When("x", "lessThan", "0"));
  const Scorer scorer = Load(Ensemble("classification", output + Segmentation("majorityVote", segments)));
  const ValueRecord out = scorer.Score({{"x", 4.0}});
  const std::pair<const char*, const char*> expected[] = {
      {"p1", "0.3"}, {"r2", "maybe"}, {"r3", "null"}, {"named", "4"}, {"gone", "null"}, {"node", "1"}, {"used", "0.3"}};
  for (const auto& [name, value] : expected) EXPECT_EQ(Shown(out, name), value) << name;
  EXPECT_EQ(Shown(scorer.Score({{"x", -4.0}}), "r3"), "no");
}

// Segments may give outputs the same names, and the ensemble may use them for something else.
TEST(OutputsOfSegments, SameNames_DontDisturbEachOther) {
  const auto member = [](const std::string& intercept) {
    return Linear(intercept, "x",
                  "<Output><OutputField name=\"z\" feature=\"predictedValue\"/>" + Refer("w", "z") + "</Output>");
  };
  const std::string segments = Segment(member("1"), "id=\"a\"", When("n", "lessThan", "0")) +
                               Segment(member("2"), "id=\"b\"", When("n", "greaterThan", "0"));
  const Scorer scorer = Load(Ensemble("regression", Segmentation("modelChain", segments)));
  for (const double n : {-1.0, 1.0}) {
    const ValueRecord out = scorer.Score({{"x", 10.0}, {"n", n}});
    EXPECT_EQ(Shown(out, "z"), n < 0 ? "11" : "12");
    EXPECT_EQ(Shown(out, "w"), n < 0 ? "11" : "12");
  }
  // "z" of the ensemble is what it asks segment a for, though b runs later.
  const std::string asked =
      "<Output><OutputField name=\"z\" feature=\"predictedValue\" segmentId=\"a\"/>" + Refer("copy", "z") + "</Output>";
  const std::string both = Segment(member("1"), "id=\"a\"") + Segment(member("2"), "id=\"b\"");
  const ValueRecord out = Load(Ensemble("regression", asked + Segmentation("sum", both))).Score({{"x", 10.0}});
  EXPECT_EQ(Shown(out, "z"), "11");
  EXPECT_EQ(Shown(out, "copy"), "11");
  EXPECT_EQ(Shown(out, "w"), "12");
}

// An own output comes before one of the same name that something before it has read already.
TEST(OutputsOfSegments, OwnOutput_IsWhatTheExpressionsAfterItRead) {
  const auto predictsAs = [](const std::string& name) {
    return "<Output><OutputField name=\"" + name + "\" feature=\"predictedValue\"/>" + Refer(name + "_again", name) +
           "</Output>";
  };
  const std::string segments = Segment(Linear("1", "x", predictsAs("p"))) +
                               Segment(Linear("10", "p", predictsAs("p"))) + Segment(Linear("100", "p"));
  const ValueRecord out =
      Load(Ensemble("regression", predictsAs("p") + Segmentation("modelChain", segments))).Score({{"x", 4.0}});
  EXPECT_EQ(Shown(out, "p"), "115");
  EXPECT_EQ(Shown(out, "p_again"), "115");
}

// The first missing result settles the sum, but not what the other segments tell.
TEST(OutputsOfSegments, MissingResultOfOne_LeavesThoseOfTheOthers) {
  const std::string output = "<Output><OutputField name=\"two\" feature=\"predictedValue\" segmentId=\"2\"/></Output>";
  const Scorer scorer =
      Load(Ensemble("regression", output + Segmentation("sum", Segment(Linear("0", "x")) + Segment(Linear("2")))));
  const ValueRecord out = scorer.Score({});
  EXPECT_EQ(Shown(out, "prediction"), "null");
  EXPECT_EQ(Shown(out, "two"), "2");
}

// A derived field that only a later segment needs is there for the ensemble's own outputs.
TEST(OutputsOfSegments, DerivedFieldOfASegmentThatDoesntRun_IsComputedForOutputs) {
  const std::string derived = R"(<LocalTransformations><DerivedField name="d" optype="continuous" dataType="double">
<Apply function="+"><FieldRef field="x"/><Constant>1</Constant></Apply></DerivedField></LocalTransformations>)";
  const std::string output = "<Output>" + Refer("told", "d") + "</Output>";
  const std::string segments = Segment(Linear("0", "n")) + Segment(Linear("0", "d"));
  struct Row {
    const char* method;
    const char* further;
    Value n;
  };
  const Row rows[] = {{"selectFirst", "", 1.0},
                      {"selectFirst", "", kNull},
                      {"modelChain", "missingPredictionTreatment=\"returnMissing\"", kNull},
                      {"sum", "", kNull}};
  for (const Row& row : rows) {
    const Scorer scorer =
        Load(Ensemble("regression", output + derived + Segmentation(row.method, segments, row.further)));
    EXPECT_EQ(Shown(scorer.Score({{"x", 5.0}, {"n", row.n}}), "told"), "6") << row.method;
  }
}

TEST(OutputsOfSegments, ResidualInASegment_ReadsTheEnsemblesTarget) {
  Document document = Ensemble(
      "regression",
      Segmentation("modelChain",
                   Segment(Linear("1", "x",
                                  Schema(R"(<MiningField name="x"/><MiningField name="t" usageType="target"/>)") +
                                      "<Output><OutputField name=\"rest\" feature=\"residual\"/></Output>"))));
  const Scorer scorer = Load(document);
  EXPECT_EQ(Shown(scorer.Score({{"x", 2.0}, {"t", 5.0}}), "rest"), "2");
  EXPECT_EQ(Shown(scorer.Score({{"x", 2.0}}), "rest"), "null");
}

TEST(OutputsOfSegments, AskedExpression_SeesFieldsThatNoSegmentNeededYet) {
  const std::string twice = R"(<LocalTransformations><DerivedField name="D" optype="continuous" dataType="double">
      <Apply function="*"><FieldRef field="x"/><Constant>2</Constant></Apply></DerivedField></LocalTransformations>)";
  const std::string inner =
      Nested("regression", twice + Segmentation("selectFirst", Segment(Linear("1"), "", When("x", "lessThan", "0")) +
                                                                   Segment(Linear("0", "D"))));
  const Scorer scorer = Load(Ensemble(
      "regression", R"(<Output><OutputField name="o" segmentId="s" feature="transformedValue"><FieldRef field="D"/>
      </OutputField></Output>)" +
                        Segmentation("modelChain", Segment(inner, "id=\"s\""))));
  EXPECT_EQ(Shown(scorer.Score({{"x", -1.0}}), "o"), "-2");
}

TEST(OutputsOfSegments, OutputsInsideEnsemblesInside_ReachTheHost) {
  const std::string inner = Nested(
      "regression",
      Predicted("middle") + Segmentation("sum", Segment(Linear("1", "x", Predicted("deep"))) + Segment(Linear("10"))));
  const std::string segments = Segment(inner, "", When("n", "greaterThan", "0")) + Segment(Linear("0", "n"));
  const Scorer scorer = Load(Ensemble("regression", Segmentation("sum", segments)));
  const ValueRecord out = scorer.Score({{"x", 2.0}, {"n", 1.0}});
  EXPECT_EQ(Shown(out, "prediction"), "14");
  EXPECT_EQ(Shown(out, "middle"), "13");
  EXPECT_EQ(Shown(out, "deep"), "3");
  EXPECT_EQ(Shown(scorer.Score({{"x", 2.0}, {"n", -1.0}}), "deep"), "null");
}

// The model that is scored and those around `levels - 1` others.

}  // namespace
}  // namespace TorvaneTest
