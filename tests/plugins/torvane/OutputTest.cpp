#include <cmath>
#include <gtest/gtest.h>

#include "tests/plugins/torvane/ModelHarness.h"
#include "tests/support/CaseName.h"

namespace TorvaneTest {
namespace {

const Value kNull = Value::NULL_VALUE;

// --- Targets ---

struct AdjustCase {
  const char* name;
  const char* target;
  Value x;
  const char* expected;
};

class RegressionTarget : public testing::TestWithParam<AdjustCase> {};

TEST_P(RegressionTarget, Result_IsLimitedScaledAndRounded) {
  const AdjustCase& row = GetParam();
  Document document = Identity("x");
  document.body = "<Targets><Target field=\"t\" " + std::string(row.target) + "</Target></Targets>" + document.body;
  EXPECT_EQ(Shown(Load(document).Score({{"x", row.x}}), "prediction"), row.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Table, RegressionTarget,
    testing::Values(AdjustCase{"nothing", ">", 2.718, "2.718"}, AdjustCase{"min", R"(min="3">)", 2.0, "3"},
                    AdjustCase{"max", R"(max="1">)", 2.0, "1"},
                    AdjustCase{"limits_before_scaling", R"(max="1" rescaleFactor="10" rescaleConstant="0.5">)", 2.0,
                               "10.5"},
                    AdjustCase{"round", R"(castInteger="round">)", 2.718, "3"},
                    AdjustCase{"round_negative", R"(castInteger="round">)", -2.89, "-3"},
                    AdjustCase{"ceiling", R"(castInteger="ceiling">)", -1.2, "-1"},
                    AdjustCase{"floor", R"(castInteger="floor">)", -1.2, "-2"},
                    AdjustCase{"scaled_then_rounded", R"(rescaleFactor="0.5" castInteger="round">)", 3.0, "2"},
                    AdjustCase{"default", R"(rescaleFactor="10"><TargetValue defaultValue="7.5"/>)", kNull, "7.5"},
                    AdjustCase{"infinity_times_zero", R"(rescaleFactor="0">)", HUGE_VAL, "null"},
                    AdjustCase{"infinity_limited", R"(max="4" rescaleFactor="0">)", HUGE_VAL, "0"},
                    AdjustCase{"no_default", ">", kNull, "null"}),
    KelTest::CaseName());

TEST(RegressionTarget, InvalidInput_IsNotReplacedByTheDefault) {
  Document document = Identity("x");
  document.body = R"(<Targets><Target field="t"><TargetValue defaultValue="7.5"/></Target></Targets>)" + document.body;
  EXPECT_TRUE(Load(document).Predict({{"x", "abc"}}).IsNull());
}

const char* const kPriors =
    R"(<Targets><Target field="y"><TargetValue value="yes" displayValue="Yes!" priorProbability="0.2"/>
<TargetValue value="no" priorProbability="0.6"/></Target></Targets>)";

TEST(ClassificationTarget, MissingResult_IsPredictedFromPriorProbabilities) {
  const Scorer scorer = Load({.attributes = R"(missingValueStrategy="nullPrediction")",
                              .body = kPriors + std::string(R"(<Node><True/><Node score="yes">
      <SimplePredicate field="x" operator="lessThan" value="1"/></Node></Node>)")});
  const auto out = scorer.Score({});
  EXPECT_EQ(Shown(out, "prediction"), "no");
  EXPECT_DOUBLE_EQ(Probability(out, "no"), 0.75);  // the priors are brought to the sum 1
  EXPECT_DOUBLE_EQ(Probability(out, "yes"), 0.25);
  EXPECT_EQ(Shown(out, "tree-nodeid"), "null");
  EXPECT_EQ(Shown(scorer.Score({{"x", 0.0}}), "prediction"), "yes");
}

TEST(ClassificationTarget, NumericAndBooleanCategories_KeepTheirType) {
  const auto predict = [](const std::string& dataType, const std::string& score) {
    Document document{.body = "<Node score=\"" + score + "\"><True/></Node>"};
    document.dictionary = "<DataField name=\"y\" optype=\"categorical\" dataType=\"" + dataType + "\"/>";
    document.schema = "";
    return Load(document).Score({});
  };
  const auto integer = predict("integer", "1");
  EXPECT_EQ(integer.At(integer.IndexOf("prediction")).GetType(), Value::kNumber);
  EXPECT_EQ(Probability(predict("double", "1.0"), "1"), 1.0);
  const auto boolean = predict("boolean", "1");
  EXPECT_EQ(boolean.At(boolean.IndexOf("prediction")).Text(), "true");
  EXPECT_EQ(Probability(boolean, "true"), 1.0);
}

// --- Outputs ---

// P(yes) = 0.25, P(no) = 0.75.
Document Leaf(const std::string& outputs) {
  return {.body = "<Output>" + outputs + R"(</Output><Node id="leaf" recordCount="8"><True/>
      <ScoreDistribution value="yes" recordCount="2"/><ScoreDistribution value="no" recordCount="6" confidence="0.5"/></Node>)"};
}

struct FeatureCase {
  const char* name;
  const char* attributes;
  const char* expected;
};

class Feature : public testing::TestWithParam<FeatureCase> {};

TEST_P(Feature, OutputField_GivesWhatItNames) {
  const Scorer scorer = Load(Leaf("<OutputField name=\"out\" " + std::string(GetParam().attributes) + "/>"));
  EXPECT_EQ(Shown(scorer.Score({{"y", "no"}}), "out"), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Table, Feature,
    testing::Values(
        FeatureCase{"no_feature", "", "no"},
        FeatureCase{"predicted_value", R"(feature="predictedValue" targetField="y")", "no"},
        FeatureCase{"display_value", R"(feature="predictedDisplayValue")", "rather not"},
        FeatureCase{"probability_of_the_prediction", R"(feature="probability")", "0.75"},
        FeatureCase{"probability_of_a_category", R"(feature="probability" value="yes" datatype="xs:double")", "0.25"},
        FeatureCase{"probability_of_a_silent_category", R"(feature="probability" value="maybe")", "0"},
        FeatureCase{"probability_of_an_unknown_category", R"(feature="probability" value="perhaps")", "null"},
        FeatureCase{"probability_as_text", R"(feature="probability" dataType="string")", "0.75"},
        FeatureCase{"probability_as_integer", R"(feature="probability" dataType="integer")", "null"},
        FeatureCase{"confidence", R"(feature="confidence")", "0.5"},
        FeatureCase{"confidence_of_a_category", R"(feature="confidence" value="yes")", "0.25"},
        FeatureCase{"entity", R"(feature="entityId" rank="1")", "leaf"},
        FeatureCase{"residual_of_the_prediction", R"(feature="residual")", "0.25"},
        FeatureCase{"residual_of_a_category", R"(feature="residual" value="yes")", "-0.25"},
        FeatureCase{"standard_error", R"(feature="standardError")", "null"},
        FeatureCase{"warning", R"(feature="warning")", "null"}),
    KelTest::CaseName());

TEST(Feature, Residual_WithoutTheTrueValueOrWithAnInvalidOne_IsMissingAlone) {
  const Scorer scorer = Load(Leaf(R"(<OutputField name="r" feature="residual"/>)"));
  EXPECT_EQ(Shown(scorer.Score({}), "r"), "null");
  EXPECT_EQ(Shown(scorer.Score({{"y", "nonsense"}}), "r"), "null");
  EXPECT_EQ(Shown(scorer.Score({{"y", "nonsense"}}), "prediction"), "no");
  Document regression = Identity("x");
  regression.body = R"(<Output><OutputField name="r" feature="residual"/></Output>)" + regression.body;
  EXPECT_EQ(Number(Load(regression).Score({{"x", 0.5}, {"t", 3.0}}), "r"), 2.5);
}

TEST(Expression, MayReferToFieldsAndToOutputsBeforeIt) {
  const Scorer scorer = Load(Leaf(R"(<OutputField name="p" feature="probability"/>
      <OutputField name="scaled" feature="transformedValue" dataType="double"><NormContinuous field="p">
        <LinearNorm orig="0" norm="0"/><LinearNorm orig="1" norm="100"/></NormContinuous></OutputField>
      <OutputField name="answer" feature="predictedValue"/><OutputField name="node" feature="entityId"/>
      <OutputField name="copy"><FieldRef field="answer"/></OutputField>
      <OutputField name="which"><FieldRef field="node"/></OutputField>
      <OutputField name="input" feature="transformedValue"><FieldRef field="x"/></OutputField>
      <OutputField name="advice" feature="decision"><Decisions><Decision value="1"/></Decisions>
        <NormDiscrete field="copy" value="no"/></OutputField>)"));
  const auto out = scorer.Score({{"x", 4.5}});
  EXPECT_EQ(Number(out, "scaled"), 75.0);
  EXPECT_EQ(Shown(out, "copy"), "no");
  EXPECT_EQ(Shown(out, "which"), "leaf");
  EXPECT_EQ(Number(out, "input"), 4.5);
  EXPECT_EQ(Number(out, "advice"), 1.0);
}

TEST(Expression, OfFunctions_MakesTextsAndKnowsThemAsCategories) {
  const Scorer scorer = Load(Leaf(R"(<OutputField name="answer" feature="predictedValue"/>
      <OutputField name="loud" dataType="string"><Apply function="uppercase"><FieldRef field="answer"/></Apply></OutputField>
      <OutputField name="isNo" dataType="double"><NormDiscrete field="loud" value="NO"/></OutputField>
      <OutputField name="advice" dataType="string"><Apply function="if"><Apply function="greaterThan">
        <FieldRef field="x"/><Constant>4</Constant></Apply><FieldRef field="loud"/><Constant>wait</Constant></Apply>
      </OutputField>)"));
  const auto out = scorer.Score({{"x", 4.5}});
  EXPECT_EQ(Shown(out, "loud"), "NO");
  EXPECT_EQ(Number(out, "isNo"), 1.0);
  EXPECT_EQ(Shown(out, "advice"), "NO");
  EXPECT_EQ(Shown(scorer.Score({{"x", 3.5}}), "advice"), "wait");
}

// In PMML 4.1 the attribute replaces a missing result, later on missing arguments.
TEST(Expression, MapMissingTo_MeansWhatTheVersionOfTheDocumentSays) {
  const char* const outputs = R"(<OutputField name="o" dataType="double"><Apply function="sum" mapMissingTo="-1">
      <FieldRef field="x"/><Constant>2</Constant></Apply></OutputField>)";
  Document document = Leaf(outputs);
  document.version = "4.1";
  EXPECT_EQ(Number(Load(document).Score({}), "o"), 2.0);
  document.version = "4.2";
  EXPECT_EQ(Number(Load(document).Score({}), "o"), -1.0);
}

// Names that the vocabulary keeps for itself were once read before they were written.
TEST(Expression, MayReferToAFieldWhoseNameTheVocabularyKeeps) {
  const auto out = Load(Leaf(R"(<OutputField name="probability" feature="probability" value="yes"/>
      <OutputField name="copy"><FieldRef field="probability"/></OutputField>)"))
                       .Score({});
  EXPECT_EQ(Number(out, "copy"), 0.25);
}

TEST(Expression, EntityAsANumber_IsOne) {
  Document document = Leaf(R"(<OutputField name="e" feature="entityId" dataType="integer"/>
      <OutputField name="copy" dataType="double"><FieldRef field="e"/></OutputField>)");
  document.body.replace(document.body.find("\"leaf\""), 6, "\"17\"");
  const auto out = Load(document).Score({});
  EXPECT_EQ(Number(out, "e"), 17.0);
  EXPECT_EQ(Number(out, "copy"), 17.0);
}

TEST(Expression, OutputWithTheNameOfAnInput_LeavesTheInputInPlace) {
  const auto out = Load(Leaf(R"(<OutputField name="x" feature="probability"/>
      <OutputField name="copy"><FieldRef field="x"/></OutputField>)"))
                       .Score({{"x", 4.5}});
  EXPECT_EQ(Number(out, "x"), 0.75);
  EXPECT_EQ(Number(out, "copy"), 4.5);
}

TEST(Expression, InvalidRecord_GivesNullOutputsOnly) {
  const Scorer scorer = Load(Leaf(R"(<OutputField name="c"><Constant dataType="double">4</Constant></OutputField>)"));
  EXPECT_EQ(Number(scorer.Score({}), "c"), 4.0);
  const auto out = scorer.Score({{"x", "abc"}});
  EXPECT_EQ(Shown(out, "c"), "null");
  EXPECT_EQ(Shown(out, "prediction"), "null");
  EXPECT_TRUE(out.At(out.IndexOf("probcategory")).Members()->At(0).IsNull());
}

TEST(Outputs, OnlyThoseThatTheRecordNames_AreWritten) {
  const Scorer scorer = Load(Leaf(R"(<OutputField name="p" feature="probability"/>)"));
  ValueRecord out = Record({{"foreign", 5.0}, {"p", kNull}});
  ASSERT_TRUE(scorer.scorer->Score(Record({}), out).IsOK());
  EXPECT_EQ(out.Size(), 2);
  EXPECT_EQ(Number(out, "foreign"), 5.0);
  EXPECT_EQ(Number(out, "p"), 0.75);
}

TEST(Outputs, NamesOfTheVocabulary_ServeTheLibraryFirst) {
  const auto out = Load(Leaf(R"(<OutputField name="probability" feature="probability" value="yes"/>
      <OutputField name="confidence" feature="confidence" value="yes"/>)"))
                       .Score({});
  EXPECT_EQ(Number(out, "probability"), 0.75);  // a propensity is worked out from it
  EXPECT_EQ(Number(out, "confidence"), 0.25);
}

TEST(Scorable, ListsWhatTheModelGives) {
  ValueRecord tree(2);
  ASSERT_TRUE(Load(Leaf(R"(<OutputField name="p" feature="probability"/>)")).scorer->Scorable(tree).IsOK());
  EXPECT_EQ(tree.Names(true),
            (std::vector<std::string>{"prediction", "probability", "probcategory", "confidence", "tree-nodeid", "p"}));
  EXPECT_EQ(tree.At(2).Members()->Names(true), (std::vector<std::string>{"yes", "no", "maybe"}));
  ValueRecord regression(2);
  ASSERT_TRUE(Load(Identity("x")).scorer->Scorable(regression).IsOK());
  EXPECT_EQ(regression.Names(true), std::vector<std::string>{"prediction"});
}

struct RefusalCase {
  const char* name;
  Document document;
  const char* reason;
};

class OutputRefusal : public testing::TestWithParam<RefusalCase> {};

TEST_P(OutputRefusal, Document_IsRefusedWithAReason) {
  EXPECT_NE(ReasonOf(GetParam().document).find(GetParam().reason), std::string::npos) << ReasonOf(GetParam().document);
}

Document WithOutput(const std::string& attributes) { return Leaf("<OutputField name=\"out\" " + attributes + "/>"); }

Document Numeric(const std::string& inside) {
  Document document = Identity("x");
  document.body = inside + document.body;
  return document;
}

INSTANTIATE_TEST_SUITE_P(
    Table, OutputRefusal,
    testing::Values(
        RefusalCase{"cluster", WithOutput(R"(feature="clusterId")"), "isn't known to this kind of model"},
        RefusalCase{"rule", WithOutput(R"(feature="ruleValue")"), "feature=\"ruleValue\""},
        RefusalCase{"affinity", WithOutput(R"(feature="affinity")"), "feature"},
        RefusalCase{"no_name", Leaf("<OutputField/>"), "name"},
        RefusalCase{"name_twice", Leaf(R"(<OutputField name="a"/><OutputField name="a"/>)"), "stands there twice"},
        RefusalCase{"prediction_twice", Leaf(R"(<OutputField name="prediction"/><OutputField name="prediction"/>)"),
                    "stands there twice"},
        RefusalCase{"data_type", WithOutput(R"(dataType="complex")"), "is no data type"},
        RefusalCase{"segment", WithOutput(R"(segmentId="1")"), "needs segments"},
        RefusalCase{"other_target", WithOutput(R"(targetField="t")"), "isn't the target"},
        RefusalCase{"second_best", WithOutput(R"(feature="entityId" rank="2")"), "rank"},
        RefusalCase{"second_prediction", WithOutput(R"(feature="predictedValue" rank="2")"), "a record has one only"},
        RefusalCase{"second_display", WithOutput(R"(feature="predictedDisplayValue" rank="2")"), "rank"},
        RefusalCase{"second_probability", WithOutput(R"(feature="probability" rank="2")"), "rank"},
        RefusalCase{"second_confidence", WithOutput(R"(feature="confidence" rank="2")"), "rank"},
        RefusalCase{"no_rank", WithOutput(R"(rank="0")"), "isn't from 1 on"},
        RefusalCase{"order", WithOutput(R"(feature="entityId" rankOrder="ascending")"), "isn't one of: descending"},
        RefusalCase{"entity_of_a_value", WithOutput(R"(feature="entityId" value="leaf")"), "has no meaning"},
        RefusalCase{"many_values", WithOutput(R"(isMultiValued="1")"), "isMultiValued"},
        RefusalCase{"order_of_its_own", Leaf(R"(<OutputField name="o" optype="ordinal" dataType="integer">
                        <Value value="3"/><Value value="1"/></OutputField>)"),
                    "isn't above the one before"},
        RefusalCase{"no_expression", WithOutput(R"(feature="transformedValue")"), "has no expression"},
        RefusalCase{"misplaced_expression",
                    Leaf(R"(<OutputField name="o" feature="probability"><FieldRef field="x"/></OutputField>)"),
                    "transformedValue"},
        RefusalCase{"later_output",
                    Leaf(R"(<OutputField name="o"><FieldRef field="p"/></OutputField><OutputField name="p"/>)"),
                    "no such field"},
        RefusalCase{"unknown_function",
                    Leaf(R"(<OutputField name="o"><Apply function="log2"><FieldRef field="x"/></Apply></OutputField>)"),
                    "<Apply function=\"log2\">"},
        RefusalCase{"probability_of_a_number",
                    Numeric(R"(<Output><OutputField name="o" feature="probability"/></Output>)"),
                    "needs a classification"},
        RefusalCase{"entity_of_a_regression", Numeric(R"(<Output><OutputField name="o" feature="entityId"/></Output>)"),
                    "isn't known to this kind"},
        RefusalCase{"target_of_another_field", Numeric(R"(<Targets><Target field="s"/></Targets>)"),
                    "isn't the target"},
        RefusalCase{"target_twice", Numeric(R"(<Targets><Target field="t"/><Target/></Targets>)"), "is a second one"},
        RefusalCase{"limits", Numeric(R"(<Targets><Target field="t" min="2" max="1"/></Targets>)"), "is above max"},
        RefusalCase{"limit_nan", Numeric(R"(<Targets><Target field="t" min="NaN"/></Targets>)"), "isn't finite"},
        RefusalCase{"factor_infinite", Numeric(R"(<Targets><Target field="t" rescaleFactor="INF"/></Targets>)"),
                    "isn't finite"},
        RefusalCase{"default_nan",
                    Numeric(R"(<Targets><Target field="t"><TargetValue defaultValue="NaN"/></Target></Targets>)"),
                    "isn't finite"},
        RefusalCase{"boolean_two",
                    Document{.body = R"(<Node score="true"><True/><Node score="2"><True/></Node></Node>)",
                             .schema = "",
                             .dictionary = R"(<DataField name="y" optype="categorical" dataType="boolean"/>)"},
                    "'2' is no value of its type"},
        RefusalCase{"date_beyond_the_calendar",
                    Document{.body = R"(<Node score="1e300"><True/></Node>)",
                             .schema = "",
                             .dictionary = R"(<DataField name="y" optype="categorical" dataType="date"/>)"},
                    "'1e300'"},
        RefusalCase{"cast", Numeric(R"(<Targets><Target field="t" castInteger="up"/></Targets>)"),
                    "round, ceiling, floor"},
        RefusalCase{
            "category_twice",
            Document{
                .body =
                    R"(<Targets><Target field="y"><TargetValue value="yes"/><TargetValue value="yes"/></Target></Targets><Node score="yes"><True/></Node>)"},
            "stands there twice"},
        RefusalCase{"prior_of_a_number",
                    Numeric(R"(<Targets><Target field="t"><TargetValue priorProbability="7"/></Target></Targets>)"),
                    "between 0 and 1"},
        RefusalCase{
            "prior",
            Document{
                .body =
                    R"(<Targets><Target field="y"><TargetValue value="yes" priorProbability="2"/></Target></Targets><Node score="yes"><True/></Node>)"},
            "between 0 and 1"}),
    KelTest::CaseName());

}  // namespace
}  // namespace TorvaneTest
