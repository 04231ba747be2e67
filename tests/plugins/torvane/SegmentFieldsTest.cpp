// What the models of an ensemble see of its fields.

#include <gtest/gtest.h>
#include <string>
#include <utility>

#include "tests/plugins/torvane/EnsembleParts.h"

namespace TorvaneTest {
namespace {

const Value kNull = Value::NULL_VALUE;

TEST(FieldsOfSegments, SchemasOfModels_TreatFieldsOnceMoreForThemselves) {
  const auto reads = [](const std::string& attributes) {
    return Linear("0", "x", Schema("<MiningField name=\"x\" " + attributes + "/>"));
  };
  const std::string segments =
      Segment(reads(""), "id=\"plain\"") + Segment(reads(R"(missingValueReplacement="7")"), "id=\"replaced\"") +
      Segment(reads(R"(outliers="asExtremeValues" lowValue="0" highValue="10")"), "id=\"limited\"") +
      Segment(reads(R"(outliers="asMissingValues" highValue="10" missingValueReplacement="-1")"), "id=\"cut\"") +
      Segment(Nested("regression", Segmentation("sum", Segment(Linear("1", "x")) + Segment(Linear("2", "x"))),
                     Schema("<MiningField name=\"x\" missingValueReplacement=\"5\"/><MiningField name=\"n\"/>"
                            "<MiningField name=\"s\"/>")),
              "id=\"nested\"");
  const Scorer scorer = Load(Ensemble("regression", Segmentation("selectAll", segments, kSkip)));
  struct Row {
    Value x;
    const char* parts[5];
  };
  const Row rows[] = {
      {3.0, {"3", "3", "3", "3", "9"}},
      {12.0, {"12", "12", "10", "-1", "27"}},
      {kNull, {"null", "7", "null", "-1", "13"}},
  };
  const char* const ids[] = {"plain", "replaced", "limited", "cut", "nested"};
  for (const Row& row : rows) {
    const ValueRecord out = scorer.Score({{"x", row.x}});
    for (std::size_t i = 0; i < std::size(ids); ++i) EXPECT_EQ(Part(out, ids[i]), row.parts[i]) << ids[i];
  }
}

// What the ensemble lets pass as it is, a model may treat after all.
TEST(FieldsOfSegments, ValuesThatTheEnsembleLetsPass_CanBeTreatedInside) {
  const auto reads = [](const std::string& attributes) {
    return Segment(Linear("0", "x", Schema("<MiningField name=\"x\" " + attributes + "/>")));
  };
  const std::string declared =
      R"(<DataField name="x" optype="continuous" dataType="double"><Interval closure="closedClosed" leftMargin="0" rightMargin="1"/></DataField>
<DataField name="t" optype="continuous" dataType="double"/>)";
  struct Row {
    const char* attributes;
    Value x;
    const char* expected;
  };
  const Row rows[] = {
      {"", 5.0, "5"},
      {R"(invalidValueTreatment="asMissing" missingValueReplacement="8")", 5.0, "8"},
      {R"(invalidValueTreatment="asMissing")", 5.0, "null"},
      {R"(invalidValueTreatment="asValue" invalidValueReplacement="9")", 5.0, "9"},
      {R"(missingValueTreatment="returnInvalid")", kNull, "null"},
  };
  for (const Row& row : rows) {
    const std::string segmentation = Segmentation("sum", reads(row.attributes));
    for (const std::string& body :
         {segmentation, Segmentation("sum", Segment(Nested("regression", segmentation, Fields({"x"}))))}) {
      Document document = Ensemble("regression", body);
      document.schema = R"(<MiningField name="x" invalidValueTreatment="asIs"/>)";
      document.dictionary = declared;
      EXPECT_EQ(Shown(Load(document).Score({{"x", row.x}}), "prediction"), row.expected) << body;
    }
  }
}

// Even if the model doesn't look at the field, and the other models have results.
TEST(FieldsOfSegments, MissingValueThatReturnsInvalid_SpoilsTheWholeResult) {
  const std::string schema = Schema(R"(<MiningField name="x" missingValueTreatment="returnInvalid"/>)");
  const std::string segments = Segment(Linear("1")) + Segment(Linear("2", "", schema));
  const Scorer scorer = Load(Ensemble("regression", Segmentation("sum", segments, kSkip)));
  EXPECT_TRUE(scorer.Predict({}).IsNull());
  EXPECT_EQ(scorer.Predict({{"x", 0.0}}).GetReal(), 3.0);
  const std::string inside = Segment(Nested("regression", Segmentation("sum", Segment(Linear("2"))),
                                            Schema(R"(<MiningField name="x" missingValueTreatment="returnInvalid"/>
<MiningField name="n"/><MiningField name="s"/>)")));
  EXPECT_TRUE(Load(Ensemble("regression", Segmentation("sum", inside, kSkip))).Predict({}).IsNull());
}

TEST(FieldsOfSegments, DerivedFields_AreFoundFromTheInsideOut) {
  const auto derived = [](const std::string& name, const std::string& expression) {
    return "<DerivedField name=\"" + name + "\" optype=\"continuous\" dataType=\"double\">" + expression +
           "</DerivedField>";
  };
  const auto apply = [](const std::string& function, const std::string& field, const std::string& number) {
    return "<Apply function=\"" + function + "\"><FieldRef field=\"" + field + "\"/><Constant>" + number +
           "</Constant></Apply>";
  };
  const auto local = [](const std::string& fields) {
    return "<LocalTransformations>" + fields + "</LocalTransformations>";
  };
  const std::string twice = Schema(R"(<MiningField name="x" missingValueReplacement="50"/>)");
  Document document = Ensemble(
      "regression",
      local(derived("outer", apply("+", "shared", "1"))) +
          Segmentation(
              "selectAll",
              Segment(Linear("0", "shared"), "id=\"dictionary\"") + Segment(Linear("0", "outer"), "id=\"ensemble\"") +
                  Segment(Linear("0", "own", local(derived("own", apply("*", "outer", "10")))), "id=\"own\"") +
                  Segment(Linear("0", "own", local(derived("own", apply("triple", "x", "1")))), "id=\"function\"") +
                  // Treated once more, what the dictionary derives follows, but not what the ensemble derives.
                  Segment(Linear("0", "shared", twice), "id=\"follows\"") +
                  Segment(Linear("0", "outer", twice), "id=\"stays\"") +
                  Segment(Nested("regression", local(derived("mid", apply("+", "outer", "1000"))) +
                                                   Segmentation("sum", Segment(Linear("0", "mid")))),
                          "id=\"nested\""),
              kSkip));
  document.transformations =
      "<TransformationDictionary><DefineFunction name=\"triple\" optype=\"continuous\"><ParameterField name=\"a\"/>"
      "<ParameterField name=\"b\"/><Apply function=\"+\"><Apply function=\"*\"><FieldRef field=\"a\"/>"
      "<Constant>3</Constant></Apply><FieldRef field=\"b\"/></Apply></DefineFunction>" +
      derived("shared", apply("*", "x", "2")) + "</TransformationDictionary>";
  const Scorer scorer = Load(document);
  const std::pair<const char*, const char*> present[] = {{"dictionary", "8"}, {"ensemble", "9"}, {"own", "90"},
                                                         {"function", "13"},  {"follows", "8"},  {"stays", "9"},
                                                         {"nested", "1009"}};
  const std::pair<const char*, const char*> missing[] = {{"dictionary", "null"}, {"follows", "100"}, {"stays", "null"}};
  const ValueRecord four = scorer.Score({{"x", 4.0}});
  for (const auto& [id, expected] : present) EXPECT_EQ(Part(four, id), expected) << id;
  const ValueRecord none = scorer.Score({});
  for (const auto& [id, expected] : missing) EXPECT_EQ(Part(none, id), expected) << id;
}

TEST(FieldsOfSegments, OrderOfAnOrdinalField_ReachesEveryModel) {
  const std::string node = When("o", "lessThan", "high");
  const std::string outer = Fields({"o"});
  const auto tree = [&](const std::string& schema) {
    return "<TreeModel functionName=\"classification\">" + schema + "<Node score=\"yes\">" + node +
           "</Node></TreeModel>";
  };
  const std::string replaced = Schema("<MiningField name=\"o\" missingValueReplacement=\"low\"/>");
  for (const std::string& schema : {outer, replaced}) {
    const Scorer scorer = Load(Ensemble("classification", Segmentation("majorityVote", Segment(tree(schema)))));
    EXPECT_EQ(Shown(scorer.Score({{"o", "mid"}}), "prediction"), "yes");
    EXPECT_EQ(Shown(scorer.Score({{"o", "high"}}), "prediction"), "null");
  }
  Document composed = Ensemble("classification", "<DecisionTree functionName=\"classification\"><Node score=\"yes\">" +
                                                     node + "</Node></DecisionTree>");
  composed.version = "3.2";
  EXPECT_EQ(Shown(Load(composed).Score({{"o", "low"}}), "prediction"), "yes");
}

TEST(FieldsOfSegments, InvalidDerivedFieldOfAPredicate_MakesTheResultInvalid) {
  const std::string derived = R"(<LocalTransformations><DerivedField name="d" optype="continuous" dataType="double">
<Apply function="/"><Constant>1</Constant><FieldRef field="x"/></Apply></DerivedField></LocalTransformations>)";
  const std::string segments = Segment(Linear("1"), "", When("d", "greaterThan", "0")) + Segment(Linear("2"));
  const Scorer scorer = Load(Ensemble("regression", derived + Segmentation("selectFirst", segments)));
  EXPECT_EQ(scorer.Predict({{"x", 4.0}}).GetReal(), 1.0);
  EXPECT_EQ(scorer.Predict({{"x", -4.0}}).GetReal(), 2.0);
  EXPECT_EQ(scorer.Predict({}).GetReal(), 2.0);
  EXPECT_TRUE(scorer.Predict({{"x", 0.0}}).IsNull());
}

}  // namespace
}  // namespace TorvaneTest
