#include "tests/support/ScriptedScorer.h"

#include <gtest/gtest.h>
#include <utility>

namespace KelTest {

using KelCommon_1_3::KelStatus;
using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;

namespace {

constexpr long kUnexpectedCall = -1;

KelStatus Unexpected(const std::string& call) {
  ADD_FAILURE() << "unexpected call: " << call;
  return KelStatus(kUnexpectedCall, false);
}

}  // namespace

ScriptedScorer::ScriptedScorer(CallLog& log, std::string name) : fLog(log), fName(std::move(name)) {}

ScriptedScorer::~ScriptedScorer() { fLog.push_back("~" + fName); }

ScriptedScorer& ScriptedScorer::OnScore(ScoreScript script) {
  fScore = std::move(script);
  return *this;
}

ScriptedScorer& ScriptedScorer::OnScorable(ScorableScript script) {
  fScorable = std::move(script);
  return *this;
}

bool ScriptedScorer::IsReady() { return Unexpected(fName + ".IsReady").IsOK(); }

KelStatus ScriptedScorer::Score(const ValueRecord& in, ValueRecord& out) {
  fLog.push_back(fName + ".Score");
  return fScore ? fScore(in, out) : Unexpected(fLog.back());
}

KelStatus ScriptedScorer::Scorable(ValueRecord& record) {
  fLog.push_back(fName + ".Scorable");
  return fScorable ? fScorable(record) : Unexpected(fLog.back());
}

std::string ScriptedScorer::GetType() { return fName; }

ScriptedScorer::ScoreScript Writes(std::string name, Value value, KelStatus status) {
  return [name = std::move(name), value = std::move(value), status](const ValueRecord&, ValueRecord& out) {
    if (out.Contains(name)) out[name] = value;
    return status;
  };
}

ScriptedScorer::ScorableScript Offers(std::vector<std::string> names, KelStatus status) {
  return [names = std::move(names), status](ValueRecord& record) {
    for (const std::string& name : names) record.Add(name, Value::NULL_VALUE);
    return status;
  };
}

}  // namespace KelTest
