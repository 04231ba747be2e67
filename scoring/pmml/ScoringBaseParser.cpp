#include "scoring/pmml/ScoringBaseParser.h"

#include <xercesc/dom/DOMAttr.hpp>
#include <xercesc/dom/DOMDocument.hpp>
#include <xercesc/dom/DOMElement.hpp>
#include <xercesc/dom/DOMNodeList.hpp>
#include <xercesc/util/XMLString.hpp>

#include "scoring/pmml/StrictNumber.h"
#include "scoring/text/LocalText.h"

namespace KelScoring_20 {
namespace {

using xercesc::DOMAttr;
using xercesc::DOMDocument;
using xercesc::DOMElement;
using xercesc::DOMNode;
using xercesc::DOMNodeList;
using xercesc::XMLString;

DOMElement* ElementOrNull(DOMNode* node) {
  return node && node->getNodeType() == DOMNode::ELEMENT_NODE ? static_cast<DOMElement*>(node) : nullptr;
}

/// The first node from `node` on, along its siblings, that is an element, of that name unless it is null.
DOMElement* FindElement(DOMNode* node, const XMLCh* name) {
  for (; node; node = node->getNextSibling()) {
    DOMElement* element = ElementOrNull(node);
    if (element && (!name || XMLString::compareString(element->getNodeName(), name) == 0)) return element;
  }
  return nullptr;
}

template <typename Number>
int ReadNumber(const XMLCh* text, bool (*parse)(const XMLCh*, Number&), Number& value) {
  if (!text) return -1;
  return parse(text, value) ? 0 : 1;
}

}  // namespace

ScoringBaseParser::ScoringBaseParser() = default;

ScoringBaseParser::~ScoringBaseParser() = default;

void ScoringBaseParser::CreateTranscoder(const std::string& encoding) {
  FreeTranscoder();
  fTranscoder = std::make_unique<ScoringTranscoder>(encoding.c_str());
}

void ScoringBaseParser::FreeTranscoder() { fTranscoder.reset(); }

std::string ScoringBaseParser::ToString(const XMLCh* text) const {
  if (!text) return std::string();
  return fTranscoder ? fTranscoder->TranscodeTo(text) : WideToLocal(text);
}

DOMElement* ScoringBaseParser::GetFirstChildElement(DOMNode* node, const std::string& name) {
  return node ? FindElement(node->getFirstChild(), WidenedName(name).Text()) : nullptr;
}

DOMElement* ScoringBaseParser::GetFirstChildElement(DOMNode* node) {
  return node ? FindElement(node->getFirstChild(), nullptr) : nullptr;
}

DOMElement* ScoringBaseParser::GetNextSiblingElement(DOMNode* node, const std::string& name) {
  return node ? FindElement(node->getNextSibling(), WidenedName(name).Text()) : nullptr;
}

DOMElement* ScoringBaseParser::GetNextSiblingElement(DOMNode* node) {
  return node ? FindElement(node->getNextSibling(), nullptr) : nullptr;
}

DOMNodeList* ScoringBaseParser::GetElementsByTagName(const DOMElement* element, const std::string& name) {
  return element ? element->getElementsByTagName(WidenedName(name).Text()) : nullptr;
}

DOMNodeList* ScoringBaseParser::GetElementsByTagName(const DOMDocument* document, const std::string& name) {
  return document ? document->getElementsByTagName(WidenedName(name).Text()) : nullptr;
}

// The element's own operation gives an empty text for an absent attribute; only the node tells the two apart.
const XMLCh* ScoringBaseParser::GetAttribute(const DOMElement* element, const std::string& name) {
  const DOMAttr* attribute = element ? element->getAttributeNode(WidenedName(name).Text()) : nullptr;
  return attribute ? attribute->getValue() : nullptr;
}

const XMLCh* ScoringBaseParser::GetAttribute(const DOMNode* node, const std::string& name) {
  return GetAttribute(ElementOrNull(const_cast<DOMNode*>(node)), name);
}

int ScoringBaseParser::GetIntAttribute(const DOMElement* element, const std::string& name, int& value) {
  return ReadNumber(GetAttribute(element, name), &ParseInt, value);
}

int ScoringBaseParser::GetDoubleAttribute(const DOMElement* element, const std::string& name, double& value) {
  return ReadNumber(GetAttribute(element, name), &ParseDouble, value);
}

DOMElement* ScoringBaseParser::AsElement(DOMNode* node) { return ElementOrNull(node); }

DOMElement* ScoringBaseParser::AsElement(DOMNode* node, const std::string& name) {
  DOMElement* element = ElementOrNull(node);
  return TagNameEquals(element, name) ? element : nullptr;
}

bool ScoringBaseParser::TagNameEquals(const DOMElement* element, const std::string& name) {
  return element && IsEqual(element->getNodeName(), name);
}

bool ScoringBaseParser::IsEqual(const XMLCh* text, const std::string& name) {
  return XMLString::compareString(text, WidenedName(name).Text()) == 0;
}

bool ScoringBaseParser::ParseInt(const XMLCh* text, int& value) { return ReadStrictInt(text, value); }

bool ScoringBaseParser::ParseDouble(const XMLCh* text, double& value) { return ReadStrictDouble(text, value); }

}  // namespace KelScoring_20
