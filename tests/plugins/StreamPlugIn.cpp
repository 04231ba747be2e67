#include <istream>

#include "scoring/common/IKelScoreParser.h"
#include "scoring/common/KelCatVar.h"
#include "scoring/common/KelExport.h"
#include "tests/plugins/EchoScorer.h"

// A plug-in that is served by the stream road. It tells in the model's settings what it was given, under keys that
// begin with "seen_"; the host's settings "set_modelType" and "set_needDerived" make it change the model's settings,
// and "set_flagTarget" makes it add a flag of that name as the target.

namespace {

using KelCommon_1_3::IKelScore;
using KelXML_1_3::KelSettings;
using KelXML_1_3::KelVarList;

class StreamParser : public KelScoring_20::IKelScoreParser {
 public:
  IKelScore* CreateScorer(KelSettings& /*settings*/, KelVarList& /*varList*/, xercesc::DOMDocument* /*document*/,
                          xercesc::DOMElement* /*model*/) override {
    return nullptr;
  }

  IKelScore* CreateScorer(KelSettings& settings, KelVarList& varList, std::istream& stream) override {
    settings.AddSetting("seen_road", "stream", true);
    settings.AddSetting("seen_variables", std::to_string(varList.Size()), true);
    settings.AddSetting("seen_position", std::to_string(static_cast<long>(stream.tellg())), true);
    settings.AddSetting("seen_flags", std::to_string(static_cast<int>(stream.rdstate())), true);
    std::string modelType;
    if (settings.GetSettingValByName("set_modelType", modelType)) {
      settings.AddSetting("scoring_modelType", modelType, true);
    }
    bool need = false;
    if (settings.GetSettingValByName("set_needDerived", need)) {
      settings.AddSetting("scoring_needDerivedPredictor", need, true);
    }
    std::string flag;
    if (settings.GetSettingValByName("set_flagTarget", flag)) AddFlagTarget(flag, varList);
    return new KelTest::EchoScorer(settings, varList);
  }

 private:
  static void AddFlagTarget(const std::string& name, KelVarList& varList) {
    const std::vector<std::string> values = {"no", "yes"};
    const int index = varList.AddCatVar(name, "", values, KelXML_1_3::kRoleTarget);
    dynamic_cast<KelXML_1_3::KelCatVar&>(*varList.GetVarAt(index)).SetBinaryFlag(true, 1);
  }
};

}  // namespace

extern "C" KEL_EXPORT KelScoring_20::IKelScoreParser* GetScoreParser() { return new StreamParser; }
