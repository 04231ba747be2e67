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
/// The shortest text that is read back as the same number.
std::string NumberText(double number);
double Coefficient(int index, int table = 0);

/// y = 1 + sum of Coefficient(i) * xi.
std::string LinearRegression(int terms);
/// The same sum as a general linear model.
std::string GeneralRegression(int terms);
/// Softmax over three categories "low", "middle" and "high" with Coefficient(i, table).
std::string MultinomialRegression(int terms);
/// A binary regression tree of 20 nodes on 4 inputs, the same as `HandWritten::Tree20`.
std::string Tree20();
/// Naive Bayes over the categories of `MultinomialRegression`. Even inputs have normal distributions with mean
/// Coefficient(i, table) - 1 and variance 1 + table; odd ones three bins, up to -1, up to 1 and above, with
/// `NaiveBayesCount` records each. A category has 10 records.
std::string NaiveBayes(int inputs);
int NaiveBayesCount(int input, int bin, int table);
/// Rules of which the first one that fires decides: rule r fires if x(r mod 4) > 2 - r / 25 and
/// x((r + 1) mod 4) <= r / 25 - 1.5. Its score is the category r mod 3 of `MultinomialRegression`, the default "low".
std::string RuleSet(int rules);
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
