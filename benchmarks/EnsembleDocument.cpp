#include "benchmarks/EnsembleDocument.h"

#include <random>

#include "benchmarks/Documents.h"

namespace EnsembleDocument {
namespace {

// A leaf that may become a node, with the box of numbers that reach it: limits are drawn from it, so that both children
// can be reached.
struct Growing {
  int node;
  std::vector<double> low;
  std::vector<double> high;
};

class Grower {
 public:
  Grower(int inputs, double scale, unsigned seed) : fRandom(seed), fInputs(inputs), fScale(scale) {}

  Tree Complete(int depth);
  Tree OfSize(int nodes);

 private:
  void Split(Tree& tree, std::vector<Growing>& leaves, std::size_t chosen);
  Growing Root() const {
    const auto count = static_cast<std::size_t>(fInputs);
    return {0, std::vector<double>(count, -3.0), std::vector<double>(count, 3.0)};
  }
  double Uniform(double low, double high) { return std::uniform_real_distribution<double>(low, high)(fRandom); }

  std::mt19937 fRandom;
  int fInputs;
  double fScale;
};

void Grower::Split(Tree& tree, std::vector<Growing>& leaves, std::size_t chosen) {
  Growing below = leaves[chosen];
  Growing above = below;
  const auto feature = static_cast<std::size_t>(std::uniform_int_distribution<int>(0, fInputs - 1)(fRandom));
  const double third = (below.high[feature] - below.low[feature]) / 3.0;
  const double limit = Uniform(below.low[feature] + third, below.high[feature] - third);
  const int parent = below.node;
  below.node = static_cast<int>(tree.size());
  above.node = below.node + 1;
  below.high[feature] = limit;
  above.low[feature] = limit;
  tree[static_cast<std::size_t>(parent)] = {false, static_cast<int>(feature), limit * fScale, below.node, above.node,
                                            0.0};
  tree.push_back({.score = Uniform(-1.0, 1.0)});
  tree.push_back({.score = Uniform(-1.0, 1.0)});
  leaves[chosen] = std::move(below);
  leaves.push_back(std::move(above));
}

Tree Grower::Complete(int depth) {
  Tree tree(1);
  std::vector<Growing> leaves{Root()};
  for (int level = 0; level < depth; ++level) {
    const std::size_t count = leaves.size();
    for (std::size_t leaf = 0; leaf < count; ++leaf) Split(tree, leaves, leaf);
  }
  return tree;
}

Tree Grower::OfSize(int nodes) {
  Tree tree(1);
  std::vector<Growing> leaves{Root()};
  while (static_cast<int>(tree.size()) + 1 < nodes) {
    Split(tree, leaves, std::uniform_int_distribution<std::size_t>(0, leaves.size() - 1)(fRandom));
  }
  return tree;
}

void AppendNode(const Ensemble& ensemble, const Tree& tree, int at, const std::string& predicate, std::string& text) {
  const Node& node = tree[static_cast<std::size_t>(at)];
  text += node.isLeaf ? "<Node score=\"" + Documents::NumberText(node.score) + "\">" : "<Node>";
  text += predicate + "\n";
  if (!node.isLeaf) {
    const std::string field = (ensemble.isScaled ? "scaled" : "x") + std::to_string(node.feature);
    const auto compare = [&](const char* comparison) {
      return "<SimplePredicate field=\"" + field + "\" operator=\"" + comparison + "\" value=\"" +
             Documents::NumberText(node.limit) + "\"/>";
    };
    AppendNode(ensemble, tree, node.below, compare("lessOrEqual"), text);
    AppendNode(ensemble, tree, node.above, compare("greaterThan"), text);
  }
  text += "</Node>\n";
}

std::string Schema(const Ensemble& ensemble) {
  std::string text = "<MiningSchema>";
  for (int i = 0; i < ensemble.inputs; ++i) text += "<MiningField name=\"" + Documents::FieldName(i) + "\"/>";
  return text + "</MiningSchema>\n";
}

// (x - mean) / deviation by two points of the line.
std::string ScaledFields(const Ensemble& ensemble) {
  std::string text = "<LocalTransformations>\n";
  for (int i = 0; i < ensemble.inputs; ++i) {
    text += "<DerivedField name=\"scaled" + std::to_string(i) +
            "\" optype=\"continuous\" dataType=\"float\"><NormContinuous field=\"" + Documents::FieldName(i) +
            "\"><LinearNorm orig=\"0\" norm=\"" + Documents::NumberText(-Mean(i) / Deviation(i)) +
            "\"/><LinearNorm orig=\"" + Documents::NumberText(Mean(i)) +
            "\" norm=\"0\"/></NormContinuous></DerivedField>\n";
  }
  return text + "</LocalTransformations>\n";
}

}  // namespace

Ensemble Boosted(int trees, int depth, int inputs) {
  Ensemble ensemble;
  ensemble.inputs = inputs;
  Grower grower(inputs, 1.0, 7);
  for (int i = 0; i < trees; ++i) ensemble.trees.push_back(grower.Complete(depth));
  return ensemble;
}

Ensemble Forest(int trees, int nodes, int inputs) {
  Ensemble ensemble;
  ensemble.inputs = inputs;
  ensemble.isAverage = true;
  Grower grower(inputs, 1.0, 11);
  for (int i = 0; i < trees; ++i) ensemble.trees.push_back(grower.OfSize(nodes));
  return ensemble;
}

double Mean(int input) { return 0.25 + 0.125 * input; }
double Deviation(int input) { return 0.75 + 0.0625 * input; }

double Seen(const Ensemble& ensemble, int input, double x) {
  if (!ensemble.isScaled) return x;
  const double norm = -Mean(input) / Deviation(input);
  return static_cast<double>(static_cast<float>(norm + x / Mean(input) * (0.0 - norm)));
}

double Score(const Ensemble& ensemble, const double* row) {
  double sum = 0.0;
  for (const Tree& tree : ensemble.trees) {
    const Node* at = &tree[0];
    while (!at->isLeaf) {
      const bool isAbove = Seen(ensemble, at->feature, row[at->feature]) > at->limit;
      at = &tree[static_cast<std::size_t>(isAbove ? at->above : at->below)];
    }
    sum += at->score;
  }
  return ensemble.isAverage ? sum / static_cast<double>(ensemble.trees.size()) : sum;
}

std::string Text(const Ensemble& ensemble) {
  std::string text = "<PMML version=\"4.2\" xmlns=\"http://www.dmg.org/PMML-4_2\"><Header/><DataDictionary>";
  for (int i = 0; i < ensemble.inputs; ++i) {
    text += "<DataField name=\"" + Documents::FieldName(i) + "\" optype=\"continuous\" dataType=\"double\"/>";
  }
  text += "</DataDictionary>\n<MiningModel functionName=\"regression\">" + Schema(ensemble) +
          "<Output><OutputField name=\"y\" feature=\"predictedValue\"/></Output>\n";
  if (ensemble.isScaled) text += ScaledFields(ensemble);
  text += std::string("<Segmentation multipleModelMethod=\"") + (ensemble.isAverage ? "average" : "sum") + "\">\n";
  for (const Tree& tree : ensemble.trees) {
    text += "<Segment><True/><TreeModel functionName=\"regression\" splitCharacteristic=\"binarySplit\">";
    text += Schema(ensemble);
    AppendNode(ensemble, tree, 0, "<True/>", text);
    text += "</TreeModel></Segment>\n";
  }
  return text + "</Segmentation></MiningModel></PMML>\n";
}

}  // namespace EnsembleDocument
