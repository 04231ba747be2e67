#include <cmath>
#include <gtest/gtest.h>

#include "tests/plugins/torvane/ModelHarness.h"
#include "tests/support/CaseName.h"

namespace TorvaneTest {
namespace {

std::string Measure(const std::string& measure, const std::string& kind = "distance") {
  return "<ComparisonMeasure kind=\"" + kind + "\"><" + measure + "/></ComparisonMeasure>";
}

// Columns "ID", "x", "n", "f", "s", and the target.
std::string Instances(const std::string& rows, const std::string& target, const std::string& attributes = "") {
  return "<TrainingInstances " + attributes + R"(><InstanceFields><InstanceField field="ID"/><InstanceField field="x"/>
<InstanceField field="n" column="whole"/><InstanceField field="f"/><InstanceField field="s"/><InstanceField field=")" +
         target + "\" column=\"target\"/></InstanceFields><InlineTable>" + rows + "</InlineTable></TrainingInstances>";
}

std::string Row(int id, const std::string& inputs, const std::string& target) {
  return "<row><ID>" + std::to_string(id) + "</ID>" + inputs + "<target>" + target + "</target></row>";
}

std::string Inputs(const std::string& fields) { return "<KNNInputs>" + fields + "</KNNInputs>"; }

// Instances at x = 0, 1, 2, 3, ... with the given targets, compared in x.
Document Line(const std::string& function, const std::vector<std::string>& targets, const std::string& attributes,
              const std::string& kind = "distance") {
  std::string rows;
  for (std::size_t i = 0; i < targets.size(); ++i) {
    rows += Row(static_cast<int>(i + 10), "<x>" + std::to_string(i) + "</x>", targets[i]);
  }
  return {.kind = "NearestNeighborModel",
          .function = function,
          .attributes = attributes,
          .body = R"(<Output><OutputField name="second" feature="entityId" rank="2"/>
              <OutputField name="secondAffinity" feature="affinity" rank="2"/></Output>)" +
                  Instances(rows, function == "regression" ? "t" : "y") + Measure("euclidean", kind) +
                  Inputs(R"(<KNNInput field="x"/>)")};
}

// --- Against scikit-learn: oracle/nearest_neighbors.py ---

struct OracleCase {
  const char* name;
  const char* measure;
  double x, n, f;  // n and f as they are: the record's fields are all doubles here
  const char* second;
  double distance;  // of the second
  double average;
  double weightedAverage;
  const char* vote;
  double shareOfB;
};

Document Irises(const std::string& function, const std::string& attributes, const std::string& measure) {
  static constexpr double kInputs[12][3] = {{5.1, 3.5, 1.4}, {4.9, 3.0, 1.4}, {7.0, 3.2, 4.7}, {6.4, 3.2, 4.5},
                                            {6.9, 3.1, 4.9}, {5.5, 2.3, 4.0}, {6.3, 3.3, 6.0}, {5.8, 2.7, 5.1},
                                            {7.1, 3.0, 5.9}, {6.3, 2.9, 5.6}, {5.0, 3.6, 1.5}, {6.5, 2.8, 4.6}};
  static constexpr const char* kNumbers[] = {"0.2", "0.25", "1.4", "1.5", "1.55", "1.3",
                                             "2.5", "1.9",  "2.1", "1.8", "0.15", "1.45"};
  static constexpr char kCategories[] = "aabbbbccccab";
  std::string rows;
  for (int i = 0; i < 12; ++i) {
    std::string inputs;
    for (int j = 0; j < 3; ++j) {
      const std::string column = j == 0 ? "x" : j == 1 ? "whole" : "f";
      inputs += "<" + column + ">" + std::to_string(kInputs[i][j]) + "</" + column + ">";
    }
    rows += Row(i + 1, inputs, function == "regression" ? kNumbers[i] : std::string(1, kCategories[i]));
  }
  Document document = Line(function, {}, R"(numberOfNeighbors="5" threshold="0.25" )" + attributes);
  document.body.resize(document.body.find("<TrainingInstances"));
  document.body += Instances(rows, function == "regression" ? "t" : "y") + Measure(measure) +
                   Inputs(R"(<KNNInput field="x"/><KNNInput field="n"/><KNNInput field="f"/>)");
  document.dictionary = R"(<DataField name="x" optype="continuous" dataType="double"/>
      <DataField name="n" optype="continuous" dataType="double"/>
      <DataField name="f" optype="continuous" dataType="double"/>
      <DataField name="t" optype="continuous" dataType="double"/>
      <DataField name="y" optype="categorical" dataType="string"/>)";
  document.schema = R"(<MiningField name="x"/><MiningField name="n"/><MiningField name="f"/>)";
  return document;
}

class Oracle : public testing::TestWithParam<OracleCase> {};

TEST_P(Oracle, Predictions_AgreeWithAnIndependentTool) {
  const OracleCase& row = GetParam();
  const auto score = [&](const std::string& function, const std::string& attributes) {
    return Load(Irises(function, attributes, row.measure)).Score({{"x", row.x}, {"n", row.n}, {"f", row.f}});
  };
  const auto average = score("regression", "");
  EXPECT_EQ(Shown(average, "second"), row.second);
  EXPECT_NEAR(Number(average, "secondAffinity"), row.distance, 1e-12);
  EXPECT_NEAR(Number(average, "prediction"), row.average, 1e-12);
  EXPECT_NEAR(Number(score("regression", R"(continuousScoringMethod="weightedAverage")"), "prediction"),
              row.weightedAverage, 1e-12);
  const auto vote = score("classification", R"(categoricalScoringMethod="weightedMajorityVote")");
  EXPECT_EQ(Shown(vote, "prediction"), row.vote);
  EXPECT_NEAR(Probability(vote, "b"), row.shareOfB, 1e-12);
}

INSTANTIATE_TEST_SUITE_P(
    Table, Oracle,
    testing::Values(OracleCase{"euclidean_1", "euclidean", 6.0, 3.0, 4.8, "4", 0.538516480713443, 1.64,
                               1.6435830408624825, "b", 0.5932721669598904},
                    OracleCase{"euclidean_2", "euclidean", 5.2, 3.2, 2.9, "11", 1.4696938456699034, 0.68,
                               0.6475436128915502, "a", 0.3776731459187037},
                    OracleCase{"euclidean_3", "euclidean", 6.7, 3.1, 5.3, "10", 0.5385164807134563, 1.66,
                               1.6577696594351767, "b", 0.6027409547014081},
                    OracleCase{"chebychev_3", "chebychev", 6.7, 3.1, 5.3, "10", 0.4, 1.87, 1.8361866274797942, "c",
                               0.4188096987509187},
                    OracleCase{"cityBlock_3", "cityBlock", 6.7, 3.1, 5.3, "10", 0.9, 1.67, 1.6599785952547823, "b",
                               0.6234463534025481},
                    OracleCase{"minkowski_1", R"(minkowski p-parameter="3")", 6.0, 3.0, 4.8, "4", 0.46260650091827443,
                               1.64, 1.6452280866579276, "b", 0.5893068548136844},
                    OracleCase{"minkowski_2", R"(minkowski p-parameter="3")", 5.2, 3.2, 2.9, "11", 1.4121393341304251,
                               0.68, 0.6690574203288853, "a", 0.3961524072563839}),
    KelTest::CaseName());

// --- Methods ---

TEST(NearestNeighbor, Median_IsTheMiddleOrTheMeanOfTheTwoThere) {
  const auto predict = [](const char* count, double x) {
    const std::string attributes =
        std::string("continuousScoringMethod=\"median\" numberOfNeighbors=\"") + count + "\"";
    return Load(Line("regression", {"8", "1", "2", "40", "5"}, attributes)).Predict({{"x", x}}).GetReal();
  };
  EXPECT_EQ(predict("3", 1.0), 2.0);  // of 8, 1, 2
  EXPECT_EQ(predict("4", 1.0), 5.0);  // of 8, 1, 2, 40
  EXPECT_EQ(predict("1", 2.6), 40.0);
}

// Neighbours are taken, and then told, in the document's order where they are as near.
TEST(NearestNeighbor, TiesOfDistance_GoByTheDocument) {
  const Scorer scorer =
      Load(Line("regression", {"1", "2", "4", "8", "16"}, R"(numberOfNeighbors="2" instanceIdVariable="ID")"));
  const auto out = scorer.Score({{"x", 2.0}});
  EXPECT_EQ(Shown(out, "knn-caseid"), "12");
  EXPECT_EQ(Number(out, "knn-distance"), 0.0);
  EXPECT_EQ(Shown(out, "second"), "11");  // as near as 13
  EXPECT_EQ(Number(out, "secondAffinity"), 1.0);
  EXPECT_EQ(Number(out, "prediction"), 3.0);
}

// The two that are nearest are one vote each, but for the last line.
TEST(NearestNeighbor, TiesOfVotes_GoByTheNumberOfInstancesThenByName) {
  const auto predict = [](const std::vector<std::string>& targets) {
    return Load(Line("classification", targets, R"(numberOfNeighbors="2")")).Predict({{"x", 0.4}}).GetString();
  };
  EXPECT_EQ(predict({"yes", "no", "no"}), "no");
  EXPECT_EQ(predict({"no", "maybe", "yes"}), "maybe");
  EXPECT_EQ(predict({"no", "no", "maybe", "maybe", "maybe"}), "no");
}

TEST(NearestNeighbor, Similarity_TakesTheLargest) {
  Document document = Line("classification", {"yes", "no", "maybe"}, R"(numberOfNeighbors="1")", "similarity");
  const std::string gauss = R"(<KNNInput field="x" compareFunction="gaussSim" similarityScale="1"/>)";
  document.body.replace(document.body.find("<KNNInput "), std::string(R"(<KNNInput field="x"/>)").size(), gauss);
  const auto out = Load(document).Score({{"x", 1.0}});
  EXPECT_EQ(Shown(out, "prediction"), "no");
  EXPECT_DOUBLE_EQ(Number(out, "knn-distance"), 1.0);
  EXPECT_EQ(Shown(out, "knn-caseid"), "2");  // by position, without a variable of identifiers
}

TEST(NearestNeighbor, DistanceZeroWithoutAThreshold_IsInvalid) {
  const char* const attributes = R"(numberOfNeighbors="2" threshold="0" continuousScoringMethod="weightedAverage"
      categoricalScoringMethod="weightedMajorityVote")";
  const Scorer regression = Load(Line("regression", {"1", "4"}, attributes));
  EXPECT_DOUBLE_EQ(regression.Predict({{"x", 0.25}}).GetReal(), 1.75);
  EXPECT_TRUE(regression.Predict({{"x", 1.0}}).IsNull());
  const Scorer classification = Load(Line("classification", {"yes", "no"}, attributes));
  EXPECT_EQ(classification.Predict({{"x", 0.25}}).GetString(), "yes");
  EXPECT_TRUE(classification.Predict({{"x", 1.0}}).IsNull());
}

// --- Instances ---

TEST(Instances, OfAClustering_AreWhatIsPredicted) {
  const Scorer scorer = Load(Line("clustering", {"", "", ""}, R"(numberOfNeighbors="3" instanceIdVariable="ID")"));
  const auto out = scorer.Score({{"x", 1.8}});
  EXPECT_EQ(Shown(out, "prediction"), "12");
  EXPECT_EQ(Shown(out, "second"), "11");
  EXPECT_FALSE(out.Contains("probability"));
}

// The treatment of the schema and the derived fields apply to instances as to records: 99 is missing and becomes 3.
TEST(Instances, GoThroughTheSchemaAndTheDerivedFields) {
  Document document = Line("regression", {}, R"(numberOfNeighbors="1")");
  document.body = R"(<LocalTransformations><DerivedField name="twice" optype="continuous" dataType="double">
      <NormContinuous field="x"><LinearNorm orig="0" norm="0"/><LinearNorm orig="1" norm="2"/></NormContinuous>
      </DerivedField></LocalTransformations>)" +
                  Instances(Row(1, "<x>99</x>", "1") + Row(2, "<x>5</x>", "2"), "t") + Measure("euclidean") +
                  Inputs(R"(<KNNInput field="twice"/>)");
  document.dictionary.replace(0, document.dictionary.find("/>") + 2,
                              R"(<DataField name="x" optype="continuous" dataType="double">
      <Value value="99" property="missing"/></DataField>)");
  document.schema = Document::AllFields(R"(missingValueReplacement="3")");
  const auto out = Load(document).Score({{"x", 3.25}});
  EXPECT_EQ(Number(out, "prediction"), 1.0);
  EXPECT_EQ(Number(out, "knn-distance"), 0.5);
  EXPECT_EQ(Number(Load(document).Score({}), "knn-distance"), 0.0);
}

TEST(Instances, ThatAreTransformed_HoldTheDerivedFields) {
  Document document = Line("regression", {}, R"(numberOfNeighbors="1")");
  document.body = R"(<LocalTransformations><DerivedField name="f2" optype="continuous" dataType="double">
      <NormContinuous field="f"><LinearNorm orig="0" norm="0"/><LinearNorm orig="1" norm="2"/></NormContinuous>
      </DerivedField></LocalTransformations>
      <TrainingInstances isTransformed="true" recordCount="9" fieldCount="9"><InstanceFields>
        <InstanceField field="f2"/><InstanceField field="t"/></InstanceFields><InlineTable>
        <row xmlns:d="urn:data"><d:f2>4</d:f2><d:t>1</d:t></row><row><t>2</t><f2>8</f2></row></InlineTable>
      </TrainingInstances>)" +
                  Measure("euclidean") + Inputs(R"(<KNNInput field="f2"/>)");
  const auto out = Load(document).Score({{"f", 4.0}});
  EXPECT_EQ(Number(out, "prediction"), 2.0);
  EXPECT_EQ(Number(out, "knn-distance"), 0.0);
}

// Texts that only the instances hold, also those that a function makes, are found again in records.
TEST(Instances, OfTexts_AreComparedWithRecords) {
  for (const char* field : {"free", "loud"}) {
    Document document = Line("regression", {}, R"(numberOfNeighbors="1")");
    document.dictionary += R"(<DataField name="free" optype="categorical" dataType="string"/>)";
    document.schema += R"(<MiningField name="free"/>)";
    document.body = R"(<LocalTransformations><DerivedField name="loud" optype="categorical" dataType="string">
        <Apply function="uppercase"><FieldRef field="free"/></Apply></DerivedField></LocalTransformations>
        <TrainingInstances><InstanceFields><InstanceField field="free"/><InstanceField field="t"/></InstanceFields>
        <InlineTable><row><free>one</free><t>1</t></row><row><free>two</free><t>2</t></row></InlineTable>
        </TrainingInstances>)" +
                    Measure("cityBlock") +
                    Inputs("<KNNInput field=\"" + std::string(field) + "\" compareFunction=\"delta\"/>");
    const Scorer scorer = Load(document);
    EXPECT_EQ(Number(scorer.Score({{"free", "two"}}), "prediction"), 2.0) << field;
    const auto unknown = scorer.Score({{"free", "three"}});
    EXPECT_EQ(Number(unknown, "knn-distance"), 1.0) << field;
    EXPECT_EQ(Number(unknown, "prediction"), 1.0) << field;
  }
}

// c over the fields in common is made up for by A = 2: (0, ?) is 2 * 2 away from (2, 3), and (?, 4) 2 * 1.
TEST(Instances, WithGaps_AreComparedInTheFieldsThatTheyHave) {
  Document document = Line("regression", {}, R"(numberOfNeighbors="2")");
  document.body.resize(document.body.find("<TrainingInstances"));
  document.body +=
      Instances(Row(1, "<x>0</x><f/>", "1") + Row(2, "<f>4</f>", "2") + Row(3, "<x>9</x><f>9</f>", "4"), "t") +
      Measure("cityBlock") + Inputs(R"(<KNNInput field="x"/><KNNInput field="f"/>)");
  const Scorer scorer = Load(document);
  const auto out = scorer.Score({{"x", 2.0}, {"f", 3.0}});
  EXPECT_EQ(Number(out, "knn-distance"), 2.0);
  EXPECT_EQ(Number(out, "secondAffinity"), 4.0);
  EXPECT_EQ(Number(out, "prediction"), 1.5);
  const auto withoutF = scorer.Score({{"x", 1.0}});  // the second instance has nothing in common with it
  EXPECT_EQ(Number(withoutF, "secondAffinity"), 16.0);
  EXPECT_EQ(Number(withoutF, "prediction"), 2.5);
}

// --- Several targets ---

// Instances at x = 0, 1, 2 with t = 10, 20, 40 and y = yes, no, no.
Document Mixed(const std::string& outputs, const std::string& function = "mixed") {
  const char* const targets[] = {"yes</target><t>10</t><target2>", "no</target><t>20</t><target2>",
                                 "no</target><t>40</t><target2>"};
  std::string rows;
  for (int i = 0; i < 3; ++i) {
    rows += "<row><ID>0</ID><x>" + std::to_string(i) + "</x><target>" + targets[i] + "</target2></row>";
  }
  std::string instances = Instances(rows, "y");
  instances.insert(instances.find("</InstanceFields>"), R"(<InstanceField field="t"/>)");
  Document document{.kind = "NearestNeighborModel",
                    .function = function,
                    .attributes = R"(numberOfNeighbors="2" categoricalScoringMethod="weightedMajorityVote")",
                    .body = "<Output>" + outputs + "</Output>" + instances + Measure("euclidean") +
                            Inputs(R"(<KNNInput field="x"/>)")};
  document.schema += R"(<MiningField name="t" usageType="target"/>)";
  return document;
}

TEST(SeveralTargets, EachIsPredictedFromTheSameNeighbours) {
  const Scorer scorer = Load(Mixed(R"(<OutputField name="number" targetField="t" feature="predictedValue"/>
      <OutputField name="answer" targetField="y"/><OutputField name="share" targetField="y" feature="probability"/>
      <OutputField name="shown" targetField="y" feature="predictedDisplayValue"/>
      <OutputField name="missed" targetField="y" feature="residual" value="no"/>
      <OutputField name="second" targetField="y" feature="entityId" rank="2"/>
      <OutputField name="twice" dataType="double"><Apply function="*"><FieldRef field="number"/><FieldRef field="share"/>
      </Apply></OutputField>)"));
  const auto out = scorer.Score({{"x", 1.0 / 3}, {"y", "yes"}});
  EXPECT_DOUBLE_EQ(Number(out, "prediction"), 15.0);
  EXPECT_DOUBLE_EQ(Number(out, "number"), 15.0);
  EXPECT_EQ(Shown(out, "y"), "yes");
  EXPECT_EQ(Shown(out, "answer"), "yes");
  const double near = 1 / (1.0 / 3 + 0.001);
  const double far = 1 / (2.0 / 3 + 0.001);
  EXPECT_NEAR(Number(out, "share"), near / (near + far), 1e-12);
  EXPECT_NEAR(Number(out, "missed"), -far / (near + far), 1e-12);
  EXPECT_NEAR(Number(out, "twice"), 15.0 * near / (near + far), 1e-12);
  EXPECT_EQ(Shown(out, "shown"), "yes");
  EXPECT_EQ(Shown(out, "second"), "2");
  EXPECT_EQ(Shown(out, "knn-caseid"), "1");
}

TEST(SeveralTargets, WithoutAResult_AreAllNull) {
  const Scorer scorer = Load(Mixed(R"(<OutputField name="answer" targetField="y"/>)"));
  for (const Value& x : {Value::NULL_VALUE, Value("abc")}) {
    const auto out = scorer.Score({{"x", x}});
    EXPECT_EQ(Shown(out, "prediction"), "null");
    EXPECT_EQ(Shown(out, "y"), "null");
    EXPECT_EQ(Shown(out, "answer"), "null");
  }
}

TEST(SeveralTargets, OneOfAMixedModel_IsPredictedAsItsFieldIs) {
  EXPECT_EQ(Load(Line("mixed", {"yes", "no"}, R"(numberOfNeighbors="1")")).Predict({{"x", 2.0}}).GetString(), "no");
}

// The optype of a target is that of its "Target", else that of its mining field, else that of its declaration.
TEST(SeveralTargets, OpTypeOfATarget_DecidesHowItIsPredicted) {
  Document document = Line("mixed", {"yes", "no"}, R"(numberOfNeighbors="1")");
  document.dictionary = R"(<DataField name="x" optype="continuous" dataType="double"/>
      <DataField name="y" optype="continuous" dataType="double"><Value value="1"/></DataField>)";
  document.schema = R"(<MiningField name="x"/>)";
  const auto withTargets = [&](const std::string& targets) {
    Document changed = document;
    changed.body = targets + Instances(Row(1, "<x>0</x>", "1") + Row(2, "<x>1</x>", "2"), "y") + Measure("euclidean") +
                   Inputs(R"(<KNNInput field="x"/>)");
    ValueRecord outputs(2);
    EXPECT_TRUE(Load(changed).scorer->Scorable(outputs).IsOK());
    return outputs.IndexOf("probability") >= 0 ? "categories" : "numbers";
  };
  EXPECT_STREQ(withTargets(""), "numbers");
  EXPECT_STREQ(withTargets(R"(<Targets><Target field="y" optype="categorical"/></Targets>)"), "categories");
  EXPECT_STREQ(withTargets(R"(<Targets><Target optype="ordinal"/></Targets>)"), "categories");
  EXPECT_STREQ(withTargets(R"(<Targets><Target field="y" optype="continuous"/></Targets>)"), "numbers");
}

TEST(Instances, ColumnWithAPrefix_IsThatOfTheCellsWithout) {
  Document document = Line("regression", {"5", "7"}, R"(numberOfNeighbors="1")");
  const std::string field = R"(<InstanceField field="x"/>)";
  document.body.replace(document.body.find(field), field.size(), R"(<InstanceField field="x" column="data:x"/>)");
  EXPECT_EQ(Load(document).Predict({{"x", 1.0}}).GetString(), "7");
}

// --- Refusals ---

struct RefusalCase {
  const char* name;
  Document document;
  const char* reason;
};

class NeighborRefusal : public testing::TestWithParam<RefusalCase> {};

TEST_P(NeighborRefusal, Document_IsRefusedWithAReason) {
  const std::string reason = ReasonOf(GetParam().document);
  EXPECT_NE(reason.find(GetParam().reason), std::string::npos) << reason;
}

Document Changed(const std::string& from, const std::string& to) {
  Document document = Line("regression", {"1", "2"}, R"(numberOfNeighbors="2")");
  document.body.replace(document.body.find(from), from.size(), to);
  return document;
}

Document Clustering(const std::string& inside) {
  Document document = Line("clustering", {"", ""}, R"(numberOfNeighbors="1" instanceIdVariable="ID")");
  document.body = inside + document.body.substr(document.body.find("<TrainingInstances"));
  return document;
}

INSTANTIATE_TEST_SUITE_P(
    Table, NeighborRefusal,
    testing::Values(
        RefusalCase{"no_count", Line("regression", {"1"}, ""), "numberOfNeighbors"},
        RefusalCase{"count", Line("regression", {"1"}, R"(numberOfNeighbors="0")"), "isn't from 1 on"},
        RefusalCase{"too_many", Line("regression", {"1"}, R"(numberOfNeighbors="2")"), "than there are instances"},
        RefusalCase{"continuous_method",
                    Line("regression", {"1"}, R"(numberOfNeighbors="1" continuousScoringMethod="mean")"),
                    "median, average, weightedAverage"},
        RefusalCase{"categorical_method",
                    Line("regression", {"1"}, R"(numberOfNeighbors="1" categoricalScoringMethod="any")"),
                    "majorityVote, weightedMajorityVote"},
        RefusalCase{"threshold", Line("regression", {"1"}, R"(numberOfNeighbors="1" threshold="-1")"), "is below 0"},
        RefusalCase{"weights_of_a_similarity",
                    Line("regression", {"1"}, R"(numberOfNeighbors="1" continuousScoringMethod="weightedAverage")",
                         "similarity"),
                    "need a distance"},
        RefusalCase{"output_of_another_target", Mixed(R"(<OutputField name="o" targetField="x"/>)"),
                    "isn't the target of the model"},
        RefusalCase{"output_twice",
                    Mixed(R"(<OutputField name="o"/><OutputField name="o" targetField="y" feature="probability"/>)"),
                    "stands there twice"},
        RefusalCase{"id", Line("regression", {"1"}, R"(numberOfNeighbors="1" instanceIdVariable="case")"),
                    "needs a column of field 'case'"},
        RefusalCase{"no_id", Line("clustering", {"", ""}, R"(numberOfNeighbors="1" instanceIdVariable="f")"),
                    "has no value of 'instanceIdVariable'"},
        RefusalCase{"target_text", Line("regression", {"one"}, R"(numberOfNeighbors="1")"), "is no number: 'one'"},
        RefusalCase{"no_target", Line("regression", {""}, R"(numberOfNeighbors="1")"), "has no value of 't'"},
        RefusalCase{"no_target_column", Changed("field=\"t\"", "field=\"y\""), "needs a column of field 't'"},
        RefusalCase{"invalid", Changed("<x>1</x>", "<x>one</x>"), "has an invalid value of field 'x'"},
        RefusalCase{"infinite", Changed("<x>1</x>", "<x>INF</x>"), "of field 'x' that the measure can't compare"},
        RefusalCase{"twice", Changed("<x>1</x>", "<x>1</x><x>2</x>"), "stands in its row twice"},
        RefusalCase{"never_there", Changed("<KNNInput field=\"x\"/>", "<KNNInput field=\"f\"/>"),
                    "has no value in any instance"},
        RefusalCase{"unknown_input", Changed("<KNNInput field=\"x\"/>", "<KNNInput field=\"z\"/>"), "\"z\""},
        RefusalCase{"no_input", Changed("<KNNInput field=\"x\"/>", ""), "KNNInput"},
        RefusalCase{"table", Changed("<KNNInput field=\"x\"/>", R"(<KNNInput field="s" compareFunction="table"/>)"),
                    "Comparisons"},
        RefusalCase{"elsewhere", Changed("<InlineTable>", "<TableLocator/><InlineTable>"), "TableLocator"},
        RefusalCase{"two_tables", Changed("<InlineTable>", "<InlineTable/><InlineTable>"), "is a second one"},
        RefusalCase{"two_column_lists", Changed("<InlineTable>", "<InstanceFields/><InlineTable>"), "is a second one"},
        RefusalCase{"targets", Clustering("<Targets/>"), "<Targets> line 13: has no meaning for a clustering"},
        RefusalCase{"entity_of_a_value",
                    Clustering(R"(<Output><OutputField name="o" feature="entityId" value="11"/></Output>)"),
                    "has no meaning for an entityId"},
        RefusalCase{"affinity_of_a_rank_and_a_value",
                    Clustering(R"(<Output><OutputField name="o" feature="affinity" rank="2" value="11"/></Output>)"),
                    "stands beside a rank"},
        RefusalCase{"worst_first",
                    Clustering(R"(<Output><OutputField name="o" feature="affinity" rankOrder="ascending"/></Output>)"),
                    "isn't one of: descending"},
        RefusalCase{"column_twice", Changed("<InstanceField field=\"f\"/>", "<InstanceField field=\"x\"/>"),
                    "has a column already"}),
    KelTest::CaseName());

}  // namespace
}  // namespace TorvaneTest
