#include <atomic>
#include <clocale>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <thread>

#include "tests/components/keltransform/TransformTestSupport.h"
#include "tests/support/CaseName.h"
#include "tests/support/XmlPlatform.h"

namespace {

using namespace KelTransformTest;
using KelTest::CaseName;

const auto* const kPlatform = KelTest::XmlPlatform::KeepUp();
const Value kNull;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// A call whose arguments are separated by blanks: names of the standard fields, numbers, texts in quotes, "missing",
// and a field "bad" for an invalid value, which is a text in the numeric field y.
struct FunctionCase {
  const char* name;
  const char* function;
  const char* arguments;
  const char* type;
  Value expected;
};

void PrintTo(const FunctionCase& row, std::ostream* stream) {
  *stream << row.function << '(' << row.arguments << ") as " << row.type;
}

const std::string kLongText = "a text that is much too long to lie in a value itself";

NamedValues Inputs() {
  return {{"x", 2.5},
          {"y", "bad"},
          {"i", 7},
          {"f", 0.1},
          {"b", "true"},
          {"s", " Straße 7"},
          {"t", kLongText},
          {"day", "2004-08-20"},
          {"clock", "05:23:30"},
          {"moment", "1960-01-03T03:30:03"}};
}

std::string Field(const std::string& name) { return "<FieldRef field=\"" + name + "\"/>"; }

std::string ArgumentOf(const std::string& word) {
  if (word == "missing") return "<FieldRef field=\"marked\"/>";
  if (word == "bad") return Field("y");
  if (word.front() == '\'') return "<Constant dataType=\"string\">" + word.substr(1, word.size() - 2) + "</Constant>";
  if (std::isalpha(word.front()) != 0) return Field(word);
  return "<Constant>" + word + "</Constant>";
}

std::string Arguments(const std::string& words) {
  std::string elements;
  for (std::size_t begin = 0; begin < words.size();) {
    const std::size_t end = words[begin] == '\'' ? words.find('\'', begin + 1) + 1 : words.find(' ', begin);
    elements += ArgumentOf(words.substr(begin, end - begin));
    begin = end >= words.size() ? words.size() : end + 1;
  }
  return elements;
}

std::string Apply(const std::string& function, const std::string& arguments, const std::string& attributes = "") {
  return "<Apply function=\"" + function + "\" " + attributes + ">" + Arguments(arguments) + "</Apply>";
}

void ExpectValue(const Value& result, const Value& expected) {
  ASSERT_EQ(result.GetType(), expected.GetType()) << Show(result);
  if (expected.GetType() == Value::kNumber) {
    EXPECT_DOUBLE_EQ(result.GetReal(), expected.GetReal());
  } else {
    EXPECT_EQ(Show(result), Show(expected));
  }
}

class FunctionTest : public testing::TestWithParam<FunctionCase> {};

TEST_P(FunctionTest, Apply_KnownAnswer) {
  const FunctionCase& row = GetParam();
  ExpectValue(Evaluate(row.type, Apply(row.function, row.arguments), Inputs()), row.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Arithmetic, FunctionTest,
    testing::Values(FunctionCase{"plus", "+", "x i", "double", 9.5}, FunctionCase{"minus", "-", "x i", "double", -4.5},
                    FunctionCase{"times", "*", "x i", "double", 17.5},
                    FunctionCase{"divided", "/", "x i", "double", 2.5 / 7},
                    FunctionCase{"text_as_number", "+", "x '1.5'", "double", 4.0},
                    FunctionCase{"boolean_as_number", "+", "x b", "double", 3.5},
                    FunctionCase{"day_as_number", "-", "day 12650", "integer", 0},
                    FunctionCase{"missing", "+", "x missing", "double", kNull},
                    FunctionCase{"invalid", "+", "x bad", "double", kNull},
                    FunctionCase{"by_zero", "/", "x 0", "double", kNull},
                    FunctionCase{"zero_by_zero", "/", "0 0", "double", kNull},
                    FunctionCase{"integers_are_divided_as_reals", "/", "i 2", "double", 3.5},
                    FunctionCase{"integers_in_an_integer_field", "/", "i 2", "integer", 3},
                    FunctionCase{"negative_integers_in_an_integer_field", "/", "i -2", "integer", -3},
                    FunctionCase{"real_in_an_integer_field", "/", "x 2", "integer", kNull},
                    FunctionCase{"floats_stay_floats", "*", "f f", "double", static_cast<double>(0.1F * 0.1F)},
                    FunctionCase{"float_with_integer", "+", "f 1", "double", static_cast<double>(0.1F + 1.0F)},
                    FunctionCase{"float_with_double", "+", "f x", "double", static_cast<double>(0.1F) + 2.5},
                    FunctionCase{"result_cast_to_float", "+", "x 0.1", "float", static_cast<double>(2.6F)},
                    FunctionCase{"modulo", "modulo", "i 3", "double", 1},
                    FunctionCase{"modulo_sign", "modulo", "-7 3", "double", 2},
                    FunctionCase{"modulo_negative", "modulo", "7 -3", "double", -2},
                    FunctionCase{"modulo_zero", "modulo", "7 0", "double", kNull},
                    FunctionCase{"later_function_under_its_prefix", "x-modulo", "i 3", "double", 1},
                    FunctionCase{"overflow_goes_on", "exp", "1000", "double", kInfinity},
                    FunctionCase{"infinite_without_value", "-", "1e999 1e999", "double", kNull}),
    CaseName());

INSTANTIATE_TEST_SUITE_P(
    Aggregates, FunctionTest,
    testing::Values(FunctionCase{"min", "min", "x i -1", "double", -1},
                    FunctionCase{"max", "max", "x i -1", "double", 7},
                    FunctionCase{"sum", "sum", "x i -1", "double", 8.5},
                    FunctionCase{"product", "product", "x i -1", "double", -17.5},
                    FunctionCase{"avg", "avg", "x i 1", "double", 3.5},
                    FunctionCase{"avg_of_integers", "avg", "i 2", "double", 4.5},
                    FunctionCase{"median_odd", "median", "i x 100", "double", 7},
                    FunctionCase{"median_even", "median", "i x 100 1", "double", 4.75},
                    FunctionCase{"one_argument", "sum", "x", "double", 2.5},
                    FunctionCase{"sum_without_missing", "sum", "missing x missing i", "double", 9.5},
                    FunctionCase{"avg_without_missing", "avg", "missing x i", "double", 4.75},
                    FunctionCase{"median_without_missing", "median", "missing x i", "double", 4.75},
                    FunctionCase{"min_without_missing", "min", "missing x i", "double", 2.5},
                    FunctionCase{"all_missing", "sum", "missing missing", "double", kNull},
                    FunctionCase{"median_all_missing", "median", "missing", "double", kNull},
                    FunctionCase{"invalid", "max", "x bad missing", "double", kNull},
                    // (0.1 + 0.2) + 0.3 in this order; the other order gives 0.6.
                    FunctionCase{"in_order", "sum", "0.1 0.2 0.3", "double", (0.1 + 0.2) + 0.3}),
    CaseName());

// Figures of Python 3.11: math and statistics.NormalDist.
INSTANTIATE_TEST_SUITE_P(
    Numbers, FunctionTest,
    testing::Values(
        FunctionCase{"log10", "log10", "1000", "double", 3}, FunctionCase{"ln", "ln", "x", "double", std::log(2.5)},
        FunctionCase{"ln_of_zero", "ln", "0", "double", kNull},
        FunctionCase{"ln_negative", "ln", "-1", "double", kNull},
        FunctionCase{"log10_of_zero", "log10", "0", "double", kNull},
        FunctionCase{"sqrt", "sqrt", "6.25", "double", 2.5},
        FunctionCase{"sqrt_negative", "sqrt", "-1", "double", kNull},
        FunctionCase{"sqrt_of_float", "sqrt", "f", "double", static_cast<double>(std::sqrt(0.1F))},
        FunctionCase{"abs", "abs", "-3", "integer", 3}, FunctionCase{"exp", "exp", "x", "double", std::exp(2.5)},
        FunctionCase{"pow", "pow", "2 0.5", "double", std::sqrt(2.0)},
        FunctionCase{"pow_0_0", "pow", "0 0", "double", 1}, FunctionCase{"pow_pole", "pow", "0 -1", "double", kNull},
        FunctionCase{"pow_root_of_negative", "pow", "-8 0.5", "double", kNull},
        FunctionCase{"threshold_equal", "threshold", "3 3", "double", 0},
        FunctionCase{"threshold_above", "threshold", "3 2", "double", 1},
        FunctionCase{"floor", "floor", "-2.5", "integer", -3}, FunctionCase{"ceil", "ceil", "-2.5", "integer", -2},
        FunctionCase{"round_up", "round", "2.5", "integer", 3},
        FunctionCase{"round_negative_half", "round", "-2.5", "integer", -2},
        FunctionCase{"round_just_below_half", "round", "0.49999999999999994", "integer", 0},
        FunctionCase{"round_large", "round", "4503599627370497", "integer", 4503599627370497.0},
        FunctionCase{"rint_to_even", "rint", "2.5", "integer", 2},
        FunctionCase{"rint_negative", "rint", "-3.5", "integer", -4},
        FunctionCase{"rint_odd", "rint", "3.5", "integer", 4}, FunctionCase{"rint_plain", "rint", "2.6", "integer", 3},
        FunctionCase{"expm1", "expm1", "1e-10", "double", 1.00000000005e-10},
        FunctionCase{"ln1p", "ln1p", "1e-10", "double", 9.9999999995e-11},
        FunctionCase{"ln1p_pole", "ln1p", "-1", "double", kNull}, FunctionCase{"hypot", "hypot", "3 4", "double", 5},
        FunctionCase{"sin", "sin", "1", "double", 0.8414709848078965},
        FunctionCase{"cos", "cos", "1", "double", 0.5403023058681398},
        FunctionCase{"tan", "tan", "1", "double", 1.5574077246549023},
        FunctionCase{"asin", "asin", "1", "double", 1.5707963267948966},
        FunctionCase{"acos", "acos", "-1", "double", 3.141592653589793},
        FunctionCase{"acos_outside", "acos", "2", "double", kNull},
        FunctionCase{"atan", "atan", "1", "double", 0.7853981633974483},
        FunctionCase{"sinh", "sinh", "1", "double", 1.1752011936438014},
        FunctionCase{"cosh", "cosh", "1", "double", 1.5430806348152437},
        FunctionCase{"tanh", "tanh", "1", "double", 0.7615941559557649},
        FunctionCase{"erf", "erf", "1", "double", 0.8427007929497149},
        FunctionCase{"cdf", "normalCDF", "3 1 2", "double", 0.8413447460685429},
        FunctionCase{"cdf_below", "stdNormalCDF", "-2", "double", 0.022750131948179207},
        FunctionCase{"pdf", "normalPDF", "3 1 2", "double", 0.12098536225957168},
        FunctionCase{"pdf_standard", "stdNormalPDF", "0", "double", 0.3989422804014327},
        FunctionCase{"cdf_without_deviation", "normalCDF", "3 1 0", "double", kNull},
        FunctionCase{"quantile", "stdNormalIDF", "0.975", "double", 1.959963984540054},
        FunctionCase{"quantile_middle", "normalIDF", "0.5 3 2", "double", 3},
        FunctionCase{"quantile_middle_exactly", "stdNormalIDF", "0.5", "integer", 0},
        FunctionCase{"quantile_upper", "stdNormalIDF", "0.999999", "double", 4.753424308817089},
        FunctionCase{"quantile_scaled", "normalIDF", "0.025 10 2", "double", 10 - 2 * 1.959963984540054},
        FunctionCase{"quantile_far_below", "stdNormalIDF", "1e-300", "double", -37.0470962993612},
        FunctionCase{"quantile_of_zero", "stdNormalIDF", "0", "double", kNull},
        FunctionCase{"quantile_of_one", "stdNormalIDF", "1", "double", kNull},
        FunctionCase{"missing", "ln", "missing", "double", kNull},
        FunctionCase{"missing_of_three", "normalCDF", "3 missing 2", "double", kNull}),
    CaseName());

TEST(ModuloTest, Apply_NoRest_ZeroHasTheSignOfTheDivisor) {
  EXPECT_FALSE(std::signbit(Evaluate("double", Apply("modulo", "-8 4"), Inputs()).GetReal()));
  EXPECT_TRUE(std::signbit(Evaluate("double", Apply("modulo", "8 -4"), Inputs()).GetReal()));
}

INSTANTIATE_TEST_SUITE_P(
    Comparisons, FunctionTest,
    testing::Values(FunctionCase{"equal", "equal", "x 2.5", "boolean", "true"},
                    FunctionCase{"not_equal", "notEqual", "x 2.5", "boolean", "false"},
                    FunctionCase{"less", "lessThan", "x i", "boolean", "true"},
                    FunctionCase{"less_equal", "lessOrEqual", "i i", "boolean", "true"},
                    FunctionCase{"not_less", "lessThan", "i i", "boolean", "false"},
                    FunctionCase{"greater", "greaterThan", "x i", "boolean", "false"},
                    FunctionCase{"greater_equal", "greaterOrEqual", "i x", "boolean", "true"},
                    // The literal is read as a value of the field beside it: in single precision, or letter by letter.
                    FunctionCase{"float_literal", "equal", "f 0.1", "boolean", "true"},
                    FunctionCase{"integer_field_with_fraction", "lessThan", "i 7.5", "boolean", "true"},
                    FunctionCase{"date_literal", "lessThan", "day 2004-08-21", "boolean", "true"},
                    FunctionCase{"dates_on_two_scales", "greaterThan", "day moment", "boolean", "true"},
                    FunctionCase{"boolean_literal", "equal", "b 1", "boolean", "true"},
                    FunctionCase{"texts", "equal", "t t", "boolean", "true"},
                    FunctionCase{"other_text", "equal", "t s", "boolean", "false"},
                    FunctionCase{"text_order", "lessThan", "s t", "boolean", "true"},
                    FunctionCase{"number_with_text", "equal", "i '7'", "boolean", "true"},
                    FunctionCase{"number_with_other_letters", "equal", "i '7.0'", "boolean", "false"},
                    FunctionCase{"text_order_by_letters", "lessThan", "'10' '9'", "boolean", "true"},
                    FunctionCase{"equal_missing", "equal", "x missing", "boolean", kNull},
                    FunctionCase{"less_invalid", "lessThan", "x bad", "boolean", kNull},
                    FunctionCase{"in", "isIn", "i 1 7", "boolean", "true"},
                    FunctionCase{"in_none", "isIn", "i 1 2", "boolean", "false"},
                    FunctionCase{"not_in", "isNotIn", "i 1 2", "boolean", "true"},
                    FunctionCase{"not_in_one", "isNotIn", "t 'a' t", "boolean", "false"},
                    FunctionCase{"in_missing", "isIn", "missing 1", "boolean", kNull},
                    FunctionCase{"as_number", "lessThan", "x i", "double", 1},
                    FunctionCase{"as_text", "lessThan", "x i", "string", "true"},
                    FunctionCase{"missing", "isMissing", "missing", "boolean", "true"},
                    FunctionCase{"invalid_is_not_missing", "isMissing", "bad", "boolean", "false"},
                    FunctionCase{"not_missing", "isNotMissing", "t", "boolean", "true"},
                    FunctionCase{"valid", "isValid", "x", "boolean", "true"},
                    FunctionCase{"missing_is_not_valid", "isValid", "missing", "boolean", "false"},
                    FunctionCase{"invalid", "isNotValid", "bad", "boolean", "true"}),
    CaseName());

// A condition "true", "false", "missing" or "invalid" for the functions of booleans.
INSTANTIATE_TEST_SUITE_P(Logic, FunctionTest,
                         testing::Values(FunctionCase{"and_true", "and", "1 b 1", "boolean", "true"},
                                         FunctionCase{"and_false", "and", "b 0", "boolean", "false"},
                                         FunctionCase{"false_decides_and", "and", "missing 0", "boolean", "false"},
                                         FunctionCase{"false_decides_and_with_invalid", "and", "bad 0", "boolean",
                                                      "false"},
                                         FunctionCase{"and_missing", "and", "missing b", "boolean", kNull},
                                         FunctionCase{"or_false", "or", "0 0", "boolean", "false"},
                                         FunctionCase{"or_true", "or", "0 b", "boolean", "true"},
                                         FunctionCase{"true_decides_or", "or", "missing b", "boolean", "true"},
                                         FunctionCase{"or_missing", "or", "missing 0", "boolean", kNull},
                                         FunctionCase{"not", "not", "b", "boolean", "false"},
                                         FunctionCase{"not_missing", "not", "missing", "boolean", kNull},
                                         FunctionCase{"no_boolean", "not", "i", "boolean", kNull},
                                         FunctionCase{"if_true", "if", "b i x", "double", 7},
                                         FunctionCase{"if_false", "if", "0 i x", "double", 2.5},
                                         FunctionCase{"without_else", "if", "0 i", "double", kNull},
                                         FunctionCase{"condition_missing", "if", "missing i x", "double", kNull},
                                         FunctionCase{"branch_not_taken_may_be_invalid", "if", "b i bad", "double", 7},
                                         FunctionCase{"branch_taken_missing", "if", "b missing x", "double", kNull},
                                         FunctionCase{"branch_of_constants", "if", "b 1.50 2", "string", "1.50"},
                                         FunctionCase{"branches_of_two_types", "if", "b i t", "string", "7"},
                                         FunctionCase{"branch_of_date", "if", "b day moment", "date", "2004-08-20"}),
                         CaseName());

INSTANTIATE_TEST_SUITE_P(
    Texts, FunctionTest,
    testing::Values(FunctionCase{"upper", "uppercase", "s", "string", " STRASSE 7"},
                    FunctionCase{"lower", "lowercase", "'ÄÖ Б'", "string", "äö б"},
                    FunctionCase{"upper_of_number", "uppercase", "1e20", "string", "1E20"},
                    FunctionCase{"substring", "substring", "'value' 2 4", "string", "alue"},
                    FunctionCase{"substring_empty", "substring", "'value' 1 0", "string", ""},
                    FunctionCase{"substring_beyond", "substring", "'value' 4 9", "string", "ue"},
                    FunctionCase{"substring_after", "substring", "'value' 9 2", "string", ""},
                    FunctionCase{"substring_of_characters", "substring", "s 6 2", "string", "ße"},
                    FunctionCase{"substring_from_0", "substring", "'value' 0 2", "string", kNull},
                    FunctionCase{"substring_negative", "substring", "'value' 1 -1", "string", kNull},
                    FunctionCase{"substring_fraction", "substring", "'value' 1.5 1", "string", kNull},
                    FunctionCase{"trim", "trimBlanks", "' a b '", "string", "a b"},
                    FunctionCase{"trim_all", "trimBlanks", "'  '", "string", ""},
                    FunctionCase{"concat", "concat", "t s i x b", "string", kLongText + " Straße 772.5true"},
                    FunctionCase{"concat_missing", "concat", "t missing", "string", kNull},
                    FunctionCase{"concat_invalid", "concat", "t bad", "string", kNull},
                    FunctionCase{"length", "stringLength", "s", "integer", 9},
                    FunctionCase{"text_to_number", "substring", "'a42b' 2 2", "double", 42}),
    CaseName());

// Figures of Python 3.11: re.search and re.sub, whose groups are written with a backslash.
INSTANTIATE_TEST_SUITE_P(
    Patterns, FunctionTest,
    testing::Values(FunctionCase{"matches_a_part", "matches", "s 'ra.e \\d$'", "boolean", "true"},
                    FunctionCase{"matches_with_case", "matches", "s 'STR'", "boolean", "false"},
                    FunctionCase{"matches_any_case", "matches", "s '(?i)STRAßE'", "boolean", "true"},
                    FunctionCase{"matches_number", "matches", "x '^2\\.5$'", "boolean", "true"},
                    FunctionCase{"matches_missing", "matches", "missing 'a'", "boolean", kNull},
                    FunctionCase{"matches_invalid", "matches", "bad 'a'", "boolean", kNull},
                    FunctionCase{"matches_constant", "matches", "'BBBB' 'B{5}'", "boolean", "false"},
                    FunctionCase{"replaces_all", "replace", "'BBxBB' 'B+' 'c'", "string", "cxc"},
                    FunctionCase{"replaces_nothing", "replace", "t 'zz' 'c'", "string", kLongText},
                    FunctionCase{"replaces_by_groups", "replace", "s '(?&lt;g>S)(t)(q)?' '[$2${g}$3\\$]'", "string",
                                 " [tS$]raße 7"},
                    FunctionCase{"replaces_by_group_and_digit", "replace", "s '(S)(t)' '$10'", "string", " S0raße 7"},
                    FunctionCase{"replaces_the_empty_match", "replace", "'ab' 'x*' '-'", "string", "-a-b-"},
                    FunctionCase{"replaces_characters", "replace", "s '[ß ]' '€'", "string", "€Stra€e€7"},
                    FunctionCase{"replaces_by_field", "replace", "t 'text.*' s", "string", "a  Straße 7"},
                    FunctionCase{"replaces_missing", "replace", "s 'a' missing", "string", kNull},
                    FunctionCase{"hostile", "matches", "t '^(?:[a-z ]+)+!'", "boolean", kNull}),
    CaseName());

TEST(PatternTest, Replace_GroupThatTheRecordInvents_IsInvalid) {
  EXPECT_TRUE(Evaluate("string", Apply("replace", "s 'a' t"), {{"s", "xax"}, {"t", "$1"}}).IsNull());
  EXPECT_TRUE(Evaluate("string", Apply("replace", "s 'a' t"), {{"s", "xax"}, {"t", "${g}"}}).IsNull());
}

// Each of these would take minutes at least if it weren't given up.
TEST(PatternTest, Matches_HostilePatternsOnLongTexts_AreGivenUp) {
  const std::string text(100000, 'x');
  for (const char* const pattern : {"(x+x+)+y", "(?:(?=x*+)x)*y", "(?>x*+)y", "(x|x)*y"}) {
    EXPECT_TRUE(Evaluate("boolean", Apply("matches", "s '" + std::string(pattern) + "'"), {{"s", text}}).IsNull())
        << pattern;
  }
  EXPECT_TRUE(Evaluate("string", Apply("replace", "s '(?=x*+)x' 'x'"), {{"s", text}}).IsNull());
  EXPECT_TRUE(Evaluate("string", Apply("replace", "s '.*' '$0$0$0$0$0$0$0$0$0$0$0'"), {{"s", text}}).IsNull());
}

// More threads than matchers are kept.
TEST(PatternTest, Matches_OnManyThreads_EachHasAMatcherOfItsOwn) {
  KelTransformation transformation;
  const std::string fields =
      Derived("found", "boolean", Apply("matches", "s '^(a+)b$'")) +
      Derived("count", "integer", R"(<TextIndex textField="t"><Constant>b</Constant></TextIndex>)");
  ASSERT_TRUE(AddPmml(transformation, Pmml(StandardFields(), fields)).IsOK()) << KelDiagnostics::Last();
  std::atomic<int> wrong = 0;
  const auto score = [&](int thread) {
    for (int row = 0; row < 200; ++row) {
      const bool isFound = (row + thread) % 2 == 0;
      const auto results =
          Compute(transformation, {{"s", isFound ? "aaab" : "aaa"}, {"t", isFound ? "b, b" : "b"}}, {"found", "count"});
      if (Show(results[0]) != (isFound ? "text true" : "text false") || results[1].GetReal() != (isFound ? 2 : 1))
        ++wrong;
    }
  };
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 20; ++thread) threads.emplace_back(score, thread);
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

TEST(PatternTest, Matches_TextAboveTheLimit_IsInvalid) {
  const std::string text(std::size_t{1} << 20U, 'x');
  EXPECT_EQ(Show(Evaluate("boolean", Apply("matches", "s 'x'"), {{"s", text}})), "text true");
  EXPECT_TRUE(Evaluate("boolean", Apply("matches", "s 'x'"), {{"s", text + "x"}}).IsNull());
}

INSTANTIATE_TEST_SUITE_P(
    NumberFormats, FunctionTest,
    testing::Values(FunctionCase{"width", "formatNumber", "2 '%3d'", "string", "  2"},
                    FunctionCase{"cast", "formatNumber", "-2.7 '%d'", "string", "-2"},
                    FunctionCase{"flags", "formatNumber", "42 '%+-6d|'", "string", "+42   |"},
                    FunctionCase{"zeros", "formatNumber", "42 '%05i'", "string", "00042"},
                    FunctionCase{"hexadecimal", "formatNumber", "255 '%#x'", "string", "0xff"},
                    FunctionCase{"length_of_c_type", "formatNumber", "255 '%ld'", "string", "255"},
                    FunctionCase{"fixed", "formatNumber", "x '%.2f EUR'", "string", "2.50 EUR"},
                    FunctionCase{"scientific", "formatNumber", "12345.678 '%10.2E'", "string", "  1.23E+04"},
                    FunctionCase{"general", "formatNumber", "0.0001 '%g'", "string", "0.0001"},
                    FunctionCase{"percent", "formatNumber", "x '%%%.1f%%'", "string", "%2.5%"},
                    FunctionCase{"negative_as_unsigned", "formatNumber", "-1 '%u'", "string", kNull},
                    FunctionCase{"too_large_for_integer", "formatNumber", "1e300 '%d'", "string", kNull},
                    FunctionCase{"largest", "formatNumber", "1e300 '%.200f'", "integer", 1e300},
                    // A pattern that comes with the record is checked when it comes.
                    FunctionCase{"pattern_of_the_record", "formatNumber", "x t", "string", kNull}),
    CaseName());

INSTANTIATE_TEST_SUITE_P(
    Dates, FunctionTest,
    testing::Values(
        FunctionCase{"format", "formatDatetime", "day '%m/%d/%y'", "string", "08/20/04"},
        FunctionCase{"format_all", "formatDatetime", "moment '%a %A %b %B %d %H %I %j %m %M %p %S %w %y %Y%Z %%'",
                     "string", "Sun Sunday Jan January 03 03 03 003 01 30 AM 03 0 60 1960 %"},
        FunctionCase{"format_whole", "formatDatetime", "moment '%c|%x|%X'", "string",
                     "Sun Jan  3 03:30:03 1960|01/03/60|03:30:03"},
        // 2004-08-20 was a Friday, the 233rd day; date(1) of coreutils gives both weeks.
        FunctionCase{"weeks", "formatDatetime", "day '%U %W %j %w'", "string", "33 33 233 5"},
        FunctionCase{"first_weeks", "formatDatetime", "'2023-01-01' '%U %W %a'", "string", "01 00 Sun"},
        FunctionCase{"afternoon", "formatDatetime", "'2000-02-29T12:05:09' '%I %p'", "string", "12 PM"},
        FunctionCase{"midnight", "formatDatetime", "'2000-02-29' '%I %p'", "string", "12 AM"},
        FunctionCase{"before_1970", "formatDatetime", "'1969-12-31T23:59:59' '%Y-%m-%d %X %a'", "string",
                     "1969-12-31 23:59:59 Wed"},
        FunctionCase{"days", "dateDaysSinceYear", "'2003-04-01' 1960", "integer", 15796},
        FunctionCase{"days_of_field", "dateDaysSinceYear", "day 2004", "integer", 232},
        FunctionCase{"days_of_moment", "dateDaysSinceYear", "moment 1960", "integer", 2},
        FunctionCase{"days_before", "dateDaysSinceYear", "'1959-12-31' 1960", "integer", -1},
        FunctionCase{"no_year", "dateDaysSinceYear", "day 1960.5", "integer", kNull},
        FunctionCase{"no_date", "dateDaysSinceYear", "t 1960", "integer", kNull},
        FunctionCase{"seconds", "dateSecondsSinceYear", "moment 1960", "integer", 185403},
        FunctionCase{"seconds_of_day", "dateSecondsSinceYear", "'1960-01-02' 1960", "integer", 86400},
        FunctionCase{"seconds_of_clock", "dateSecondsSinceMidnight", "clock", "integer", 19410},
        FunctionCase{"seconds_of_time_of_moment", "dateSecondsSinceMidnight", "moment", "integer", 12603},
        FunctionCase{"whole_seconds", "dateSecondsSinceMidnight", "'05:23:30.75'", "integer", 19410},
        FunctionCase{"whole_seconds_before", "dateSecondsSinceYear", "'1959-12-31T23:59:58.25' 1960", "integer", -2},
        FunctionCase{"missing", "dateSecondsSinceMidnight", "listed", "integer", kNull}),
    CaseName());

struct TreatmentCase {
  const char* name;
  const char* version;
  std::string expression;
  Value expected;
};

void PrintTo(const TreatmentCase& row, std::ostream* stream) { *stream << row.expression; }

class TreatmentTest : public testing::TestWithParam<TreatmentCase> {};

Value EvaluateInVersion(const std::string& version, const std::string& expression) {
  std::string text = Pmml(StandardFields(), Derived("result", "double", expression));
  text.replace(text.find("4.0"), 3, version);
  KelTransformation transformation;
  EXPECT_TRUE(AddPmml(transformation, text).IsOK()) << KelDiagnostics::Last();
  return Compute(transformation, Inputs(), {"result"}).front();
}

TEST_P(TreatmentTest, Apply_MissingOrInvalid_AsTheAttributesSay) {
  ExpectValue(EvaluateInVersion(GetParam().version, GetParam().expression), GetParam().expected);
}

const std::string kMapped = R"(mapMissingTo="-1")";
const std::string kDefault = R"(defaultValue="-2")";
const std::string kAsMissing = R"(invalidValueTreatment="asMissing")";

INSTANTIATE_TEST_SUITE_P(
    All, TreatmentTest,
    testing::Values(
        TreatmentCase{"argument_missing", "4.2", Apply("+", "x missing", kMapped), -1},
        TreatmentCase{"no_argument_missing", "4.2", Apply("+", "x i", kMapped), 9.5},
        TreatmentCase{"function_not_applied", "4.2", Apply("sum", "x missing", kMapped), -1},
        TreatmentCase{"even_of_is_missing", "4.2", Apply("isMissing", "missing", R"(mapMissingTo="false")"), 0},
        TreatmentCase{"result_missing_though_no_argument_is", "4.2", Apply("if", "0 x", kMapped), kNull},
        // In 4.1 the attribute speaks of the result.
        TreatmentCase{"result_missing_in_4_1", "4.1", Apply("if", "0 x", kMapped), -1},
        TreatmentCase{"argument_missing_in_4_1", "4.1", Apply("sum", "x missing", kMapped), 2.5},
        TreatmentCase{"default", "4.2", Apply("+", "x missing", kDefault), -2},
        TreatmentCase{"mapped_before_default", "4.2", Apply("+", "x missing", kMapped + ' ' + kDefault), -1},
        TreatmentCase{"fraction_for_integers", "4.2", Apply("+", "i missing", R"(defaultValue="0.5")"), 0.5},
        TreatmentCase{"invalid_isn_t_missing", "4.2", Apply("+", "x bad", kMapped + ' ' + kDefault), kNull},
        TreatmentCase{"invalid_and_missing", "4.2", Apply("+", "missing bad", kMapped), kNull},
        TreatmentCase{"missing_beside_an_invalid_branch", "4.2", Apply("if", "missing x bad", kMapped), -1},
        TreatmentCase{"missing_branch_beside_an_invalid_one", "4.2", Apply("if", "1 missing bad", kMapped), -1},
        TreatmentCase{"invalid_branch_beside_a_missing_one", "4.2", Apply("if", "1 bad missing", kMapped), kNull},
        TreatmentCase{"undefined", "4.2", Apply("/", "x 0", kDefault), kNull},
        TreatmentCase{"undefined_as_it_is", "4.2", Apply("/", "x 0", kDefault + R"( invalidValueTreatment="asIs")"),
                      kNull},
        TreatmentCase{"undefined_as_missing", "4.2", Apply("/", "x 0", kDefault + ' ' + kAsMissing), -2},
        TreatmentCase{"invalid_as_missing", "4.2", Apply("+", "x bad", kDefault + ' ' + kAsMissing), -2},
        TreatmentCase{"undefined_is_invalid_further_out", "4.0",
                      "<Apply function=\"sum\">" + Field("x") + Apply("/", "x 0") + "</Apply>", kNull},
        TreatmentCase{"undefined_missing_further_out", "4.2",
                      "<Apply function=\"sum\">" + Field("x") + Apply("/", "x 0", kAsMissing) + "</Apply>", 2.5}),
    CaseName());

TEST(TreatmentTest, NamespaceInPlaceOfTheVersion_TellsTheMeaning) {
  std::string text = Pmml(StandardFields(), Derived("result", "double", Apply("sum", "x missing", kMapped)));
  text.replace(text.find("version=\"4.0\""), 13, "xmlns=\"http://www.dmg.org/PMML-4_1\"");
  KelTransformation transformation;
  ASSERT_TRUE(AddPmml(transformation, text).IsOK()) << KelDiagnostics::Last();
  ExpectValue(Compute(transformation, Inputs(), {"result"}).front(), 2.5);
}

// A text that a function makes is a category like any other: predicates and mappings find it.
TEST(MadeTextTest, Apply_TextThatTheDocumentKnows_IsThatCategory) {
  KelTransformation transformation;
  const std::string fields =
      Derived("made", "string", Apply("concat", "s t")) +
      Derived("known", "double", R"(<NormDiscrete field="made" value="ab"/>)") +
      Derived("same", "boolean", "<Apply function=\"equal\">" + Field("made") + Apply("concat", "s t") + "</Apply>");
  ASSERT_TRUE(AddPmml(transformation, Pmml(StandardFields(), fields)).IsOK()) << KelDiagnostics::Last();
  const auto known = Compute(transformation, {{"s", "a"}, {"t", "b"}}, {"made", "known", "same"});
  EXPECT_EQ(Show(known[0]), "text ab");
  EXPECT_EQ(Show(known[1]), "number 1");
  const auto unknown = Compute(transformation, {{"s", "b"}, {"t", "a"}}, {"made", "known", "same"});
  EXPECT_EQ(Show(unknown[1]), "number 0");
  EXPECT_EQ(Show(unknown[2]), "text true");
}

TEST(MadeTextTest, Apply_TextThatDoublesOverAndOver_IsInvalid) {
  std::string fields = Derived("d0", "string", Apply("concat", "t t"));
  for (int index = 1; index < 60; ++index) {
    const std::string before = Numbered("d", index - 1);
    fields += Derived(Numbered("d", index), "string",
                      "<Apply function=\"concat\">" + Field(before) + Field(before) + "</Apply>");
  }
  KelTransformation transformation;
  ASSERT_TRUE(AddPmml(transformation, Pmml(StandardFields(), fields)).IsOK()) << KelDiagnostics::Last();
  const auto results = Compute(transformation, {{"t", kLongText}}, {"d1", "d59"});
  EXPECT_EQ(results[0].GetString(), kLongText + kLongText + kLongText + kLongText);
  EXPECT_TRUE(results[1].IsNull());
}

TEST(LocaleTest, FormatNumber_HostWithDecimalComma_PrintsAPoint) {
  const std::string before = std::setlocale(LC_ALL, nullptr);
  const bool hasComma = std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr;
  const Value result = Evaluate("string", Apply("formatNumber", "x '%.1f'"), Inputs());
  std::setlocale(LC_ALL, before.c_str());
  EXPECT_EQ(Show(result), "text 2.5");
  if (!hasComma) GTEST_SKIP() << "this machine has no locale with a decimal comma";
}

}  // namespace
