#include "scoring/pmml/ScoringPMMLParser.h"

#include <istream>
#include <utility>
#include <xercesc/dom/DOM.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "scoring/common/KelDiagnostics.h"
#include "scoring/common/KelScoringConst.h"
#include "scoring/common/KelXInputSource.h"
#include "scoring/model/ScoringMutex.h"
#include "scoring/pmml/FieldReader.h"
#include "scoring/pmml/FieldVariable.h"
#include "scoring/text/LocalText.h"

namespace KelScoring_20 {

using KelCommon_1_3::KelDiagnostics;
using KelCommon_1_3::KelStatus;
using KelXML_1_3::KelSettings;
using KelXML_1_3::KelVarList;
using KelXML_1_3::KelVecValue;
using KelXML_1_3::KelXInputSource;
using xercesc::DOMDocument;
using xercesc::DOMElement;
using xercesc::XercesDOMParser;
using xercesc::XMLException;
using xercesc::XMLPlatformUtils;

using namespace KelScoringConst;

namespace {

KelStatus Error(long code) { return KelStatus(code, false); }

const char* FieldTag(const DOMElement* dictionary) {
  const bool holdsDerivedFields = ScoringBaseParser::TagNameEquals(dictionary, kPmmlTransformationDictionary) ||
                                  ScoringBaseParser::TagNameEquals(dictionary, kPmmlLocalTransformations);
  return holdsDerivedFields ? kPmmlDerivedField : kPmmlDataField;
}

/// The entries of a "ListValue", as texts of the parser's encoding.
std::vector<std::string> ListEntries(const ScoringBaseParser& parser, DOMElement* listValue) {
  std::vector<std::string> entries;
  for (DOMElement* entry = parser.GetFirstChildElement(listValue, kPmmlValueElement); entry;
       entry = parser.GetNextSiblingElement(entry, kPmmlValueElement)) {
    if (const XMLCh* text = parser.GetAttribute(entry, kPmmlValue)) entries.push_back(parser.ToString(text));
  }
  return entries;
}

}  // namespace

ScoringPMMLParser::ScoringPMMLParser() = default;

ScoringPMMLParser::ScoringPMMLParser(const std::string& encoding) : fEncoding(encoding) { CreateTranscoder(encoding); }

ScoringPMMLParser::~ScoringPMMLParser() {
  if (!fParser) return;
  ScoringMutexLock lock(ScoringMutexContainer::GetMutex());
  fParser.reset();
  XMLPlatformUtils::Terminate();
}

// A platform that started while the parser could not be made stays up: the exception's text lives in it.
KelStatus ScoringPMMLParser::InitXerces() {
  if (!fStatus.IsOK() || fParser) return fStatus;
  try {
    ScoringMutexLock lock(ScoringMutexContainer::GetMutex());
    XMLPlatformUtils::Initialize(xercesc::XMLUni::fgXercescDefaultLocale, nullptr, nullptr, nullptr);
    fParser = std::make_unique<XercesDOMParser>(nullptr, XMLPlatformUtils::fgMemoryManager, nullptr);
  } catch (const XMLException& exception) {
    fXercesMessage = WideToLocal(exception.getMessage());
    fStatus = Error(kXmlPlatformFailed);
  }
  return fStatus;
}

KelStatus ScoringPMMLParser::FillVarList(KelVarList& list, std::istream& stream) {
  fXercesMessage.clear();
  InitXerces();
  if (!fParser) return fStatus;
  fStatus = KelStatus();
  Parse(stream);
  if (DOMElement* root = FindRoot()) ReadDictionaries(list, root);
  return fStatus;
}

// Only exceptions count as failures here: a reduced document may lack its closing tag, and the document holds all
// that stands in front of such a fault.
void ScoringPMMLParser::Parse(std::istream& stream) {
  try {
    fParser->parse(KelXInputSource(stream));
  } catch (const XMLException& exception) {
    fXercesMessage = ToString(exception.getMessage());
    fStatus = Error(kXmlParseFailed);
    KelDiagnostics::Report("The dictionary can't be parsed: " + fXercesMessage);
  }
}

DOMElement* ScoringPMMLParser::FindRoot() {
  if (!fStatus.IsOK()) return nullptr;
  DOMDocument* document = fParser->getDocument();
  DOMElement* root = document ? document->getDocumentElement() : nullptr;
  if (!root) {
    fStatus = Error(document ? kWrongRootElement : kXmlParseFailed);
    KelDiagnostics::Report("The text with the dictionary holds no XML element");
  }
  return root;
}

// The calls need no test between them: each returns at once when the one before it has failed.
void ScoringPMMLParser::ReadDictionaries(KelVarList& list, DOMElement* root) {
  const bool isPmml = TagNameEquals(root, kPmmlPMML);
  DOMElement* dataDictionary =
      isPmml ? GetFirstChildElement(root, kPmmlDataDictionary) : AsElement(root, kPmmlDataDictionary);
  DOMElement* transformations = isPmml ? GetFirstChildElement(root, kPmmlTransformationDictionary)
                                       : AsElement(root, kPmmlTransformationDictionary);
  DOMElement* localTransformations = AsElement(root, kPmmlLocalTransformations);
  if (!isPmml && !dataDictionary && !transformations && !localTransformations) {
    fStatus = Error(kWrongRootElement);
    return KelDiagnostics::Report("Element " + ToString(root->getNodeName()) + " is no root of a dictionary");
  }
  for (DOMElement* dictionary : {dataDictionary, transformations, localTransformations}) {
    if (dictionary) fStatus = FillVarList(list, dictionary);
  }
}

KelStatus ScoringPMMLParser::FillVarList(KelVarList& list, DOMElement* element) {
  KelStatus status = fStatus;
  if (!status.IsOK()) return status;
  const char* fieldTag = FieldTag(element);
  FieldReader reader(*this);
  for (DOMElement* field = GetFirstChildElement(element, fieldTag); field && status.IsOK();
       field = GetNextSiblingElement(field, fieldTag)) {
    Field declaration;
    status = reader.Read(field, declaration);
    if (status.IsOK()) status = AddVariable(list, std::move(declaration));
  }
  return status;
}

KelStatus ScoringPMMLParser::FillSettings(KelSettings& settings, DOMElement* element) {
  KelStatus status = fStatus;
  for (DOMElement* parameter = GetFirstChildElement(element, kPmmlParameter); parameter && status.IsOK();
       parameter = GetNextSiblingElement(parameter, kPmmlParameter)) {
    const XMLCh* name = GetAttribute(parameter, kPmmlName);
    if (!name) {
      KelDiagnostics::Report("Parameter without attribute name");
      status = Error(kRequiredAttributeMissing);
    } else if (const XMLCh* value = GetAttribute(parameter, kPmmlValue)) {
      settings.AddSetting(ToString(name), ToString(value), false);
    } else if (DOMElement* listValue = GetFirstChildElement(parameter, kPmmlListValue)) {
      settings.AddSetting(ToString(name), KelVecValue<std::string>(ListEntries(*this, listValue)), false);
    }
  }
  return status;
}

}  // namespace KelScoring_20
