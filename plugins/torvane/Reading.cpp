#include "plugins/torvane/Reading.h"

#include <cmath>
#include <vector>

namespace Torvane {

using KelTransformNS::Cell;
using KelTransformNS::DataType;
using KelTransformNS::TextPool;

void ThrowUnknownWord(const Element& element, std::string_view attribute, const std::string& knownWords) {
  throw element.AttributeError(attribute, "isn't one of: " + knownWords);
}

bool IsComposed(const Element& model) noexcept { return model.Is("Regression") || model.Is("DecisionTree"); }

std::optional<double> ReadFinite(const Element& element, std::string_view attribute) {
  const std::optional<double> number = element.Number(attribute);
  if (number && !std::isfinite(*number)) throw element.AttributeError(attribute, "isn't finite");
  return number;
}

double RequiredFinite(const Element& element, std::string_view attribute) {
  (void)element.Required(attribute);
  return *ReadFinite(element, attribute);
}

void RefuseUnknownModelChildren(const Element& model, std::initializer_list<std::string_view> body) {
  std::vector<std::string_view> known = {"MiningSchema",     "Output",  "ModelStats",
                                         "ModelExplanation", "Targets", "LocalTransformations",
                                         "ModelVerification"};
  known.insert(known.end(), body.begin(), body.end());
  if (IsComposed(model)) known.push_back("ResultField");
  RefuseUnknownChildren(model, known);
  RefuseSecond(model, {"MiningSchema", "Output", "Targets", "LocalTransformations"});
}

std::optional<Cell> FindComparand(std::string_view text, DataType type, TextPool& pool) {
  const Cell literal = KelTransformNS::ReadLiteral(text, type, pool);
  if (literal.state == Cell::kText || literal.state == Cell::kNumber) return literal;
  if (KelTransformNS::IsText(type)) return std::nullopt;
  const std::optional<double> number = KelXML_1_3::ParsePmmlNumber(text);
  if (!number || *number != *number) return std::nullopt;
  return Cell::Number(*number);
}

Cell ReadComparand(const Element& element, std::string_view what, std::string_view text, DataType type,
                   TextPool& pool) {
  const std::optional<Cell> comparand = FindComparand(text, type, pool);
  if (!comparand) {
    throw element.Error(std::string(what) + " " + Quoted(text) + " isn't of the data type of its field");
  }
  return *comparand;
}

std::string Quoted(std::string_view text) {
  constexpr std::size_t kLongest = 80;
  std::string quoted(1, '\'');
  quoted += text.substr(0, kLongest);
  quoted += text.size() <= kLongest ? "'" : "...'";
  return quoted;
}

}  // namespace Torvane
