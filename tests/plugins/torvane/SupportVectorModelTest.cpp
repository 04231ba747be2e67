#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <vector>

#include "tests/plugins/torvane/ModelHarness.h"
#include "tests/support/CaseName.h"

namespace TorvaneTest {
namespace {

const Value kNull = Value::NULL_VALUE;

std::string Text(double number) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.17g", number);
  return buffer;
}

std::string Instance(const std::string& id, const std::string& array) {
  return "<VectorInstance id=\"" + id + "\">" + array + "</VectorInstance>\n";
}

std::string Array(const std::string& numbers) { return "<Array type=\"real\">" + numbers + "</Array>"; }

// Vectors over the fields "x" and "f" of the harness.
std::string Dictionary(const std::string& instances,
                       const std::string& fields = R"(<FieldRef field="x"/><FieldRef field="f"/>)") {
  return "<VectorDictionary><VectorFields>" + fields + "</VectorFields>" + instances + "</VectorDictionary>\n";
}

std::string Coefficients(const std::vector<double>& coefficients, double constant) {
  std::string text = "<Coefficients absoluteValue=\"" + Text(constant) + "\">";
  for (const double coefficient : coefficients) text += "<Coefficient value=\"" + Text(coefficient) + "\"/>";
  return text + "</Coefficients>";
}

std::string Machine(const std::string& attributes, const std::vector<std::string>& vectors,
                    const std::vector<double>& coefficients, double constant) {
  std::string text = "<SupportVectorMachine " + attributes + "><SupportVectors>";
  for (const std::string& id : vectors) text += "<SupportVector vectorId=\"" + id + "\"/>";
  return text + "</SupportVectors>" + Coefficients(coefficients, constant) + "</SupportVectorMachine>\n";
}

// A machine of the other representation with f = x + `constant`.
std::string Line(const std::string& attributes, double constant) {
  return "<SupportVectorMachine " + attributes + ">" + Coefficients({1.0}, constant) + "</SupportVectorMachine>\n";
}

Document Regression(const std::string& body, const std::string& attributes = "") {
  return {.kind = "SupportVectorMachineModel", .function = "regression", .attributes = attributes, .body = body};
}

Document Classification(const std::string& body, const std::string& attributes = "",
                        const std::string& version = "4.3") {
  return {.kind = "SupportVectorMachineModel", .attributes = attributes, .body = body, .version = version};
}

// Machines with f = x + a constant.
Document Lines(const std::string& machines, const std::string& attributes = "", const std::string& version = "4.3") {
  return Classification("<LinearKernelType/>" + Dictionary("", R"(<FieldRef field="x"/>)") + machines,
                        R"(svmRepresentation="Coefficients" )" + attributes, version);
}

// --- Kernels ---

const double kProbes[5][2] = {{0.25, 0.25}, {2.0, 1.5}, {0.5, 2.0}, {1.5, 2.5}, {-2.0, 3.0}};

struct KernelCase {
  const char* name;
  const char* kernel;
  std::vector<const char*> vectors;
  std::vector<double> coefficients;
  double constant;
  double expected[5];
};

// scikit-learn's SVR, see oracle/support_vectors.py.
const KernelCase kKernels[] = {
    {"linear",
     "<LinearKernelType/>",
     {"0 0", "1 0.25", "3.5 2.5", "-0.5 2.5"},
     {-0.5, 0.5, -0.3125, 0.3125},
     1.8125,
     {1.65625, 0.5, 1.6875, 1.0, 3.6875}},
    {"polynomial",
     R"(<PolynomialKernelType gamma="0.25" coef0="0.5" degree="3"/>)",
     {"0 0", "1 0.25", "3.5 2.5", "-0.5 2.5"},
     {-0.349538033544022, 0.25877016630656424, -0.02513390150535826, 0.11590176874281603},
     1.5003974885979046,
     {1.5181649023229224, 1.1754013826639205, 1.8597407164606525, 1.5382704255026007, 3.5486933046203983}},
    {"sigmoid",
     R"(<SigmoidKernelType gamma="0.25" coef0="0.5"/>)",
     {"1 0.25", "3 3", "3.5 2.5", "-0.5 2.5"},
     {0.5, -0.5, -0.5, 0.5},
     1.035649374127388,
     {0.8696942840427463, 0.853299163465074, 0.8411470081992254, 0.9019571593939254, 0.9216541672344518}},
    {"radial_basis",
     R"(<RadialBasisKernelType gamma="0.25"/>)",
     {"1 0.25", "3 3", "3.5 2.5", "-0.5 2.5"},
     {0.2805440916822817, -0.2805440916822817, -0.5, 0.5},
     1.1842422345653176,
     {1.5340607652022253, 1.0673369972651843, 1.5773064176939635, 1.1084145872122324, 1.4555515945717898}},
};

TEST(SupportVectorRegression, Kernels_AgreeWithLibsvm) {
  for (const KernelCase& row : kKernels) {
    std::string instances;
    std::vector<std::string> ids;
    for (const char* vector : row.vectors) {
      ids.push_back(std::string(1, 'v').append(std::to_string(ids.size())));
      instances += Instance(ids.back(), Array(vector));
    }
    const auto scorer =
        Load(Regression(row.kernel + Dictionary(instances) + Machine("", ids, row.coefficients, row.constant)));
    for (int i = 0; i < 5; ++i) {
      const auto out = scorer.Score({{"x", kProbes[i][0]}, {"f", kProbes[i][1]}});
      EXPECT_NEAR(Number(out, "prediction"), row.expected[i], 1e-14) << row.name << i;
    }
  }
}

// Without parameters: gamma, coef0 and degree are 1.
TEST(SupportVectorRegression, KernelWithoutParameters_TakesOnes) {
  const std::pair<const char*, double> cases[] = {
      {"Polynomial", 1.5}, {"RadialBasis", std::exp(-4.5)}, {"Sigmoid", std::tanh(1.5)}};
  for (const auto& [kernel, expected] : cases) {
    const auto scorer = Load(Regression(std::string(1, '<').append(kernel) + "KernelType/>" +
                                        Dictionary(Instance("v", Array("2 1"))) + Machine("", {"v"}, {1.0}, 0.0)));
    EXPECT_NEAR(Number(scorer.Score({{"x", 0.5}, {"f", -0.5}}), "prediction"), expected, 1e-15) << kernel;
  }
}

TEST(SupportVectorRegression, Coefficients_AreThoseOfTheFields) {
  const auto scorer = Load(Regression("<LinearKernelType/>" + Dictionary("") + "<SupportVectorMachine>" +
                                          Coefficients({2.0, -3.0}, 0.5) + "</SupportVectorMachine>",
                                      R"(svmRepresentation="Coefficients")"));
  EXPECT_EQ(Number(scorer.Score({{"x", 4.0}, {"f", 1.0}}), "prediction"), 5.5);
}

// --- Vectors ---

// The same three vectors over x, f and [s = a], [s = b], written in all ways; K = <x, y>.
TEST(SupportVectorRegression, VectorsInAllForms_AreTheSame) {
  const std::string fields = R"(<FieldRef field="x"/><CategoricalPredictor name="s" value="a" coefficient="1"/>
                                <FieldRef field="f"/><CategoricalPredictor name="s" value="b"/>)";
  const char* const forms[][2] = {
      {"<Array n=\"4\" type=\"real\">1 0 2 3</Array>", "<Array type=\"real\">0.5 0.5 -1 0.5</Array>"},
      {"<REAL-SparseArray n=\"4\"><Indices>4 3 1</Indices><REAL-Entries>3 2 1</REAL-Entries></REAL-SparseArray>",
       "<REAL-SparseArray defaultValue=\"0.5\"><Indices>3</Indices><REAL-Entries>-1</REAL-Entries></REAL-SparseArray>"},
      {"<INT-SparseArray><Indices>1 3 4</Indices><INT-Entries>1 2 3</INT-Entries></INT-SparseArray>",
       "<REAL-SparseArray><Indices>1 2 3 4</Indices><REAL-Entries>0.5 0.5 -1 0.5</REAL-Entries></REAL-SparseArray>"}};
  for (const auto& form : forms) {
    const auto scorer = Load(Regression(
        "<LinearKernelType/>" +
        Dictionary(Instance("unused", Array("9 9 9 9")) + Instance("one", form[0]) + Instance("two", form[1]), fields) +
        Machine("", {"two", "one"}, {10.0, 1.0}, 0.0)));
    EXPECT_EQ(Number(scorer.Score({{"x", 1.5}, {"f", 2.0}, {"s", "a"}}), "prediction"), 5.5 + 10.0 * -0.75);
    EXPECT_EQ(Number(scorer.Score({{"x", 1.5}, {"f", 2.0}, {"s", "b"}}), "prediction"), 8.5 + 10.0 * -0.75);
    EXPECT_EQ(Number(scorer.Score({{"x", 1.5}, {"f", 2.0}, {"s", "c"}}), "prediction"), 5.5 + 10.0 * -1.25);
    EXPECT_TRUE(scorer.Predict({{"x", 1.5}, {"f", 2.0}, {"s", kNull}}).IsNull());
    EXPECT_TRUE(scorer.Predict({{"x", 1.5}, {"f", kNull}, {"s", "a"}}).IsNull());
    EXPECT_TRUE(scorer.Predict({{"x", std::numeric_limits<double>::infinity()}, {"f", 0.0}, {"s", "a"}}).IsNull());
  }
}

TEST(SupportVectorRegression, MissingFieldThatIsMapped_Counts) {
  const auto scorer = Load(Regression(
      "<LinearKernelType/>" + Dictionary(Instance("v", Array("2")), R"(<FieldRef field="x" mapMissingTo="3"/>)") +
      Machine("", {"v"}, {1.0}, 0.0)));
  EXPECT_EQ(Number(scorer.Score({{"x", kNull}}), "prediction"), 6.0);
}

// Nine vectors of which the first ones are almost empty: as many fields as it takes to keep them so, and as few as make
// them dense. A plain loop over all fields gives the same numbers to the last bit.
TEST(SupportVectorRegression, AlmostEmptyVectors_GiveTheSumsOfAPlainLoop) {
  for (const std::size_t fieldCount : {std::size_t{2}, std::size_t{100}}) {
    for (const bool isRadial : {true, false}) {
      std::mt19937 random(3);
      std::uniform_real_distribution<double> number(-1.0, 1.0);
      std::string declarations = R"(<DataField name="t" optype="continuous" dataType="double"/>)";
      std::string schema, fields, instances;
      ValueRecord record(2);
      std::vector<double> x;
      for (std::size_t i = 0; i < fieldCount; ++i) {
        const std::string name = std::string(1, 'x').append(std::to_string(i));
        declarations += "<DataField name=\"" + name + "\" optype=\"continuous\" dataType=\"double\"/>";
        schema += "<MiningField name=\"" + name + "\"/>";
        fields += "<FieldRef field=\"" + name + "\"/>";
        x.push_back(i % 3 == 0 ? 0.0 : number(random));
        record.Add(name.c_str(), x.back());
      }
      std::vector<std::string> ids;
      std::vector<double> coefficients;
      double expected = 0.0;
      for (std::size_t vector = 0; vector < 9; ++vector) {
        std::vector<double> y(fieldCount, 0.0);
        std::string indices, entries;
        for (std::size_t i = vector % 2; i < fieldCount; i += 37) {
          y[i] = number(random);
          indices += std::to_string(i + 1) + " ";
          entries += Text(y[i]) + " ";
        }
        ids.push_back(std::to_string(vector));
        instances += Instance(ids.back(), "<REAL-SparseArray><Indices>" + indices + "</Indices><REAL-Entries>" +
                                              entries + "</REAL-Entries></REAL-SparseArray>");
        coefficients.push_back(number(random));
        double sum = 0.0;
        for (std::size_t i = 0; i < fieldCount; ++i) sum += isRadial ? (x[i] - y[i]) * (x[i] - y[i]) : y[i] * x[i];
        expected += coefficients.back() * (isRadial ? std::exp(-0.125 * sum) : sum);
      }
      Document document = Regression((isRadial ? R"(<RadialBasisKernelType gamma="0.125"/>)" : "<LinearKernelType/>") +
                                     Dictionary(instances, fields) + Machine("", ids, coefficients, 0.25));
      document.dictionary = declarations;
      document.schema = schema;
      EXPECT_EQ(Number(Load(document).Score(record), "prediction"), expected + 0.25) << fieldCount << isRadial;
    }
  }
}

// --- Classification ---

// scikit-learn's SVC of three classes, see oracle/support_vectors.py; the shares are counted from its decision
// function.
TEST(SupportVectorClassification, OneAgainstOne_AgreesWithLibsvm) {
  std::string instances;
  const char* const vectors[] = {"-0.5 2.5", "1 3.5", "3 3", "2.5 2", "3.5 2.5", "0.5 1", "1 0.25", "-1 0.5"};
  for (std::size_t i = 0; i < 8; ++i) instances += Instance(std::to_string(i), Array(vectors[i]));
  const std::string machines =
      Machine(R"(targetCategory="maybe" alternateTargetCategory="no")", {"0", "1", "2", "3", "4"},
              {-0.7171422330023388, -0.9062804131632368, 0.6317090433419885, 0.7448308714316931, 0.246882731391894},
              -0.1129557583584847) +
      Machine(R"(targetCategory="maybe" alternateTargetCategory="yes")", {"0", "1", "5", "6", "7"},
              {-1.1164809130776134, -0.8461267666701311, 0.691195175534596, 0.4265068803124388, 0.8449056239007098},
              0.03543613317534777) +
      Machine(R"(targetCategory="no" alternateTargetCategory="yes")", {"2", "3", "4", "5", "6", "7"},
              {-0.41589904044763154, -0.7740862587381517, -0.4146720957302623, 0.319728955708507, 0.6056998624286829,
               0.6792285767788556},
              0.14962004101310258);
  const char* const winners[] = {"yes", "no", "maybe", "maybe", "maybe"};
  const double shareOfYes[] = {2.0 / 3.0, 1.0 / 3.0, 1.0 / 3.0, 0.0, 1.0 / 3.0};
  for (const char* method : {"", R"(classificationMethod="OneAgainstOne")"}) {
    const auto scorer =
        Load(Classification(R"(<RadialBasisKernelType gamma="0.5"/>)" + Dictionary(instances) + machines, method));
    for (int i = 0; i < 5; ++i) {
      const auto out = scorer.Score({{"x", kProbes[i][0]}, {"f", kProbes[i][1]}});
      EXPECT_EQ(Shown(out, "prediction"), winners[i]);
      EXPECT_DOUBLE_EQ(Probability(out, winners[i]), 2.0 / 3.0);
      EXPECT_DOUBLE_EQ(Probability(out, "yes"), shareOfYes[i]);
    }
  }
}

// Below the threshold a machine speaks for its category; with maxWins above it.
TEST(SupportVectorClassification, OneMachine_TellsTwoCategoriesApart) {
  struct Case {
    std::string ofModel, ofMachine;
    double x;
    const char* expected;
  };
  const std::string maxWins = R"(maxWins="true" )";
  const Case cases[] = {{"", "", -0.125, "yes"},
                        {"", "", 0.0, "no"},
                        {"", "", 0.125, "no"},
                        {R"(threshold="0.5")", "", 0.25, "yes"},
                        {R"(threshold="0.5")", R"(threshold="-1")", 0.25, "no"},
                        {R"(classificationMethod="OneAgainstAll")", "", -0.125, "yes"},
                        {maxWins, "", 0.125, "yes"},
                        {maxWins, "", 0.0, "no"},
                        {maxWins + R"(threshold="0.5")", "", 0.25, "no"}};
  for (const Case& row : cases) {
    const auto out =
        Load(Lines(Line(R"(targetCategory="yes" alternateTargetCategory="no" )" + row.ofMachine, 0.0), row.ofModel))
            .Score({{"x", row.x}});
    EXPECT_EQ(Shown(out, "prediction"), row.expected) << row.ofModel << row.ofMachine << row.x;
    EXPECT_EQ(Number(out, "probability"), 1.0);
    EXPECT_EQ(Probability(out, row.expected == std::string("yes") ? "no" : "yes"), 0.0);
  }
}

// The other category: of the model in 3.2, an extension of one producer, or the one that is left.
TEST(SupportVectorClassification, AlternateCategoryInOlderForms_IsFound) {
  Document twoCategories = Lines(Line(R"(targetCategory="yes")", 0.0));
  const std::string third = R"(<Value value="maybe"/>)";
  twoCategories.dictionary.replace(twoCategories.dictionary.find(third), third.size(), "");
  const std::string extended =
      R"(<SupportVectorMachine targetCategory="yes"><Extension name="alternateTargetCategory" value="no"/>)" +
      Coefficients({1.0}, 0.0) + "</SupportVectorMachine>";
  for (const Document& document :
       {Lines(Line(R"(targetCategory="yes")", 0.0), R"(alternateBinaryTargetCategory="no")", "3.2"),
        Lines(extended, "", "3.2"), twoCategories}) {
    const auto scorer = Load(document);
    EXPECT_EQ(Shown(scorer.Score({{"x", -1.0}}), "prediction"), "yes");
    EXPECT_EQ(Shown(scorer.Score({{"x", 1.0}}), "prediction"), "no");
  }
}

// f = x - 1, 1 - x (as -1 times the field) and x.
TEST(SupportVectorClassification, OneAgainstAll_SmallestOrLargestWins) {
  const std::string machines = Line(R"(targetCategory="no")", -1.0) +
                               "<SupportVectorMachine targetCategory=\"maybe\">" + Coefficients({-1.0}, 1.0) +
                               "</SupportVectorMachine>" + Line(R"(targetCategory="yes")", 0.0);
  const auto smallest = Load(Lines(machines));
  EXPECT_EQ(Shown(smallest.Score({{"x", 0.0}}), "prediction"), "no");
  EXPECT_EQ(Shown(smallest.Score({{"x", 2.0}}), "prediction"), "maybe");
  EXPECT_EQ(Shown(smallest.Score({{"x", 1.0}}), "prediction"), "no");  // the first machine wins a tie
  EXPECT_FALSE(smallest.Score({{"x", 1.0}}).Contains("probability"));
  const auto largest = Load(Lines(machines, R"(maxWins="true" classificationMethod="OneAgainstAll")"));
  EXPECT_EQ(Shown(largest.Score({{"x", 0.0}}), "prediction"), "maybe");
  EXPECT_EQ(Shown(largest.Score({{"x", 2.0}}), "prediction"), "yes");
}

// Each category gets one vote; the category that the machines name first wins.
TEST(SupportVectorClassification, TieOfVotes_IsWonByTheFirstCategory) {
  const auto scorer = Load(Lines(Line(R"(targetCategory="no" alternateTargetCategory="yes")", 0.0) +
                                 Line(R"(targetCategory="yes" alternateTargetCategory="maybe")", 0.0) +
                                 Line(R"(targetCategory="maybe" alternateTargetCategory="no")", 0.0)));
  const auto out = scorer.Score({{"x", 1.0}});
  EXPECT_EQ(Shown(out, "prediction"), "no");
  EXPECT_DOUBLE_EQ(Number(out, "probability"), 1.0 / 3.0);
}

// (2 x)^0.5 of a negative number.
TEST(SupportVectorClassification, SumThatIsNoNumber_GivesNoResult) {
  const std::string kernel = R"(<PolynomialKernelType coef0="0" degree="0.5"/>)" +
                             Dictionary(Instance("v", Array("2")), R"(<FieldRef field="x"/>)");
  for (const std::string& machines :
       {Machine(R"(targetCategory="yes" alternateTargetCategory="no")", {"v"}, {1.0}, 0.0),
        Machine(R"(targetCategory="yes")", {"v"}, {1.0}, 0.0) +
            Machine(R"(targetCategory="no")", {"v"}, {-1.0}, 0.0)}) {
    const auto scorer = Load(Classification(kernel + machines));
    EXPECT_EQ(Shown(scorer.Score({{"x", 2.0}}), "prediction"), "no");
    EXPECT_EQ(Shown(scorer.Score({{"x", -2.0}}), "prediction"), "null");
  }
}

// --- Refusals ---

struct RefusalCase {
  const char* name;
  Document document;
  const char* reason;
};

class SupportVectorRefusal : public testing::TestWithParam<RefusalCase> {};

TEST_P(SupportVectorRefusal, Document_IsRefusedWithAReason) {
  EXPECT_NE(ReasonOf(GetParam().document).find(GetParam().reason), std::string::npos) << ReasonOf(GetParam().document);
}

const std::string kLinear = "<LinearKernelType/>";
const std::string kOne = Machine("", {"v"}, {1.0}, 0.0);
const std::string kTwoFields = Dictionary(Instance("v", Array("1 2")));

Document OfKernel(const std::string& kernel) { return Regression(kernel + kTwoFields + kOne); }
Document OfArray(const std::string& array) { return Regression(kLinear + Dictionary(Instance("v", array)) + kOne); }
Document OfFields(const std::string& fields) {
  return Regression(kLinear + Dictionary(Instance("v", Array("1")), fields) + kOne);
}
Document OfMachine(const std::string& machine) { return Regression(kLinear + kTwoFields + machine); }

INSTANTIATE_TEST_SUITE_P(
    Table, SupportVectorRefusal,
    testing::Values(
        RefusalCase{"no_kernel", OfKernel(""), "has no kernel"},
        RefusalCase{"two_kernels", OfKernel(kLinear + "<SigmoidKernelType/>"), "is a second kernel"},
        RefusalCase{"unknown_kernel", OfKernel("<LaplaceKernelType/>"), "<LaplaceKernelType> line"},
        RefusalCase{"infinite_gamma", OfKernel(R"(<RadialBasisKernelType gamma="INF"/>)"), "isn't finite"},
        RefusalCase{"unknown_representation", Regression(kLinear + kTwoFields + kOne, R"(svmRepresentation="Both")"),
                    "SupportVectors, Coefficients"},
        RefusalCase{"coefficients_of_a_curve",
                    Regression("<SigmoidKernelType/>" + Dictionary("") + "<SupportVectorMachine>" +
                                   Coefficients({1.0, 2.0}, 0.0) + "</SupportVectorMachine>",
                               R"(svmRepresentation="Coefficients")"),
                    "are for the linear kernel"},
        RefusalCase{"vectors_beside_coefficients",
                    Regression(kLinear + kTwoFields + Machine("", {"v"}, {1.0, 2.0}, 0.0),
                               R"(svmRepresentation="Coefficients")"),
                    "beside coefficients"},
        RefusalCase{"no_dictionary", Regression(kLinear + kOne), "VectorDictionary"},
        RefusalCase{"no_fields", OfFields(""), "has no field"},
        RefusalCase{"text_field", OfFields(R"(<FieldRef field="s"/>)"), "gives a text"},
        RefusalCase{"unknown_field", OfFields(R"(<FieldRef field="q"/>)"), "no such field"},
        RefusalCase{"coefficient_of_a_predictor",
                    OfFields(R"(<CategoricalPredictor name="s" value="a" coefficient="2"/>)"), "isn't 1"},
        RefusalCase{"category_of_another_type", OfFields(R"(<CategoricalPredictor name="x" value="a"/>)"), "data type"},
        RefusalCase{"vector_without_array", OfArray(""), "has no array"},
        RefusalCase{"vector_of_two_arrays", OfArray(Array("1 2") + Array("1 2")), "second array"},
        RefusalCase{"short_array", OfArray(Array("1")), "isn't as long as the vector of fields, which has 2"},
        RefusalCase{"long_sparse_array", OfArray("<REAL-SparseArray n=\"3\"/>"), "isn't as long"},
        RefusalCase{"index_beyond",
                    OfArray("<REAL-SparseArray><Indices>3</Indices><REAL-Entries>1</REAL-Entries>"
                            "</REAL-SparseArray>"),
                    "isn't as long"},
        RefusalCase{"infinite_number", OfArray(Array("1 INF")), "isn't finite"},
        RefusalCase{"infinite_default", OfArray("<REAL-SparseArray defaultValue=\"INF\"/>"), "isn't finite"},
        RefusalCase{"vector_twice",
                    Regression(kLinear + Dictionary(Instance("v", Array("1 2")) + Instance("v", Array("1 2"))) + kOne),
                    "of another vector"},
        RefusalCase{"unknown_vector", OfMachine(Machine("", {"w"}, {1.0}, 0.0)), "isn't in the dictionary"},
        RefusalCase{"too_few_coefficients", OfMachine(Machine("", {"v", "v"}, {1.0}, 0.0)),
                    "1 coefficients for 2 support vectors"},
        RefusalCase{"too_many_coefficients", OfMachine(Machine("", {"v"}, {1.0, 2.0}, 0.0)),
                    "2 coefficients for 1 support vectors"},
        RefusalCase{"infinite_constant", OfMachine(R"(<SupportVectorMachine><SupportVectors/>
                        <Coefficients absoluteValue="INF"/></SupportVectorMachine>)"),
                    "isn't finite"},
        RefusalCase{"no_machine", OfMachine(""), "SupportVectorMachine"},
        RefusalCase{"two_machines_of_a_regression", OfMachine(kOne + kOne), "a regression has one"},
        RefusalCase{"no_category", Lines(Line("", 0.0)), "targetCategory"},
        RefusalCase{"unknown_method", Lines(Line(R"(targetCategory="yes")", 0.0), R"(classificationMethod="OvO")"),
                    "OneAgainstAll, OneAgainstOne"},
        RefusalCase{"no_alternate_of_three", Lines(Line(R"(targetCategory="yes")", 0.0)), "an alternateTargetCategory"},
        RefusalCase{"alternate_is_the_same", Lines(Line(R"(targetCategory="no" alternateTargetCategory="no")", 0.0)),
                    "is the alternate one, too"},
        RefusalCase{"category_twice", Lines(Line(R"(targetCategory="no")", 0.0) + Line(R"(targetCategory="no")", 1.0)),
                    "what another machine does"},
        RefusalCase{"pair_twice",
                    Lines(Line(R"(targetCategory="no" alternateTargetCategory="yes")", 0.0) +
                          Line(R"(targetCategory="yes" alternateTargetCategory="no")", 1.0)),
                    "what another machine does"},
        RefusalCase{"pair_left_out",
                    Lines(Line(R"(targetCategory="no" alternateTargetCategory="yes")", 0.0) +
                          Line(R"(targetCategory="no" alternateTargetCategory="maybe")", 1.0)),
                    "no machine for some pair"},
        RefusalCase{"alternate_against_all",
                    Lines(Line(R"(targetCategory="no" alternateTargetCategory="yes")", 0.0) +
                              Line(R"(targetCategory="yes")", 1.0),
                          R"(classificationMethod="OneAgainstAll")"),
                    "in OneAgainstAll"},
        RefusalCase{"binary_alternate_of_many",
                    Lines(Line(R"(targetCategory="no")", 0.0) + Line(R"(targetCategory="yes")", 1.0),
                          R"(alternateBinaryTargetCategory="no")", "3.2"),
                    "is for a single machine"},
        RefusalCase{"probability_of_one_against_all",
                    Lines(R"(<Output><OutputField name="p" feature="probability"/></Output>)" +
                          Line(R"(targetCategory="no")", 0.0) + Line(R"(targetCategory="yes")", 1.0)),
                    "isn't known to this kind of model"}),
    KelTest::CaseName());

}  // namespace
}  // namespace TorvaneTest
