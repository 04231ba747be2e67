#pragma once

#include <map>
#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <xercesc/dom/DOMDocument.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>

#include "components/kelparsexml/ElementTree.h"

namespace KelTest {

inline std::unique_ptr<KelXML_1_3::ElementTree> ReadTree(const std::string& document, std::string_view modelName = {}) {
  std::istringstream stream(document);
  return KelXML_1_3::ElementTree::Read(stream, modelName);
}

inline std::unique_ptr<KelXML_1_3::ElementTree> ReadDom(const std::string& document, std::string_view modelName = {}) {
  xercesc::XercesDOMParser parser;
  parser.parse(xercesc::MemBufInputSource(reinterpret_cast<const XMLByte*>(document.data()), document.size(), "x"));
  return KelXML_1_3::ElementTree::FromDom(*parser.getDocument()->getDocumentElement(), modelName);
}

/// Why the document can't be read; empty if it can.
inline std::string ReadError(const std::string& document, std::string_view modelName = {}) {
  try {
    ReadTree(document, modelName);
  } catch (const KelXML_1_3::PmmlError& error) {
    return error.what();
  }
  return {};
}

/// Every element as name(attribute=value ...)'text'{children}, attributes in the order of their names: a DOM knows no
/// other.
// NOLINTNEXTLINE(misc-no-recursion): documents of tests aren't deep.
inline void Dump(const KelXML_1_3::Element& element, std::ostream& dump) {
  dump << element.Name();
  std::map<std::string_view, std::string_view> attributes;
  for (int i = 0; i < element.AttributeCount(); ++i) attributes[element.AttributeName(i)] = element.AttributeValue(i);
  const char* before = "(";
  for (const auto& [name, value] : attributes) dump << std::exchange(before, " ") << name << "=" << value;
  if (!attributes.empty()) dump << ")";
  if (!element.Text().empty()) dump << "'" << element.Text() << "'";
  if (!element.FirstChild()) return;
  dump << "{";
  for (KelXML_1_3::Element child = element.FirstChild(); child; child = child.NextSibling()) Dump(child, dump);
  dump << "}";
}

inline std::string Dump(const KelXML_1_3::Element& element) {
  std::ostringstream dump;
  Dump(element, dump);
  return dump.str();
}

}  // namespace KelTest
