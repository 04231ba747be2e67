#include "scoring/common/IKelScore.h"
#include "scoring/common/IKelScoreParser.h"
#include "scoring/common/KelDiagnostics.h"
#include "scoring/common/KelExport.h"
#include "scoring/common/KelSettings.h"

// A plug-in that makes no scorer on either road. The setting "give_reason" makes it leave a reason.

namespace {

using KelCommon_1_3::IKelScore;
using KelXML_1_3::KelSettings;
using KelXML_1_3::KelVarList;

class NullParser : public KelScoring_20::IKelScoreParser {
 public:
  IKelScore* CreateScorer(KelSettings& /*settings*/, KelVarList& /*varList*/, xercesc::DOMDocument* /*document*/,
                          xercesc::DOMElement* /*model*/) override {
    return nullptr;
  }

  IKelScore* CreateScorer(KelSettings& settings, KelVarList& /*varList*/, std::istream& /*stream*/) override {
    std::string reason;
    if (settings.GetSettingValByName("give_reason", reason)) KelCommon_1_3::KelDiagnostics::Report(reason);
    return nullptr;
  }
};

}  // namespace

extern "C" KEL_EXPORT KelScoring_20::IKelScoreParser* GetScoreParser() { return new NullParser; }
