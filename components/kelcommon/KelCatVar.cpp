#include "scoring/common/KelCatVar.h"

#include <algorithm>
#include <utility>

#include "components/kelcommon/VariableCommon.h"

namespace KelXML_1_3 {
namespace {

std::unique_ptr<BaseEncoder> EncoderOf(MeasureLevel level) {
  if (level == kCategoricalString) return std::make_unique<StringEncoder>();
  return std::make_unique<NumericEncoder>();
}

}  // namespace

struct KelCatVar::Common : VariableCommon {
  using VariableCommon::VariableCommon;
};

KelCatVar::KelCatVar(std::string name, std::string label, int categoryCount, MeasureLevel level, VariableRole role)
    : fCommon(std::make_unique<Common>(std::move(name), std::move(label), role, EncoderOf(level))),
      fGivenCategoryCount(categoryCount),
      fLevel(level) {}

KelCatVar::KelCatVar(const KelCatVar& other)
    : IKelVariable(other),
      fCommon(std::make_unique<Common>(*other.fCommon)),
      fGivenCategoryCount(other.fGivenCategoryCount),
      fLevel(other.fLevel),
      fBinaryFlag(other.fBinaryFlag),
      fBinaryFlagTrueIndex(other.fBinaryFlagTrueIndex),
      fOrdinalFlag(other.fOrdinalFlag) {}

KelCatVar::~KelCatVar() = default;

void KelCatVar::SetBinaryFlag(bool flag, int trueIndex) noexcept {
  fBinaryFlag = flag;
  fBinaryFlagTrueIndex = trueIndex;
}

MeasureLevel KelCatVar::GetMeasureLevel() const { return fLevel; }

const std::string& KelCatVar::GetName() const { return fCommon->fName; }

const std::string& KelCatVar::GetLabel() const { return fCommon->fLabel; }

int KelCatVar::GetCategoryCount() const { return std::max(fGivenCategoryCount, fCommon->fEncoder->GetValueCount()); }

VariableRole KelCatVar::GetVariableRole() const { return fCommon->fRole; }

void KelCatVar::SetVariableRole(VariableRole role) { fCommon->fRole = role; }

void KelCatVar::SetStorageType(int storageType) { fCommon->fStorageType = storageType; }

void KelCatVar::SetFormat(XMLElement* format) { fCommon->TakeFormat(format); }

IKelEncoder* KelCatVar::GetEncoder() { return fCommon->fEncoder.get(); }

const IKelEncoder* KelCatVar::GetEncoder() const { return fCommon->fEncoder.get(); }

int KelCatVar::GetStorageType() const { return fCommon->fStorageType; }

const XMLElement* KelCatVar::GetFormat() const { return fCommon->fFormat.get(); }

bool KelCatVar::GetRange(double& /*low*/, double& /*high*/) const { return false; }

std::unique_ptr<IKelVariable> KelCatVar::Clone() const { return std::make_unique<KelCatVar>(*this); }

}  // namespace KelXML_1_3
