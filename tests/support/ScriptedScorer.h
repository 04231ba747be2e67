#pragma once

#include <functional>
#include <string>
#include <vector>

#include "scoring/common/IKelScore.h"
#include "scoring/common/ValueRecord.h"

namespace KelTest {

/// What fakes were asked for, in order; the destruction of one named "x" stands there as "~x".
using CallLog = std::vector<std::string>;

/// A scorer that does what a test scripts and writes each call into a log. A call without a script fails the test.
class ScriptedScorer : public KelCommon_1_3::IKelScore {
 public:
  using ScoreScript =
      std::function<KelCommon_1_3::KelStatus(const KelCommon_1_3::ValueRecord& in, KelCommon_1_3::ValueRecord& out)>;
  using ScorableScript = std::function<KelCommon_1_3::KelStatus(KelCommon_1_3::ValueRecord& record)>;

  /// `log` must outlive the scorer.
  ScriptedScorer(CallLog& log, std::string name);
  ~ScriptedScorer() override;

  ScriptedScorer& OnScore(ScoreScript script);
  ScriptedScorer& OnScorable(ScorableScript script);

  bool IsReady() override;
  KelCommon_1_3::KelStatus Score(const KelCommon_1_3::ValueRecord& in, KelCommon_1_3::ValueRecord& out) override;
  KelCommon_1_3::KelStatus Scorable(KelCommon_1_3::ValueRecord& record) override;
  /// The name.
  std::string GetType() override;

 private:
  CallLog& fLog;
  std::string fName;
  ScoreScript fScore;
  ScorableScript fScorable;
};

/// A script that writes `value` under `name` if `out` wants it, and gives `status`.
ScriptedScorer::ScoreScript Writes(std::string name, KelCommon_1_3::Value value, KelCommon_1_3::KelStatus status = {});
/// A script that offers these outputs and gives `status`.
ScriptedScorer::ScorableScript Offers(std::vector<std::string> names, KelCommon_1_3::KelStatus status = {});

}  // namespace KelTest
