#pragma once

#include <string>
#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>

/// A text parsed into a document that lives as long as the object.
class DomText {
 public:
  explicit DomText(const std::string& text) {
    fParser.parse(xercesc::MemBufInputSource(reinterpret_cast<const XMLByte*>(text.data()), text.size(), "test"));
  }

  xercesc::DOMDocument* Document() { return fParser.getDocument(); }
  xercesc::DOMElement* Root() { return Document()->getDocumentElement(); }

 private:
  xercesc::XercesDOMParser fParser;
};
