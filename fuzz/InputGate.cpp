// Whatever the bytes are, the parser must never see a declaration behind the gate, nor open anything.

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/BinInputStream.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include "scoring/common/KelXInputSource.h"

namespace {

using KelXML_1_3::KelXInputSource;

class Guard : public xercesc::DefaultHandler {
 public:
  void startElement(const XMLCh*, const XMLCh*, const XMLCh*, const xercesc::Attributes&) override {
    if (++fDepth > 10'000) std::abort();
  }
  void endElement(const XMLCh*, const XMLCh*, const XMLCh*) override { --fDepth; }
  void startDTD(const XMLCh*, const XMLCh* publicId, const XMLCh* systemId) override {
    if ((publicId != nullptr && *publicId != 0) || (systemId != nullptr && *systemId != 0)) std::abort();
  }
  void internalEntityDecl(const XMLCh*, const XMLCh*) override { std::abort(); }
  void externalEntityDecl(const XMLCh*, const XMLCh*, const XMLCh*) override { std::abort(); }
  void elementDecl(const XMLCh*, const XMLCh*) override { std::abort(); }
  void attributeDecl(const XMLCh*, const XMLCh*, const XMLCh*, const XMLCh*, const XMLCh*) override { std::abort(); }
  xercesc::InputSource* resolveEntity(const XMLCh*, const XMLCh*) override { std::abort(); }
  void fatalError(const xercesc::SAXParseException& error) override { throw error; }

 private:
  int fDepth = 0;
};

// What isn't refused passes with its length.
void CheckLength(const std::string& document) {
  std::istringstream stream(document);
  const KelXInputSource source(stream);
  const std::unique_ptr<xercesc::BinInputStream> input(source.makeStream());
  std::string block(1000, '\0');
  std::size_t size = 0;
  while (const XMLSize_t count = input->readBytes(reinterpret_cast<XMLByte*>(block.data()), block.size()))
    size += count;
  if (source.Refusal().empty() ? size != document.size() : size > document.size()) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  xercesc::XMLPlatformUtils::Initialize();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string document(reinterpret_cast<const char*>(data), size);
  CheckLength(document);
  std::istringstream stream(document);
  Guard guard;
  const std::unique_ptr<xercesc::SAX2XMLReader> reader(xercesc::XMLReaderFactory::createXMLReader());
  reader->setContentHandler(&guard);
  reader->setErrorHandler(&guard);
  reader->setEntityResolver(&guard);
  reader->setLexicalHandler(&guard);
  reader->setDeclarationHandler(&guard);
  try {
    reader->parse(KelXInputSource(stream));
  } catch (const xercesc::SAXParseException&) {
  }
  return 0;
}
