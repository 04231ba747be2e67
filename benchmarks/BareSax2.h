#pragma once

#include <memory>
#include <string>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/XMLUni.hpp>

/// One pass of the XML parser over a text in memory: the parser as it is made by default, or the fastest that it can be
/// set to. The limit that reading a document is measured against.
enum class Scanner { kDefault, kFastest };

inline void BareSax2Pass(const std::string& document, xercesc::DefaultHandler& handler,
                         Scanner scanner = Scanner::kDefault) {
  using xercesc::XMLUni;
  std::unique_ptr<xercesc::SAX2XMLReader> reader(xercesc::XMLReaderFactory::createXMLReader());
  if (scanner == Scanner::kFastest) {
    reader->setProperty(XMLUni::fgXercesScannerName, const_cast<XMLCh*>(XMLUni::fgWFXMLScanner));
    reader->setFeature(XMLUni::fgSAX2CoreNameSpaces, false);
  }
  reader->setFeature(XMLUni::fgSAX2CoreValidation, false);
  reader->setFeature(XMLUni::fgXercesLoadExternalDTD, false);
  reader->setFeature(XMLUni::fgXercesSchema, false);
  reader->setContentHandler(&handler);
  reader->setErrorHandler(&handler);
  const xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(document.data()), document.size(), "limit");
  reader->parse(source);
}
