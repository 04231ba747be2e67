#include "tools/kelscore/OutputLayout.h"

#include <algorithm>

#include "scoring/common/KelMV.h"
#include "scoring/common/KelScoringConst.h"
#include "tools/kelscore/CsvText.h"
#include "tools/kelscore/Failure.h"

namespace kelscore {
namespace {

using KelCommon_1_3::KelMV;
using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;
namespace Const = KelScoring_20::KelScoringConst;

std::string Joined(const std::vector<std::string>& names) {
  std::string joined;
  for (const std::string& name : names) joined += (joined.empty() ? "" : ", ") + name;
  return joined;
}

// A number that equals the missing mark is a missing number.
void AppendPlain(const Value& value, char delimiter, std::string& to) {
  if (value.GetType() == Value::kText) {
    AppendField(to, value.Text(), delimiter);
  } else if (value.GetType() == Value::kNumber && value.GetReal() != KelMV::gMissingValue) {
    AppendNumber(to, value.GetReal());
  }
}

}  // namespace

OutputLayout::OutputLayout(const ValueRecord& scorable, const std::vector<std::string>& chosen) {
  for (const std::string& name : chosen.empty() ? scorable.Names(true) : chosen) {
    const int announced = scorable.IndexOf(name);
    if (announced < 0)
      throw Failure(kBadUsage, "the model has no output " + Quoted(name) + "; it has " + Joined(scorable.Names(true)));
    Output output;
    output.name = name;
    output.position = fPrototype.Add(name, Value::NULL_VALUE);
    Announce(scorable.At(announced), output);
    fOutputs.push_back(std::move(output));
  }
  // The library computes propensities from these two, which it finds in the same record.
  if (fPrototype.Contains(Const::kOutputRawPropensity) || fPrototype.Contains(Const::kOutputAdjustedPropensity)) {
    AddToRecord(Const::kOutputPrediction);
    AddToRecord(Const::kOutputProbability);
  }
}

void OutputLayout::AddToRecord(const std::string& name) {
  if (!fPrototype.Contains(name)) fPrototype.Add(name, Value::NULL_VALUE);
}

void OutputLayout::Announce(const Value& value, Output& output) {
  const ValueRecord* members = value.Members();
  if (!members) return;
  output.announced = true;
  for (int i = 0; i < members->Size(); ++i) {
    Output member;
    member.name = members->NameAt(i);
    Announce(members->At(i), member);
    output.members.push_back(std::move(member));
  }
}

void OutputLayout::AddCategories(const std::vector<std::string>& categories) {
  for (Output& output : fOutputs) {
    if (output.name != Const::kOutputProbCategory || output.announced) continue;
    for (const std::string& category : categories) {
      Output member;
      member.name = category;
      output.members.push_back(std::move(member));
    }
  }
}

void OutputLayout::LearnFrom(const ValueRecord& scored) {
  for (Output& output : fOutputs) Learn(scored.At(output.position), output);
}

void OutputLayout::Learn(const Value& value, Output& output) {
  const ValueRecord* members = value.Members();
  if (!members) return;
  for (int i = 0; i < members->Size(); ++i) {
    const std::string& name = members->NameAt(i);
    auto member = std::find_if(output.members.begin(), output.members.end(),
                               [&name](const Output& known) { return known.name == name; });
    if (member == output.members.end()) {
      if (output.announced) continue;
      member = output.members.insert(member, Output());
      member->name = name;
    }
    Learn(members->At(i), *member);
  }
}

std::vector<std::string> OutputLayout::Columns() const {
  std::vector<std::string> columns;
  for (const Output& output : fOutputs) AddColumns(output, "", columns);
  return columns;
}

void OutputLayout::AddColumns(const Output& output, const std::string& prefix, std::vector<std::string>& columns) {
  if (output.members.empty()) {
    columns.push_back(prefix + output.name);
    return;
  }
  for (const Output& member : output.members) AddColumns(member, prefix + output.name + ".", columns);
}

bool OutputLayout::Append(const ValueRecord& scored, char delimiter, std::string& to, std::string& reason) {
  return std::all_of(fOutputs.begin(), fOutputs.end(), [&](Output& output) {
    return AppendValue(scored.At(output.position), output, delimiter, to, reason);
  });
}

void OutputLayout::AppendEmpty(char delimiter, std::string& to) const {
  for (const Output& output : fOutputs) AppendNulls(output, delimiter, to);
}

void OutputLayout::AppendNulls(const Output& output, char delimiter, std::string& to) {
  if (output.members.empty()) to.push_back(delimiter);
  for (const Output& member : output.members) AppendNulls(member, delimiter, to);
}

bool OutputLayout::AppendValue(const Value& value, Output& output, char delimiter, std::string& to,
                               std::string& reason) {
  if (value.IsNull()) {
    AppendNulls(output, delimiter, to);
    return true;
  }
  const ValueRecord* members = value.Members();
  if (!members && output.members.empty()) {
    to.push_back(delimiter);
    AppendPlain(value, delimiter, to);
    return true;
  }
  if (!members) {
    reason = "output " + Quoted(output.name) + " has no members in this row, and columns for members";
    return false;
  }
  if (output.layout != members->Layout()) BindMembers(*members, output);
  for (const int other : output.others) {
    if (members->At(other).IsNull()) continue;
    reason = "output " + Quoted(output.name) + " has a member " + Quoted(members->NameAt(other)) +
             " in this row, which has no column";
    return false;
  }
  return std::all_of(output.members.begin(), output.members.end(), [&](Output& member) {
    return AppendValue(members->At(member.position), member, delimiter, to, reason);
  });
}

void OutputLayout::BindMembers(const ValueRecord& members, Output& output) {
  output.layout = members.Layout();
  for (Output& member : output.members) member.position = members.IndexOf(member.name);
  output.others.clear();
  for (int i = 0; i < members.Size(); ++i) {
    const bool hasColumn = std::any_of(output.members.begin(), output.members.end(),
                                       [i](const Output& member) { return member.position == i; });
    if (!hasColumn) output.others.push_back(i);
  }
}

}  // namespace kelscore
