#pragma once

#include <cstddef>
#include <iosfwd>
#include <memory>
#include <xercesc/framework/XMLPScanToken.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>

#include "components/kelparsexml/ElementTreeBuilder.h"
#include "scoring/common/KelXInputSource.h"

namespace KelXML_1_3 {

/// One pass of the parser over a stream, which feeds a builder and can pause after any markup.
///
/// The XML platform must be up as long as it lives. It can be destroyed at any time. Stream and builder must outlive
/// it.
class DocumentScan : private xercesc::DefaultHandler {
 public:
  /// Throws `PmmlError` if the XML platform is not up.
  DocumentScan(std::istream& stream, ElementTreeBuilder& builder);
  ~DocumentScan() override;
  DocumentScan(const DocumentScan&) = delete;
  DocumentScan& operator=(const DocumentScan&) = delete;

  /// Reads on until `isDone()` holds behind some markup. False if the document has ended before. Throws `PmmlError`
  /// and `std::bad_alloc`; there is nothing more to read then.
  template <class Condition>
  bool ReadUntil(Condition isDone) {
    bool isThere = isDone();
    while (!isThere && ReadMarkup()) isThere = isDone();
    return isThere;
  }

 private:
  enum class State { kReady, kReading, kEnded };

  bool ReadMarkup();
  bool Parse();
  void CheckEnd() const;

  void setDocumentLocator(const xercesc::Locator* locator) override { fLocator = locator; }
  void startElement(const XMLCh* uri, const XMLCh* localName, const XMLCh* qualifiedName,
                    const xercesc::Attributes& attributes) override;
  void characters(const XMLCh* text, XMLSize_t size) override;
  void endElement(const XMLCh* uri, const XMLCh* localName, const XMLCh* qualifiedName) override;
  void error(const xercesc::SAXParseException& problem) override;
  void fatalError(const xercesc::SAXParseException& problem) override;

  ElementTreeBuilder& fBuilder;
  KelXInputSource fSource;
  std::unique_ptr<xercesc::SAX2XMLReader> fReader;
  xercesc::XMLPScanToken fToken;
  State fState = State::kReady;
  const xercesc::Locator* fLocator = nullptr;
  XMLCh fHeldBack = 0;  // the first half of a pair, 0 for none
};

}  // namespace KelXML_1_3
