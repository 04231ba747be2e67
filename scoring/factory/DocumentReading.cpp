#include <istream>
#include <memory>
#include <utility>
#include <xercesc/dom/DOM.hpp>
#include <xercesc/parsers/AbstractDOMParser.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "scoring/common/KelXInputSource.h"
#include "scoring/factory/Reasons.h"
#include "scoring/factory/ScoringModelAttr.h"
#include "scoring/factory/ScoringScorerFactory.h"
#include "scoring/pmml/ScoringBaseParser.h"
#include "scoring/pmml/ScoringPMMLSAX2Handler.h"

namespace KelScoring_20 {

using KelCommon_1_3::KelStatus;
using KelXML_1_3::KelXInputSource;
using xercesc::DOMDocument;
using xercesc::DOMElement;
using xercesc::XMLUni;

namespace {

std::unique_ptr<xercesc::SAX2XMLReader> MakeReader() {
  std::unique_ptr<xercesc::SAX2XMLReader> reader(
      xercesc::XMLReaderFactory::createXMLReader(xercesc::XMLPlatformUtils::fgMemoryManager, nullptr));
  const std::pair<const XMLCh*, bool> features[] = {
      {XMLUni::fgSAX2CoreValidation, false},
      {XMLUni::fgXercesLoadExternalDTD, false},
      {XMLUni::fgXercesDynamic, true},
      {XMLUni::fgSAX2CoreNameSpaces, true},
      {XMLUni::fgXercesSchema, false},
      {XMLUni::fgXercesSchemaFullChecking, false},
      {XMLUni::fgSAX2CoreNameSpacePrefixes, false},
  };
  for (const auto& [feature, value] : features) reader->setFeature(feature, value);
  return reader;
}

// A parser that met an error may still hold a document, of what it had read up to there. Null for such a one: half a
// model must not be scored.
DOMDocument* ParseWhole(xercesc::AbstractDOMParser& parser, std::istream& stream) {
  if (!stream.bad()) {
    stream.clear();
    stream.seekg(0);
  }
  try {
    parser.parse(KelXInputSource(stream));
    return parser.getErrorCount() == 0 ? parser.getDocument() : nullptr;
  } catch (...) {
    return nullptr;  // a parser throws many types; to the caller each of them means that there is no document
  }
}

// The first element of the first name that occurs at any depth: the order of the names counts, not that of the
// elements.
DOMElement* FindModel(const std::vector<std::string>& modelNames, DOMElement* root) {
  for (const std::string& name : modelNames) {
    const xercesc::DOMNodeList* elements = ScoringBaseParser::GetElementsByTagName(root, name);
    if (elements != nullptr && elements->getLength() > 0) return ScoringBaseParser::AsElement(elements->item(0), name);
  }
  ReportIfNone("the document has none of the model elements that \"modelDll\" names");
  return nullptr;
}

// False for a faulty document and for one that is well-formed but no PMML: nothing is thrown then.
bool FinishesPass(xercesc::SAX2XMLReader& reader, std::istream& stream) {
  try {
    reader.parse(KelXInputSource(stream));
  } catch (ScoringSAX2Handler::HandlerState outcome) {
    return outcome == ScoringSAX2Handler::kPassFinished;
  }
  return false;
}

}  // namespace

KelStatus ScoringScorerFactory::GetModelAttr(std::istream& stream, const std::vector<std::string>& modelNames,
                                             ScoringModelAttr& attr, const std::string& encoding) {
  const KelStatus incomplete(KelScoringConst::kPrescanIncomplete, true);
  try {
    const std::unique_ptr<xercesc::SAX2XMLReader> reader = MakeReader();
    ScoringPMMLSAX2Handler handler(modelNames, encoding);
    reader->setContentHandler(&handler);
    reader->setErrorHandler(&handler);
    if (!FinishesPass(*reader, stream)) return incomplete;
    attr = handler.GetModelAttr();
    return KelStatus();
  } catch (const xercesc::OutOfMemoryException&) {
    return incomplete;
  } catch (const xercesc::XMLException&) {
    return incomplete;
  }
}

KelStatus ScoringScorerFactory::GetDOMDocument(const std::vector<std::string>& modelNames, std::istream& stream,
                                               xercesc::AbstractDOMParser* parser, DOMDocument*& document,
                                               DOMElement*& model) {
  document = nullptr;
  model = nullptr;
  const KelStatus noModel(KelScoringConst::kNoScorer, false);
  DOMDocument* const parsed = ParseWhole(*parser, stream);
  if (parsed == nullptr) {
    ReportIfNone("the document is not well-formed");
    return noModel;
  }
  DOMElement* const root = parsed->getDocumentElement();
  if (!ScoringBaseParser::TagNameEquals(root, KelScoringConst::kPmmlPMML)) {
    ReportIfNone("the document's root element is not \"PMML\"");
    return noModel;
  }
  model = FindModel(modelNames, root);
  if (model == nullptr) return noModel;
  document = parsed;
  return KelStatus();
}

}  // namespace KelScoring_20
