#include <cmath>
#include <gtest/gtest.h>

#include "tests/plugins/torvane/ModelHarness.h"
#include "tests/support/CaseName.h"

namespace TorvaneTest {
namespace {

const Value kNull = Value::NULL_VALUE;

const char* const kOutputs = R"(<Output><OutputField name="affinity" feature="affinity"/>
<OutputField name="second" feature="entityId" rank="2"/><OutputField name="secondAffinity" feature="affinity" rank="2"/>
</Output>)";

Document Clusters(const std::string& body, const std::string& modelClass = "centerBased") {
  return {.kind = "ClusteringModel",
          .function = "clustering",
          .attributes = "modelClass=\"" + modelClass + "\"",
          .body = kOutputs + body};
}

std::string Measure(const std::string& measure, const std::string& kind = "distance") {
  return "<ComparisonMeasure kind=\"" + kind + "\"><" + measure + "/></ComparisonMeasure>";
}

std::string Center(const std::string& values) {
  return "<Cluster><Array type=\"real\">" + values + "</Array></Cluster>";
}

// --- Measures ---

// Centres (1, 2) and (4, 6) with the weights 2 and 3; the record (2, 4) has the differences (1, 2) and (2, 2).
struct MeasureCase {
  const char* name;
  const char* measure;
  double first;
  double second;
  double firstWithoutN;  // A = 2 then
};

class Measures : public testing::TestWithParam<MeasureCase> {};

TEST_P(Measures, Affinity_IsTheWeightedAggregate) {
  const MeasureCase& row = GetParam();
  const Scorer scorer = Load(Clusters(Measure(row.measure) + R"(<ClusteringField field="x" fieldWeight="2"/>
      <ClusteringField field="n" fieldWeight="3"/>)" +
                                      Center("1 2") + Center("4 6")));
  const auto out = scorer.Score({{"x", 2.0}, {"n", 4.0}});
  EXPECT_EQ(Shown(out, "prediction"), "1");
  EXPECT_DOUBLE_EQ(Number(out, "affinity"), row.first);
  EXPECT_EQ(Shown(out, "second"), "2");
  EXPECT_DOUBLE_EQ(Number(out, "secondAffinity"), row.second);
  EXPECT_DOUBLE_EQ(Number(scorer.Score({{"x", 2.0}}), "affinity"), row.firstWithoutN);
  EXPECT_EQ(Shown(scorer.Score({}), "prediction"), "null");
}

INSTANTIATE_TEST_SUITE_P(Table, Measures,
                         testing::Values(MeasureCase{"euclidean", "euclidean", std::sqrt(14.0), std::sqrt(20.0), 2.0},
                                         MeasureCase{"squaredEuclidean", "squaredEuclidean", 14.0, 20.0, 4.0},
                                         MeasureCase{"chebychev", "chebychev", 6.0, 6.0,
                                                     4.0},  // a tie: the first cluster
                                         MeasureCase{"cityBlock", "cityBlock", 8.0, 10.0, 4.0},
                                         MeasureCase{"minkowski", R"(minkowski p-parameter="3")", std::cbrt(26.0),
                                                     std::cbrt(40.0), std::cbrt(4.0)}),
                         KelTest::CaseName());

// Against the centre (0, 1, 0, 1) of b, x, n, f the record (0, 0, 1, 1) has a11 = a10 = a01 = a00 = 1, and (0, ?, 1, 1)
// has a11 = a10 = a00 = 1. Against (1, 1, 1, 1) it is a11 = 2 and a01 = 2.
struct BinaryCase {
  const char* name;
  const char* measure;
  double affinity;
  double withoutX;
  const char* winner;
};

class BinaryMeasures : public testing::TestWithParam<BinaryCase> {};

TEST_P(BinaryMeasures, Affinity_CountsTheFieldsInCommon) {
  const BinaryCase& row = GetParam();
  Document document = Clusters(Measure(row.measure, "similarity") + R"(<ClusteringField field="b"/>
      <ClusteringField field="x"/><ClusteringField field="n"/><ClusteringField field="f" fieldWeight="7"/>)" +
                               Center("0 1 0 1") + Center("1 1 1 1"));
  document.body.replace(document.body.find("feature=\"affinity\""), 18, R"(feature="affinity" value="1")");
  const Scorer scorer = Load(document);
  const auto out = scorer.Score({{"b", "false"}, {"x", 0.0}, {"n", 1.0}, {"f", 1.0}});
  EXPECT_DOUBLE_EQ(Number(out, "affinity"), row.affinity);
  EXPECT_EQ(Shown(out, "prediction"), row.winner);
  EXPECT_DOUBLE_EQ(Number(scorer.Score({{"b", 0.0}, {"n", 1.0}, {"f", 1.0}}), "affinity"), row.withoutX);
  EXPECT_EQ(Shown(scorer.Score({{"b", 0.0}, {"x", 0.5}, {"n", 1.0}, {"f", 1.0}}), "prediction"), "null");
}

INSTANTIATE_TEST_SUITE_P(Table, BinaryMeasures,
                         testing::Values(BinaryCase{"simpleMatching", "simpleMatching", 2.0 / 4, 2.0 / 3, "1"},
                                         BinaryCase{"jaccard", "jaccard", 1.0 / 3, 1.0 / 2, "2"},
                                         BinaryCase{"tanimoto", "tanimoto", 2.0 / 6, 2.0 / 4, "1"},
                                         BinaryCase{
                                             "binarySimilarity",
                                             R"(binarySimilarity c11-parameter="1" c10-parameter="2" c01-parameter="3"
                                  c00-parameter="4" d11-parameter="5" d10-parameter="6" d01-parameter="7"
                                  d00-parameter="9")",
                                             10.0 / 27, 7.0 / 20, "1"}),
                         KelTest::CaseName());

TEST(BinaryMeasures, WithoutAnythingToCount_AreInvalid) {
  const Scorer scorer =
      Load(Clusters(Measure("jaccard", "similarity") + R"(<ClusteringField field="x"/>)" + Center("1") + Center("0")));
  EXPECT_EQ(Shown(scorer.Score({{"x", 1.0}}), "prediction"), "1");
  EXPECT_EQ(Shown(scorer.Score({{"x", 0.0}}), "prediction"), "null");  // 0 / 0 against the second cluster
}

// --- Compare functions ---

struct FunctionCase {
  const char* name;
  const char* field;
  const char* center;
  Value value;
  double affinity;
};

class CompareFunctions : public testing::TestWithParam<FunctionCase> {};

TEST_P(CompareFunctions, Affinity_IsTheComparison) {
  const FunctionCase& row = GetParam();
  const std::string name = std::string(row.field).substr(0, 1);
  const Scorer scorer = Load(Clusters(Measure("cityBlock") + "<ClusteringField field=\"" + name + "\" " +
                                      std::string(row.field).substr(1) + "</ClusteringField>" + Center(row.center)));
  EXPECT_DOUBLE_EQ(Number(scorer.Score({{name.c_str(), row.value}}), "affinity"), row.affinity);
}

INSTANTIATE_TEST_SUITE_P(
    Table, CompareFunctions,
    testing::Values(
        FunctionCase{"absDiff", R"(xcompareFunction="absDiff">)", "5", 3.5, 1.5},
        FunctionCase{"gaussSim_at_its_scale", R"(xcompareFunction="gaussSim" similarityScale="1.5">)", "5", 3.5, 0.5},
        FunctionCase{"gaussSim_beyond", R"(xcompareFunction="gaussSim" similarityScale="0.75">)", "5", 3.5, 1.0 / 16},
        FunctionCase{"delta_same", R"(scompareFunction="delta">)", "b", "b", 0.0},
        FunctionCase{"delta_other", R"(scompareFunction="delta">)", "b", "a", 1.0},
        FunctionCase{"equal_same", R"(xcompareFunction="equal">)", "5", 5.0, 1.0},
        FunctionCase{"equal_other", R"(ncompareFunction="equal">)", "5", 6.0, 0.0},
        FunctionCase{"table_of_texts",
                     R"(scompareFunction="table"><Comparisons><Matrix><Array type="real">0 1 2</Array>
                        <Array type="real">3 0 4</Array><Array type="real">5 6 0</Array></Matrix></Comparisons>)",
                     "b", "c", 6.0},
        FunctionCase{"table_of_an_ordinal",
                     R"(ocompareFunction="table"><Comparisons><Matrix kind="symmetric"><Array type="real">0</Array>
                        <Array type="real">1 0</Array><Array type="real">4 2 0</Array></Matrix></Comparisons>)",
                     "low", "high", 4.0}),
    KelTest::CaseName());

Document Intervals(const std::string& body, const std::string& modelClass = "centerBased") {
  Document document = Clusters(body, modelClass);
  document.dictionary = R"(<DataField name="x" optype="continuous" dataType="double">
      <Interval closure="closedOpen" rightMargin="10"/><Interval closure="closedClosed" leftMargin="10"/></DataField>)";
  document.schema = R"(<MiningField name="x" invalidValueTreatment="asIs"/>)";
  document.dictionary += R"(<DataField name="y" optype="categorical" dataType="string"/>)";
  return document;
}

TEST(CompareFunctions, TableOfIntervals_ComparesThoseThatTheNumbersFallInto) {
  const Scorer scorer = Load(Intervals(Measure("cityBlock") + R"(<ClusteringField field="x" compareFunction="table">
      <Comparisons><Matrix><Array type="real">0 1</Array><Array type="real">3 0.5</Array></Matrix></Comparisons>
      </ClusteringField>)" + Center("7") +
                                       Center("12")));
  const auto out = scorer.Score({{"x", 10.0}});
  EXPECT_EQ(Shown(out, "prediction"), "2");
  EXPECT_EQ(Number(out, "affinity"), 0.5);
  EXPECT_EQ(Number(out, "secondAffinity"), 3.0);
}

// --- Missing and unusual values ---

TEST(Clustering, MissingValueWeights_AdjustTheAffinity) {
  const Scorer scorer = Load(Clusters(Measure("cityBlock") + R"(<ClusteringField field="x"/>
      <ClusteringField field="s" isCenterField="false"/><ClusteringField field="n"/><ClusteringField field="f"/>
      <MissingValueWeights><Array type="real">2 9 1 0</Array></MissingValueWeights>)" +
                                      Center("0 0 0")));
  EXPECT_EQ(Number(scorer.Score({{"x", 5.0}, {"n", 1.0}, {"f", 1.0}}), "affinity"), 7.0);
  EXPECT_EQ(Number(scorer.Score({{"x", 5.0}, {"f", 1.0}}), "affinity"), 9.0);  // 3 / 2 * (5 + 1)
  EXPECT_EQ(Shown(scorer.Score({{"f", 1.0}}), "affinity"), "null");            // nothing that counts is known
}

TEST(Clustering, UnusualNumbers_NeverBecomeACluster) {
  const Scorer scorer = Load(Clusters(Measure("euclidean") + R"(<ClusteringField field="x" fieldWeight="0"/>
      <ClusteringField field="n"/>)" + Center("1 1") +
                                      Center("2 2")));
  EXPECT_EQ(Shown(scorer.Score({{"x", HUGE_VAL}, {"n", 2.0}}), "prediction"), "null");  // 0 * infinity
  EXPECT_EQ(Shown(scorer.Score({{"x", 1e300}, {"n", 2.0}}), "prediction"), "null");     // and by the square
  EXPECT_EQ(Shown(scorer.Score({{"x", "abc"}, {"n", 2.0}}), "prediction"), "null");
  EXPECT_EQ(Shown(scorer.Score({{"x", 3.0}, {"n", 2.0}}), "prediction"), "2");
}

// More clusters than are compared side by side; the ranking is by affinity, then by position.
TEST(Clustering, ManyClusters_AreRankedInOrder) {
  std::string centers;
  for (int i = 0; i < 21; ++i) centers += Center(std::to_string(i / 2));
  Document document = Clusters(Measure("euclidean") + R"(<ClusteringField field="x"/>)" + centers);
  document.body.replace(document.body.find("rank=\"2\""), 8, "rank=\"21\"");
  const Scorer scorer = Load(document);
  const auto out = scorer.Score({{"x", 9.1}});
  EXPECT_EQ(Shown(out, "prediction"), "19");
  EXPECT_EQ(Shown(out, "second"), "2");  // both of the farthest are 9.1 away: the later one is last
  EXPECT_EQ(Shown(scorer.Score({{"x", 100.0}}), "prediction"), "21");
}

// --- Identifiers and outputs ---

TEST(Clustering, Outputs_TellIdentifiersAndNames) {
  Document document = Clusters(Measure("euclidean") + R"(<ClusteringField field="x"/>
      <Cluster id="low" name="a few" size="3"><KohonenMap coord1="1"/><Array type="real">0</Array></Cluster>
      <Cluster name="many"><Array type="real">10</Array><Covariances/></Cluster>)");
  document.body.insert(document.body.find("</Output>"), R"(<OutputField name="name" feature="predictedDisplayValue"/>
      <OutputField name="id" feature="clusterId"/><OutputField name="far" feature="clusterAffinity" value="low"/>)");
  const Scorer scorer = Load(document);
  const auto few = scorer.Score({{"x", 1.0}});
  EXPECT_EQ(Shown(few, "prediction"), "low");
  EXPECT_EQ(Shown(few, "clustering-clusterid"), "low");
  EXPECT_EQ(Shown(few, "name"), "a few");
  const auto many = scorer.Score({{"x", 8.0}});
  EXPECT_EQ(Shown(many, "id"), "2");
  EXPECT_EQ(Shown(many, "name"), "many");
  EXPECT_EQ(Number(many, "far"), 8.0);
  EXPECT_FALSE(many.Contains("probability"));
}

// --- Distributions ---

// cityBlock of equal: the share of the record's value in each cluster. 30 of 40 are "a", and 10 of 20 are below 10.
TEST(Distribution, Affinity_IsTheMeanComparisonWithTheClustersValues) {
  Document document = Intervals(Measure("cityBlock", "similarity") + R"(
      <ClusteringField field="s" compareFunction="equal"/><ClusteringField field="x" compareFunction="equal"/>
      <Cluster><Partition name="1"><PartitionFieldStats field="x"><Array type="int">10 10</Array></PartitionFieldStats>
        <PartitionFieldStats field="s"><Array type="int">30 10</Array></PartitionFieldStats></Partition></Cluster>
      <Cluster><Partition name="2"><PartitionFieldStats field="s"><Array type="int">1 9</Array></PartitionFieldStats>
        <PartitionFieldStats field="x"><Array type="int">4 1</Array><Array type="real">30 12</Array>
        </PartitionFieldStats></Partition></Cluster>)",
                                "distributionBased");
  document.dictionary += R"(<DataField name="s" optype="categorical" dataType="string"/>)";
  document.schema += R"(<MiningField name="s"/>)";
  document.body.insert(0, R"(<ModelStats><UnivariateStats field="s"><DiscrStats><Array type="string">b a</Array>
      </DiscrStats></UnivariateStats></ModelStats>)");
  const Scorer scorer = Load(document);
  const auto out = scorer.Score({{"s", "b"}, {"x", 3.0}});
  EXPECT_EQ(Shown(out, "prediction"), "1");
  EXPECT_DOUBLE_EQ(Number(out, "affinity"), 0.75 + 0.5);
  EXPECT_DOUBLE_EQ(Number(out, "secondAffinity"), 0.1 + 0.8);
  EXPECT_DOUBLE_EQ(Number(scorer.Score({{"x", 3.0}}), "affinity"), 2 * 0.8);
  EXPECT_EQ(Shown(scorer.Score({{"s", "unheard of"}, {"x", 3.0}}), "prediction"), "2");  // it is no cluster's value
}

// Of n = 1, 2, 4 with the frequencies 1, 1, 2 the mean distance from 3 is (2 + 1 + 2 * 1) / 4.
TEST(Distribution, OfNumbers_IsCalculatedWith) {
  Document document = Clusters(Measure("squaredEuclidean") + R"(<ClusteringField field="n"/>
      <Cluster><Partition name="1"><PartitionFieldStats field="n"><Array type="int">1 1 2</Array></PartitionFieldStats>
      </Partition></Cluster>)",
                               "distributionBased");
  document.body.insert(0, R"(<ModelStats><UnivariateStats field="n"><DiscrStats><Array type="int">1 2 4</Array>
      </DiscrStats></UnivariateStats></ModelStats>)");
  EXPECT_DOUBLE_EQ(Number(Load(document).Score({{"n", 3.0}}), "affinity"), 1.25 * 1.25);
}

// --- The centres' own fields of 3.0 and 3.1 ---

TEST(CenterFields, AreDerivedFieldsWithTheSettingsOfTheirSource) {
  Document document = Clusters(Measure("cityBlock") + R"(<ClusteringField field="x" fieldWeight="10"/>
      <ClusteringField field="s"/><CenterFields>
      <DerivedField name="c1" optype="continuous" dataType="double"><NormContinuous field="x">
        <LinearNorm orig="0" norm="0"/><LinearNorm orig="100" norm="1"/></NormContinuous></DerivedField>
      <DerivedField name="c2" optype="continuous" dataType="double"><NormDiscrete field="s" value="a"/></DerivedField>
      </CenterFields><MissingValueWeights><Array type="real">1 1</Array></MissingValueWeights>)" +
                               Center("0.25 1") + Center("0.75 0"));
  document.version = "3.1";
  const auto out = Load(document).Score({{"x", 30.0}, {"s", "b"}});
  EXPECT_EQ(Shown(out, "prediction"), "1");
  EXPECT_DOUBLE_EQ(Number(out, "affinity"), 10 * 0.05 + 1.0);
  EXPECT_DOUBLE_EQ(Number(out, "secondAffinity"), 10 * 0.45);
}

// --- Refusals ---

struct RefusalCase {
  const char* name;
  Document document;
  const char* reason;
};

class ClusteringRefusal : public testing::TestWithParam<RefusalCase> {};

TEST_P(ClusteringRefusal, Document_IsRefusedWithAReason) {
  const std::string reason = ReasonOf(GetParam().document);
  EXPECT_NE(reason.find(GetParam().reason), std::string::npos) << reason;
}

Document Simple(const std::string& measure, const std::string& field, const std::string& center) {
  return Clusters(measure + "<ClusteringField " + field + "/>" + Center(center));
}

Document Distributed(const std::string& field, const std::string& partition) {
  return Clusters(Measure("euclidean") + field + "<Cluster>" + partition + "</Cluster>", "distributionBased");
}

const std::string kX = R"(<ClusteringField field="x"/>)";

INSTANTIATE_TEST_SUITE_P(
    Table, ClusteringRefusal,
    testing::Values(
        RefusalCase{"model_class", Clusters(Measure("euclidean"), "boundaryBased"), "centerBased, distributionBased"},
        RefusalCase{"no_measure", Clusters(kX + Center("1")), "ComparisonMeasure"},
        RefusalCase{"empty_measure", Clusters(R"(<ComparisonMeasure kind="distance"/>)" + kX + Center("1")),
                    "names no measure"},
        RefusalCase{"two_measures",
                    Clusters(R"(<ComparisonMeasure kind="distance"><euclidean/><jaccard/></ComparisonMeasure>)" + kX +
                             Center("1")),
                    "is a second measure"},
        RefusalCase{"other_measure", Simple(Measure("mahalanobis"), R"(field="x")", "1"), "mahalanobis"},
        RefusalCase{"kind", Simple(Measure("euclidean", "nearness"), R"(field="x")", "1"), "distance, similarity"},
        RefusalCase{"no_power", Simple(Measure("minkowski"), R"(field="x")", "1"), "p-parameter"},
        RefusalCase{"power", Simple(Measure(R"(minkowski p-parameter="0")"), R"(field="x")", "1"), "isn't above 0"},
        RefusalCase{"binary_parameters", Simple(Measure("binarySimilarity"), R"(field="x")", "1"), "c11-parameter"},
        RefusalCase{"binary_center", Simple(Measure("jaccard"), R"(field="x")", "0.5"),
                    "of field 'x' that the measure"},
        RefusalCase{"function", Simple(Measure("euclidean"), R"(field="x" compareFunction="near")", "1"),
                    "absDiff, gaussSim, delta, equal, table"},
        RefusalCase{"scale", Simple(Measure("euclidean"), R"(field="x" compareFunction="gaussSim")", "1"),
                    "similarityScale"},
        RefusalCase{"scale_zero",
                    Simple(Measure("euclidean"), R"(field="x" compareFunction="gaussSim" similarityScale="0")", "1"),
                    "is too small"},
        RefusalCase{"no_table", Simple(Measure("euclidean"), R"(field="s" compareFunction="table")", "a"),
                    "Comparisons"},
        RefusalCase{"table_without_values",
                    Clusters(Measure("euclidean") + R"(<ClusteringField field="x" compareFunction="table"><Comparisons>
                        <Matrix><Array type="real">0</Array></Matrix></Comparisons></ClusteringField>)" +
                             Center("1")),
                    "to be declared"},
        RefusalCase{"table_size",
                    Clusters(Measure("euclidean") + R"(<ClusteringField field="s" compareFunction="table"><Comparisons>
                        <Matrix><Array type="real">0</Array></Matrix></Comparisons></ClusteringField>)" +
                             Center("a")),
                    "a matrix of 3 rows"},
        RefusalCase{"weight", Simple(Measure("euclidean"), R"(field="x" fieldWeight="-1")", "1"), "is below 0"},
        RefusalCase{"unknown_field", Simple(Measure("euclidean"), R"(field="z")", "1"), "\"z\""},
        RefusalCase{"text", Simple(Measure("euclidean"), R"(field="s")", "a"), "needs numbers"},
        RefusalCase{"no_field", Clusters(Measure("euclidean") + Center("1")), "has no field"},
        RefusalCase{"no_center_field", Simple(Measure("euclidean"), R"(field="x" isCenterField="false")", "1"),
                    "has no field"},
        RefusalCase{"center_length", Simple(Measure("euclidean"), R"(field="x")", "1 2"), "has 2 values for 1 fields"},
        RefusalCase{"center_text", Simple(Measure("euclidean"), R"(field="x")", "one"), "'one'"},
        RefusalCase{"center_infinite", Simple(Measure("euclidean"), R"(field="x")", "INF"),
                    "of field 'x' that the measure"},
        RefusalCase{"no_center", Clusters(Measure("euclidean") + kX + "<Cluster/>"), "Array"},
        RefusalCase{"no_cluster", Clusters(Measure("euclidean") + kX), "Cluster"},
        RefusalCase{"same_id",
                    Clusters(Measure("euclidean") + kX + R"(<Cluster id="2"><Array type="real">1</Array></Cluster>)" +
                             Center("1")),
                    "second one with the identifier '2'"},
        RefusalCase{
            "missing_weights",
            Clusters(Measure("euclidean") + kX +
                     R"(<MissingValueWeights><Array type="real">1 1</Array></MissingValueWeights>)" + Center("1")),
            "has 2 weights for 1 fields"},
        RefusalCase{
            "missing_weights_zero",
            Clusters(Measure("euclidean") + kX +
                     R"(<MissingValueWeights><Array type="real">0</Array></MissingValueWeights>)" + Center("1")),
            "all 0"},
        RefusalCase{"targets", Clusters("<Targets/>" + Measure("euclidean") + kX + Center("1")), "no meaning"},
        RefusalCase{"two_weight_lists",
                    Clusters(Measure("euclidean") + kX + R"(<MissingValueWeights><Array type="real">1</Array>
                        <Array type="real">2</Array></MissingValueWeights>)" +
                             Center("1")),
                    "<Array> line 16: is a second one"},
        RefusalCase{"two_centers",
                    Clusters(Measure("euclidean") + kX +
                             R"(<Cluster><Array type="real">1</Array><Array type="real">2</Array></Cluster>)"),
                    "is a second one"},
        RefusalCase{"two_tables",
                    Clusters(Measure("euclidean") +
                             R"(<ClusteringField field="s" compareFunction="table"><Comparisons/><Comparisons/>
                        </ClusteringField>)" +
                             Center("a")),
                    "<Comparisons> line 15: is a second one"},
        RefusalCase{"two_matrices",
                    Clusters(Measure("euclidean") + R"(<ClusteringField field="s" compareFunction="table"><Comparisons>
                        <Matrix/><Matrix/></Comparisons></ClusteringField>)" +
                             Center("a")),
                    "is a second one"},
        RefusalCase{"two_partitions",
                    Distributed(R"(<ClusteringField field="s" compareFunction="equal"/>)", "<Partition/><Partition/>"),
                    "is a second one"},
        RefusalCase{"two_statistics",
                    Distributed(R"(<ClusteringField field="s" compareFunction="equal"/>)",
                                R"(<Partition><PartitionFieldStats field="s"/><PartitionFieldStats field="s"/>
                                   </Partition>)"),
                    "stands there twice"},
        RefusalCase{"two_univariate_statistics",
                    Distributed(R"(<ModelStats><UnivariateStats field="s"/><UnivariateStats field="s"/></ModelStats>
                                <ClusteringField field="s" compareFunction="equal"/>)",
                                "<Partition/>"),
                    "<UnivariateStats field=\"s\">"},
        RefusalCase{"two_value_lists",
                    Distributed(R"(<ModelStats><UnivariateStats field="s"><DiscrStats/><DiscrStats/></UnivariateStats>
                                </ModelStats><ClusteringField field="s" compareFunction="equal"/>)",
                                "<Partition/>"),
                    "is a second one in <UnivariateStats>"},
        RefusalCase{"no_partition", Distributed(R"(<ClusteringField field="s" compareFunction="equal"/>)", ""),
                    "Partition"},
        RefusalCase{"no_statistics",
                    Distributed(R"(<ClusteringField field="s" compareFunction="equal"/>)", "<Partition/>"),
                    "says nothing about field 's'"},
        RefusalCase{"frequencies",
                    Distributed(R"(<ClusteringField field="s" compareFunction="equal"/>)",
                                R"(<Partition><PartitionFieldStats field="s"><Array type="int">1 1</Array>
                                   </PartitionFieldStats></Partition>)"),
                    "has 2 frequencies for the 3 values"},
        RefusalCase{"no_frequency",
                    Distributed(R"(<ClusteringField field="s" compareFunction="equal"/>)",
                                R"(<Partition><PartitionFieldStats field="s"><Array type="int">0 0 0</Array>
                                   </PartitionFieldStats></Partition>)"),
                    "has no sum above 0"},
        RefusalCase{"intervals_to_calculate_with",
                    Intervals(Measure("euclidean") + kX + "<Cluster><Partition/></Cluster>", "distributionBased"),
                    "delta, equal or table"}),
    KelTest::CaseName());

TEST(ClusteringRefusal, WrongNumberOfClusters) {
  Document document = Simple(Measure("euclidean"), R"(field="x")", "1");
  document.attributes += " numberOfClusters=\"2\"";
  EXPECT_NE(ReasonOf(document).find("numberOfClusters"), std::string::npos);
}

}  // namespace
}  // namespace TorvaneTest
