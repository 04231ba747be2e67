#pragma once

#include <memory>
#include <string>
#include <vector>

#include "scoring/common/KelSettings.h"
#include "scoring/model/ScoringModel.h"

/// Synthetic documents, and models made of them.
namespace Documents {

/// The inputs are called "x0", "x1" and so on, all continuous doubles.
std::string FieldName(int index);
double Coefficient(int index, int table = 0);

/// y = 1 + sum of Coefficient(i) * xi.
std::string LinearRegression(int terms);
/// Softmax over three categories "low", "middle" and "high" with Coefficient(i, table).
std::string MultinomialRegression(int terms);
/// A binary regression tree of 20 nodes on 4 inputs, the same as `HandWritten::Tree20`.
std::string Tree20();
/// Any document whose model is a TreeModel.
std::string Minimal();
/// A regression document of about that many bytes, most of it dictionary and predictors.
std::string RegressionOfSize(std::size_t bytes);

/// Settings with every model kind and `plugIn` (a base name with its folder) as the default plug-in.
KelXML_1_3::KelSettings Settings(const std::string& plugIn);
/// A plug-in of the build tree.
std::string PlugIn(const std::string& baseName);
/// Ends the program with a message if the model can't be made.
std::unique_ptr<KelScoring_20::ScoringModel> Load(const std::string& document, const std::string& plugIn);

}  // namespace Documents
