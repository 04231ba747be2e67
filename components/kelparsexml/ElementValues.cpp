// Reading values of an element, with errors that say where and what.

#include <cmath>
#include <limits>

#include "components/kelparsexml/ElementTree.h"
#include "components/kelparsexml/Lexical.h"
#include "components/kelparsexml/Utf8.h"

namespace KelXML_1_3 {
namespace {
// Enough to recognise a text by; a hostile one may have megabytes.
constexpr std::size_t kMaxShown = 100;

std::string Shown(std::string_view text) {
  const std::string_view cut = CutUtf8(text, kMaxShown);
  return std::string(cut) + (cut.size() < text.size() ? "..." : "");
}

std::string Place(const Element& element, const std::string& tag) {
  const std::string line = element.Line() > 0 ? " line " + std::to_string(element.Line()) : std::string();
  return "<" + tag + ">" + line + ": ";
}
}  // namespace

std::string_view Element::Required(std::string_view attribute) const {
  if (const auto value = Attribute(attribute)) return *value;
  throw Error("attribute \"" + std::string(attribute) + "\" is missing");
}

Element Element::RequiredChild(std::string_view name) const {
  if (const Element child = Child(name)) return child;
  throw Error("child element <" + std::string(name) + "> is missing");
}

std::optional<double> Element::Number(std::string_view attribute) const {
  const auto text = Attribute(attribute);
  if (!text) return std::nullopt;
  if (const auto number = ParsePmmlNumber(*text)) return number;
  throw AttributeError(attribute, "not a number");
}

double Element::Number(std::string_view attribute, double otherwise) const {
  return Number(attribute).value_or(otherwise);
}

double Element::RequiredNumber(std::string_view attribute) const {
  static_cast<void>(Required(attribute));
  return *Number(attribute);
}

// Producers write counts as "100.0", so whatever has a whole value is one.
std::optional<int> Element::Integer(std::string_view attribute) const {
  const auto text = Attribute(attribute);
  if (!text) return std::nullopt;
  const auto number = ParsePmmlNumber(*text);
  const bool isWhole = number && *number >= std::numeric_limits<int>::min() &&
                       *number <= std::numeric_limits<int>::max() && std::trunc(*number) == *number;
  if (!isWhole) throw AttributeError(attribute, "not an integer");
  return static_cast<int>(*number);
}

bool Element::Boolean(std::string_view attribute, bool otherwise) const {
  const auto text = Attribute(attribute);
  if (!text) return otherwise;
  const std::string_view word = TrimXmlSpace(*text);
  if (word == "true" || word == "1") return true;
  if (word == "false" || word == "0") return false;
  throw AttributeError(attribute, R"(not a boolean: "true", "false", "1" or "0" is expected)");
}

PmmlError Element::Error(const std::string& reason) const { return PmmlError(Place(*this, Shown(Name())) + reason); }

PmmlError Element::AttributeError(std::string_view attribute, const std::string& reason) const {
  std::string tag = Shown(Name()) + " " + Shown(attribute);
  if (const auto value = Attribute(attribute)) tag += "=\"" + Shown(*value) + "\"";
  return PmmlError(Place(*this, tag) + reason);
}

}  // namespace KelXML_1_3
