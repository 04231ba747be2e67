#include "scoring/common/KelVarList.h"

#include <algorithm>
#include <utility>

#include "components/kelcommon/Hashing.h"
#include "components/kelcommon/KelContVar.h"

namespace KelXML_1_3 {
namespace {

constexpr int kNoIndex = -1;

void AddValue(IKelEncoder& encoder, const std::string& value, const std::string& label) {
  encoder.AddStringValue(value, label);
}

void AddValue(IKelEncoder& encoder, double value, const std::string& label) { encoder.AddNumericValue(value, label); }

template <typename T>
std::unique_ptr<KelCatVar> MakeCatVar(const std::string& name, const std::string& label, MeasureLevel level,
                                      const std::vector<T>& values, const std::vector<std::string>& labels,
                                      VariableRole role) {
  const std::string noLabel;
  auto variable = std::make_unique<KelCatVar>(name, label, 0, level, role);
  for (std::size_t i = 0; i < values.size(); ++i) {
    AddValue(*variable->GetEncoder(), values[i], i < labels.size() ? labels[i] : noLabel);
  }
  return variable;
}

}  // namespace

std::size_t KelVarList::NameHash::operator()(const std::string& name) const { return KelCommon_1_3::HashBytes(name); }

KelVarList::KelVarList() = default;

KelVarList::KelVarList(const KelVarList& other) : fIndexByName(other.fIndexByName) {
  fVariables.reserve(other.fVariables.size());
  for (const auto& variable : other.fVariables) fVariables.push_back(variable->Clone());
}

KelVarList::KelVarList(KelVarList&&) noexcept = default;

KelVarList& KelVarList::operator=(const KelVarList& other) { return *this = KelVarList(other); }

KelVarList& KelVarList::operator=(KelVarList&&) noexcept = default;

KelVarList::~KelVarList() = default;

int KelVarList::AddCatVar(const std::string& name, const std::string& label, const std::vector<std::string>& values,
                          const std::vector<std::string>& labels, VariableRole role) {
  return Append(MakeCatVar(name, label, kCategoricalString, values, labels, role));
}

int KelVarList::AddCatVar(const std::string& name, const std::string& label, const std::vector<double>& values,
                          const std::vector<std::string>& labels, VariableRole role) {
  return Append(MakeCatVar(name, label, kCategoricalNumeric, values, labels, role));
}

int KelVarList::AddCatVar(const std::string& name, const std::string& label, const std::vector<std::string>& values,
                          VariableRole role) {
  return AddCatVar(name, label, values, {}, role);
}

int KelVarList::AddCatVar(const std::string& name, const std::string& label, const std::vector<double>& values,
                          VariableRole role) {
  return AddCatVar(name, label, values, {}, role);
}

int KelVarList::AddCatVar(const std::string& name, const std::string& label, int categoryCount, MeasureLevel level,
                          VariableRole role) {
  return Append(std::make_unique<KelCatVar>(name, label, categoryCount, level, role));
}

int KelVarList::AddContVar(const std::string& name, const std::string& label, VariableRole role) {
  return Append(std::make_unique<KelContVar>(name, label, ContinuousRange(), role));
}

int KelVarList::AddContVar(const std::string& name, const std::string& label, double minimum, double maximum,
                           VariableRole role, bool binned, int binCount) {
  return Append(
      std::make_unique<KelContVar>(name, label, ContinuousRange{minimum, maximum, binned, binCount, {}}, role));
}

int KelVarList::AddContVar(const std::string& name, const std::string& label, double minimum, double maximum,
                           const std::vector<double>& cutPoints, bool binned, VariableRole role) {
  const int binCount = static_cast<int>(cutPoints.size()) + 1;
  return Append(
      std::make_unique<KelContVar>(name, label, ContinuousRange{minimum, maximum, binned, binCount, cutPoints}, role));
}

int KelVarList::Append(std::unique_ptr<IKelVariable> variable) {
  if (variable->GetName().empty()) return kNoIndex;
  const int index = Size();
  fVariables.push_back(nullptr);  // what can fail comes first, so that list and index stay in step
  try {
    if (fIndexByName.emplace(variable->GetName(), index).second) {
      fVariables.back() = std::move(variable);
      return index;
    }
  } catch (...) {
    fVariables.pop_back();
    throw;
  }
  fVariables.pop_back();
  return kNoIndex;
}

IKelVariable* KelVarList::GetVarAt(int index) {
  return index >= 0 && index < Size() ? fVariables[static_cast<std::size_t>(index)].get() : nullptr;
}

const IKelVariable* KelVarList::GetVarAt(int index) const { return const_cast<KelVarList*>(this)->GetVarAt(index); }

IKelVariable* KelVarList::GetVariable(const std::string& name) { return GetVarAt(FindVariable(name)); }

const IKelVariable* KelVarList::GetVariable(const std::string& name) const { return GetVarAt(FindVariable(name)); }

int KelVarList::FindVariable(const std::string& name) const {
  const auto found = fIndexByName.find(name);
  return found == fIndexByName.end() ? kNoIndex : found->second;
}

void KelVarList::SetVariableRole(int index, VariableRole role) {
  if (IKelVariable* const variable = GetVarAt(index)) variable->SetVariableRole(role);
}

// Asked for each record that wants a propensity, so it makes no list.
IKelVariable* KelVarList::GetTargetRespVariable() {
  const auto isTarget = [](const auto& variable) { return variable->GetVariableRole() == kRoleTarget; };
  const auto target = std::find_if(fVariables.begin(), fVariables.end(), isTarget);
  return target == fVariables.end() ? nullptr : target->get();
}

const IKelVariable* KelVarList::GetTargetRespVariable() const {
  return const_cast<KelVarList*>(this)->GetTargetRespVariable();
}

IKelEncoder* KelVarList::GetEncoderAt(int index) {
  IKelVariable* const variable = GetVarAt(index);
  return variable != nullptr ? variable->GetEncoder() : nullptr;
}

std::vector<int> KelVarList::GetTargetIndices() const {
  std::vector<int> targets;
  for (int index = 0; index < Size(); ++index) {
    if (GetVarAt(index)->GetVariableRole() == kRoleTarget) targets.push_back(index);
  }
  return targets;
}

}  // namespace KelXML_1_3
