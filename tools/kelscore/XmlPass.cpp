#include "tools/kelscore/XmlPass.h"

#include <memory>
#include <xercesc/framework/XMLPScanToken.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/TransService.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "scoring/common/KelXInputSource.h"

namespace kelscore {
namespace {

std::string Describe(const xercesc::SAXParseException& fault) {
  return "line " + std::to_string(fault.getLineNumber()) + ", column " + std::to_string(fault.getColumnNumber()) +
         ": " + ToUtf8(fault.getMessage());
}

}  // namespace

std::string ToUtf8(const XMLCh* text) {
  if (!text) return {};
  const xercesc::TranscodeToStr utf8(text, "UTF-8");
  return {reinterpret_cast<const char*>(utf8.str()), utf8.length()};
}

void FaultHandler::Remember(const xercesc::SAXParseException& fault) {
  if (!fFault) fFault = Describe(fault);
}

// Reads step by step until the handler is done, so that nothing needs to be thrown through the parser. What the
// parser throws itself is told instead of a fault.
std::optional<std::string> ReadXml(std::istream& document, FaultHandler& handler) {
  const std::unique_ptr<xercesc::SAX2XMLReader> reader(xercesc::XMLReaderFactory::createXMLReader());
  reader->setFeature(xercesc::XMLUni::fgSAX2CoreValidation, false);
  reader->setFeature(xercesc::XMLUni::fgXercesLoadExternalDTD, false);
  reader->setFeature(xercesc::XMLUni::fgXercesSchema, false);
  reader->setContentHandler(&handler);
  reader->setErrorHandler(&handler);
  const KelXML_1_3::KelXInputSource source(document);
  try {
    xercesc::XMLPScanToken token;
    bool more = reader->parseFirst(source, token);
    while (more && !handler.Done()) more = reader->parseNext(token);
  } catch (const xercesc::XMLException& fault) {
    return ToUtf8(fault.getMessage());
  } catch (const xercesc::SAXParseException& fault) {
    return Describe(fault);
  }
  return handler.Fault();
}

}  // namespace kelscore
