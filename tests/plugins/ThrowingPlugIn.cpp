#include <stdexcept>

#include "scoring/common/IKelScore.h"
#include "scoring/common/IKelScoreParser.h"
#include "scoring/common/KelExport.h"
#include "scoring/common/KelSettings.h"

// A plug-in that throws on the road that the setting "throw_on" names, "stream" or "dom", and refuses on the other.

namespace {

using KelCommon_1_3::IKelScore;
using KelXML_1_3::KelSettings;
using KelXML_1_3::KelVarList;

class ThrowingParser : public KelScoring_20::IKelScoreParser {
 public:
  IKelScore* CreateScorer(KelSettings& settings, KelVarList& /*varList*/, xercesc::DOMDocument* /*document*/,
                          xercesc::DOMElement* /*model*/) override {
    return ThrowIf(settings, "dom");
  }

  IKelScore* CreateScorer(KelSettings& settings, KelVarList& /*varList*/, std::istream& /*stream*/) override {
    return ThrowIf(settings, "stream");
  }

 private:
  static IKelScore* ThrowIf(const KelSettings& settings, const std::string& road) {
    std::string throwOn;
    settings.GetSettingValByName("throw_on", throwOn);
    if (throwOn == road) throw std::runtime_error("thrown on the " + road + " road");
    return nullptr;
  }
};

}  // namespace

extern "C" KEL_EXPORT KelScoring_20::IKelScoreParser* GetScoreParser() { return new ThrowingParser; }
