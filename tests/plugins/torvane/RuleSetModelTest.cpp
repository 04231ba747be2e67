#include <gtest/gtest.h>

#include "tests/plugins/torvane/ModelHarness.h"
#include "tests/support/CaseName.h"

namespace TorvaneTest {
namespace {

const Value kNull = Value::NULL_VALUE;

Document RuleSet(const std::string& criterion, const std::string& rules, const std::string& attributes = "") {
  return {.kind = "RuleSetModel",
          .body = "<RuleSet " + attributes + "><RuleSelectionMethod criterion=\"" + criterion + "\"/>" + rules +
                  "</RuleSet>"};
}

std::string Above(const std::string& limit) {
  return "<SimplePredicate field=\"x\" operator=\"greaterThan\" value=\"" + limit + "\"/>";
}

std::string Rule(const std::string& attributes, const std::string& inside) {
  return "<SimpleRule " + attributes + ">" + inside + "</SimpleRule>";
}

std::string Compound(const std::string& inside) { return "<CompoundRule>" + inside + "</CompoundRule>"; }

std::string Records(const std::string& category, const std::string& count) {
  return "<ScoreDistribution value=\"" + category + "\" recordCount=\"" + count + "\"/>";
}

// The rule set of the standard's text, with other names: "no" fires with 0.9, "yes" with 0.6 and with 0.36.
const std::string kDrugs =
    Compound("<SimplePredicate field=\"s\" operator=\"equal\" value=\"a\"/>" +
             Compound(Above("1") + Rule(R"(id="RULE1" score="no" confidence="0.9" weight="0.9")", Above("2")) +
                      Rule(R"(id="RULE2" score="yes" confidence="0.6" weight="0.6")", Above("3"))) +
             Rule(R"(id="RULE3" score="yes" confidence="0.36" weight="0.36")", Above("0")));
const char* const kDefault = R"(defaultScore="maybe" defaultConfidence="0.25")";

struct CriterionCase {
  const char* name;
  const char* prediction;
  const char* entity;
  double confidences[3];  // of yes, no and maybe
};

// By hand: weightedSum gives "yes" 0.6 + 0.36 and "no" 0.9, each divided by the three rules that fire.
const CriterionCase kCriteria[] = {
    {"firstHit", "no", "RULE1", {0.6, 0.9, 0.0}},
    {"weightedMax", "no", "RULE1", {0.6, 0.9, 0.0}},
    {"weightedSum", "yes", "RULE2", {0.32, 0.3, 0.0}},
};

const char* const kConfidences = R"(<Output><OutputField name="cy" feature="confidence" value="yes"/>
<OutputField name="cn" feature="confidence" value="no"/><OutputField name="cm" feature="confidence" value="maybe"/>
<OutputField name="id" feature="entityId"/></Output>)";

Document WithConfidences(Document document) {
  document.body = kConfidences + document.body;
  return document;
}

class RuleSetCriterion : public testing::TestWithParam<CriterionCase> {};

TEST_P(RuleSetCriterion, AllRulesFire_ScoreAndConfidencesFollowTheCriterion) {
  const CriterionCase& row = GetParam();
  const auto out = Load(WithConfidences(RuleSet(row.name, kDrugs, kDefault))).Score({{"s", "a"}, {"x", 4.0}});
  EXPECT_EQ(Shown(out, "prediction"), row.prediction);
  EXPECT_EQ(Shown(out, "ruleset-idfire"), row.entity);
  EXPECT_EQ(Shown(out, "id"), row.entity);
  EXPECT_DOUBLE_EQ(Number(out, "cy"), row.confidences[0]);
  EXPECT_DOUBLE_EQ(Number(out, "cn"), row.confidences[1]);
  EXPECT_EQ(Number(out, "cm"), row.confidences[2]);
  const double predicted = row.prediction == std::string("no") ? row.confidences[1] : row.confidences[0];
  EXPECT_DOUBLE_EQ(Number(out, "confidence"), predicted);
  EXPECT_DOUBLE_EQ(Number(out, "probability"), predicted);
}

TEST_P(RuleSetCriterion, OnlyThePredictionIsAskedFor_ItIsTheSame) {
  const Scorer scorer = Load(RuleSet(GetParam().name, kDrugs, kDefault));
  for (const double x : {-1.0, 0.5, 1.5, 2.5, 4.0}) {
    ValueRecord out = Record({{"prediction", kNull}, {"ruleset-idfire", kNull}});
    ASSERT_TRUE(scorer.scorer->Score(Record({{"s", "a"}, {"x", x}}), out).IsOK());
    const auto all = scorer.Score({{"s", "a"}, {"x", x}});
    EXPECT_EQ(Shown(out, "prediction"), Shown(all, "prediction")) << x;
    EXPECT_EQ(Shown(out, "ruleset-idfire"), Shown(all, "ruleset-idfire")) << x;
  }
}

TEST_P(RuleSetCriterion, NoRuleFires_TheDefaultHolds) {
  const Scorer scorer = Load(WithConfidences(RuleSet(GetParam().name, kDrugs, kDefault)));
  for (const Value& x : {Value(-1.0), kNull}) {  // false and unknown alike
    const auto out = scorer.Score({{"s", "a"}, {"x", x}});
    EXPECT_EQ(Shown(out, "prediction"), "maybe");
    EXPECT_EQ(Shown(out, "ruleset-idfire"), "null");
    EXPECT_EQ(Number(out, "cm"), 0.25);
    EXPECT_EQ(Number(out, "cy"), 0.0);
    EXPECT_EQ(Number(out, "probability"), 0.25);
  }
}

TEST_P(RuleSetCriterion, NoRuleFiresAndNoDefault_PriorsStepIn) {
  Document document = RuleSet(GetParam().name, kDrugs);
  EXPECT_EQ(Shown(Load(document).Score({}), "prediction"), "null");
  document.body =
      R"(<Targets><Target field="y"><TargetValue value="no" priorProbability="1"/></Target></Targets>)" + document.body;
  EXPECT_EQ(Shown(Load(document).Score({}), "prediction"), "no");
}

INSTANTIATE_TEST_SUITE_P(Table, RuleSetCriterion, testing::ValuesIn(kCriteria), KelTest::CaseName());

TEST(RuleSet, SeveralMethods_TheFirstOneIsUsed) {
  const std::string others =
      R"(<RuleSelectionMethod criterion="weightedMax"/><RuleSelectionMethod criterion="firstHit"/>)";
  EXPECT_EQ(Shown(Load(RuleSet("weightedSum", others + kDrugs)).Score({{"s", "a"}, {"x", 4.0}}), "prediction"), "yes");
}

TEST(RuleSet, DefaultWithoutConfidence_HasAScoreOnly) {
  const auto out = Load(RuleSet("firstHit", kDrugs, R"(defaultScore="maybe")")).Score({});
  EXPECT_EQ(Shown(out, "prediction"), "maybe");
  EXPECT_EQ(Shown(out, "confidence"), "null");
  EXPECT_EQ(Shown(out, "probability"), "null");
}

// A rule counts if all predicates around it are true, whatever became of the rules before it.
TEST(RuleSet, CompoundRules_GuardTheirRulesAtAnyDepth) {
  const std::string rules =
      Compound(Above("5") + Rule(R"(id="1" score="yes")", "<False/>") +
               Compound(Above("6") + Rule(R"(id="2" score="yes")", Above("8"))) +
               Compound(Above("7") + Compound("<True/>" + Rule(R"(id="3" score="yes")", "<True/>")))) +
      Compound(Above("1") + Rule(R"(id="4" score="no")", Above("2"))) + Rule(R"(id="5" score="maybe")", Above("0"));
  const Scorer scorer = Load(RuleSet("firstHit", rules));
  const auto fired = [&](double x) { return Shown(scorer.Score({{"x", x}}), "ruleset-idfire"); };
  EXPECT_EQ(fired(9.0), "2");
  EXPECT_EQ(fired(7.5), "3");
  EXPECT_EQ(fired(6.5), "4");
  EXPECT_EQ(fired(1.5), "5");
  EXPECT_EQ(fired(-1.0), "null");
}

TEST(RuleSet, JoinedPredicates_MustAllBeTrue) {
  const auto both = [](const std::string& connective, const std::string& a, const std::string& b) {
    return "<CompoundPredicate booleanOperator=\"" + connective + "\">" + a + b + "</CompoundPredicate>";
  };
  const std::string isA = R"(<SimplePredicate field="s" operator="equal" value="a"/>)";
  const std::string rules =
      Compound(both("and", Above("0"), both("or", isA, Above("5"))) +
               Rule(R"(id="1" score="yes")", both("and", both("and", Above("1"), isA), Above("2"))) +
               Rule(R"(id="2" score="no")", "<True/>")) +
      Rule(R"(id="3" score="maybe")", both("and", isA, "<True/>"));
  const Scorer scorer = Load(RuleSet("firstHit", rules));
  const auto fired = [&](const Value& x, const Value& s) {
    return Shown(scorer.Score({{"x", x}, {"s", s}}), "ruleset-idfire");
  };
  EXPECT_EQ(fired(3.0, "a"), "1");
  EXPECT_EQ(fired(1.5, "a"), "2");
  EXPECT_EQ(fired(6.0, kNull), "2");
  EXPECT_EQ(fired(3.0, "b"), "null");
  EXPECT_EQ(fired(-1.0, "a"), "3");
  EXPECT_EQ(fired(kNull, "a"), "3");
}

TEST(RuleSet, RulesNestedVeryDeep_AreReadAndScored) {
  constexpr int kDepth = 5000;
  std::string rules;
  for (int i = 0; i < kDepth; ++i) rules += "<CompoundRule><True/>";
  rules += Rule(R"(score="yes")", Above("0"));
  for (int i = 0; i < kDepth; ++i) rules += "</CompoundRule>";
  const Scorer scorer = Load(RuleSet("weightedMax", rules + Rule(R"(score="no" weight="0.5")", "<True/>")));
  EXPECT_EQ(Shown(scorer.Score({{"x", 1.0}}), "prediction"), "yes");
  EXPECT_EQ(Shown(scorer.Score({{"x", 0.0}}), "prediction"), "no");
}

TEST(RuleSet, UnknownPredicate_DoesNotFire) {
  const std::string rules = Rule(R"(id="1" score="yes")", R"(<CompoundPredicate booleanOperator="and">)" + Above("0") +
                                                              "<True/></CompoundPredicate>") +
                            Rule(R"(id="2" score="no")", R"(<SimplePredicate field="x" operator="isMissing"/>)");
  EXPECT_EQ(Shown(Load(RuleSet("firstHit", rules)).Score({}), "ruleset-idfire"), "2");
}

TEST(RuleSet, EqualWeights_TheEarlierRuleAndTheEarlierCategoryWin) {
  const std::string rules = Rule(R"(id="1" score="no" weight="2")", "<True/>") +
                            Rule(R"(id="2" score="yes" weight="1")", "<True/>") +
                            Rule(R"(id="3" score="yes" weight="1")", "<True/>");
  EXPECT_EQ(Shown(Load(RuleSet("weightedMax", rules)).Score({}), "ruleset-idfire"), "1");
  const auto sums = Load(RuleSet("weightedSum", rules)).Score({});
  EXPECT_EQ(Shown(sums, "prediction"), "yes");  // the dictionary has it before "no"
  EXPECT_EQ(Shown(sums, "ruleset-idfire"), "2");
}

// Producers of 3.2 and 4.0 write neither weights nor identifiers.
TEST(RuleSet, AbsentWeightConfidenceAndIdentifier_AreOneAndThePosition) {
  const std::string rules =
      Rule(R"(score="no" weight="0.5")", "<True/>") + Compound("<True/>" + Rule(R"(score="yes")", "<True/>"));
  Document document = RuleSet("weightedMax", rules);
  document.version = "3.2";
  const auto out = Load(document).Score({});
  EXPECT_EQ(Shown(out, "ruleset-idfire"), "2");
  EXPECT_EQ(Number(out, "confidence"), 1.0);
}

TEST(RuleSet, ScoreDistribution_SharesWhatTheConfidenceLeaves) {
  const std::string rules = Rule(R"(score="no" confidence="0.8")",
                                 Above("0") + Records("no", "76") + Records("yes", "3") + Records("maybe", "1")) +
                            Rule(R"(score="yes" confidence="0.5")",
                                 R"(<True/><ScoreDistribution value="no" recordCount="9" probability="0.1"/>
           <ScoreDistribution value="maybe" recordCount="1" probability="0.3"/>)");
  const Scorer scorer = Load(RuleSet("firstHit", rules));
  const auto counts = scorer.Score({{"x", 1.0}});
  EXPECT_DOUBLE_EQ(Probability(counts, "no"), 0.8);
  EXPECT_DOUBLE_EQ(Probability(counts, "yes"), 0.2 * 3 / 4);
  EXPECT_DOUBLE_EQ(Probability(counts, "maybe"), 0.2 * 1 / 4);
  const auto given = scorer.Score({{"x", 0.0}});
  EXPECT_DOUBLE_EQ(Probability(given, "no"), 0.5 * 0.25);
  EXPECT_DOUBLE_EQ(Probability(given, "maybe"), 0.5 * 0.75);
}

TEST(RuleSet, FiguresAboveOne_AreConfidencesButNoProbabilities) {
  const char* const percent = R"(score="no" confidence="90" weight="0.5")";
  const auto hit = Load(RuleSet("firstHit", Rule(percent, "<True/>"))).Score({});
  EXPECT_EQ(Number(hit, "confidence"), 90.0);
  EXPECT_FALSE(hit.Contains("probability"));
  EXPECT_EQ(Number(Load(RuleSet("weightedSum", Rule(percent, "<True/>"))).Score({}), "probability"), 0.5);
  const auto sum = Load(RuleSet("weightedSum", Rule(R"(score="no" weight="3")", "<True/>"))).Score({});
  EXPECT_EQ(Number(sum, "confidence"), 3.0);
  EXPECT_FALSE(sum.Contains("probcategory"));
}

TEST(RuleSet, Regression_GivesTheNumberOfTheRule) {
  const std::string rules =
      Rule(R"(id="a" score="1.5" weight="0.5")", Above("0")) + Rule(R"(id="b" score="-2e3")", Above("1"));
  Document document = RuleSet("firstHit", rules, R"(defaultScore="7")");
  document.function = "regression";
  const Scorer first = Load(document);
  EXPECT_EQ(Number(first.Score({{"x", 2.0}}), "prediction"), 1.5);
  EXPECT_EQ(Shown(first.Score({{"x", 2.0}}), "ruleset-idfire"), "a");
  EXPECT_EQ(Number(first.Score({}), "prediction"), 7.0);
  document.body.replace(document.body.find("firstHit"), 8, "weightedMax");
  EXPECT_EQ(Number(Load(document).Score({{"x", 2.0}}), "prediction"), -2000.0);
}

// --- Refusals ---

struct RefusalCase {
  const char* name;
  Document document;
  const char* reason;
};

class RuleSetRefusal : public testing::TestWithParam<RefusalCase> {};

TEST_P(RuleSetRefusal, Document_IsRefusedWithAReason) {
  const std::string reason = ReasonOf(GetParam().document);
  EXPECT_NE(reason.find(GetParam().reason), std::string::npos) << reason;
}

Document Plain(const std::string& rules, const std::string& attributes = "") {
  return RuleSet("firstHit", rules, attributes);
}

Document Numeric(const std::string& criterion, const std::string& score) {
  Document document = RuleSet(criterion, Rule("score=\"" + score + "\"", "<True/>"));
  document.function = "regression";
  return document;
}

const std::string kYes = Rule(R"(score="yes")", "<True/>");

INSTANTIATE_TEST_SUITE_P(
    Table, RuleSetRefusal,
    testing::Values(
        RefusalCase{"no_rule_set", Document{.kind = "RuleSetModel"}, "RuleSet"},
        RefusalCase{"second_rule_set", Document{.kind = "RuleSetModel", .body = Plain(kYes).body + "<RuleSet/>"},
                    "is a second"},
        RefusalCase{"no_method", Document{.kind = "RuleSetModel", .body = "<RuleSet>" + kYes + "</RuleSet>"},
                    "RuleSelectionMethod"},
        RefusalCase{"unknown_method", RuleSet("bestHit", kYes), "weightedMax"},
        RefusalCase{"unknown_second_method", Plain("<RuleSelectionMethod criterion=\"any\"/>" + kYes),
                    "criterion=\"any\""},
        RefusalCase{"unknown_element", Plain(kYes + "<Rule/>"), "is not supported in <RuleSet>"},
        RefusalCase{"no_score", Plain(Rule("", "<True/>")), "score"},
        RefusalCase{"no_predicate", Plain(Rule(R"(score="yes")", "")), "has no predicate"},
        RefusalCase{"empty_predicate", Plain(Rule(R"(score="yes")", R"(<CompoundPredicate booleanOperator="and"/>)")),
                    "holds no predicate"},
        RefusalCase{
            "joined_elements",
            Plain(Rule(R"(score="yes")", R"(<CompoundPredicate booleanOperator="and"><Rule/></CompoundPredicate>)")),
            "is no predicate"},
        RefusalCase{"two_predicates", Plain(Rule(R"(score="yes")", "<True/><True/>")), "is a second predicate"},
        RefusalCase{"rule_in_a_rule", Plain(Rule(R"(score="yes")", "<True/>" + kYes)),
                    "is not supported in <SimpleRule>"},
        RefusalCase{"compound_without_rules", Plain(Compound("<True/>")), "has no rules"},
        RefusalCase{"compound_without_predicate", Plain(Compound(kYes)), "has no predicate"},
        RefusalCase{"unknown_field",
                    Plain(Rule(R"(score="yes")", R"(<SimplePredicate field="z" operator="isMissing"/>)")),
                    "no field \"z\""},
        RefusalCase{"weight_nan", Plain(Rule(R"(score="yes" weight="NaN")", "<True/>")), "isn't finite"},
        RefusalCase{"confidence_infinite", Plain(Rule(R"(score="yes" confidence="INF")", "<True/>")), "isn't finite"},
        RefusalCase{"confidence_text", Plain(Rule(R"(score="yes" confidence="high")", "<True/>")),
                    "confidence=\"high\""},
        RefusalCase{"default_confidence", Plain(kYes, R"(defaultConfidence="x")"), "defaultConfidence"},
        RefusalCase{"distribution_twice",
                    Plain(Rule(R"(score="yes")", "<True/>" + Records("no", "1") + Records("no", "2"))),
                    "stands there twice"},
        RefusalCase{"distribution_negative", Plain(Rule(R"(score="yes")", "<True/>" + Records("no", "-1"))),
                    "is below 0"},
        RefusalCase{"score_text", Numeric("firstHit", "high"), "score=\"high\""},
        RefusalCase{"score_infinite", Numeric("firstHit", "INF"), "isn't finite"},
        RefusalCase{"sum_of_numbers", Numeric("weightedSum", "1"), "has no meaning for a regression"}),
    KelTest::CaseName());

}  // namespace
}  // namespace TorvaneTest
