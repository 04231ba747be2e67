#include <xercesc/dom/DOM.hpp>

#include "scoring/common/IKelScoreParser.h"
#include "scoring/common/KelExport.h"
#include "tests/plugins/EchoScorer.h"

// A plug-in that is served by the DOM road only. It tells in the model's settings which element it was given.

namespace {

using KelCommon_1_3::IKelScore;
using KelXML_1_3::KelSettings;
using KelXML_1_3::KelVarList;

std::string Narrow(const XMLCh* text) {
  char* narrow = xercesc::XMLString::transcode(text);
  std::string result = narrow;
  xercesc::XMLString::release(&narrow);
  return result;
}

class DomParser : public KelScoring_20::IKelScoreParser {
 public:
  IKelScore* CreateScorer(KelSettings& settings, KelVarList& varList, xercesc::DOMDocument* document,
                          xercesc::DOMElement* model) override {
    settings.AddSetting("seen_road", "dom", true);
    settings.AddSetting("seen_root", Narrow(document->getDocumentElement()->getTagName()), true);
    settings.AddSetting("seen_element", Narrow(model->getTagName()), true);
    return new KelTest::EchoScorer(settings, varList);
  }

  IKelScore* CreateScorer(KelSettings& /*settings*/, KelVarList& /*varList*/, std::istream& /*stream*/) override {
    return nullptr;
  }
};

}  // namespace

extern "C" KEL_EXPORT KelScoring_20::IKelScoreParser* GetScoreParser() { return new DomParser; }
