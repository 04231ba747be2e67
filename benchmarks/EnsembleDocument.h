#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Generated ensembles of regression trees, as documents and as the plain numbers that they are made of.
namespace EnsembleDocument {

struct Node {
  bool isLeaf = true;
  int feature = 0;
  double limit = 0.0;  ///< numbers up to it go below
  int below = 0;       ///< positions in the tree
  int above = 0;
  double score = 0.0;
};
using Tree = std::vector<Node>;  ///< the root first

struct Ensemble {
  std::vector<Tree> trees;
  int inputs = 0;
  bool isAverage = false;  ///< else the sum
  bool isScaled = false;   ///< the trees see (x - Mean(i)) / Deviation(i), cast to single precision
};

/// Complete trees of one depth, as boosting makes them.
Ensemble Boosted(int trees, int depth, int inputs);
/// Trees that are grown until they have so many nodes, deep at some places, whose mean is the result.
Ensemble Forest(int trees, int nodes, int inputs);

double Mean(int input);
double Deviation(int input);
/// The number that the trees see.
double Seen(const Ensemble& ensemble, int input, double x);
/// What the ensemble says of a row, tree by tree.
double Score(const Ensemble& ensemble, const double* row);

/// A document with the outputs "prediction" and "y", the same number.
std::string Text(const Ensemble& ensemble);

}  // namespace EnsembleDocument
