#include "components/kelparsexml/DocumentScan.h"

#include <new>
#include <string>
#include <utility>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/sax2/Attributes.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "components/kelparsexml/PmmlError.h"
#include "components/kelparsexml/Utf8.h"

namespace KelXML_1_3 {
namespace {
using xercesc::SAX2XMLReader;
using xercesc::SAXParseException;
using xercesc::XMLUni;

// The scanner below compares each attribute's name with all that were before it. No element of PMML has more than some
// dozens.
constexpr int kMaxAttributes = 1000;

// The scanner for well-formedness is the fastest. It knows no declared entities, but there are none: the gate lets no
// internal subset pass. Namespaces stay off, as they make deep documents slow; prefixes are cut by the builder.
std::unique_ptr<SAX2XMLReader> CreateReader() {
  if (xercesc::XMLPlatformUtils::fgMemoryManager == nullptr) throw PmmlError("the XML platform is not started");
  std::unique_ptr<SAX2XMLReader> reader(xercesc::XMLReaderFactory::createXMLReader());
  reader->setProperty(XMLUni::fgXercesScannerName, const_cast<XMLCh*>(XMLUni::fgWFXMLScanner));
  reader->setFeature(XMLUni::fgSAX2CoreNameSpaces, false);
  reader->setFeature(XMLUni::fgSAX2CoreValidation, false);
  reader->setFeature(XMLUni::fgXercesSchema, false);
  reader->setFeature(XMLUni::fgXercesLoadExternalDTD, false);
  reader->setFeature(XMLUni::fgXercesCalculateSrcOfs, false);
  return reader;
}
}  // namespace

DocumentScan::DocumentScan(std::istream& stream, ElementTreeBuilder& builder)
    : fBuilder(builder), fSource(stream, kMaxAttributes), fReader(CreateReader()) {
  fReader->setContentHandler(this);
  fReader->setErrorHandler(this);
}

DocumentScan::~DocumentScan() {
  if (fState == State::kReading) fReader->parseReset(fToken);
}

bool DocumentScan::ReadMarkup() {
  try {
    return Parse();
  } catch (const xercesc::OutOfMemoryException&) {
    throw std::bad_alloc();
  } catch (const xercesc::XMLException& problem) {
    throw PmmlError(ToUtf8(problem.getMessage()));
  }
}

// A parser that has thrown has ended by itself.
bool DocumentScan::Parse() {
  const State before = std::exchange(fState, State::kEnded);
  if (before == State::kEnded) return false;
  const bool goesOn = before == State::kReady ? fReader->parseFirst(fSource, fToken) : fReader->parseNext(fToken);
  if (goesOn) {
    fState = State::kReading;
  } else {
    CheckEnd();
  }
  return goesOn;
}

void DocumentScan::CheckEnd() const {
  if (!fSource.Refusal().empty()) throw PmmlError(fSource.Refusal());
  if (fBuilder.IsEmpty()) throw PmmlError("the document has no root element");
}

void DocumentScan::startElement(const XMLCh*, const XMLCh*, const XMLCh* qualifiedName,
                                const xercesc::Attributes& attributes) {
  if (!fBuilder.StartElement(qualifiedName, fLocator->getLineNumber())) return;
  const XMLSize_t count = attributes.getLength();
  for (XMLSize_t i = 0; i < count; ++i) fBuilder.AddAttribute(attributes.getQName(i), attributes.getValue(i));
}

// The parser hands long text over in pieces and may cut a pair of surrogates in two. The first half waits for the
// piece with the second one.
void DocumentScan::characters(const XMLCh* text, XMLSize_t size) {
  if (size == 0) return;
  if (const XMLCh held = std::exchange(fHeldBack, XMLCh(0)); held != 0) {
    const XMLCh pair[] = {held, text[0]};
    fBuilder.AddText(pair, 2);
    ++text;
    --size;
  }
  if (size > 0 && IsHighSurrogate(text[size - 1])) fHeldBack = text[--size];
  if (size > 0) fBuilder.AddText(text, size);
}

void DocumentScan::endElement(const XMLCh*, const XMLCh*, const XMLCh*) { fBuilder.EndElement(); }

void DocumentScan::error(const SAXParseException& problem) { fatalError(problem); }

// Where the gate has ended the input, the parser only finds that something is missing.
void DocumentScan::fatalError(const SAXParseException& problem) {
  if (!fSource.Refusal().empty()) throw PmmlError(fSource.Refusal());
  throw PmmlError("line " + std::to_string(problem.getLineNumber()) + ", column " +
                  std::to_string(problem.getColumnNumber()) + ": " + ToUtf8(problem.getMessage()));
}

}  // namespace KelXML_1_3
