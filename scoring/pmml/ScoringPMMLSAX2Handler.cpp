#include "scoring/pmml/ScoringPMMLSAX2Handler.h"

#include <memory>
#include <xercesc/sax2/Attributes.hpp>
#include <xercesc/util/XMLString.hpp>

#include "scoring/common/KelScoringConst.h"
#include "scoring/text/WideLiteral.h"

namespace KelScoring_20 {
namespace {

using xercesc::Attributes;
using xercesc::XMLFormatter;
using xercesc::XMLString;

// The names that the pass meets.
constexpr WideLiteral kAdjustedPropensity(KelScoringConst::kPmmlAdjustedPropensity);
constexpr WideLiteral kAlgorithmName(KelScoringConst::kPmmlAlgorithmName);
constexpr WideLiteral kApplication(KelScoringConst::kPmmlApplication);
constexpr WideLiteral kDataDictionary(KelScoringConst::kPmmlDataDictionary);
constexpr WideLiteral kDerivedFields(KelScoringConst::kPmmlDerivedFields);
constexpr WideLiteral kExtender(KelScoringConst::kPmmlExtender);
constexpr WideLiteral kExtenderId(KelScoringConst::ExtenderId);
constexpr WideLiteral kExtension(KelScoringConst::kPmmlExtension);
constexpr WideLiteral kFunctionName(KelScoringConst::kPmmlFunctionName);
constexpr WideLiteral kHeader(KelScoringConst::kPmmlHeader);
constexpr WideLiteral kMiningBuildTask(KelScoringConst::kPmmlMiningBuildTask);
constexpr WideLiteral kMiningField(KelScoringConst::kPmmlMiningField);
constexpr WideLiteral kMiningSchema(KelScoringConst::kPmmlMiningSchema);
constexpr WideLiteral kModelID(KelScoringConst::kPmmlModelID);
constexpr WideLiteral kModelName(KelScoringConst::kPmmlModelName);
constexpr WideLiteral kMultipleModelMethod(KelScoringConst::kPmmlMultipleModelMethod);
constexpr WideLiteral kName(KelScoringConst::kPmmlName);
constexpr WideLiteral kPMML(KelScoringConst::kPmmlPMML);
constexpr WideLiteral kPredicted(KelScoringConst::kPmmlPredicted);
constexpr WideLiteral kSegmentation(KelScoringConst::kPmmlSegmentation);
constexpr WideLiteral kTransformationDictionary(KelScoringConst::kPmmlTransformationDictionary);
constexpr WideLiteral kUsageType(KelScoringConst::kPmmlUsageType);
constexpr WideLiteral kValue(KelScoringConst::kPmmlValue);
constexpr WideLiteral kVersion(KelScoringConst::kPmmlVersion);

template <std::size_t N>
bool Is(const XMLCh* text, const WideLiteral<N>& literal) {
  return text && *text == *literal.text && XMLString::equals(text, literal.text);  // most names differ at once
}

/// Whether the attributes are those of an "Extension" of this library family with that name.
template <std::size_t N>
bool IsOwnExtension(const Attributes& attrs, const WideLiteral<N>& name) {
  return Is(attrs.getValue(kExtender.text), kExtenderId) && Is(attrs.getValue(kName.text), name);
}

template <std::size_t N>
std::string Utf8Attribute(const Attributes& attrs, const WideLiteral<N>& name) {
  return ScoringStr(attrs.getValue(name.text)).toUTF8();
}

}  // namespace

ScoringPMMLSAX2Handler::ScoringPMMLSAX2Handler(const std::vector<std::string>& modelNames, const std::string& encoding)
    : ScoringSAX2Handler(encoding), fModelNames(modelNames), fWideModelNames(modelNames.begin(), modelNames.end()) {}

ScoringPMMLSAX2Handler::~ScoringPMMLSAX2Handler() = default;

// The landmark comes first: the element that opens a copied region is copied into it.
void ScoringPMMLSAX2Handler::startElement(const XMLCh* const, const XMLCh* const, const XMLCh* const qname,
                                          const Attributes& attrs) {
  PassLandmark(qname, attrs);
  if (CopiesTags()) WriteStartTag(qname, attrs);
}

// The tag comes first: the element that closes a copied region is copied into it.
void ScoringPMMLSAX2Handler::endElement(const XMLCh* const, const XMLCh* const, const XMLCh* const qname) {
  if (CopiesTags()) WriteEndTag(qname);
  LeaveElement(qname);
}

void ScoringPMMLSAX2Handler::writeChars(const XMLByte* const bytes, const XMLSize_t count, XMLFormatter* const) {
  std::ostream* stream = Output();
  if (stream) stream->write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(count)).flush();
}

std::ostream* ScoringPMMLSAX2Handler::Output() {
  switch (At()) {
    case InPmml:
    case InMiningBuildTask:
    case InDataDictionary:
    case InTransformationDictionary:
    case InMiningSchema:
      return &fModelAttr.documentStream;
    case InPropensityExtension:
      return fPropensityStream;
    default:
      return nullptr;
  }
}

void ScoringPMMLSAX2Handler::GoTo(Position position) {
  fState = static_cast<HandlerState>(position);
  fDropsText = Output() == nullptr;
}

bool ScoringPMMLSAX2Handler::CopiesTags() const {
  const Position at = At();
  return at == InMiningBuildTask || at == InDataDictionary || at == InTransformationDictionary ||
         at == InPropensityExtension;
}

void ScoringPMMLSAX2Handler::PassLandmark(const XMLCh* qname, const Attributes& attrs) {
  switch (At()) {
    case Start:
      if (Is(qname, kPMML)) EnterRoot(attrs);
      break;
    case InPmml:
      return EnterChildOfRoot(qname);
    case InHeader:
      if (Is(qname, kApplication)) EnterApplication(attrs);
      break;
    case AfterMiningBuildTask:
      return EnterDataDictionary(qname);
    case AfterDataDictionary:
      return EnterTransformationsOrModel(qname, attrs);
    case AfterTransformationDictionary:
      return ChooseModel(qname, attrs);
    case InModel:
      return EnterChildOfModel(qname, attrs);
    case InMiningSchema:
      return EnterChildOfMiningSchema(qname, attrs);
    case InDerivedFields:
      return ListField(qname, attrs);
    case AfterMiningSchema:
      if (Is(qname, kSegmentation)) EnterSegmentation(attrs);
      break;
    default:
      break;
  }
}

void ScoringPMMLSAX2Handler::EnterRoot(const Attributes& attrs) {
  GoTo(InPmml);
  fModelAttr.version = fTranscoder->TranscodeTo(attrs.getValue(kVersion.text));
  WriteRootLine();
}

void ScoringPMMLSAX2Handler::EnterChildOfRoot(const XMLCh* qname) {
  if (Is(qname, kHeader)) {
    GoTo(InHeader);
  } else if (Is(qname, kMiningBuildTask)) {
    GoTo(InMiningBuildTask);
  } else {
    EnterDataDictionary(qname);
  }
}

void ScoringPMMLSAX2Handler::EnterApplication(const Attributes& attrs) {
  GoTo(InApplication);
  fModelAttr.SetApplicationName(ToString(attrs.getValue(kName.text)));
  fModelAttr.SetApplicationVersion(ToString(attrs.getValue(kVersion.text)));
}

void ScoringPMMLSAX2Handler::EnterDataDictionary(const XMLCh* qname) {
  if (Is(qname, kDataDictionary)) GoTo(InDataDictionary);
}

void ScoringPMMLSAX2Handler::EnterTransformationsOrModel(const XMLCh* qname, const Attributes& attrs) {
  if (!Is(qname, kTransformationDictionary)) return ChooseModel(qname, attrs);
  GoTo(InTransformationDictionary);
  fModelAttr.hasTransformations = true;
}

// A model of an unlisted kind is passed over, and the elements inside it are tested as well.
void ScoringPMMLSAX2Handler::ChooseModel(const XMLCh* qname, const Attributes& attrs) {
  for (std::size_t i = 0; i < fWideModelNames.size(); ++i) {
    if (!fWideModelNames[i].equals(qname)) continue;
    fModelAttr.modelType = fModelNames[i];
    fModelAttr.modelName = Utf8Attribute(attrs, kModelName);
    fModelAttr.functionName = Utf8Attribute(attrs, kFunctionName);
    fModelAttr.algorithmName = Utf8Attribute(attrs, kAlgorithmName);
    return GoTo(InModel);
  }
}

void ScoringPMMLSAX2Handler::EnterChildOfModel(const XMLCh* qname, const Attributes& attrs) {
  if (Is(qname, kMiningSchema)) return GoTo(InMiningSchema);
  if (!Is(qname, kExtension)) return;
  if (IsOwnExtension(attrs, kAdjustedPropensity)) {
    EnterPropensityExtension();
  } else if (IsOwnExtension(attrs, kModelID)) {
    fModelAttr.modelID = ToString(attrs.getValue(kValue.text));
  }
}

// A second such extension takes the place of the first.
void ScoringPMMLSAX2Handler::EnterPropensityExtension() {
  auto stream = std::make_unique<std::stringstream>();
  delete fModelAttr.propensityStream;
  fPropensityStream = fModelAttr.propensityStream = stream.release();
  GoTo(InPropensityExtension);
}

void ScoringPMMLSAX2Handler::EnterChildOfMiningSchema(const XMLCh* qname, const Attributes& attrs) {
  if (Is(qname, kExtension)) {
    if (IsOwnExtension(attrs, kDerivedFields)) GoTo(InDerivedFields);
  } else {
    ListField(qname, attrs);
  }
}

void ScoringPMMLSAX2Handler::ListField(const XMLCh* qname, const Attributes& attrs) {
  if (!Is(qname, kMiningField) || attrs.getLength() == 0) return;
  const std::string name = fTranscoder->TranscodeTo(attrs.getValue(kName.text));
  if (Is(attrs.getValue(kUsageType.text), kPredicted)) {
    fModelAttr.predictedFields.push_back(name);
  } else if (At() == InDerivedFields) {
    fModelAttr.derivedFields.push_back(name);
  } else {
    fModelAttr.activeFields.push_back(name);
  }
}

void ScoringPMMLSAX2Handler::EnterSegmentation(const Attributes& attrs) {
  GoTo(AtSegmentation);
  fModelAttr.multipleModelMethod = ToString(attrs.getValue(kMultipleModelMethod.text));
  throw kPassFinished;
}

// The landmarks of the head act wherever the document stands; those of the model only in their place.
void ScoringPMMLSAX2Handler::LeaveElement(const XMLCh* qname) {
  if (Is(qname, kPMML)) {
    GoTo(AtDocumentEnd);
    throw kPassFinished;
  }
  if (Is(qname, kHeader) || Is(qname, kApplication)) return GoTo(InPmml);
  if (Is(qname, kMiningBuildTask)) return GoTo(AfterMiningBuildTask);
  if (Is(qname, kDataDictionary)) return GoTo(AfterDataDictionary);
  if (Is(qname, kTransformationDictionary)) return GoTo(AfterTransformationDictionary);
  if (At() == InPropensityExtension && Is(qname, kExtension)) return GoTo(InModel);
  if (At() == InMiningSchema && Is(qname, kMiningSchema)) return LeaveMiningSchema();
  if (At() == InDerivedFields && Is(qname, kExtension)) return GoTo(InMiningSchema);
}

// The reduced document is complete here. It is closed while the position still writes to it.
void ScoringPMMLSAX2Handler::LeaveMiningSchema() {
  WriteEndTag(kPMML.text);
  GoTo(AfterMiningSchema);
}

// The version goes out as it came out of the transcoder: cut or empty, if the encoding couldn't hold it.
void ScoringPMMLSAX2Handler::WriteRootLine() {
  const ScoringStr version(fModelAttr.version);
  fFormatter << XMLFormatter::NoEscapes << u"<" << kPMML.text << u" " << kVersion.text << u"=\"" << version.xc_str()
             << u"\">\n";
}

void ScoringPMMLSAX2Handler::WriteStartTag(const XMLCh* qname, const Attributes& attrs) {
  fFormatter << XMLFormatter::NoEscapes << u"<" << qname;
  for (XMLSize_t i = 0; i < attrs.getLength(); ++i) {
    fFormatter << u" " << attrs.getQName(i) << u"=\"";
    fFormatter << XMLFormatter::AttrEscapes << attrs.getValue(i);
    fFormatter << XMLFormatter::NoEscapes << u"\"";
  }
  fFormatter << u">";
}

void ScoringPMMLSAX2Handler::WriteEndTag(const XMLCh* qname) {
  fFormatter << XMLFormatter::NoEscapes << u"</" << qname << u">";
}

}  // namespace KelScoring_20
