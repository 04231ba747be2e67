#include <cmath>
#include <gtest/gtest.h>

#include "tests/plugins/torvane/ModelHarness.h"
#include "tests/support/CaseName.h"

namespace TorvaneTest {
namespace {

const Value kNull = Value::NULL_VALUE;

struct TreatmentCase {
  const char* name;
  const char* declared;   // inside the declaration of "x"
  const char* treatment;  // of its mining field
  Value input;
  const char* expected;  // what the model sees; "null" if it gives no result
};

class NumericField : public testing::TestWithParam<TreatmentCase> {};

TEST_P(NumericField, TreatmentsRunInOrder) {
  const TreatmentCase& row = GetParam();
  Document document = Identity("x");
  document.dictionary = R"(<DataField name="x" optype="continuous" dataType="double">)" + std::string(row.declared) +
                        R"(</DataField><DataField name="t" optype="continuous" dataType="double"/>)";
  document.schema = "<MiningField name=\"x\" " + std::string(row.treatment) + "/>";
  EXPECT_EQ(Shown(Load(document).Score({{"x", row.input}}), "prediction"), row.expected);
}

const char* const kNone = "";
const char* const kRange = R"(<Interval closure="closedOpen" leftMargin="0" rightMargin="10"/>)";
const char* const kMarkers = R"(<Value value="-1" property="missing"/><Value value="N/A" property="missing"/>)";
const char* const kInvalids = R"(<Value value="7" property="invalid"/>)";
const char* const kListed = R"(<Value value="1"/><Value value="2.0"/>)";

INSTANTIATE_TEST_SUITE_P(
    Table, NumericField,
    testing::Values(
        TreatmentCase{"plain", kNone, "", 3.5, "3.5"}, TreatmentCase{"numeric_text", kNone, "", " 3.5 ", "3.5"},
        TreatmentCase{"text_is_invalid", kNone, "", "abc", "null"},
        TreatmentCase{"text_as_is_is_invalid_still", kNone,
                      R"(invalidValueTreatment="asIs" missingValueReplacement="1")", "abc", "null"},
        TreatmentCase{"text_as_missing", kNone, R"(invalidValueTreatment="asMissing" missingValueReplacement="1")",
                      "abc", "1"},
        TreatmentCase{"missing", kNone, "", kNull, "null"},
        TreatmentCase{"missing_replaced", kNone, R"(missingValueReplacement="2.5")", kNull, "2.5"},
        TreatmentCase{"nan_is_missing", kNone, R"(missingValueReplacement="2.5")", std::nan(""), "2.5"},
        TreatmentCase{"missing_mark_is_missing", kNone, R"(missingValueReplacement="2.5")", -1.7976931348623157e308,
                      "2.5"},
        TreatmentCase{"minus_infinity_is_a_number", kNone, R"(outliers="asExtremeValues" lowValue="-4")", -HUGE_VAL,
                      "-4"},
        TreatmentCase{"treatment_word_alone_does_nothing", kNone, R"(missingValueTreatment="asMean")", kNull, "null"},
        TreatmentCase{"missing_returns_invalid", kNone,
                      R"(missingValueTreatment="returnInvalid" missingValueReplacement="1")", kNull, "null"},
        TreatmentCase{"marker_as_number", kMarkers, R"(missingValueReplacement="5")", -1.0, "5"},
        TreatmentCase{"marker_as_text", kMarkers, R"(missingValueReplacement="5")", "N/A", "5"},
        TreatmentCase{"marker_only_others_valid", kMarkers, "", 4.0, "4"},
        TreatmentCase{"in_range", kRange, "", 0.0, "0"}, TreatmentCase{"at_open_margin", kRange, "", 10.0, "null"},
        TreatmentCase{"out_of_range_as_is", kRange, R"(invalidValueTreatment="asIs")", 11.0, "11"},
        TreatmentCase{"out_of_range_as_missing", kRange,
                      R"(invalidValueTreatment="asMissing" missingValueReplacement="5")", 11.0, "5"},
        TreatmentCase{"out_of_range_as_value", kRange, R"(invalidValueTreatment="asValue" invalidValueReplacement="6")",
                      11.0, "6"},
        TreatmentCase{"out_of_range_as_value_of_old", kRange,
                      R"(invalidValueTreatment="asIs" x-invalidValueReplacement="6")", 11.0, "6"},
        TreatmentCase{"declared_invalid", kInvalids, "", 7.0, "null"},
        TreatmentCase{"others_are_valid", kInvalids, "", 8.0, "8"}, TreatmentCase{"listed", kListed, "", 2.0, "2"},
        TreatmentCase{"not_listed", kListed, "", 3.0, "null"},
        TreatmentCase{"limits_without_outliers_do_nothing", kNone, R"(lowValue="0" highValue="1")", 3.0, "3"},
        TreatmentCase{"extreme_below", kNone, R"(outliers="asExtremeValues" lowValue="0" highValue="1")", -3.0, "0"},
        TreatmentCase{"extreme_above", kNone, R"(outliers="asExtremeValues" lowValue="0" highValue="1")", 3.0, "1"},
        TreatmentCase{"extreme_one_sided", kNone, R"(outliers="asExtremeValues" lowValue="0")", 3.0, "3"},
        TreatmentCase{"on_the_limit", kNone, R"(outliers="asMissingValues" lowValue="0" highValue="1")", 1.0, "1"},
        TreatmentCase{"outlier_missing", kNone, R"(outliers="asMissingValues" lowValue="0" highValue="1")", 3.0,
                      "null"},
        TreatmentCase{"outlier_replaced", kNone,
                      R"(outliers="asMissingValues" highValue="1" missingValueReplacement="9")", 3.0, "9"},
        // Validity comes first: an outlier outside the range isn't repaired.
        TreatmentCase{"invalid_before_outlier", kRange, R"(outliers="asExtremeValues" lowValue="0" highValue="5")",
                      12.0, "null"},
        TreatmentCase{"invalid_as_is_then_outlier", kRange,
                      R"(invalidValueTreatment="asIs" outliers="asExtremeValues" highValue="5")", 12.0, "5"},
        TreatmentCase{"replacement_is_not_checked", kRange, R"(missingValueReplacement="99")", kNull, "99"}),
    KelTest::CaseName());

TEST(TextField, UnlistedCategory_IsInvalidUnlessTheSchemaSaysOtherwise) {
  const auto predict = [](const std::string& treatment, const Value& value) {
    return Shown(Load({.body = R"(<Node><True/><Node score="yes"><SimplePredicate field="s" operator="equal" value="a"/>
                       </Node><Node score="no"><True/></Node></Node>)",
                       .schema = "<MiningField name=\"s\" " + treatment + "/>"})
                     .Score({{"s", value}}),
                 "prediction");
  };
  EXPECT_EQ(predict("", "a"), "yes");
  EXPECT_EQ(predict("", "z"), "null");
  EXPECT_EQ(predict(R"(invalidValueTreatment="asIs")", "z"), "no");
  EXPECT_EQ(predict(R"(invalidValueTreatment="asMissing" missingValueReplacement="a")", "z"), "yes");
  EXPECT_EQ(predict("", 1.0), "null");  // a number reads as the text "1", which isn't listed
}

// A mark needn't be a value of the field's type, whether a record gives it as a number or as a text.
TEST(BooleanField, MarkThatIsNoBoolean_IsMissing) {
  Document document = Identity("b");
  document.dictionary = R"(<DataField name="b" optype="categorical" dataType="boolean"><Value value="999"
      property="missing"/></DataField><DataField name="t" optype="continuous" dataType="double"/>)";
  document.schema = R"(<MiningField name="b" missingValueReplacement="true"/>)";
  const Scorer scorer = Load(document);
  EXPECT_EQ(scorer.Predict({{"b", 999.0}}).GetReal(), 1.0);
  EXPECT_EQ(scorer.Predict({{"b", "999"}}).GetReal(), 1.0);
  EXPECT_EQ(scorer.Predict({{"b", 0.0}}).GetReal(), 0.0);
  EXPECT_TRUE(scorer.Predict({{"b", 998.0}}).IsNull());
}

TEST(IntegerField, FractionIsInvalid) {
  const Scorer scorer = Load(Identity("n"));
  EXPECT_EQ(scorer.Predict({{"n", 3.0}}).GetReal(), 3.0);
  EXPECT_TRUE(scorer.Predict({{"n", 3.5}}).IsNull());
}

TEST(FloatField, IsRoundedToSinglePrecision) {
  EXPECT_EQ(Load(Identity("f")).Predict({{"f", 0.1}}).GetReal(), static_cast<double>(0.1F));
}

// 0.1 and 0.3 lie above the numbers of these texts in single precision, but they are the margins and limits.
TEST(FloatField, OnAMarginOrLimit_LiesWithin) {
  Document document = Identity("f");
  document.dictionary = R"(<DataField name="f" optype="continuous" dataType="float"><Interval closure="closedClosed"
      leftMargin="0" rightMargin="0.3"/></DataField><DataField name="t" optype="continuous" dataType="double"/>)";
  document.schema = R"(<MiningField name="f"/>)";
  EXPECT_EQ(Load(document).Predict({{"f", 0.3}}).GetReal(), static_cast<double>(0.3F));
  document.schema = R"(<MiningField name="f" outliers="asMissingValues" highValue="0.1"/>)";
  EXPECT_EQ(Load(document).Predict({{"f", 0.1}}).GetReal(), static_cast<double>(0.1F));
  document.schema = R"(<MiningField name="f" outliers="asExtremeValues" highValue="0.1"/>)";
  EXPECT_EQ(Load(document).Predict({{"f", 0.2}}).GetReal(), static_cast<double>(0.1F));
}

TEST(ActiveField, InvalidValueThatNothingRefersTo_StillSpoilsTheRecord) {
  const Scorer scorer = Load(Identity("x"));
  EXPECT_EQ(scorer.Predict({{"x", 1.0}, {"s", "a"}}).GetReal(), 1.0);
  EXPECT_TRUE(scorer.Predict({{"x", 1.0}, {"s", "unknown"}}).IsNull());
}

TEST(SupplementaryField, InvalidValue_SpoilsNothing) {
  Document document = Identity("x");
  document.schema = R"(<MiningField name="x"/><MiningField name="s" usageType="supplementary"/>)";
  EXPECT_EQ(Load(document).Predict({{"x", 1.0}, {"s", "unknown"}}).GetReal(), 1.0);
}

TEST(TextField, IntervalsOfTexts_AreRefused) {
  Document document = Identity("x");
  document.dictionary = R"(<DataField name="x" optype="continuous" dataType="double"/>
      <DataField name="s" optype="categorical" dataType="string"><Interval closure="openOpen" leftMargin="0"/></DataField>
      <DataField name="t" optype="continuous" dataType="double"/>)";
  document.schema = R"(<MiningField name="x"/><MiningField name="s"/>)";
  EXPECT_NE(ReasonOf(document).find("has intervals"), std::string::npos) << ReasonOf(document);
}

// --- Derived fields ---

const char* const kDictionary = R"(<TransformationDictionary>
<DerivedField name="d" optype="continuous" dataType="double"><NormContinuous field="x"><LinearNorm orig="0" norm="0"/>
<LinearNorm orig="1" norm="10"/></NormContinuous></DerivedField></TransformationDictionary>)";

Document Derived(const std::string& inSchema = "") {
  Document document = Identity("d");
  document.transformations = kDictionary;
  document.schema += inSchema;
  return document;
}

TEST(DerivedField, OfTheDictionary_IsComputedFromTreatedFieldsWhateverTheRecordHolds) {
  const Scorer scorer = Load(Derived());
  EXPECT_EQ(scorer.Predict({{"x", 0.5}}).GetReal(), 5.0);
  EXPECT_EQ(scorer.Predict({{"x", 0.5}, {"d", 77.0}}).GetReal(), 5.0);  // left over from another row
  Document replaced = Derived();
  replaced.schema = Document::AllFields(R"(missingValueReplacement="2")");
  EXPECT_EQ(Load(replaced).Predict({}).GetReal(), 20.0);
}

TEST(DerivedField, OfTheExtension_IsReadFromTheRecord) {
  const Scorer scorer =
      Load(Derived(R"(<Extension extender="kelscoring" name="DerivedFields"><MiningField name="d"/></Extension>)"));
  EXPECT_EQ(scorer.Predict({{"x", 0.5}, {"d", 77.0}}).GetReal(), 77.0);
  EXPECT_TRUE(scorer.Predict({{"x", 0.5}, {"d", kNull}}).IsNull());
}

TEST(DerivedField, TargetInTheExtension_IsComputed) {
  const Scorer scorer = Load(Derived(R"(<Extension extender="kelscoring" name="DerivedFields">
      <MiningField name="d" usageType="predicted"/></Extension>)"));
  EXPECT_EQ(scorer.Predict({{"x", 0.5}, {"d", 77.0}}).GetReal(), 5.0);
}

// Its order is that of its values, and its types are as leniently read as those of a field that is computed here.
TEST(DerivedField, ReadFromTheRecord_KeepsItsOrderAndImpliedTypes) {
  Document document{.body = R"(<Node><True/><Node score="yes"><SimplePredicate field="d" operator="lessThan" value="1"/>
      </Node><Node score="no"><True/></Node></Node>)"};
  document.transformations = R"(<TransformationDictionary>
      <DerivedField name="d" optype="ordinal" datatype="integer"><FieldRef field="x"/><Value value="3"/>
      <Value value="1"/><Value value="2"/></DerivedField>
      <DerivedField name="e" datatype="double"><FieldRef field="x"/></DerivedField></TransformationDictionary>)";
  EXPECT_EQ(Load(document, true).Predict({{"d", 3.0}, {"e", 0.0}}).GetString(), "yes");
  EXPECT_EQ(Load(document, true).Predict({{"d", 2.0}, {"e", 0.0}}).GetString(), "no");
  document.body = R"(<Node><True/><Node score="yes"><SimplePredicate field="e" operator="lessThan" value="1"/>
      </Node><Node score="no"><True/></Node></Node>)";
  EXPECT_EQ(Load(document, true).Predict({{"d", 3.0}, {"e", 0.0}}).GetString(), "yes");
}

// The library computes nothing then, and the record's column would be taken for the derived field.
TEST(DerivedField, WithTheNameOfADataField_IsRefusedIfTheLibraryIsToComputeIt) {
  Document document = Derived();
  document.transformations.replace(document.transformations.find("\"d\""), 3, "\"f\"");
  document.body = Identity("f").body;
  const Scorer scorer = TryLoad(document.Text(), true);
  EXPECT_EQ(scorer.scorer, nullptr);
  EXPECT_NE(scorer.reason.find("data field as well"), std::string::npos) << scorer.reason;
}

TEST(DerivedField, ListedWithATreatment_IsRefused) {
  EXPECT_EQ(Load(Derived(R"(<MiningField name="d" invalidValueTreatment="asIs"/>)")).Predict({{"x", 0.5}}).GetReal(),
            5);
  for (const char* treatment : {R"(invalidValueTreatment="asMissing")", R"(missingValueReplacement="1")"}) {
    const Document document = Derived("<MiningField name=\"d\" " + std::string(treatment) + "/>");
    EXPECT_NE(ReasonOf(document).find("can't be treated"), std::string::npos) << ReasonOf(document);
  }
}

// Each value of the group is treated, and the group itself is no invalid value of its field.
TEST(DerivedField, OfAGroup_JoinsTreatedValues) {
  const auto group = [](const Value& second) {
    Value values;
    values["a"] = 1.0;
    values["b"] = second;
    return values;
  };
  Document document = Identity("d");
  const std::string field = R"(<DerivedField name="d" optype="continuous" dataType="double">
      <Aggregate field="x" function="sum"/></DerivedField>)";
  document.transformations = "<TransformationDictionary>" + field + "</TransformationDictionary>";
  EXPECT_EQ(Load(document).Predict({{"x", group(2.5)}}).GetReal(), 3.5);
  EXPECT_EQ(Load(document).Predict({{"x", 2.5}}).GetReal(), 2.5);
  EXPECT_TRUE(Load(document).Predict({{"x", group("bad")}}).IsNull());
  EXPECT_TRUE(Load(document).Predict({}).IsNull());
  EXPECT_EQ(Load(document, true).Predict({{"x", group(2.5)}, {"d", 3.5}}).GetReal(), 3.5);
  document.schema = Document::AllFields(R"(missingValueReplacement="2")");
  EXPECT_EQ(Load(document).Predict({{"x", group(kNull)}}).GetReal(), 3.0);
  document.transformations = "";
  document.body = "<LocalTransformations>" + field + "</LocalTransformations>" + document.body;
  EXPECT_EQ(Load(document).Predict({{"x", group(7.0)}}).GetReal(), 8.0);
}

TEST(DerivedField, OfAForeignExtension_IsComputed) {
  const Scorer scorer =
      Load(Derived(R"(<Extension extender="someone" name="DerivedFields"><MiningField name="d"/></Extension>)"));
  EXPECT_EQ(scorer.Predict({{"x", 0.5}, {"d", 77.0}}).GetReal(), 5.0);
}

TEST(DerivedField, WhenTheLibraryComputesAll_IsReadFromTheRecord) {
  EXPECT_EQ(Load(Derived(), true).Predict({{"x", 0.5}, {"d", 77.0}}).GetReal(), 77.0);
}

// The library computes from untreated values, so what follows from a treated one is computed here; the rest is read.
TEST(DerivedField, ThatFollowsFromATreatedField_IsComputedEvenIfTheLibraryDoesSo) {
  const auto derived = [](const std::string& name, const std::string& field) {
    return "<DerivedField name=\"" + name + "\" optype=\"continuous\" dataType=\"double\"><FieldRef field=\"" + field +
           "\"/></DerivedField>";
  };
  for (const auto& [field, expected] : {std::pair("first", 5.0), {"second", 5.0}, {"other", 77.0}}) {
    Document document = Identity(field);
    document.transformations = "<TransformationDictionary>" + derived("second", "first") + derived("first", "x") +
                               derived("other", "f") + "</TransformationDictionary>";
    document.schema = Document::AllFields(R"(outliers="asExtremeValues" highValue="5" lowValue="0")");
    const Scorer scorer = Load(document, true);
    EXPECT_EQ(scorer.Predict({{"x", 9.0}, {"f", 1.0}, {"first", 9.0}, {"second", 9.0}, {"other", 77.0}}).GetReal(),
              expected)
        << field;
  }
}

TEST(DerivedField, RecordLacksOneThatTheLibraryComputes_IsAnError) {
  const Scorer scorer = Load(Derived(), true);
  ValueRecord out = Record({{"prediction", kNull}});
  const auto status = scorer.scorer->Score(Record({{"x", 0.5}}), out);
  EXPECT_TRUE(status.IsError());
  EXPECT_NE(std::string(status.GetMessage(status.GetErrorCode())).find("derived field"), std::string::npos);
}

TEST(DerivedField, LocalOne_MayUseThoseOfTheDictionaryAndHidesThem) {
  Document document = Identity("e");
  document.transformations = kDictionary;
  document.body = R"(<LocalTransformations><DerivedField name="e" optype="continuous" dataType="double">
      <FieldRef field="d"/></DerivedField></LocalTransformations>)" +
                  document.body;
  EXPECT_EQ(Load(document).Predict({{"x", 0.25}}).GetReal(), 2.5);
  document = Derived();
  document.body = R"(<LocalTransformations><DerivedField name="d" optype="continuous" dataType="double">
      <Constant dataType="double">4</Constant></DerivedField></LocalTransformations>)" +
                  document.body;
  EXPECT_EQ(Load(document).Predict({{"x", 0.25}}).GetReal(), 4.0);
}

TEST(DerivedField, ThatCannotBeConverted_GivesNoResult) {
  Document document = Identity("e");
  document.body = R"(<LocalTransformations><DerivedField name="e" optype="continuous" dataType="double">
      <FieldRef field="s"/></DerivedField></LocalTransformations>)" +
                  document.body;
  EXPECT_TRUE(Load(document).Predict({{"s", "a"}}).IsNull());
}

// --- Refusals ---

struct RefusalCase {
  const char* name;
  const char* schema;
  const char* reason;
};

class SchemaRefusal : public testing::TestWithParam<RefusalCase> {};

TEST_P(SchemaRefusal, Schema_IsRefusedWithAReason) {
  Document document = Identity("x");
  document.schema = GetParam().schema;
  EXPECT_NE(ReasonOf(document).find(GetParam().reason), std::string::npos) << ReasonOf(document);
}

INSTANTIATE_TEST_SUITE_P(
    Table, SchemaRefusal,
    testing::Values(
        RefusalCase{"unknown_field", R"(<MiningField name="x"/><MiningField name="q"/>)",
                    "isn't in the data dictionary"},
        RefusalCase{"field_twice", R"(<MiningField name="x"/><MiningField name="x"/>)", "stands there twice"},
        RefusalCase{"no_name", "<MiningField/>", "name"},
        RefusalCase{"usage", R"(<MiningField name="x" usageType="input"/>)", "active, predicted, target"},
        RefusalCase{"outliers", R"(<MiningField name="x" outliers="cut"/>)", "asMissingValues, asExtremeValues"},
        RefusalCase{"outliers_without_limit", R"(<MiningField name="x" outliers="asExtremeValues"/>)",
                    "needs lowValue"},
        RefusalCase{"outliers_of_texts",
                    R"(<MiningField name="x"/><MiningField name="s" outliers="asExtremeValues" lowValue="0"/>)",
                    "numbers only"},
        RefusalCase{"limits", R"(<MiningField name="x" outliers="asExtremeValues" lowValue="2" highValue="1"/>)",
                    "above highValue"},
        RefusalCase{"limit_nan", R"(<MiningField name="x" outliers="asExtremeValues" lowValue="NaN"/>)",
                    "limits no number"},
        RefusalCase{"limit_above_all", R"(<MiningField name="x" outliers="asExtremeValues" lowValue="INF"/>)",
                    "limits no number"},
        RefusalCase{"invalid_treatment", R"(<MiningField name="x" invalidValueTreatment="skip"/>)",
                    "returnInvalid, asIs"},
        RefusalCase{"invalid_value", R"(<MiningField name="x" invalidValueTreatment="asValue"/>)",
                    "needs invalidValueReplacement"},
        RefusalCase{"missing_treatment", R"(<MiningField name="x" missingValueTreatment="guess"/>)", "asMean, asMode"},
        RefusalCase{"replacement", R"(<MiningField name="x" missingValueReplacement="abc"/>)", "'abc'"},
        RefusalCase{"second_target", R"(<MiningField name="x"/><MiningField name="y" usageType="target"/>)",
                    "is a second target"},
        RefusalCase{"unknown_element", R"(<MiningField name="x"/><Group/>)", "<Group>"}),
    KelTest::CaseName());

}  // namespace
}  // namespace TorvaneTest
