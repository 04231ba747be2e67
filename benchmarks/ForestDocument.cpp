#include "benchmarks/ForestDocument.h"

#include <cstdio>
#include <random>

namespace Documents {
namespace {

constexpr int kFields = 20;
constexpr const char* kLabels[] = {"low", "medium", "high"};

std::string FieldName(std::uint32_t index) { return "input_" + std::to_string(index); }

class ForestWriter {
 public:
  ForestWriter(std::size_t bytes, int trees) : fTrees(trees) {
    Head();
    const std::size_t perTree = bytes / static_cast<std::size_t>(trees);
    for (int tree = 1; tree <= trees; ++tree) Segment(tree, perTree * static_cast<std::size_t>(tree));
    fText += "\t\t</Segmentation>\n\t</MiningModel>\n</PMML>\n";
  }

  [[nodiscard]] std::string TakeText() { return std::move(fText); }

 private:
  void Head() {
    fText +=
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<PMML xmlns=\"http://www.dmg.org/PMML-4_2\" version=\"4.2\">\n"
        "\t<Header/>\n\t<DataDictionary>\n\t\t<DataField name=\"risk\" optype=\"categorical\" dataType=\"string\">\n";
    for (const char* const label : kLabels) fText += std::string("\t\t\t<Value value=\"") + label + "\"/>\n";
    fText += "\t\t</DataField>\n";
    for (std::uint32_t i = 0; i < kFields; ++i) {
      fText += "\t\t<DataField name=\"" + FieldName(i) + "\" optype=\"continuous\" dataType=\"double\"/>\n";
    }
    fText += "\t</DataDictionary>\n\t<MiningModel functionName=\"classification\">\n";
    Schema("\t\t");
    fText += "\t\t<Segmentation multipleModelMethod=\"average\">\n";
  }

  void Schema(const std::string& indent) {
    fText += indent + "<MiningSchema>\n" + indent + "\t<MiningField name=\"risk\" usageType=\"target\"/>\n";
    for (std::uint32_t i = 0; i < kFields; ++i) fText += indent + "\t<MiningField name=\"" + FieldName(i) + "\"/>\n";
    fText += indent + "</MiningSchema>\n";
  }

  // Ends soon after the text is `end` bytes long.
  void Segment(int number, std::size_t end) {
    fId = 0;
    fText += "\t\t\t<Segment id=\"" + std::to_string(number) +
             "\">\n\t\t\t\t<True/>\n"
             "\t\t\t\t<TreeModel functionName=\"classification\" splitCharacteristic=\"binarySplit\">\n";
    Schema("\t\t\t\t\t");
    const int depth = 11;
    fText += "\t\t\t\t\t<Node id=\"1\">\n\t\t\t\t\t\t<True/>\n";
    fId = 1;
    Children(depth, end, "\t\t\t\t\t\t");
    fText += "\t\t\t\t\t</Node>\n\t\t\t\t</TreeModel>\n\t\t\t</Segment>\n";
  }

  // NOLINTNEXTLINE(misc-no-recursion): the depth is `levels`.
  void Children(int levels, std::size_t end, const std::string& indent) {
    const std::string field = FieldName(Random() % kFields);
    const std::string threshold = Decimal("%.15g", 100.0);
    for (const char* const comparison : {"lessOrEqual", "greaterThan"}) {
      const bool isLeaf = levels == 0 || fText.size() > end || (levels < 6 && Random() % 8 == 0);
      Open(indent, isLeaf);
      fText.append(indent).append("\t<SimplePredicate field=\"").append(field).append("\" operator=\"");
      fText.append(comparison).append("\" value=\"").append(threshold).append("\"/>\n");
      if (isLeaf) {
        Distribution(indent + "\t");
      } else {
        Children(levels - 1, end, indent + "\t");
      }
      fText += indent + "</Node>\n";
    }
  }

  void Open(const std::string& indent, bool isLeaf) {
    fText.append(indent).append("<Node id=\"").append(std::to_string(++fId));
    if (isLeaf) fText.append("\" score=\"").append(kLabels[Random() % 3]);
    fText += "\">\n";
  }

  void Distribution(const std::string& indent) {
    for (const char* const label : kLabels) {
      fText += indent + "<ScoreDistribution value=\"" + label + "\" recordCount=\"" + std::to_string(Random() % 300) +
               "\"/>\n";
    }
  }

  std::string Decimal(const char* format, double scale) {
    char text[32];
    std::snprintf(text, sizeof text, format, scale * static_cast<double>(Random()) / 4294967296.0);
    return text;
  }

  std::uint32_t Random() { return static_cast<std::uint32_t>(fRandom()); }

  int fTrees;
  int fId = 0;
  std::string fText;
  std::mt19937 fRandom{42};  // gives the same numbers everywhere
};

}  // namespace

std::string Forest(std::size_t bytes, int trees) { return ForestWriter(bytes, trees).TakeText(); }

}  // namespace Documents
