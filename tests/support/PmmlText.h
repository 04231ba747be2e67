#pragma once

#include <sstream>
#include <string>

namespace KelTest {

/// The text of a small PMML document: a tree model with inputs "x" and "p" and a target, unless a test says otherwise.
///
///     PmmlText{.version = "3.2", .element = "NeuralNetwork"}.Text()
struct PmmlText {
  std::string version = "4.0";
  std::string header = R"(<Header><Application name="Maker" version="7.1"/></Header>)";
  std::string dictionary = Fields("");
  std::string transformations = {};
  std::string element = "TreeModel";
  std::string attributes = R"(modelName="small" functionName="classification" algorithmName="CRT")";
  std::string extensions = {};  ///< of the model, before its mining schema
  std::string schema =
      R"(<MiningField name="x"/><MiningField name="p"/><MiningField name="answer" usageType="predicted"/>)";
  std::string body = "<Node/>";

  [[nodiscard]] std::string Text() const;
  [[nodiscard]] std::stringstream Stream() const { return std::stringstream(Text()); }

  /// A data dictionary: continuous "x", text "p", and the target "answer" of the texts "no" and "yes" with `inTarget`
  /// as further content.
  static std::string Fields(const std::string& inTarget);
  /// The same with "yes" as the flag's true value.
  static std::string FlagFields();
  /// A transformation dictionary with `name` = 3.
  static std::string Constant(const std::string& name);
  /// The model's propensity extension: one network of one unit, tanh(2 r + 0) * 1 + 0.5, with that description.
  static std::string Propensity(const std::string& description);
};

}  // namespace KelTest
