#pragma once

#include <functional>
#include <utility>

#include "scoring/common/ValueRecord.h"
#include "scoring/model/ScoringAbsModel.h"

namespace kelscore {

/// A model that scores by a function.
class FakeModel : public KelScoring_20::ScoringAbsModel {
 public:
  using ScoreFunction =
      std::function<KelCommon_1_3::KelStatus(KelCommon_1_3::ValueRecord& in, KelCommon_1_3::ValueRecord& out)>;

  explicit FakeModel(ScoreFunction score) : fScore(std::move(score)) {}

  [[nodiscard]] KelScoring_20::ScoringModel* Clone() const override { return nullptr; }
  KelCommon_1_3::KelStatus Score(KelCommon_1_3::ValueRecord& in, KelCommon_1_3::ValueRecord& out) override {
    return fScore(in, out);
  }
  KelCommon_1_3::KelStatus Scorable(KelCommon_1_3::ValueRecord& record) override {
    record.Add("prediction", KelCommon_1_3::Value::NULL_VALUE);
    return {};
  }

 private:
  ScoreFunction fScore;
};

}  // namespace kelscore
