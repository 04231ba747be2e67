// Ensembles of plain trees have layouts of their own. Each must give, bit for bit, what the trees give one by one.

#include <array>
#include <charconv>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "tests/plugins/torvane/ModelHarness.h"
#include "tests/support/CaseName.h"

namespace TorvaneTest {
namespace {

constexpr int kFields = 5;

std::string Text(double number) {
  char text[32];
  return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

std::string FieldName(int index) {
  std::string name(1, 'f');
  return name.append(std::to_string(index));
}

// How producers write trees.
enum class Style {
  kSplits,         // two children, one of which is true
  kDefaultChild,   // the same, and where missing values go
  kNull,           // the same, and no result for missing values
  kCompact,        // a node predicts if none of its children is true
  kFirstIsMissing  // a child for missing values comes first
};

struct Shape {
  const char* name;
  int trees;
  int leaves;
  int fields = kFields;
  Style style = Style::kSplits;
};

// Trees of random shape. Limits are multiples of a quarter, so that records lie on them.
class TreeWriter {
 public:
  TreeWriter(const Shape& shape, bool isClassification)
      : fRandom(static_cast<unsigned>(shape.leaves)),
        fFieldCount(shape.fields),
        fStyle(shape.style),
        fIsClassification(isClassification) {}

  std::string Tree(int leaves) {
    return std::string("<TreeModel functionName=\"") + (fIsClassification ? "classification" : "regression") + "\" " +
           Strategy() + "><MiningSchema>" + Fields(fFieldCount, fIsClassification) + "</MiningSchema>" +
           Node("<True/>", leaves) + "</TreeModel>";
  }

  static std::string Fields(int count, bool isClassification) {
    std::string text = isClassification ? "<MiningField name=\"y\" usageType=\"target\"/>" : "";
    text += "<MiningField name=\"s\"/>";
    for (int i = 0; i < count; ++i) text.append("<MiningField name=\"").append(FieldName(i)).append("\"/>");
    return text;
  }

 private:
  std::string Strategy() const {
    switch (fStyle) {
      case Style::kDefaultChild:
        return R"(missingValueStrategy="defaultChild")";
      case Style::kNull:
        return R"(missingValueStrategy="nullPrediction")";
      case Style::kCompact:
        return R"(noTrueChildStrategy="returnLastPrediction")";
      default:
        return "";
    }
  }

  int Pick(int count) { return std::uniform_int_distribution<int>(0, count - 1)(fRandom); }

  std::string Node(const std::string& predicate, int leaves) {
    if (leaves == 1) return Opened(predicate, true, "") + "</Node>\n";
    const int below = 1 + Pick(leaves - 1);
    if (fStyle == Style::kCompact) return CompactNode(predicate, below, leaves);
    const std::string field = FieldName(Pick(fFieldCount));
    const std::string limit = Text(0.25 * Pick(24) - 3.0);
    const bool isStrict = Pick(2) == 0;
    const std::string first = Child(Compared(field, isStrict ? "lessThan" : "lessOrEqual", limit), below);
    const std::string firstId = std::to_string(fLastId);
    const std::string second =
        Child(Compared(field, isStrict ? "greaterOrEqual" : "greaterThan", limit), leaves - below);
    const std::string chosen = Pick(2) == 0 ? firstId : std::to_string(fLastId);
    std::string text = Opened(predicate, false, fStyle == Style::kDefaultChild ? chosen : "");
    if (fStyle == Style::kFirstIsMissing) text += Child(Compared(field, "isMissing", ""), 1);
    return text.append(Pick(2) == 0 ? first + second : second + first).append("</Node>\n");
  }

  // One child or two, whose predicates have nothing to do with each other.
  std::string CompactNode(const std::string& predicate, int below, int leaves) {
    std::string text = Opened(predicate, true, "");
    text += Child(AnyPredicate(), below);
    if (leaves - below > 1) text += Child(Pick(4) == 0 ? "<True/>" : AnyPredicate(), leaves - below);
    return text.append("</Node>\n");
  }

  // The id of the child is the last one given, so that a parent can name it.
  std::string Child(const std::string& predicate, int leaves) {
    std::string text = Node(predicate, leaves);
    fLastId = fNextId++;
    return text.replace(text.find("<Node"), 5, "<Node id=\"" + std::to_string(fLastId) + "\"");
  }

  static std::string Compared(const std::string& field, const char* comparison, const std::string& value) {
    std::string text = "<SimplePredicate field=\"";
    text.append(field).append("\" operator=\"").append(comparison).append("\"");
    if (!value.empty()) text.append(" value=\"").append(value).append("\"");
    return text.append("/>");
  }

  std::string AnyPredicate() {
    const std::string category(1, static_cast<char>('a' + Pick(3)));
    switch (Pick(5)) {
      case 0:
        return Compared("s", Pick(2) == 0 ? "equal" : "notEqual", category);
      case 1:
        return R"(<SimpleSetPredicate field="s" booleanOperator="isIn"><Array type="string">c )" + category +
               "</Array></SimpleSetPredicate>";
      case 2:
        return Compared(FieldName(Pick(fFieldCount)), "greaterThan", Text(0.25 * Pick(24) - 3.0));
      default:
        return Compared(FieldName(Pick(fFieldCount)), "lessThan", Text(0.25 * Pick(24) - 3.0));
    }
  }

  // A node up to its children.
  std::string Opened(const std::string& predicate, bool hasResult, const std::string& defaultChild) {
    static constexpr std::array<const char*, 3> kScores = {"no", "yes", "maybe"};
    std::string text = "<Node";
    if (!defaultChild.empty()) text.append(" defaultChild=\"").append(defaultChild).append("\"");
    if (!hasResult) return text.append(">").append(predicate);
    const std::string score = fIsClassification ? kScores[static_cast<std::size_t>(Pick(3))] : Text(0.1 * Pick(1000));
    text.append(" score=\"").append(score).append("\">").append(predicate);
    if (fIsClassification && Pick(2) == 0) {
      for (const char* value : {"yes", "no"}) {
        text.append("<ScoreDistribution value=\"").append(value).append("\" recordCount=\"");
        text.append(std::to_string(1 + Pick(9))).append("\"/>");
      }
    }
    return text;
  }

  std::mt19937 fRandom;
  int fFieldCount;
  Style fStyle;
  bool fIsClassification;
  int fNextId = 1;
  int fLastId = 0;
};

Scorer LoadModel(const std::string& model, int fieldCount) {
  std::string text = R"(<PMML version="4.2"><DataDictionary><DataField name="y" optype="categorical" dataType="string">
      <Value value="yes"/><Value value="no"/><Value value="maybe"/></DataField>
      <DataField name="s" optype="categorical" dataType="string"/>)";
  for (int i = 0; i < fieldCount; ++i) {
    text.append("<DataField name=\"").append(FieldName(i)).append("\" optype=\"continuous\" dataType=\"double\"/>");
  }
  Scorer scorer = TryLoad(text + "</DataDictionary>" + model + "</PMML>");
  EXPECT_NE(scorer.scorer, nullptr) << scorer.reason;
  return scorer;
}

// An ensemble, and its trees as models of their own.
struct Both {
  Both(const Shape& shape, const std::string& method, bool isClassification) {
    TreeWriter writer(shape, isClassification);
    std::string segments;
    for (int i = 0; i < shape.trees; ++i) {
      weights.push_back(0.5 + i % 3);
      const std::string tree = writer.Tree(shape.leaves);
      segments.append("<Segment weight=\"").append(Text(weights.back())).append("\"><True/>");
      segments.append(tree).append("</Segment>");
      trees.push_back(LoadModel(tree, shape.fields));
    }
    ensemble =
        LoadModel(std::string("<MiningModel functionName=\"") + (isClassification ? "classification" : "regression") +
                      "\"><MiningSchema>" + TreeWriter::Fields(shape.fields, isClassification) +
                      "</MiningSchema><Segmentation multipleModelMethod=\"" + method + "\">" + segments +
                      "</Segmentation></MiningModel>",
                  shape.fields);
  }

  Scorer ensemble;
  std::vector<Scorer> trees;
  std::vector<double> weights;
};

std::vector<ValueRecord> Records(int fieldCount) {
  std::mt19937 random(3);
  std::vector<ValueRecord> records;
  for (int row = 0; row < 60; ++row) {
    ValueRecord& record = records.emplace_back(fieldCount);
    for (int i = 0; i < fieldCount; ++i) {
      const double number = 0.125 * std::uniform_int_distribution<int>(-26, 26)(random);
      record.Add(FieldName(i), row == 1 ? std::numeric_limits<double>::infinity() : number);
    }
    if (row == 2) record[0] = -std::numeric_limits<double>::infinity();
    const std::string text(1, static_cast<char>('a' + row % 4));
    record.Add("s", text);
    if (row % 5 == 3) record[row % fieldCount].SetNull();
    if (row % 7 == 3) record[fieldCount].SetNull();
  }
  return records;
}

class TreeEnsembleOf : public testing::TestWithParam<Shape> {};

TEST_P(TreeEnsembleOf, Numbers_AreThoseOfTheTreesOneByOne) {
  for (const std::string method : {"sum", "weightedSum", "average", "weightedAverage"}) {
    const Both both(GetParam(), method, false);
    const bool isWeighted = method.starts_with("weighted");
    for (const ValueRecord& record : Records(GetParam().fields)) {
      double sum = 0.0;
      double weights = 0.0;
      bool isMissing = false;
      for (std::size_t tree = 0; tree < both.trees.size(); ++tree) {
        const Value single = both.trees[tree].Score(record)["prediction"];
        const double weight = isWeighted ? both.weights[tree] : 1.0;
        isMissing = isMissing || single.IsNull();
        sum += weight * single.GetReal();
        weights += weight;
      }
      const Value prediction = both.ensemble.Score(record)["prediction"];
      ASSERT_EQ(prediction.IsNull(), isMissing) << method;
      const double expected = method.ends_with("verage") ? sum / weights : sum;
      ASSERT_EQ(prediction.GetReal(), isMissing ? Value().GetReal() : expected) << method;
    }
  }
}

TEST_P(TreeEnsembleOf, Categories_AreThoseOfTheTreesOneByOne) {
  for (const std::string method : {"majorityVote", "weightedMajorityVote", "average", "weightedAverage"}) {
    const Both both(GetParam(), method, true);
    const bool isWeighted = method.starts_with("weighted");
    for (const ValueRecord& record : Records(GetParam().fields)) {
      std::array<double, 3> sums{};
      double weights = 0.0;
      bool isMissing = false;
      for (std::size_t tree = 0; tree < both.trees.size(); ++tree) {
        ValueRecord single = both.trees[tree].Score(record);
        isMissing = isMissing || single["prediction"].IsNull();
        if (isMissing) break;
        const double weight = isWeighted ? both.weights[tree] : 1.0;
        weights += weight;
        int i = 0;
        for (const char* category : {"yes", "no", "maybe"}) {
          const bool isPredicted = single["prediction"].GetString() == category;
          sums[static_cast<std::size_t>(i++)] +=
              weight * (method.ends_with("verage") ? Probability(single, category) : (isPredicted ? 1.0 : 0.0));
        }
      }
      if (isMissing) continue;  // what a missing vote does is the method's affair
      ValueRecord out = both.ensemble.Score(record);
      int i = 0;
      for (const char* category : {"yes", "no", "maybe"}) {
        ASSERT_EQ(Probability(out, category), sums[static_cast<std::size_t>(i++)] / weights) << method << category;
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Shapes, TreeEnsembleOf,
                         testing::Values(Shape{"stumps", 3, 2}, Shape{"leaves_alone", 2, 1}, Shape{"of_8", 20, 8},
                                         Shape{"of_9", 17, 9}, Shape{"of_20", 5, 20}, Shape{"of_64", 4, 64},
                                         Shape{"of_65", 9, 65}, Shape{"many", 40, 60}, Shape{"many_fields", 12, 30, 80},
                                         Shape{"default_8", 20, 8, kFields, Style::kDefaultChild},
                                         Shape{"default_70", 9, 70, kFields, Style::kDefaultChild},
                                         Shape{"null_20", 9, 20, kFields, Style::kNull},
                                         Shape{"compact_8", 20, 8, kFields, Style::kCompact},
                                         Shape{"compact_90", 30, 90, kFields, Style::kCompact},
                                         Shape{"missing_12", 20, 12, kFields, Style::kFirstIsMissing}),
                         KelTest::CaseName());

}  // namespace
}  // namespace TorvaneTest
