#include <memory>
#include <xercesc/parsers/XercesDOMParser.hpp>

#include "scoring/common/IKelScore.h"
#include "scoring/common/IKelScoreParser.h"
#include "scoring/common/KelDynamicLoadedLibrary.h"
#include "scoring/common/KelSettings.h"
#include "scoring/factory/Reasons.h"
#include "scoring/factory/ScoringScorerFactory.h"

namespace KelScoring_20 {

using KelCommon_1_3::IKelScore;
using KelCommon_1_3::KelDynamicLoadedLibrary;
using KelXML_1_3::KelSettings;
using KelXML_1_3::KelVarList;
using xercesc::DOMDocument;
using xercesc::DOMElement;

namespace {

// Stands behind a plug-in's base name in its file name: the generation of the plug-in contract.
constexpr char kPlugInSuffix[] = "20r";
constexpr char kPlugInSymbol[] = "GetScoreParser";

std::string SettingOr(const KelSettings& settings, const char* key, std::string value) {
  settings.GetSettingValByName(key, value);
  return value;
}

// The base name of the plug-in for the document that `settings` describe; empty if the table has none.
std::string ChoosePlugIn(const std::map<std::string, std::string>& scoringNames, const KelSettings& settings) {
  const std::string version = SettingOr(settings, KelScoringConst::kSettingScoringVersion, "");
  const std::string modelType = SettingOr(settings, KelScoringConst::kSettingScoringModelType, "");
  const std::string supported =
      SettingOr(settings, KelScoringConst::kSettingVersionSupported, KelScoringConst::kVersion40);
  const bool byModelType = version == supported && !modelType.empty() && scoringNames.count(modelType) != 0;
  const auto entry = scoringNames.find(byModelType ? modelType : KelScoringConst::kDefaultPlugIn);
  return entry == scoringNames.end() ? std::string() : entry->second;
}

// Asks the plug-in `name` through `createScorer`, which gets its parser. The parser goes before the library object.
template <typename CreateScorer>
IKelScore* AskPlugIn(const std::string& name, const CreateScorer& createScorer) {
  if (name.empty()) {
    ReportIfNone("the settings name no plug-in for the model: \"scoringDll\" has no entry that fits");
    return nullptr;
  }
  const std::string path = KelDynamicLoadedLibrary::KelDecorateDynamicPathName(name + kPlugInSuffix);
  const KelDynamicLoadedLibrary library(path, KelDynamicLoadedLibrary::kKeepLoaded);
  const auto getScoreParser = reinterpret_cast<GetScoreParserFunction>(library.GetSymbolAddress(kPlugInSymbol));
  if (getScoreParser == nullptr) {
    ReportIfNone("the plug-in \"" + name + "\" can't be loaded, or lacks the symbol GetScoreParser");
    return nullptr;
  }
  const std::unique_ptr<IKelScoreParser> parser(getScoreParser());
  if (parser == nullptr) {
    ReportIfNone("the plug-in \"" + name + "\" gives no score parser");
    return nullptr;
  }
  IKelScore* scorer = createScorer(*parser);
  if (scorer == nullptr) ReportIfNone("the plug-in \"" + name + "\" makes no scorer from this document");
  return scorer;
}

// The DOM way, for plug-ins that make nothing of a stream. The document dies with the parser, before the scorer is
// used.
IKelScore* GetScorerFromDocument(const std::string& name, const std::vector<std::string>& modelNames,
                                 KelSettings& settings, KelVarList& varList, std::istream& stream) {
  xercesc::XercesDOMParser parser(nullptr, xercesc::XMLPlatformUtils::fgMemoryManager, nullptr);
  parser.setLoadExternalDTD(false);
  parser.setValidationScheme(xercesc::XercesDOMParser::Val_Never);
  DOMDocument* document = nullptr;
  DOMElement* model = nullptr;
  if (!ScoringScorerFactory::GetDOMDocument(modelNames, stream, &parser, document, model).IsOK()) return nullptr;
  return ScoringScorerFactory::GetScorer(name, settings, varList, document, model);
}

}  // namespace

IKelScore* ScoringScorerFactory::GetScorer(KelSettings& settings, KelVarList& varList, std::istream& stream) {
  std::map<std::string, std::string> scoringNames;
  std::vector<std::string> modelNames;
  if (!GetScoringNames(scoringNames, settings).IsOK() || !GetModelNames(modelNames, settings).IsOK()) return nullptr;
  const std::string name = ChoosePlugIn(scoringNames, settings);
  if (IKelScore* scorer = GetScorer(name, settings, varList, stream)) return scorer;
  return GetScorerFromDocument(name, modelNames, settings, varList, stream);
}

IKelScore* ScoringScorerFactory::GetScorer(const std::string& name, KelSettings& settings, KelVarList& varList,
                                           std::istream& stream) {
  return AskPlugIn(name, [&](IKelScoreParser& parser) { return parser.CreateScorer(settings, varList, stream); });
}

IKelScore* ScoringScorerFactory::GetScorer(const std::string& name, KelSettings& settings, KelVarList& varList,
                                           DOMDocument* document, DOMElement* model) {
  return AskPlugIn(name,
                   [&](IKelScoreParser& parser) { return parser.CreateScorer(settings, varList, document, model); });
}

}  // namespace KelScoring_20
