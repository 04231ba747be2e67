#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

#include "tests/components/keltransform/TransformTestSupport.h"
#include "tests/support/CaseName.h"
#include "tests/support/XmlPlatform.h"

namespace {

using namespace KelTransformTest;
using KelTest::CaseName;

const auto* const kPlatform = KelTest::XmlPlatform::KeepUp();
const Value kNull;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct ExpressionCase {
  const char* name;
  const char* type;  // of the derived field; empty: none
  std::string expression;
  NamedValues inputs;
  Value expected;
};

void PrintTo(const ExpressionCase& row, std::ostream* stream) { *stream << row.expression; }

class ExpressionTest : public testing::TestWithParam<ExpressionCase> {};

TEST_P(ExpressionTest, Evaluate_KnownAnswer) {
  const Value result = Evaluate(GetParam().type, GetParam().expression, GetParam().inputs);
  const Value& expected = GetParam().expected;
  ASSERT_EQ(result.GetType(), expected.GetType()) << Show(result);
  if (expected.GetType() == Value::kNumber) {
    EXPECT_DOUBLE_EQ(result.GetReal(), expected.GetReal());
  } else {
    EXPECT_EQ(Show(result), Show(expected));
  }
}

// The standard's own example of a logistic curve in three points. Between 0.01 and 3.07897: (1.212 - 0.01) / 3.06897 *
// 0.5.
std::string Curve(const std::string& attributes) {
  return "<NormContinuous field=\"x\" " + attributes +
         R"(><LinearNorm orig="0.01" norm="0"/><LinearNorm orig="3.07897" norm="0.5"/>)"
         R"(<LinearNorm orig="11.44" norm="1"/></NormContinuous>)";
}
// A scaling by a negative factor, as producers write it: its points descend. (x + 2) / -4.
const std::string kDescending =
    R"(<NormContinuous field="x"><LinearNorm orig="0" norm="-0.5"/><LinearNorm orig="-2" norm="0"/></NormContinuous>)";
const std::string kWithDuplicate =
    R"(<NormContinuous field="x"><LinearNorm orig="0" norm="0"/><LinearNorm orig="0" norm="0"/>)"
    R"(<LinearNorm orig="2" norm="3"/></NormContinuous>)";
const std::string kLevel =
    R"(<NormContinuous field="x"><LinearNorm orig="0" norm="5"/><LinearNorm orig="2" norm="5"/></NormContinuous>)";
const std::string kOfText =
    R"(<NormContinuous field="s"><LinearNorm orig="0" norm="0"/><LinearNorm orig="2" norm="3"/></NormContinuous>)";

INSTANTIATE_TEST_SUITE_P(
    NormContinuous, ExpressionTest,
    testing::Values(
        ExpressionCase{"first_segment", "double", Curve(""), {{"x", 1.212}}, 1.202 / 3.06897 * 0.5},
        ExpressionCase{"second_segment", "double", Curve(""), {{"x", 6.5}}, 0.5 + 3.42103 / 8.36103 * 0.5},
        ExpressionCase{"at_a_point", "double", Curve(""), {{"x", 3.07897}}, 0.5},
        ExpressionCase{"below_extrapolates", "double", Curve(""), {{"x", -1.0}}, -1.01 / 3.06897 * 0.5},
        ExpressionCase{"above_extrapolates", "double", Curve(""), {{"x", 12.2}}, 0.5 + 9.12103 / 8.36103 * 0.5},
        ExpressionCase{"below_extreme", "double", Curve("outliers=\"asExtremeValues\""), {{"x", -1.0}}, 0.0},
        ExpressionCase{"above_extreme", "double", Curve("outliers=\"asExtremeValues\""), {{"x", 12.2}}, 1.0},
        ExpressionCase{"extreme_inside", "double", Curve("outliers=\"asExtremeValues\""), {{"x", 3.07897}}, 0.5},
        ExpressionCase{"outlier_missing", "double", Curve("outliers=\"asMissingValues\""), {{"x", 12.2}}, kNull},
        ExpressionCase{"margin_is_no_outlier", "double", Curve("outliers=\"asMissingValues\""), {{"x", 11.44}}, 1.0},
        ExpressionCase{"outlier_missing_mapped",
                       "double",
                       Curve("outliers=\"asMissingValues\" mapMissingTo=\"0.25\""),
                       {{"x", 12.2}},
                       0.25},
        ExpressionCase{"missing", "double", Curve(""), {{"x", kNull}}, kNull},
        ExpressionCase{"absent_field", "double", Curve(""), {}, kNull},
        ExpressionCase{"missing_mapped", "double", Curve("mapMissingTo=\"7\""), {{"x", kNull}}, 7},
        ExpressionCase{"nan_is_missing", "double", Curve("mapMissingTo=\"7\""), {{"x", std::nan("")}}, 7},
        // An invalid value must not pass for a missing one: the mapped number would be a silent wrong one.
        ExpressionCase{"invalid", "double", Curve("mapMissingTo=\"7\""), {{"x", "abc"}}, kNull},
        ExpressionCase{"text_of_number", "double", Curve(""), {{"x", " 3.07897 "}}, 0.5},
        ExpressionCase{"descending_points", "double", kDescending, {{"x", 6}}, -2.0},
        ExpressionCase{"duplicate_point", "double", kWithDuplicate, {{"x", 1}}, 1.5},
        ExpressionCase{"infinite", "double", Curve(""), {{"x", kInfinity}}, kInfinity},
        ExpressionCase{"infinite_on_level_segment", "double", kLevel, {{"x", kInfinity}}, kNull},
        ExpressionCase{"of_text_field", "double", kOfText, {{"s", "1"}}, 1.5},
        ExpressionCase{"of_text_that_is_no_number", "double", kOfText, {{"s", "one"}}, kNull},
        ExpressionCase{"of_number_in_text_field", "double", kOfText, {{"s", 1}}, 1.5},
        ExpressionCase{"rounded_to_float", "float", kWithDuplicate, {{"x", 0.1}}, static_cast<double>(0.15F)},
        ExpressionCase{"whole_as_integer", "integer", kWithDuplicate, {{"x", 2}}, 3},
        ExpressionCase{"fraction_is_no_integer", "integer", kWithDuplicate, {{"x", 1}}, kNull},
        ExpressionCase{"as_text", "string", kWithDuplicate, {{"x", 1}}, "1.5"},
        ExpressionCase{"untyped", "", kWithDuplicate, {{"x", 1}}, 1.5}),
    CaseName());

std::string Indicator(const std::string& field, const std::string& value, const std::string& more = "") {
  return "<NormDiscrete field=\"" + field + "\" value=\"" + value + "\" " + more + "/>";
}

INSTANTIATE_TEST_SUITE_P(
    NormDiscrete, ExpressionTest,
    testing::Values(
        ExpressionCase{"equal", "double", Indicator("s", "a"), {{"s", "a"}}, 1},
        ExpressionCase{"other", "double", Indicator("s", "a"), {{"s", "b"}}, 0},
        ExpressionCase{"case_counts", "double", Indicator("s", "a"), {{"s", "A"}}, 0},
        ExpressionCase{"blanks_count", "double", Indicator("s", " a"), {{"s", "a"}}, 0},
        ExpressionCase{"method", "double", Indicator("s", "a", "method=\"indicator\""), {{"s", "a"}}, 1},
        ExpressionCase{"missing", "double", Indicator("s", "a"), {{"s", kNull}}, kNull},
        ExpressionCase{"missing_mapped", "double", Indicator("s", "a", "mapMissingTo=\"0.5\""), {{"s", kNull}}, 0.5},
        ExpressionCase{"number_by_value", "double", Indicator("i", "1.0"), {{"i", "1"}}, 1},
        ExpressionCase{"text_by_letters", "double", Indicator("s", "1.0"), {{"s", "1"}}, 0},
        ExpressionCase{"number_in_text_field", "double", Indicator("s", "100000"), {{"s", 100000.0}}, 1},
        ExpressionCase{"float_literal", "double", Indicator("f", "0.1"), {{"f", 0.1}}, 1},
        ExpressionCase{"boolean", "double", Indicator("b", "true"), {{"b", 1}}, 1},
        ExpressionCase{"boolean_text", "double", Indicator("b", "0"), {{"b", "false"}}, 1},
        ExpressionCase{"boolean_invalid", "double", Indicator("b", "0", "mapMissingTo=\"1\""), {{"b", "no"}}, kNull},
        ExpressionCase{"date", "double", Indicator("day", "2004-08-20"), {{"day", "2004-08-20"}}, 1},
        ExpressionCase{"composite_is_invalid",
                       "double",
                       Indicator("s", "a"),
                       {{"s",
                         [] {
                           Value members;
                           members["a"] = 1;
                           return members;
                         }()}},
                       kNull},
        ExpressionCase{
            "declared_missing", "double", Indicator("listed", "a", "mapMissingTo=\"9\""), {{"listed", "?"}}, 9},
        ExpressionCase{"unlisted_is_a_value", "double", Indicator("listed", "a"), {{"listed", "z"}}, 0},
        ExpressionCase{"boolean_result", "boolean", Indicator("s", "a"), {{"s", "a"}}, "true"},
        ExpressionCase{"text_result", "string", Indicator("s", "a"), {{"s", "b"}}, "0"}),
    CaseName());

// Below 1: low; from 1 to 5: mid; above 5 to 9: high; the last bin repeats what another has already.
std::string Bins(const std::string& attributes) {
  return "<Discretize field=\"x\" " + attributes +
         R"(><DiscretizeBin binValue="low"><Interval closure="openOpen" rightMargin="1"/></DiscretizeBin>)"
         R"(<DiscretizeBin binValue="mid"><Interval closure="closedClosed" leftMargin="1" rightMargin="5"/></DiscretizeBin>)"
         R"(<DiscretizeBin binValue="high"><Interval closure="openClosed" leftMargin="5" rightMargin="9"/></DiscretizeBin>)"
         R"(<DiscretizeBin binValue="again"><Interval closure="closedOpen" leftMargin="5" rightMargin="10"/></DiscretizeBin>)"
         "</Discretize>";
}
std::string FloatBin(const std::string& closure) {
  return R"(<Discretize field="f"><DiscretizeBin binValue="in"><Interval closure=")" + closure +
         R"(" leftMargin="0" rightMargin="0.1"/></DiscretizeBin></Discretize>)";
}
const std::string kNumberBin =
    R"(<Discretize field="x" defaultValue="-1" dataType="integer"><DiscretizeBin binValue="2">)"
    R"(<Interval closure="closedOpen" leftMargin="0"/></DiscretizeBin></Discretize>)";
const std::string kIsMissing = R"(<Discretize field="s" mapMissingTo="1" defaultValue="0"/>)";

INSTANTIATE_TEST_SUITE_P(
    Discretize, ExpressionTest,
    testing::Values(
        ExpressionCase{"below_open_margin", "string", Bins(""), {{"x", 0.999}}, "low"},
        ExpressionCase{"far_below", "string", Bins(""), {{"x", -1e300}}, "low"},
        ExpressionCase{"closed_left_margin", "string", Bins(""), {{"x", 1}}, "mid"},
        ExpressionCase{"closed_right_margin_first_match", "string", Bins(""), {{"x", 5}}, "mid"},
        ExpressionCase{"open_left_margin", "string", Bins(""), {{"x", 5.001}}, "high"},
        ExpressionCase{"closed_right_margin", "string", Bins(""), {{"x", 9}}, "high"},
        ExpressionCase{"overlap_takes_the_first_that_holds", "string", Bins(""), {{"x", 9.5}}, "again"},
        ExpressionCase{"open_right_margin", "string", Bins(""), {{"x", 10}}, kNull},
        ExpressionCase{"no_bin_default", "string", Bins("defaultValue=\"none\""), {{"x", 10}}, "none"},
        ExpressionCase{"missing", "string", Bins("defaultValue=\"none\""), {{"x", kNull}}, kNull},
        ExpressionCase{"missing_mapped", "string", Bins("mapMissingTo=\"gone\""), {{"x", kNull}}, "gone"},
        ExpressionCase{"invalid", "string", Bins("mapMissingTo=\"gone\" defaultValue=\"none\""), {{"x", "abc"}}, kNull},
        // A float is on the margin of its own text, though it lies above that number.
        ExpressionCase{"float_on_a_closed_margin", "string", FloatBin("closedClosed"), {{"f", 0.1}}, "in"},
        ExpressionCase{"float_on_an_open_margin", "string", FloatBin("closedOpen"), {{"f", 0.1}}, kNull},
        ExpressionCase{"own_type", "double", kNumberBin, {{"x", 0}}, 2},
        ExpressionCase{"own_type_default", "double", kNumberBin, {{"x", -0.5}}, -1},
        ExpressionCase{"own_type_as_text", "string", kNumberBin, {{"x", 3}}, "2"},
        ExpressionCase{"without_bins_missing", "double", kIsMissing, {{"s", kNull}}, 1},
        ExpressionCase{"without_bins_other", "double", kIsMissing, {{"s", "any text"}}, 0}),
    CaseName());

std::string Mapping(const std::string& attributes, const std::string& rows) {
  return "<MapValues outputColumn=\"out\" " + attributes +
         R"(><FieldColumnPair field="s" column="band"/><FieldColumnPair field="i" column="state"/><InlineTable>)" +
         rows + "</InlineTable></MapValues>";
}
const std::string kRows =
    "<row><band>1</band><state>1</state><out>20000</out></row>"
    "<row><state>2.0</state><out>10000</out><band>1</band></row>"
    "<row><band>1</band><state>1</state><out>77</out></row>"
    "<row><band>x</band><out>88</out></row>"
    "<row><band>x</band><state>3</state></row>"
    "<row><band> </band><state>-0</state><out>5</out></row>";
const std::string kPrefixed =
    R"(<MapValues outputColumn="data:out" xmlns:data="urn:d"><FieldColumnPair field="s" column="data:band"/>)"
    R"(<InlineTable><row><data:band>a</data:band><data:out>A</data:out></row></InlineTable></MapValues>)";
const std::string kWithoutTable =
    R"(<MapValues outputColumn="none" mapMissingTo="1" defaultValue="0"><FieldColumnPair field="s" column="c"/></MapValues>)";
const std::string kByDate =
    R"(<MapValues outputColumn="out"><FieldColumnPair field="day" column="day"/><FieldColumnPair field="b" column="b"/>)"
    R"(<InlineTable><row><day>2004-08-20</day><b>true</b><out>found</out></row></InlineTable></MapValues>)";

INSTANTIATE_TEST_SUITE_P(
    MapValues, ExpressionTest,
    testing::Values(
        ExpressionCase{"row_found_first_wins", "double", Mapping("", kRows), {{"s", "1"}, {"i", 1}}, 20000},
        ExpressionCase{"columns_in_any_order", "double", Mapping("", kRows), {{"s", "1"}, {"i", 2}}, 10000},
        ExpressionCase{"text_key_is_no_number", "double", Mapping("", kRows), {{"s", "1.0"}, {"i", 1}}, kNull},
        ExpressionCase{"number_in_text_key", "double", Mapping("", kRows), {{"s", 1}, {"i", "2"}}, 10000},
        ExpressionCase{"zeros_are_equal", "double", Mapping("", kRows), {{"s", " "}, {"i", 0}}, 5},
        ExpressionCase{"row_without_key_matches_nothing", "double", Mapping("", kRows), {{"s", "x"}, {"i", 9}}, kNull},
        ExpressionCase{
            "row_without_output", "double", Mapping("defaultValue=\"3\"", kRows), {{"s", "x"}, {"i", 3}}, kNull},
        ExpressionCase{"no_row_default", "double", Mapping("defaultValue=\"3\"", kRows), {{"s", "1"}, {"i", 4}}, 3},
        ExpressionCase{"one_missing", "double", Mapping("defaultValue=\"3\"", kRows), {{"s", "1"}}, kNull},
        ExpressionCase{"one_missing_mapped",
                       "double",
                       Mapping("mapMissingTo=\"-1\" defaultValue=\"3\"", kRows),
                       {{"s", kNull}, {"i", 1}},
                       -1},
        ExpressionCase{"one_invalid",
                       "double",
                       Mapping("mapMissingTo=\"-1\" defaultValue=\"3\"", kRows),
                       {{"s", kNull}, {"i", 1.5}},
                       kNull},
        ExpressionCase{"own_type", "string", Mapping("dataType=\"integer\"", kRows), {{"s", "1"}, {"i", 1}}, "20000"},
        ExpressionCase{"prefixed_columns", "string", kPrefixed, {{"s", "a"}}, "A"},
        ExpressionCase{"without_table_missing", "double", kWithoutTable, {{"s", kNull}}, 1},
        ExpressionCase{"without_table_other", "double", kWithoutTable, {{"s", "a"}}, 0},
        ExpressionCase{"empty_table", "double", Mapping("defaultValue=\"3\"", ""), {{"s", "1"}, {"i", 4}}, 3},
        ExpressionCase{"typed_keys", "string", kByDate, {{"day", 12650}, {"b", "1"}}, "found"}),
    CaseName());

const std::string kRef = "<FieldRef field=\"";

INSTANTIATE_TEST_SUITE_P(
    FieldRefAndConstant, ExpressionTest,
    testing::Values(
        ExpressionCase{"copies_text",
                       "string",
                       kRef + "s\"/>",
                       {{"s", "no category of the document"}},
                       "no category of the document"},
        ExpressionCase{"copies_missing", "string", kRef + "s\"/>", {{"s", kNull}}, kNull},
        ExpressionCase{"missing_mapped", "string", kRef + "s\" mapMissingTo=\"gone\"/>", {{"s", kNull}}, "gone"},
        ExpressionCase{"mapped_and_cast", "double", kRef + "i\" mapMissingTo=\"4\"/>", {{"i", kNull}}, 4},
        ExpressionCase{"invalid_not_mapped", "double", kRef + "i\" mapMissingTo=\"4\"/>", {{"i", "?"}}, kNull},
        ExpressionCase{"declared_missing_number", "double", kRef + "marked\"/>", {{"marked", -9.0}}, kNull},
        ExpressionCase{"declared_missing_text_of_number", "double", kRef + "marked\"/>", {{"marked", "-9.0"}}, kNull},
        ExpressionCase{
            "declared_missing_word", "double", kRef + "marked\" mapMissingTo=\"1\"/>", {{"marked", "N/A"}}, 1},
        ExpressionCase{"not_declared_missing", "double", kRef + "marked\"/>", {{"marked", 9}}, 9},
        ExpressionCase{
            "missing_mark_number", "double", kRef + "x\"/>", {{"x", KelCommon_1_3::KelMV::gMissingValue}}, kNull},
        ExpressionCase{"text_to_number", "double", kRef + "s\"/>", {{"s", " 1e3 "}}, 1000},
        ExpressionCase{"text_to_integer", "integer", kRef + "s\"/>", {{"s", "5.0"}}, 5},
        ExpressionCase{"text_to_date", "date", kRef + "s\"/>", {{"s", "1970-01-31"}}, "1970-01-31"},
        ExpressionCase{"number_to_text", "string", kRef + "x\"/>", {{"x", 0.1}}, "0.1"},
        ExpressionCase{"float_to_text", "string", kRef + "f\"/>", {{"f", 0.1}}, "0.1"},
        ExpressionCase{"whole_float_to_text", "string", kRef + "f\"/>", {{"f", 123456792}}, "123456792"},
        ExpressionCase{"small_float_to_text", "string", kRef + "f\"/>", {{"f", -1.5e-7}}, "-1.5e-07"},
        ExpressionCase{"number_to_boolean", "boolean", kRef + "x\"/>", {{"x", 0}}, "false"},
        ExpressionCase{"two_is_no_boolean", "boolean", kRef + "x\"/>", {{"x", 2}}, kNull},
        ExpressionCase{"boolean_to_text", "string", kRef + "b\"/>", {{"b", 1}}, "true"},
        ExpressionCase{"boolean_to_number", "double", kRef + "b\"/>", {{"b", "true"}}, 1},
        ExpressionCase{"double_to_float", "float", kRef + "x\"/>", {{"x", 0.1}}, static_cast<double>(0.1F)},
        ExpressionCase{"float_input_is_rounded", "double", kRef + "f\"/>", {{"f", 0.1}}, static_cast<double>(0.1F)},
        ExpressionCase{"integer_input_with_fraction", "double", kRef + "i\"/>", {{"i", 0.5}}, kNull},
        ExpressionCase{
            "date_to_days_since_1960", "dateDaysSince[1960]", kRef + "day\"/>", {{"day", "2003-04-01"}}, 15796},
        ExpressionCase{"moment_to_seconds_since_1960",
                       "dateTimeSecondsSince[1960]",
                       kRef + "moment\"/>",
                       {{"moment", "1960-01-03T03:30:03"}},
                       185403},
        ExpressionCase{"time_to_seconds", "timeSeconds", kRef + "clock\"/>", {{"clock", "05:23:30"}}, 19410},
        ExpressionCase{
            "moment_to_date", "date", kRef + "moment\"/>", {{"moment", "1969-12-31T23:59:59"}}, "1969-12-31"},
        ExpressionCase{"moment_to_time", "time", kRef + "moment\"/>", {{"moment", "1969-12-31T23:59:59"}}, "23:59:59"},
        ExpressionCase{"date_to_moment", "dateTime", kRef + "day\"/>", {{"day", "1960-02-29"}}, "1960-02-29T00:00:00"},
        ExpressionCase{"date_since_1980", "dateDaysSince[1980]", kRef + "day\"/>", {{"day", "1980-01-01"}}, 0},
        ExpressionCase{"date_since_year_0", "dateDaysSince[0]", kRef + "day\"/>", {{"day", "0001-01-01"}}, 366},
        ExpressionCase{"constant_of_field_type", "double", "<Constant> 5 </Constant>", {}, 5},
        ExpressionCase{"constant_text_keeps_blanks", "string", "<Constant> 5 </Constant>", {}, " 5 "},
        ExpressionCase{"constant_own_type", "string", "<Constant dataType=\"double\">5.0</Constant>", {}, "5"},
        ExpressionCase{"constant_inferred_number", "", "<Constant>5.5</Constant>", {}, 5.5},
        ExpressionCase{"constant_inferred_text", "", "<Constant>5,5</Constant>", {}, "5,5"},
        ExpressionCase{"constant_empty_text", "string", "<Constant dataType=\"string\"/>", {}, ""},
        ExpressionCase{"constant_empty_number", "double", "<Constant dataType=\"double\"/>", {}, kNull},
        ExpressionCase{"constant_missing", "double", "<Constant missing=\"true\">1</Constant>", {}, kNull},
        ExpressionCase{
            "constant_float", "double", "<Constant dataType=\"float\">0.1</Constant>", {}, static_cast<double>(0.1F)}),
    CaseName());

TEST(ExpressionTest, Derived_TypeAttributeInLowerCase_IsRead) {
  KelTransformation transformation;
  const std::string field =
      R"(<DerivedField name="d" datatype="string" optype="categorical"><FieldRef field="x"/></DerivedField>)";
  ASSERT_TRUE(AddPmml(transformation, Pmml(StandardFields(), field)).IsOK()) << KelDiagnostics::Last();
  EXPECT_EQ(Show(Compute(transformation, {{"x", 1}}, {"d"}).front()), "text 1");
}

// The published example of the curve above, with its published digits.
TEST(ExpressionTest, NormContinuous_PublishedExample_GivesThePublishedNumbers) {
  const struct {
    double x;
    const char* outliers;
    double expected;
  } cases[] = {{1.212, "asIs", 0.19583},       {6.5, "asIs", 0.70458},  {-1.0, "asIs", -0.16455},
               {-1.0, "asExtremeValues", 0.0}, {12.2, "asIs", 1.04544}, {12.2, "asExtremeValues", 1.0}};
  for (const auto& row : cases) {
    const std::string curve = Curve("outliers=\"" + std::string(row.outliers) + "\"");
    EXPECT_NEAR(Evaluate("double", curve, {{"x", row.x}}).GetReal(), row.expected, 1e-5) << row.x;
  }
}

// Many bins are searched, few are tried in order: both must find the same bin, at margins above all.
TEST(ExpressionTest, Discretize_ManyBins_AgreesWithTryingThemInOrder) {
  const char* const closures[] = {"openOpen", "openClosed", "closedOpen", "closedClosed"};
  std::string bins;
  std::vector<std::pair<std::pair<double, double>, int>> plain;
  for (int bin = 0; bin < 40; ++bin) {
    const int closure = bin % 8 == 7 ? 3 : (bin * 7) % 3;  // closed on both sides where it stands alone
    const double left = bin % 8 == 7 ? bin : bin % 8 == 0 ? bin + 0.5 : bin;
    const double right = bin % 8 == 7 ? bin : bin % 8 == 6 ? bin + 0.5 : bin + 1;
    bins += "<DiscretizeBin binValue=\"" + std::to_string(bin) + "\"><Interval closure=\"" + closures[closure] +
            "\" leftMargin=\"" + std::to_string(left) + "\" rightMargin=\"" + std::to_string(right) +
            "\"/></DiscretizeBin>";
    plain.push_back({{left, right}, closure});
  }
  KelTransformation transformation;
  const std::string text = "<Discretize field=\"x\" defaultValue=\"-1\">" + bins + "</Discretize>";
  ASSERT_TRUE(AddPmml(transformation, Pmml(StandardFields(), Derived("d", "integer", text))).IsOK())
      << KelDiagnostics::Last();
  for (double x = -1.0; x <= 42.0; x += 0.25) {
    int expected = -1;
    for (int bin = 39; bin >= 0; --bin) {
      const auto& [margins, closure] = plain[static_cast<std::size_t>(bin)];
      const bool isRight = (closure >= 2 ? x >= margins.first : x > margins.first) &&
                           (closure % 2 == 1 ? x <= margins.second : x < margins.second);
      if (isRight) expected = bin;
    }
    EXPECT_EQ(Compute(transformation, {{"x", x}}, {"d"}).front().GetReal(), expected) << x;
  }
}

TEST(ExpressionTest, NormContinuous_ManyPoints_AgreesWithWalkingOverThem) {
  std::string points;
  for (int point = 0; point <= 50; ++point) {
    points += "<LinearNorm orig=\"" + std::to_string(point) + "\" norm=\"" + std::to_string(point * point) + "\"/>";
  }
  KelTransformation transformation;
  const std::string text = "<NormContinuous field=\"x\">" + points + "</NormContinuous>";
  ASSERT_TRUE(AddPmml(transformation, Pmml(StandardFields(), Derived("d", "double", text))).IsOK());
  for (double x = -2.0; x <= 53.0; x += 0.125) {
    const double from = std::min(49.0, std::max(0.0, std::ceil(x) - 1.0));
    const double expected = from * from + (x - from) * (2.0 * from + 1.0);
    EXPECT_DOUBLE_EQ(Compute(transformation, {{"x", x}}, {"d"}).front().GetReal(), expected) << x;
  }
}

TEST(ExpressionTest, MapValues_ManyRows_EachIsFound) {
  std::string rows;
  for (int row = 0; row < 5000; ++row) {
    rows += "<row><a>k" + std::to_string(row % 50) + "</a><b>" + std::to_string(row / 50) + "</b><out>" +
            std::to_string(row) + "</out></row>";
  }
  KelTransformation transformation;
  const std::string text = R"(<MapValues outputColumn="out" defaultValue="-1"><FieldColumnPair field="s" column="a"/>)"
                           R"(<FieldColumnPair field="i" column="b"/><InlineTable>)" +
                           rows + "</InlineTable></MapValues>";
  ASSERT_TRUE(AddPmml(transformation, Pmml(StandardFields(), Derived("d", "integer", text))).IsOK());
  for (int row = 0; row < 5100; ++row) {
    const NamedValues inputs = {{"s", Numbered("k", row % 50)}, {"i", row / 50}};
    EXPECT_EQ(Compute(transformation, inputs, {"d"}).front().GetReal(), row < 5000 ? row : -1);
  }
}

}  // namespace
