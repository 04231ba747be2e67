#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/components/keltransform/TransformTestSupport.h"
#include "tests/support/CaseName.h"

namespace {

using namespace KelTransformTest;
using KelTest::CaseName;
using testing::HasSubstr;

// The derived field "bad" of type double stands on line 17, its expression on line 20.
struct RefusalCase {
  const char* name;
  const char* expression;
  const char* reason;
};

void PrintTo(const RefusalCase& row, std::ostream* stream) { *stream << row.expression; }

class ExpressionRefusalTest : public testing::TestWithParam<RefusalCase> {};

TEST_P(ExpressionRefusalTest, AddPMML_BadExpression_NamesElementAndLine) {
  KelTransformation transformation;
  std::string fields = "\n";
  fields += Derived("bad", "double", std::string("\n").append(GetParam().expression));
  const std::string text = Pmml(StandardFields(), fields);
  const KelStatus status = AddPmml(transformation, text);
  EXPECT_TRUE(status.IsError());
  EXPECT_EQ(status.GetErrorCode(), 109);
  EXPECT_THAT(KelDiagnostics::Last(), HasSubstr(GetParam().reason));
  EXPECT_THAT(KelDiagnostics::Last(), HasSubstr("\"bad\""));
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, ExpressionRefusalTest,
    testing::Values(
        RefusalCase{"aggregate_multiset", R"(<Aggregate field="x" function="multiset"/>)",
                    R"(<Aggregate function="multiset"> line 20: isn't supported: a field has one value)"},
        RefusalCase{"aggregate_by_group", R"(<Aggregate field="x" function="sum" groupField="i"/>)",
                    R"(<Aggregate groupField="i"> line 20: isn't supported: a record holds the values of one group)"},
        RefusalCase{"aggregate_by_query", R"(<Aggregate field="x" function="sum" sqlWhere="i > 1"/>)", "sqlWhere"},
        RefusalCase{"aggregate_function", R"(<Aggregate field="x" function="median"/>)", "count, sum, average, min"},
        RefusalCase{"aggregate_texts", R"(<Aggregate field="s" function="min"/>)",
                    "isn't for values of the type string"},
        RefusalCase{"aggregate_dates", R"(<Aggregate field="day" function="average"/>)", "of the type date"},
        RefusalCase{"aggregate_unknown", R"(<Aggregate field="z" function="sum"/>)",
                    R"(<Aggregate field="z"> line 20: there is no such field whose values)"},
        RefusalCase{"aggregate_derived", R"(<Aggregate field="bad" function="sum"/>)", "depends on itself"},
        RefusalCase{"lag", R"(<Lag field="x"/>)", "<Lag> line 20"},
        RefusalCase{"unknown_element", "<Quantile/>", "<Quantile> line 20: is not supported"},
        RefusalCase{"no_expression", "", "no expression"},
        RefusalCase{"two_expressions", R"(<FieldRef field="x"/><Constant>1</Constant>)",
                    "<Constant> line 20: the <DerivedField> has another expression already"},
        RefusalCase{"interval", R"(<FieldRef field="x"/><Interval closure="openOpen" leftMargin="0"/>)",
                    "<Interval> line 20: is not supported"},
        RefusalCase{"missing_value", R"(<FieldRef field="x"/><Value value="-1" property="missing"/>)",
                    R"(<Value property="missing"> line 20: has no meaning in a derived field)"},
        RefusalCase{"invalid_value", R"(<FieldRef field="x"/><Value value="-1" property="invalid"/>)",
                    R"(<Value property="invalid"> line 20)"},
        RefusalCase{"unknown_field", R"(<FieldRef field="z"/>)",
                    R"(<FieldRef field="z"> line 20: there is no such field)"},
        RefusalCase{"no_field", "<FieldRef/>", "field"},
        RefusalCase{"mapped_missing_no_number", R"(<FieldRef field="i" mapMissingTo="none"/>)",
                    R"(<FieldRef mapMissingTo="none"> line 20: is no value of the type integer)"},
        RefusalCase{"constant_no_number", "<Constant>many</Constant>", R"("many" is no value of the type double)"},
        RefusalCase{"constant_own_type_unknown", R"(<Constant dataType="decimal">1</Constant>)",
                    R"(dataType="decimal")"},
        RefusalCase{"constant_cast_fails", R"(<Constant dataType="string">many</Constant>)", "double"},
        RefusalCase{"time_as_number_of_days", R"(<Constant dataType="date">2004-02-30</Constant>)", "type date"}),
    CaseName());

INSTANTIATE_TEST_SUITE_P(
    Functions, ExpressionRefusalTest,
    testing::Values(
        RefusalCase{"unknown", R"(<Apply function="log2"><FieldRef field="x"/></Apply>)",
                    R"(<Apply function="log2"> line 20: there is no such function)"},
        RefusalCase{"case_counts", R"(<Apply function="LN"><FieldRef field="x"/></Apply>)", "no such function"},
        RefusalCase{"unknown_with_prefix", R"(<Apply function="x-log2"><FieldRef field="x"/></Apply>)", "x-log2"},
        RefusalCase{"no_name", R"(<Apply><FieldRef field="x"/></Apply>)", "function"},
        RefusalCase{"pattern_malformed",
                    R"(<Apply function="matches"><FieldRef field="s"/><Constant>a(</Constant></Apply>)",
                    R"(<Constant> line 20: "a(" is no regular expression)"},
        RefusalCase{"pattern_empty", R"(<Apply function="matches"><FieldRef field="s"/><Constant/></Apply>)",
                    R"("" is no regular expression)"},
        RefusalCase{"pattern_of_the_record",
                    R"(<Apply function="matches"><FieldRef field="s"/><FieldRef field="t"/></Apply>)",
                    R"(<FieldRef> line 20: a regular expression must be a constant text)"},
        RefusalCase{"pattern_without_the_group", R"(<Apply function="replace"><FieldRef field="s"/>
                    <Constant>(a)</Constant><Constant>$2</Constant></Apply>)",
                    R"("$2" refers to a group that the pattern doesn't have)"},
        RefusalCase{"unknown_further_in",
                    "<Apply function=\"ln\"><Apply function=\"exp\">\n<Apply function=\"nothing\"/></Apply></Apply>",
                    R"(<Apply function="nothing"> line 21)"},
        RefusalCase{"no_expression_inside", R"(<Apply function="ln"><Field/></Apply>)", "<Field> line 20: this is no"},
        RefusalCase{"too_few", R"(<Apply function="+"><FieldRef field="x"/></Apply>)",
                    R"(<Apply function="+"> line 20: takes 2 arguments, not 1)"},
        RefusalCase{"too_many", R"(<Apply function="ln"><FieldRef field="x"/><FieldRef field="x"/></Apply>)",
                    "takes 1 argument, not 2"},
        RefusalCase{"one_of_two_counts", R"(<Apply function="if"><FieldRef field="b"/></Apply>)",
                    "takes 2 or 3 arguments, not 1"},
        RefusalCase{"no_arguments", R"(<Apply function="max"><Extension/></Apply>)",
                    "takes at least 1 argument, not 0"},
        RefusalCase{"constant_no_number", R"(<Apply function="ln"><Constant>many</Constant></Apply>)",
                    "<Constant> line 20: its value is no value of the type double"},
        RefusalCase{"number_for_date",
                    R"(<Apply function="dateDaysSinceYear"><FieldRef field="i"/><Constant>1960</Constant></Apply>)",
                    R"(<FieldRef> line 20: the function takes a date or time here, not a value of the type integer)"},
        RefusalCase{"time_for_date",
                    R"(<Apply function="dateDaysSinceYear"><FieldRef field="clock"/><Constant>1960</Constant></Apply>)",
                    "can't be converted"},
        RefusalCase{"date_as_text", R"(<Apply function="uppercase"><FieldRef field="day"/></Apply>)",
                    "can't be converted to string"},
        RefusalCase{"mapped_missing_no_number",
                    R"(<Apply function="ln" mapMissingTo="none"><FieldRef field="x"/></Apply>)",
                    R"(<Apply mapMissingTo="none"> line 20)"},
        RefusalCase{"default_no_number", R"(<Apply function="ln" defaultValue=""><FieldRef field="x"/></Apply>)",
                    R"(<Apply defaultValue=""> line 20)"},
        RefusalCase{"unknown_treatment",
                    R"(<Apply function="ln" invalidValueTreatment="asValue"><FieldRef field="x"/></Apply>)",
                    "returnInvalid, asIs, asMissing"}),
    CaseName());

class PatternRefusalTest : public testing::TestWithParam<const char*> {};

// A pattern of the document that printf would take for an address, for memory without end, or for nothing.
TEST_P(PatternRefusalTest, AddPMML_BadPattern_QuotesIt) {
  const std::string call = std::string("<Apply function=\"formatNumber\"><FieldRef field=\"x\"/><Constant>") +
                           GetParam() + "</Constant></Apply>";
  KelTransformation transformation;
  EXPECT_TRUE(AddPmml(transformation, Pmml(StandardFields(), Derived("bad", "string", call))).IsError());
  EXPECT_THAT(KelDiagnostics::Last(), HasSubstr(std::string("\"") + GetParam() + "\" is no pattern"));
}

INSTANTIATE_TEST_SUITE_P(All, PatternRefusalTest,
                         testing::Values("%n", "%s", "%p", "%*d", "%999999999d", "%.201f", "%", "%d %d", "none", "%%",
                                         "%5", "%1$d", "%a", "%99999999999999999999d"));

TEST(PatternRefusalTest, AddPMML_BadDatetimePattern_QuotesIt) {
  for (const std::string pattern : {"%Q", "%", "%Y-%", "%5Y", "%EY"}) {
    KelTransformation transformation;
    const std::string call =
        R"(<Apply function="formatDatetime"><FieldRef field="day"/><Constant>)" + pattern + "</Constant></Apply>";
    EXPECT_TRUE(AddPmml(transformation, Pmml(StandardFields(), Derived("bad", "string", call))).IsError());
    EXPECT_THAT(KelDiagnostics::Last(), HasSubstr("\"" + pattern + "\" is no pattern"));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Norms, ExpressionRefusalTest,
    testing::Values(
        RefusalCase{"no_points", R"(<NormContinuous field="x"/>)", "two LinearNorm"},
        RefusalCase{"single_point", R"(<NormContinuous field="x"><LinearNorm orig="1" norm="1"/></NormContinuous>)",
                    "<NormContinuous> line 20"},
        RefusalCase{
            "same_point_twice",
            R"(<NormContinuous field="x"><LinearNorm orig="1" norm="1"/><LinearNorm orig="1" norm="1"/></NormContinuous>)",
            "two LinearNorm with different orig"},
        RefusalCase{
            "two_values_at_one_place",
            R"(<NormContinuous field="x"><LinearNorm orig="2" norm="1"/><LinearNorm orig="1" norm="0"/><LinearNorm orig="2" norm="3"/></NormContinuous>)",
            "have the orig 2"},
        RefusalCase{"orig_no_number", R"(<NormContinuous field="x"><LinearNorm orig="one" norm="1"/></NormContinuous>)",
                    R"(orig="one")"},
        RefusalCase{"norm_infinite", R"(<NormContinuous field="x"><LinearNorm orig="1" norm="INF"/></NormContinuous>)",
                    R"(norm="INF")"},
        RefusalCase{
            "points_too_far_apart",
            R"(<NormContinuous field="x"><LinearNorm orig="-1e308" norm="1"/><LinearNorm orig="1e308" norm="2"/></NormContinuous>)",
            "too far apart"},
        RefusalCase{
            "unknown_outliers",
            R"(<NormContinuous field="x" outliers="clip"><LinearNorm orig="1" norm="1"/><LinearNorm orig="2" norm="1"/></NormContinuous>)",
            "asIs, asMissingValues, asExtremeValues"},
        RefusalCase{
            "mapped_missing_no_number",
            R"(<NormContinuous field="x" mapMissingTo="a"><LinearNorm orig="1" norm="1"/><LinearNorm orig="2" norm="1"/></NormContinuous>)",
            R"(mapMissingTo="a")"},
        RefusalCase{"no_value", R"(<NormDiscrete field="x"/>)", "value"},
        // A literal that no value of the field can equal would make an indicator that is silently 0.
        RefusalCase{"value_of_wrong_type", R"(<NormDiscrete field="b" value="TRUE"/>)", R"(value="TRUE")"},
        RefusalCase{"other_method", R"(<NormDiscrete field="s" value="a" method="thermometer"/>)", "thermometer"}),
    CaseName());

INSTANTIATE_TEST_SUITE_P(
    Tables, ExpressionRefusalTest,
    testing::Values(
        RefusalCase{
            "bin_value_of_wrong_type",
            R"(<Discretize field="x"><DiscretizeBin binValue="low"><Interval closure="openOpen" leftMargin="1"/></DiscretizeBin></Discretize>)",
            R"(<DiscretizeBin binValue="low"> line 20)"},
        RefusalCase{"bin_without_interval", R"(<Discretize field="x"><DiscretizeBin binValue="1"/></Discretize>)",
                    "Interval"},
        RefusalCase{
            "unknown_closure",
            R"(<Discretize field="x"><DiscretizeBin binValue="1"><Interval closure="open" leftMargin="1"/></DiscretizeBin></Discretize>)",
            "openOpen, openClosed, closedOpen, closedClosed"},
        RefusalCase{
            "no_margin",
            R"(<Discretize field="x"><DiscretizeBin binValue="1"><Interval closure="openOpen"/></DiscretizeBin></Discretize>)",
            "margin"},
        RefusalCase{
            "margins_swapped",
            R"(<Discretize field="x"><DiscretizeBin binValue="1"><Interval closure="openOpen" leftMargin="2" rightMargin="1"/></DiscretizeBin></Discretize>)",
            "above the right margin"},
        RefusalCase{
            "margin_nan",
            R"(<Discretize field="x"><DiscretizeBin binValue="1"><Interval closure="openOpen" leftMargin="NaN"/></DiscretizeBin></Discretize>)",
            R"(leftMargin="NaN")"},
        RefusalCase{
            "two_intervals",
            R"(<Discretize field="x"><DiscretizeBin binValue="1"><Interval closure="openOpen" leftMargin="2"/><Interval closure="openOpen" leftMargin="9"/></DiscretizeBin></Discretize>)",
            "<Interval> line 20: is a second one in <DiscretizeBin>"},
        RefusalCase{"default_of_wrong_type", R"(<Discretize field="x" defaultValue="none"/>)",
                    R"(defaultValue="none")"},
        RefusalCase{"no_output_column", R"(<MapValues><FieldColumnPair field="s" column="c"/></MapValues>)",
                    "outputColumn"},
        RefusalCase{"table_outside",
                    R"(<MapValues outputColumn="o"><FieldColumnPair field="s" column="c"/><TableLocator/></MapValues>)",
                    "<TableLocator> line 20"},
        RefusalCase{
            "two_tables",
            R"(<MapValues outputColumn="o"><FieldColumnPair field="s" column="c"/><InlineTable/><InlineTable/></MapValues>)",
            "<InlineTable> line 20: is a second one in <MapValues>"},
        RefusalCase{
            "two_cells_of_a_column",
            R"(<MapValues outputColumn="o"><FieldColumnPair field="s" column="c"/><InlineTable><row><c>1</c><o>1</o><o>2</o></row></InlineTable></MapValues>)",
            "<o> line 20: stands in its row twice"},
        RefusalCase{
            "unknown_output_column",
            R"(<MapValues outputColumn="oo"><FieldColumnPair field="s" column="c"/><InlineTable><row><c>1</c><o>1</o></row></InlineTable></MapValues>)",
            R"(outputColumn="oo")"},
        RefusalCase{
            "unknown_key_column",
            R"(<MapValues outputColumn="o"><FieldColumnPair field="s" column="cc"/><InlineTable><row><c>1</c><o>1</o></row></InlineTable></MapValues>)",
            R"(column="cc")"},
        RefusalCase{
            "key_of_wrong_type",
            R"(<MapValues outputColumn="o"><FieldColumnPair field="i" column="c"/><InlineTable><row><c>one</c><o>1</o></row></InlineTable></MapValues>)",
            R"(<c> line 20: "one" is no value of the type integer)"},
        RefusalCase{
            "output_of_wrong_type",
            R"(<MapValues outputColumn="o"><FieldColumnPair field="i" column="c"/><InlineTable><row><c>1</c><o>one</o></row></InlineTable></MapValues>)",
            R"("one" is no value of the type double)"}),
    CaseName());

struct DocumentCase {
  const char* name;
  std::string document;
  long code;
  const char* reason;
};

void PrintTo(const DocumentCase& row, std::ostream* stream) { *stream << row.document; }

class DocumentRefusalTest : public testing::TestWithParam<DocumentCase> {};

TEST_P(DocumentRefusalTest, AddPMML_BadDocument_GivesCodeAndReason) {
  KelTransformation transformation;
  const KelStatus status = AddPmml(transformation, GetParam().document);
  EXPECT_TRUE(status.IsError());
  EXPECT_EQ(status.GetErrorCode(), GetParam().code);
  EXPECT_THAT(KelDiagnostics::Last(), HasSubstr(GetParam().reason));
}

std::string OfField(const std::string& field) { return Pmml(field, ""); }

INSTANTIATE_TEST_SUITE_P(
    All, DocumentRefusalTest,
    testing::Values(
        DocumentCase{"empty", "", 104, ""},
        DocumentCase{"truncated", "<PMML version=\"4.0\"><DataDictionary>", 104, ""},
        DocumentCase{"other_root", "<Settings/>", 105, "PMML"},
        DocumentCase{"two_dictionaries", "<PMML version=\"4.0\"><DataDictionary/>\n<DataDictionary/></PMML>", 109,
                     "<DataDictionary> line 2: is a second one in <PMML>"},
        DocumentCase{"two_transformation_dictionaries",
                     "<PMML version=\"4.0\"><TransformationDictionary/>\n<TransformationDictionary/></PMML>", 109,
                     "<TransformationDictionary> line 2"},
        DocumentCase{"field_without_name", OfField(R"(<DataField optype="continuous" dataType="double"/>)"), 109,
                     "name"},
        DocumentCase{"field_without_type", OfField(R"(<DataField name="q" optype="continuous"/>)"), 109, "dataType"},
        DocumentCase{"unknown_type", OfField(R"(<DataField name="q" optype="continuous" dataType="complex"/>)"), 109,
                     R"(<DataField dataType="complex"> line 2)"},
        DocumentCase{"unknown_optype", OfField(R"(<DataField name="q" optype="cyclic" dataType="double"/>)"), 109,
                     R"(optype="cyclic")"},
        DocumentCase{
            "unknown_property",
            OfField(
                R"(<DataField name="q" optype="continuous" dataType="double"><Value value="1" property="odd"/></DataField>)"),
            109, "valid, invalid, missing"},
        DocumentCase{
            "field_twice",
            OfField(
                R"(<DataField name="q" optype="continuous" dataType="double"/><DataField name="q" optype="continuous" dataType="double"/>)"),
            109, "twice"},
        DocumentCase{"derived_twice",
                     Pmml(StandardFields(), Derived("d", "double", "<Constant>1</Constant>") +
                                                Derived("d", "double", "<Constant>2</Constant>")),
                     109, R"(<DerivedField name="d"> line 19)"},
        DocumentCase{"derived_named_like_field",
                     Pmml(StandardFields(), Derived("x", "double", "<FieldRef field=\"y\"/>")), 109,
                     R"(<DerivedField name="x"> line 18: is the name of a data field)"},
        DocumentCase{"derived_without_name",
                     Pmml(StandardFields(), R"(<DerivedField optype="continuous" dataType="double"/>)"), 109, "name"},
        DocumentCase{"time_as_date", Pmml(StandardFields(), Derived("d", "date", "<FieldRef field=\"clock\"/>")), 109,
                     "can't be converted"},
        DocumentCase{"date_as_text", Pmml(StandardFields(), Derived("d", "string", "<FieldRef field=\"day\"/>")), 109,
                     "a value of the type date can't be converted to string"},
        DocumentCase{"cycle",
                     Pmml(StandardFields(), Derived("p", "double", "<FieldRef field=\"a\"/>") +
                                                Derived("a", "double", "<FieldRef field=\"b2\"/>") +
                                                Derived("b2", "double", "<FieldRef field=\"c\"/>") +
                                                Derived("c", "double", "<FieldRef field=\"a\"/>")),
                     109, R"(<DerivedField name="c"> line 21: depends on itself: "a" -> "b2" -> "c" -> "a")"},
        DocumentCase{"own_cycle", Pmml(StandardFields(), Derived("a", "double", "<FieldRef field=\"a\"/>")), 109,
                     R"("a" -> "a")"}),
    CaseName());

}  // namespace
