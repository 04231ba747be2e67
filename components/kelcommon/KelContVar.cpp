#include "components/kelcommon/KelContVar.h"

#include <algorithm>
#include <utility>

namespace KelXML_1_3 {

KelContVar::KelContVar(std::string name, std::string label, ContinuousRange range, VariableRole role)
    : fCommon(std::move(name), std::move(label), role, std::make_unique<NumericEncoder>()), fRange(std::move(range)) {}

KelContVar::~KelContVar() = default;

MeasureLevel KelContVar::GetMeasureLevel() const { return kContinuous; }

const std::string& KelContVar::GetName() const { return fCommon.fName; }

const std::string& KelContVar::GetLabel() const { return fCommon.fLabel; }

int KelContVar::GetCategoryCount() const {
  const int binCount = fRange.fBinned ? fRange.fBinCount : 0;
  return std::max(binCount, fCommon.fEncoder->GetValueCount());
}

VariableRole KelContVar::GetVariableRole() const { return fCommon.fRole; }

void KelContVar::SetVariableRole(VariableRole role) { fCommon.fRole = role; }

void KelContVar::SetStorageType(int storageType) { fCommon.fStorageType = storageType; }

void KelContVar::SetFormat(XMLElement* format) { fCommon.TakeFormat(format); }

IKelEncoder* KelContVar::GetEncoder() { return fCommon.fEncoder.get(); }

const IKelEncoder* KelContVar::GetEncoder() const { return fCommon.fEncoder.get(); }

int KelContVar::GetStorageType() const { return fCommon.fStorageType; }

const XMLElement* KelContVar::GetFormat() const { return fCommon.fFormat.get(); }

bool KelContVar::GetRange(double& low, double& high) const {
  low = fRange.fMinimum;
  high = fRange.fMaximum;
  return true;
}

std::unique_ptr<IKelVariable> KelContVar::Clone() const { return std::make_unique<KelContVar>(*this); }

}  // namespace KelXML_1_3
