#include "plugins/torvane/Reading.h"

#include <algorithm>

namespace Torvane {

using KelTransformNS::Cell;
using KelTransformNS::DataType;
using KelTransformNS::TextPool;

void ThrowUnknownWord(const Element& element, std::string_view attribute, const std::string& knownWords) {
  throw element.AttributeError(attribute, "isn't one of: " + knownWords);
}

bool IsIgnorable(const Element& element) noexcept {
  return element.Is("Extension") || element.Name().starts_with("X-");
}

void RefuseUnknownChildren(const Element& element, std::initializer_list<std::string_view> known) {
  for (Element child = element.FirstChild(); child; child = child.NextSibling()) {
    const bool isKnown = std::find(known.begin(), known.end(), child.Name()) != known.end();
    if (!isKnown && !IsIgnorable(child)) {
      throw child.Error("is not supported in <" + std::string(element.Name()) + ">");
    }
  }
}

void RefuseUnknownModelChildren(const Element& model, std::string_view body) {
  RefuseUnknownChildren(model, {"MiningSchema", "Output", "ModelStats", "ModelExplanation", "Targets",
                                "LocalTransformations", "ModelVerification", body});
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
