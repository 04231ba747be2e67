#include "tests/plugins/torvane/EnsembleParts.h"

namespace TorvaneTest {

std::string Schema(const std::string& fields) { return "<MiningSchema>" + fields + "</MiningSchema>"; }

std::string Fields(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text.append("<MiningField name=\"").append(name).append("\"/>");
  return Schema(text);
}

std::string Linear(const std::string& intercept, const std::string& field, const std::string& head) {
  std::string text = "<RegressionModel functionName=\"regression\">" +
                     (head.find("<MiningSchema") == 0 ? "" : Fields({"x", "n", "s"})) + head +
                     "<RegressionTable intercept=\"" + intercept + "\">";
  if (!field.empty()) text.append("<NumericPredictor name=\"").append(field).append("\" coefficient=\"1\"/>");
  return text + "</RegressionTable></RegressionModel>";
}

std::string Leaf(const std::string& score, const std::vector<std::string>& shares, const std::string& predicate,
                 const std::string& head) {
  static const std::vector<std::string> kCategories = {"yes", "no", "maybe"};
  std::string text = "<TreeModel functionName=\"classification\">" + Fields({"x", "n", "s"}) + head + "<Node score=\"" +
                     score + "\">" + predicate;
  for (std::size_t i = 0; i < shares.size(); ++i) {
    text.append("<ScoreDistribution value=\"").append(kCategories[i]).append("\" recordCount=\"0\" probability=\"");
    text.append(shares[i]).append("\"/>");
  }
  return text + "</Node></TreeModel>";
}

std::string When(const std::string& field, const std::string& comparison, const std::string& value) {
  return "<SimplePredicate field=\"" + field + "\" operator=\"" + comparison + "\" value=\"" + value + "\"/>";
}

std::string Segment(const std::string& model, const std::string& attributes, const std::string& predicate) {
  return "<Segment " + attributes + ">" + predicate + model + "</Segment>";
}

std::string Segmentation(const std::string& method, const std::string& segments, const std::string& further) {
  return "<Segmentation multipleModelMethod=\"" + method + "\" " + further + ">" + segments + "</Segmentation>";
}

std::string Nested(const std::string& function, const std::string& body, const std::string& schema) {
  return "<MiningModel functionName=\"" + function + "\">" + (schema.empty() ? Fields({"x", "n", "s"}) : schema) +
         body + "</MiningModel>";
}

std::string Predicted(const std::string& name) {
  return "<Output><OutputField name=\"" + name + "\" feature=\"predictedValue\"/></Output>";
}

Document Ensemble(const std::string& function, const std::string& body) {
  return {.kind = "MiningModel", .function = function, .body = body};
}

std::string Part(const ValueRecord& out, const std::string& id) {
  const ValueRecord* members = out.At(out.IndexOf("prediction")).Members();
  return members == nullptr ? "no members" : Shown(*members, id);
}

}  // namespace TorvaneTest
