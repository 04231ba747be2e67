#include <istream>
#include <xercesc/dom/DOM.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>

#include "scoring/common/KelScoringConst.h"
#include "scoring/common/KelSettings.h"
#include "scoring/common/KelXInputSource.h"
#include "scoring/common/Value.h"
#include "scoring/pmml/ScoringBaseParser.h"
#include "scoring/propensity/ScoringAdjustedPropensity.h"

namespace KelScoring_20 {

using KelCommon_1_3::Value;
using xercesc::DOMElement;

namespace {

std::string SettingOr(const KelXML_1_3::KelSettings& settings, const char* key, std::string value) {
  settings.GetSettingValByName(key, value);
  return value;
}

void Rewind(std::istream& stream) {
  if (stream.bad()) return;
  stream.clear();
  stream.seekg(0);
}

// Reads the layers of the selected networks below one root into the vectors of `network`.
class NetworkReader {
 public:
  NetworkReader(ScoringAdjustedPropensity& network, std::string method, const std::string& encoding)
      : fNetwork(network), fMethod(std::move(method)) {
    fText.CreateTranscoder(encoding);
  }

  void ReadNetworks(DOMElement* root) {
    DOMElement* element = ScoringBaseParser::GetFirstChildElement(root, KelScoringConst::kPmmlAdjustedPropensityByNN);
    while (element != nullptr) {
      if (IsSelected(element)) ReadLayers(element);
      element = ScoringBaseParser::GetNextSiblingElement(element, KelScoringConst::kPmmlAdjustedPropensityByNN);
    }
  }

 private:
  // A missing description compares equal to an empty method, so a network without one belongs to a model that is no
  // ensemble.
  [[nodiscard]] bool IsSelected(const DOMElement* element) const {
    const XMLCh* description = ScoringBaseParser::GetAttribute(element, KelScoringConst::kPmmlDescription);
    return ScoringBaseParser::IsEqual(description, KelScoringConst::kPmmlStandalone) ||
           ScoringBaseParser::IsEqual(description, fMethod);
  }

  void ReadLayers(DOMElement* network) {
    using namespace KelScoringConst;
    if (DOMElement* hidden = ScoringBaseParser::GetFirstChildElement(network, kPmmlHiddenLayer)) {
      AppendNumbers(FirstArray(ScoringBaseParser::GetFirstChildElement(hidden, kPmmlMatrix)), fNetwork.fHiddenWeights);
      AppendNumbers(FirstArray(hidden), fNetwork.fHiddenBiases);
    }
    if (DOMElement* output = ScoringBaseParser::GetFirstChildElement(network, kPmmlOutputLayer)) {
      DOMElement* row = FirstArray(ScoringBaseParser::GetFirstChildElement(output, kPmmlMatrix));
      for (; row != nullptr; row = ScoringBaseParser::GetNextSiblingElement(row, kPmmlArray)) {
        fNetwork.fOutputWeights.push_back(Number(row));
      }
      if (const DOMElement* bias = FirstArray(output)) fNetwork.fOutputBias = Number(bias);
    }
  }

  static DOMElement* FirstArray(DOMElement* parent) {
    return ScoringBaseParser::GetFirstChildElement(parent, KelScoringConst::kPmmlArray);
  }

  [[nodiscard]] std::string Text(const DOMElement* array) const { return fText.ToString(array->getTextContent()); }

  // The output layer's arrays hold one number each: the whole text is that number.
  [[nodiscard]] double Number(const DOMElement* array) const { return Value(Text(array)).GetReal(); }

  // An array that can't be split adds nothing; the lengths then tell.
  void AppendNumbers(const DOMElement* array, std::vector<double>& numbers) const {
    std::vector<std::string> tokens;
    if (array == nullptr || !ScoringAdjustedPropensity::SplitArray(tokens, Text(array))) return;
    for (const std::string& token : tokens) numbers.push_back(Value(token).GetReal());
  }

  ScoringAdjustedPropensity& fNetwork;
  std::string fMethod;
  ScoringBaseParser fText;
};

DOMElement* ParseRoot(xercesc::XercesDOMParser& parser, std::istream& stream) {
  parser.parse(KelXML_1_3::KelXInputSource(stream));
  const xercesc::DOMDocument* document = parser.getDocument();
  return document == nullptr ? nullptr : document->getDocumentElement();
}

}  // namespace

bool ScoringAdjustedPropensity::ReadNetwork(std::istream* stream) {
  fNetworkRead = stream != nullptr && ReadNetworkFrom(*stream);
  return fNetworkRead;
}

bool ScoringAdjustedPropensity::ReadNetworkFrom(std::istream& stream) {
  const std::string method =
      SettingOr(fSettings, KelScoringConst::kSettingScoringMultipleModelMethod, KelScoringConst::kPmmlStandalone);
  const std::string encoding = SettingOr(fSettings, KelScoringConst::kSettingEncoding, "UTF-8");
  xercesc::XercesDOMParser parser;
  parser.setLoadExternalDTD(false);
  parser.setValidationScheme(xercesc::XercesDOMParser::Val_Never);
  Rewind(stream);
  try {
    NetworkReader reader(*this, method, encoding);
    DOMElement* root = ParseRoot(parser, stream);
    if (!ScoringBaseParser::TagNameEquals(root, KelScoringConst::kPmmlExtension)) return false;
    reader.ReadNetworks(root);
  } catch (...) {
    return false;  // the caller drops the evaluator, whatever went wrong
  }
  return fHiddenWeights.size() == fHiddenBiases.size() && fHiddenWeights.size() == fOutputWeights.size();
}

bool ScoringAdjustedPropensity::SplitArray(std::vector<std::string>& tokens, const std::string& text) {
  tokens.clear();
  std::string token;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == ' ') {
      tokens.push_back(token);
      token.clear();
      continue;
    }
    if (text[i] == '\\') {
      const bool escapes = i + 1 < text.size() && (text[i + 1] == ' ' || text[i + 1] == '\\');
      if (!escapes) {
        tokens.push_back(token + text.substr(i));
        return false;
      }
      ++i;
    }
    token += text[i];
  }
  if (!token.empty()) tokens.push_back(token);
  return true;
}

}  // namespace KelScoring_20
