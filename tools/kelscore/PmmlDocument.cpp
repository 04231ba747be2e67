#include "tools/kelscore/PmmlDocument.h"

#include <memory>
#include <xercesc/framework/XMLPScanToken.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/sax2/Attributes.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/TransService.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "scoring/common/KelScoringConst.h"
#include "scoring/common/KelXInputSource.h"

namespace kelscore {
namespace {

using KelXML_1_3::KelXInputSource;
namespace Const = KelScoring_20::KelScoringConst;

std::string ToUtf8(const XMLCh* text) {
  if (!text) return {};
  const xercesc::TranscodeToStr utf8(text, "UTF-8");
  return {reinterpret_cast<const char*>(utf8.str()), utf8.length()};
}

/// A name of the vocabulary, which is plain ASCII, as the parser writes text.
class WideName {
 public:
  explicit WideName(const char* name) : fName(name, name + std::char_traits<char>::length(name)) {}
  [[nodiscard]] bool Is(const XMLCh* text) const { return fName == text; }
  [[nodiscard]] const XMLCh* Text() const { return fName.c_str(); }

 private:
  std::basic_string<XMLCh> fName;
};

std::string Describe(const xercesc::SAXParseException& fault) {
  return "line " + std::to_string(fault.getLineNumber()) + ", column " + std::to_string(fault.getColumnNumber()) +
         ": " + ToUtf8(fault.getMessage());
}

/// Remembers the first fault of a document.
class FaultHandler : public xercesc::DefaultHandler {
 public:
  void error(const xercesc::SAXParseException& fault) override { Remember(fault); }
  void fatalError(const xercesc::SAXParseException& fault) override { Remember(fault); }
  [[nodiscard]] const std::optional<std::string>& Fault() const { return fFault; }
  [[nodiscard]] virtual bool Done() const { return fFault.has_value(); }

 private:
  void Remember(const xercesc::SAXParseException& fault) {
    if (!fFault) fFault = Describe(fault);
  }

  std::optional<std::string> fFault;
};

/// Collects the data fields up to the end of the first mining schema.
class DataFieldsHandler : public FaultHandler {
 public:
  void startElement(const XMLCh*, const XMLCh*, const XMLCh* element, const xercesc::Attributes& attributes) override {
    const auto valueOf = [&attributes](const WideName& name) { return ToUtf8(attributes.getValue(name.Text())); };
    if (kDataField.Is(element)) {
      fFields.emplace(valueOf(kName), DataField{valueOf(kDataType), ""});
    } else if (kMiningField.Is(element)) {
      const auto field = fFields.find(valueOf(kName));
      if (field != fFields.end()) field->second.usageType = valueOf(kUsageType);
    }
  }
  void endElement(const XMLCh*, const XMLCh*, const XMLCh* element) override {
    fAtEnd = fAtEnd || kMiningSchema.Is(element);
  }
  [[nodiscard]] bool Done() const override { return fAtEnd || FaultHandler::Done(); }
  [[nodiscard]] DataFields& Fields() { return fFields; }

 private:
  const WideName kDataField{Const::kPmmlDataField};
  const WideName kDataType{Const::kPmmlDataType};
  const WideName kMiningField{Const::kPmmlMiningField};
  const WideName kMiningSchema{Const::kPmmlMiningSchema};
  const WideName kName{Const::kPmmlName};
  const WideName kUsageType{Const::kPmmlUsageType};

  DataFields fFields;
  bool fAtEnd = false;
};

// Reads step by step until the handler is done, so that nothing needs to be thrown through the parser. What the
// parser throws itself is told instead of a fault.
std::optional<std::string> Parse(std::istream& document, FaultHandler& handler) {
  const std::unique_ptr<xercesc::SAX2XMLReader> reader(xercesc::XMLReaderFactory::createXMLReader());
  reader->setFeature(xercesc::XMLUni::fgSAX2CoreValidation, false);
  reader->setFeature(xercesc::XMLUni::fgXercesLoadExternalDTD, false);
  reader->setFeature(xercesc::XMLUni::fgXercesSchema, false);
  reader->setContentHandler(&handler);
  reader->setErrorHandler(&handler);
  const KelXInputSource source(document);
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

}  // namespace

DataFields ReadDataFields(std::istream& document) {
  DataFieldsHandler handler;
  Parse(document, handler);
  return std::move(handler.Fields());
}

std::optional<std::string> FindXmlFault(std::istream& document) {
  FaultHandler handler;
  return Parse(document, handler);
}

}  // namespace kelscore
