#pragma once

#include <string>
#include <utility>
#include <vector>

#include "scoring/common/KelTransformation.h"
#include "scoring/common/ValueRecord.h"
#include "tests/support/ScriptedScorer.h"

namespace KelTest {

/// A transformation that writes each call into a log, knows the derived fields that it is given, and sets those of them
/// that a record names to 1.
class FakeTransformation : public KelTransformNS::KelTransformation {
 public:
  FakeTransformation(CallLog& log, std::vector<std::string> derived, KelCommon_1_3::KelStatus transformStatus = {})
      : fLog(log), fDerived(std::move(derived)), fTransformStatus(transformStatus) {}
  ~FakeTransformation() override { fLog.emplace_back("~transformation"); }

  // The status of this one isn't looked at by anybody, so it gives an error.
  KelCommon_1_3::KelStatus GetDerivedVariableInfo(KelCommon_1_3::ValueRecord& record, bool flag) const override {
    fLog.emplace_back(flag ? "GetDerivedVariableInfo true" : "GetDerivedVariableInfo false");
    for (const std::string& name : fDerived) record.Add(name, KelCommon_1_3::Value::NULL_VALUE);
    return KelCommon_1_3::KelStatus(-2, false);
  }

  KelCommon_1_3::KelStatus Transform(KelCommon_1_3::ValueRecord& record) const override {
    fLog.emplace_back("Transform");
    for (const std::string& name : fDerived) {
      if (record.Contains(name)) record[name] = 1.0;
    }
    return fTransformStatus;
  }

 private:
  CallLog& fLog;
  std::vector<std::string> fDerived;
  KelCommon_1_3::KelStatus fTransformStatus;
};

}  // namespace KelTest
