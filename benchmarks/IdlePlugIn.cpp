// A plug-in whose scorer does nothing: what is left is the cost of the library's road.

#include "scoring/common/IKelScoreParser.h"
#include "scoring/common/ValueRecord.h"
#include "scoring/model/ScoringBaseScorer.h"

namespace {

using KelCommon_1_3::IKelScore;
using KelCommon_1_3::KelStatus;
using KelCommon_1_3::ValueRecord;
using KelXML_1_3::KelSettings;
using KelXML_1_3::KelVarList;

class IdleScorer : public KelScoring_20::ScoringBaseScorer {
 public:
  using ScoringBaseScorer::ScoringBaseScorer;
  KelStatus Score(const ValueRecord&, ValueRecord&) override { return {}; }
  KelStatus Scorable(ValueRecord& record) override {
    record.Add("prediction", KelCommon_1_3::Value::NULL_VALUE);
    return {};
  }
};

class IdleParser : public KelScoring_20::IKelScoreParser {
 public:
  IKelScore* CreateScorer(KelSettings&, KelVarList&, xercesc::DOMDocument*, xercesc::DOMElement*) override {
    return nullptr;
  }
  IKelScore* CreateScorer(KelSettings& settings, KelVarList& varList, std::istream&) override {
    return new IdleScorer(settings, varList);
  }
};

}  // namespace

extern "C" KEL_EXPORT KelScoring_20::IKelScoreParser* GetScoreParser() { return new IdleParser; }
