// Making an element tree from a stream, in one SAX2 pass.

#include <memory>
#include <utility>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/sax2/Attributes.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "components/kelparsexml/ElementTree.h"
#include "components/kelparsexml/ElementTreeBuilder.h"
#include "components/kelparsexml/Utf8.h"
#include "scoring/common/KelXInputSource.h"

namespace KelXML_1_3 {
namespace {
using xercesc::SAX2XMLReader;
using xercesc::SAXParseException;
using xercesc::XMLUni;

// The scanner below compares each attribute's name with all that were before it. No element of PMML has more than some
// dozens.
constexpr int kMaxAttributes = 1000;

class TreeHandler : public xercesc::DefaultHandler {
 public:
  TreeHandler(ElementTreeBuilder& builder, const KelXInputSource& source) : fBuilder(builder), fSource(source) {}

  void setDocumentLocator(const xercesc::Locator* locator) override { fLocator = locator; }

  void startElement(const XMLCh*, const XMLCh*, const XMLCh* qualifiedName,
                    const xercesc::Attributes& attributes) override {
    if (!fBuilder.StartElement(qualifiedName, fLocator->getLineNumber())) return;
    const XMLSize_t count = attributes.getLength();
    for (XMLSize_t i = 0; i < count; ++i) fBuilder.AddAttribute(attributes.getQName(i), attributes.getValue(i));
  }

  // The parser hands long text over in pieces and may cut a pair of surrogates in two. The first half waits for the
  // piece with the second one.
  void characters(const XMLCh* text, XMLSize_t size) override {
    if (size == 0) return;
    if (const XMLCh held = std::exchange(fHeldBack, XMLCh(0)); held != 0) {
      const XMLCh pair[] = {held, text[0]};
      fBuilder.AddText(pair, 2);
      ++text;
      --size;
    }
    if (size > 0 && IsFirstHalfOfPair(text[size - 1])) fHeldBack = text[--size];
    if (size > 0) fBuilder.AddText(text, size);
  }

  void endElement(const XMLCh*, const XMLCh*, const XMLCh*) override { fBuilder.EndElement(); }

  void error(const SAXParseException& problem) override { Refuse(problem); }
  void fatalError(const SAXParseException& problem) override { Refuse(problem); }

 private:
  static bool IsFirstHalfOfPair(XMLCh c) { return c >= 0xD800 && c <= 0xDBFF; }

  // Where the gate has ended the input, the parser only finds that something is missing.
  [[noreturn]] void Refuse(const SAXParseException& problem) const {
    if (!fSource.Refusal().empty()) throw PmmlError(fSource.Refusal());
    throw PmmlError("line " + std::to_string(problem.getLineNumber()) + ", column " +
                    std::to_string(problem.getColumnNumber()) + ": " + ToUtf8(problem.getMessage()));
  }

  ElementTreeBuilder& fBuilder;
  const KelXInputSource& fSource;
  const xercesc::Locator* fLocator = nullptr;
  XMLCh fHeldBack = 0;  // 0 for none
};

// The scanner for well-formedness is the fastest. It knows no declared entities, but there are none: the gate lets no
// internal subset pass. Namespaces stay off, as they make deep documents slow; prefixes are cut by the builder.
std::unique_ptr<SAX2XMLReader> CreateReader(TreeHandler& handler) {
  std::unique_ptr<SAX2XMLReader> reader(xercesc::XMLReaderFactory::createXMLReader());
  reader->setProperty(XMLUni::fgXercesScannerName, const_cast<XMLCh*>(XMLUni::fgWFXMLScanner));
  reader->setFeature(XMLUni::fgSAX2CoreNameSpaces, false);
  reader->setFeature(XMLUni::fgSAX2CoreValidation, false);
  reader->setFeature(XMLUni::fgXercesSchema, false);
  reader->setFeature(XMLUni::fgXercesLoadExternalDTD, false);
  reader->setFeature(XMLUni::fgXercesCalculateSrcOfs, false);
  reader->setContentHandler(&handler);
  reader->setErrorHandler(&handler);
  return reader;
}

void Parse(std::istream& stream, ElementTreeBuilder& builder) {
  KelXInputSource source(stream, kMaxAttributes);
  TreeHandler handler(builder, source);
  try {
    CreateReader(handler)->parse(source);
  } catch (const xercesc::OutOfMemoryException&) {
    throw std::bad_alloc();
  } catch (const xercesc::XMLException& problem) {
    throw PmmlError(ToUtf8(problem.getMessage()));
  }
  if (!source.Refusal().empty()) throw PmmlError(source.Refusal());
}
}  // namespace

std::unique_ptr<ElementTree> ElementTree::Read(std::istream& stream, std::string_view modelName) {
  if (xercesc::XMLPlatformUtils::fgMemoryManager == nullptr) throw PmmlError("the XML platform is not started");
  ElementTreeBuilder builder(modelName);
  Parse(stream, builder);
  std::unique_ptr<ElementTree> tree = builder.Finish();
  if (tree == nullptr) throw PmmlError("the document has no root element");
  return tree;
}

}  // namespace KelXML_1_3
