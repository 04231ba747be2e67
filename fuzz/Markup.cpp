#include "fuzz/Markup.h"

#include <sstream>

#include "components/kelparsexml/ElementTree.h"

namespace KelFuzz {
namespace {

using KelXML_1_3::Element;

constexpr int kDeepest = 300;

// False if the element is nested too deep.
bool Copy(const Element& element, int depth, Markup& markup) {
  if (depth > kDeepest) return false;
  markup.name = element.Name();
  markup.text = element.Text();
  for (int i = 0; i < element.AttributeCount(); ++i) {
    markup.attributes.emplace_back(element.AttributeName(i), element.AttributeValue(i));
  }
  for (Element child = element.FirstChild(); child; child = child.NextSibling()) {
    if (!Copy(child, depth + 1, markup.children.emplace_back())) return false;
  }
  return true;
}

void AppendEscaped(const std::string& text, std::string& document) {
  for (const char c : text) {
    switch (c) {
      case '<':
        document += "&lt;";
        break;
      case '&':
        document += "&amp;";
        break;
      case '"':
        document += "&quot;";
        break;
      case '\n':
        document += "&#10;";
        break;
      default:
        document += c;
    }
  }
}

void Append(const Markup& markup, std::string& document) {
  document.append("<").append(markup.name);
  for (const auto& [name, value] : markup.attributes) {
    document.append(" ").append(name).append("=\"");
    AppendEscaped(value, document);
    document += '"';
  }
  document += '>';
  AppendEscaped(markup.text, document);
  for (const Markup& child : markup.children) Append(child, document);
  document.append("</").append(markup.name).append(">\n");
}

void Collect(Markup& markup, std::vector<Markup*>& elements) {
  elements.push_back(&markup);
  for (Markup& child : markup.children) Collect(child, elements);
}

}  // namespace

std::optional<Markup> ReadMarkup(const std::string& document) {
  std::istringstream stream(document);
  Markup root;
  try {
    if (!Copy(KelXML_1_3::ElementTree::Read(stream)->Root(), 1, root)) return std::nullopt;
  } catch (const KelXML_1_3::PmmlError&) {
    return std::nullopt;
  }
  return root;
}

std::string WriteMarkup(const Markup& root) {
  std::string document;
  Append(root, document);
  return document;
}

std::size_t CountElements(const Markup& root) {
  std::size_t count = 1;
  for (const Markup& child : root.children) count += CountElements(child);
  return count;
}

std::vector<Markup*> AllElements(Markup& root) {
  std::vector<Markup*> elements;
  Collect(root, elements);
  return elements;
}

}  // namespace KelFuzz
