#include <gtest/gtest.h>

#include "tests/plugins/torvane/ModelHarness.h"
#include "tests/support/CaseName.h"

namespace TorvaneTest {
namespace {

const Value kNull = Value::NULL_VALUE;

// A tree that answers "yes", "no" or nothing, as the predicate is true, false or unknown.
Document Asking(const std::string& predicate) {
  return {.attributes = R"(missingValueStrategy="nullPrediction")",
          .body = "<Node><True/><Node score=\"yes\">" + predicate + "</Node><Node score=\"no\"><True/></Node></Node>"};
}

std::string Simple(const std::string& field, const std::string& operation, const std::string& value) {
  const std::string attribute = value.empty() ? "" : "value=\"" + value + "\"";
  return "<SimplePredicate field=\"" + field + "\" operator=\"" + operation + "\" " + attribute + "/>";
}

std::string Compound(const std::string& operation, const std::string& children) {
  return "<CompoundPredicate booleanOperator=\"" + operation + "\">" + children + "</CompoundPredicate>";
}

// A predicate of a letter's value: T, F or U (x is missing).
std::string Children(const std::string& letters) {
  std::string text;
  for (const char letter : letters) {
    text += letter == 'T' ? "<True/>" : letter == 'F' ? "<False/>" : Simple("x", "lessThan", "1");
  }
  return text;
}

struct SimpleCase {
  const char* name;
  const char* field;
  const char* operation;
  const char* value;
  Value input;
  const char* expected;
};

class SimplePredicate : public testing::TestWithParam<SimpleCase> {};

TEST_P(SimplePredicate, ComparesInTheTypeOfTheField) {
  const SimpleCase& row = GetParam();
  const Scorer scorer = Load(Asking(Simple(row.field, row.operation, row.value)));
  EXPECT_EQ(Shown(scorer.Score({{row.field, row.input}}), "prediction"), row.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Table, SimplePredicate,
    testing::Values(SimpleCase{"less_below", "x", "lessThan", "2", 1.5, "yes"},
                    SimpleCase{"less_at", "x", "lessThan", "2", 2.0, "no"},
                    SimpleCase{"less_above", "x", "lessThan", "2", 2.5, "no"},
                    SimpleCase{"less_missing", "x", "lessThan", "2", kNull, "null"},
                    SimpleCase{"less_just_below_zero", "x", "lessThan", "0", -5e-324, "yes"},
                    SimpleCase{"less_negative_zero", "x", "lessThan", "0", -0.0, "no"},
                    SimpleCase{"less_infinite", "x", "lessThan", "INF", 1e308, "yes"},
                    SimpleCase{"less_or_equal_at", "x", "lessOrEqual", "2", 2.0, "yes"},
                    SimpleCase{"less_or_equal_above", "x", "lessOrEqual", "2", 2.5, "no"},
                    SimpleCase{"greater_at", "x", "greaterThan", "2", 2.0, "no"},
                    SimpleCase{"greater_above", "x", "greaterThan", "2", 2.5, "yes"},
                    SimpleCase{"greater_or_equal_at", "x", "greaterOrEqual", "2", 2.0, "yes"},
                    SimpleCase{"greater_or_equal_below", "x", "greaterOrEqual", "2", 1.5, "no"},
                    SimpleCase{"greater_missing", "x", "greaterOrEqual", "2", kNull, "null"},
                    SimpleCase{"equal_number", "x", "equal", "2.0", 2.0, "yes"},
                    SimpleCase{"equal_other_number", "x", "equal", "2.0", 2.1, "no"},
                    SimpleCase{"equal_missing", "x", "equal", "2", kNull, "null"},
                    SimpleCase{"not_equal_number", "x", "notEqual", "2", 3.0, "yes"},
                    SimpleCase{"not_equal_missing", "x", "notEqual", "2", kNull, "null"},
                    SimpleCase{"numeric_text", "x", "equal", "2", "2.0", "yes"},  // a record may hold numbers as texts
                    SimpleCase{"is_missing", "x", "isMissing", "", kNull, "yes"},
                    SimpleCase{"is_missing_present", "x", "isMissing", "", 1.0, "no"},
                    SimpleCase{"is_not_missing", "x", "isNotMissing", "", 1.0, "yes"},
                    SimpleCase{"is_not_missing_absent", "x", "isNotMissing", "", kNull, "no"},
                    SimpleCase{"integer_between_integers", "n", "lessThan", "2.5", 2.0, "yes"},
                    SimpleCase{"float_rounds_field_and_value", "f", "equal", "0.1", 0.1, "yes"},
                    SimpleCase{"text_equal", "s", "equal", "a", "a", "yes"},
                    SimpleCase{"text_other", "s", "equal", "a", "b", "no"},
                    SimpleCase{"text_not_equal", "s", "notEqual", "a", "b", "yes"},
                    SimpleCase{"text_missing", "s", "notEqual", "a", kNull, "null"},
                    SimpleCase{"text_is_not_trimmed", "s", "equal", " a", "a", "no"},
                    SimpleCase{"boolean_true", "b", "equal", "true", "true", "yes"},
                    SimpleCase{"boolean_as_one", "b", "equal", "true", "1", "yes"},
                    SimpleCase{"boolean_half", "b", "lessThan", "0.5", "false", "yes"},  // as tree trainers write them
                    SimpleCase{"ordinal_below", "o", "lessThan", "mid", "low", "yes"},
                    SimpleCase{"ordinal_at", "o", "lessThan", "mid", "mid", "no"},
                    SimpleCase{"ordinal_above", "o", "lessThan", "mid", "high",
                               "no"},  // though "high" < "mid" as a text
                    SimpleCase{"ordinal_at_or_below", "o", "lessOrEqual", "mid", "mid", "yes"},
                    SimpleCase{"ordinal_greater", "o", "greaterThan", "mid", "high", "yes"},
                    SimpleCase{"ordinal_greater_at", "o", "greaterThan", "mid", "mid", "no"},
                    SimpleCase{"ordinal_from", "o", "greaterOrEqual", "mid", "mid", "yes"},
                    SimpleCase{"ordinal_missing", "o", "greaterOrEqual", "mid", kNull, "null"}),
    KelTest::CaseName());

struct SetCase {
  const char* name;
  const char* field;
  const char* operation;
  const char* array;
  Value input;
  const char* expected;
};

class SimpleSetPredicate : public testing::TestWithParam<SetCase> {};

TEST_P(SimpleSetPredicate, LooksTheValueUpInTheArray) {
  const SetCase& row = GetParam();
  const Scorer scorer = Load(Asking("<SimpleSetPredicate field=\"" + std::string(row.field) + "\" booleanOperator=\"" +
                                    row.operation + "\">" + row.array + "</SimpleSetPredicate>"));
  EXPECT_EQ(Shown(scorer.Score({{row.field, row.input}}), "prediction"), row.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Table, SimpleSetPredicate,
    testing::Values(SetCase{"in", "s", "isIn", "<Array n=\"2\" type=\"string\">a b</Array>", "b", "yes"},
                    SetCase{"not_in_set", "s", "isIn", "<Array type=\"string\">a b</Array>", "c", "no"},
                    SetCase{"is_not_in", "s", "isNotIn", "<Array type=\"string\">a b</Array>", "c", "yes"},
                    SetCase{"missing", "s", "isNotIn", "<Array type=\"string\">a b</Array>", kNull, "null"},
                    SetCase{"quoted", "s", "isIn", "<Array type=\"string\">\"a\" \"b\"</Array>", "a", "yes"},
                    SetCase{"wrong_count", "s", "isIn", "<Array n=\"3\" type=\"string\">a b</Array>", "b", "yes"},
                    SetCase{"numbers", "x", "isIn", "<Array type=\"real\">1.0 2.5</Array>", 2.5, "yes"},
                    SetCase{"numbers_other", "x", "isIn", "<Array type=\"real\">1.0 2.5</Array>", 2.0, "no"},
                    SetCase{"empty_set", "x", "isIn", "<Array type=\"real\"/>", 2.0, "no"},
                    SetCase{"far_apart_numbers", "n", "isNotIn", "<Array type=\"int\">-5 900000</Array>", 900000.0,
                            "no"}),
    KelTest::CaseName());

struct TruthCase {
  const char* operation;
  const char* children;
  const char* expected;
};

// All combinations of two children, and threes where the place of a child matters.
TEST(CompoundPredicate, AllCombinations_FollowThreeValuedLogic) {
  const TruthCase rows[] = {
      {"and", "TT", "yes"},        {"and", "TF", "no"},         {"and", "TU", "null"},      {"and", "FU", "no"},
      {"and", "UF", "no"},         {"and", "UU", "null"},       {"and", "UTF", "no"},       {"and", "FF", "no"},
      {"or", "TT", "yes"},         {"or", "FT", "yes"},         {"or", "UT", "yes"},        {"or", "TU", "yes"},
      {"or", "FU", "null"},        {"or", "UF", "null"},        {"or", "FF", "no"},         {"or", "UFT", "yes"},
      {"xor", "TT", "no"},         {"xor", "TF", "yes"},        {"xor", "FF", "no"},        {"xor", "TU", "null"},
      {"xor", "UF", "null"},       {"xor", "TTT", "yes"},       {"xor", "TTF", "no"},       {"xor", "TFU", "null"},
      {"surrogate", "TF", "yes"},  {"surrogate", "FT", "no"},   {"surrogate", "UT", "yes"}, {"surrogate", "UF", "no"},
      {"surrogate", "UU", "null"}, {"surrogate", "UUT", "yes"}, {"and", "T", "yes"},        {"or", "U", "null"},
  };
  for (const TruthCase& row : rows) {
    const Scorer scorer = Load(Asking(Compound(row.operation, Children(row.children))));
    EXPECT_EQ(Shown(scorer.Score({{"x", kNull}}), "prediction"), row.expected) << row.operation << " " << row.children;
  }
}

TEST(CompoundPredicate, Nested_InnerValueCountsAsAChild) {
  const std::string inner = Compound("or", Children("FU"));  // unknown
  const TruthCase rows[] = {{"and", "TF", "no"},
                            {"and", "TT", "null"},
                            {"or", "FT", "yes"},
                            {"surrogate", "T", "yes"},
                            {"surrogate", "F", "no"}};
  for (const TruthCase& row : rows) {
    const Scorer scorer = Load(Asking(Compound(row.operation, inner + Children(row.children))));
    EXPECT_EQ(Shown(scorer.Score({{"x", kNull}}), "prediction"), row.expected) << row.operation << " " << row.children;
  }
}

TEST(CompoundPredicate, NestedAsDeepAsADocumentMay_IsEvaluated) {
  constexpr int kDepth = 9900;
  std::string text;
  for (int i = 0; i < kDepth; ++i) text += R"(<CompoundPredicate booleanOperator="and"><True/>)";
  text += Simple("x", "greaterThan", "0");
  for (int i = 0; i < kDepth; ++i) text += "</CompoundPredicate>";
  const Scorer scorer = Load(Asking(text));
  EXPECT_EQ(Shown(scorer.Score({{"x", 1.0}}), "prediction"), "yes");
  EXPECT_EQ(Shown(scorer.Score({{"x", -1.0}}), "prediction"), "no");
  EXPECT_EQ(Shown(scorer.Score({{"x", kNull}}), "prediction"), "null");
}

}  // namespace
}  // namespace TorvaneTest
