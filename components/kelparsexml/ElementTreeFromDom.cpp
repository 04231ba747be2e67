// Making an element tree from a DOM.

#include <xercesc/dom/DOMAttr.hpp>
#include <xercesc/dom/DOMElement.hpp>
#include <xercesc/dom/DOMNamedNodeMap.hpp>

#include "components/kelparsexml/ElementTree.h"
#include "components/kelparsexml/ElementTreeBuilder.h"
#include "components/kelparsexml/Utf8.h"

namespace KelXML_1_3 {
namespace {
using xercesc::DOMNode;

void AddAttributes(ElementTreeBuilder& builder, const DOMNode& element) {
  const xercesc::DOMNamedNodeMap* const attributes = element.getAttributes();
  const XMLSize_t count = attributes == nullptr ? 0 : attributes->getLength();
  for (XMLSize_t i = 0; i < count; ++i) {
    const DOMNode* const attribute = attributes->item(i);
    builder.AddAttribute(attribute->getNodeName(), attribute->getNodeValue());
  }
}

void Enter(ElementTreeBuilder& builder, const DOMNode& node) {
  const DOMNode::NodeType type = node.getNodeType();
  if (type == DOMNode::ELEMENT_NODE) {
    if (builder.StartElement(node.getNodeName(), 0)) AddAttributes(builder, node);
  } else if (type == DOMNode::TEXT_NODE || type == DOMNode::CDATA_SECTION_NODE) {
    const XMLCh* const text = node.getNodeValue();
    builder.AddText(text, LengthOf(text));
  }
}

void Leave(ElementTreeBuilder& builder, const DOMNode& node) {
  if (node.getNodeType() == DOMNode::ELEMENT_NODE) builder.EndElement();
}

// Depth first along the links of the nodes: a document may be deeper than a stack. Nodes that are neither elements nor
// text, as references to entities, only lead to their children.
void Walk(ElementTreeBuilder& builder, const DOMNode& root) {
  const DOMNode* node = &root;
  Enter(builder, *node);
  for (;;) {
    if (const DOMNode* const child = node->getFirstChild()) {
      node = child;
      Enter(builder, *node);
      continue;
    }
    Leave(builder, *node);
    while (node != &root && node->getNextSibling() == nullptr) {
      node = node->getParentNode();
      Leave(builder, *node);
    }
    if (node == &root) return;
    node = node->getNextSibling();
    Enter(builder, *node);
  }
}
}  // namespace

std::unique_ptr<ElementTree> ElementTree::FromDom(const xercesc::DOMElement& root, std::string_view modelName) {
  ElementTreeBuilder builder(modelName);
  Walk(builder, root);
  return builder.Finish();
}

}  // namespace KelXML_1_3
