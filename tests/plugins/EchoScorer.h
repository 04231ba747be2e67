#pragma once

#include <string>

#include "scoring/common/KelStatus.h"
#include "scoring/common/ValueRecord.h"
#include "scoring/model/ScoringBaseScorer.h"

namespace KelTest {

/// The scorer of the test plug-ins: gives "prediction" the input "p", "probability" the input "q", and any other wanted
/// output the input of the same name.
class EchoScorer : public KelScoring_20::ScoringBaseScorer {
 public:
  using ScoringBaseScorer::ScoringBaseScorer;

  KelCommon_1_3::KelStatus Score(const KelCommon_1_3::ValueRecord& in, KelCommon_1_3::ValueRecord& out) override {
    for (int i = 0; i < out.Size(); ++i) {
      const std::string& name = out.NameAt(i);
      const std::string& source = name == "prediction" ? kPrediction : name == "probability" ? kProbability : name;
      if (in.Contains(source)) out[i] = in.At(in.IndexOf(source));
    }
    return {};
  }

  KelCommon_1_3::KelStatus Scorable(KelCommon_1_3::ValueRecord& record) override {
    record.Add("prediction", KelCommon_1_3::Value::NULL_VALUE);
    record.Add("probability", KelCommon_1_3::Value::NULL_VALUE);
    return {};
  }

  std::string GetType() override { return "echo"; }

 private:
  const std::string kPrediction = "p";
  const std::string kProbability = "q";
};

}  // namespace KelTest
