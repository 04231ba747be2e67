#include "scoring/common/KelTransformation.h"

#include <string_view>
#include <utility>

#include "components/kelparsexml/ElementTree.h"
#include "components/kelparsexml/PmmlVersion.h"
#include "components/keltransform/Attributes.h"
#include "components/keltransform/LayoutCache.h"
#include "components/keltransform/TransformPlan.h"
#include "components/keltransform/TransformStage.h"
#include "scoring/common/KelDiagnostics.h"
#include "scoring/common/KelScoringConst.h"
#include "scoring/common/ValueRecord.h"

namespace KelTransformNS {

using KelCommon_1_3::KelDiagnostics;
using KelCommon_1_3::KelStatus;
using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;
using KelXML_1_3::Element;
using KelXML_1_3::ElementTree;
using KelXML_1_3::PmmlError;

namespace KelScoringConst = KelScoring_20::KelScoringConst;

namespace {

// The edge behind which there are exceptions: runs one step of reading, whose failure has the status `code`.
template <typename Step>
KelStatus Attempt(long code, const Step& step) {
  try {
    step();
    return KelStatus();
  } catch (const PmmlError& error) {
    KelDiagnostics::Report(error.what());
    return KelStatus(code, false);
  }
}

KelStatus ReadTree(std::istream& stream, std::string_view rootName, std::unique_ptr<ElementTree>& tree) {
  const KelStatus status = Attempt(KelScoringConst::kXmlParseFailed, [&] { tree = ElementTree::Read(stream); });
  if (!status.IsOK()) return status;
  return Attempt(KelScoringConst::kWrongRootElement, [&] {
    const Element root = tree->Root();
    if (!root.Is(rootName)) throw root.Error("the root must be " + Quoted(rootName));
  });
}

}  // namespace

struct KelTransformation::Impl {
  using Plans = LayoutCache<TransformPlan>;

  KelStatus Add(const Element& dataDictionary, const Element& transformations, std::string_view version) {
    return Attempt(KelScoringConst::kMalformedField, [&] {
      auto stage = BuildStage(stages, dataDictionary, transformations, version, pool);
      auto newPlans = std::make_unique<Plans>();  // the old ones know nothing of the stage
      stages.push_back(std::move(stage));
      plans = std::move(newPlans);
    });
  }

  TextPool pool;
  TransformStages stages;
  std::unique_ptr<Plans> plans = std::make_unique<Plans>();
};

KelTransformation::KelTransformation() : fImpl(std::make_unique<Impl>()) {}
KelTransformation::~KelTransformation() = default;

KelStatus KelTransformation::AddPMML(std::istream& stream, bool /*flag*/) {
  std::unique_ptr<ElementTree> tree;
  const KelStatus status = ReadTree(stream, KelScoringConst::kPmmlPMML, tree);
  if (!status.IsOK()) return status;
  const Element root = tree->Root();
  const KelStatus onceEach = Attempt(KelScoringConst::kMalformedField, [&] {
    RefuseSecond(root, {KelScoringConst::kPmmlDataDictionary, KelScoringConst::kPmmlTransformationDictionary});
  });
  if (!onceEach.IsOK()) return onceEach;
  return fImpl->Add(root.Child(KelScoringConst::kPmmlDataDictionary),
                    root.Child(KelScoringConst::kPmmlTransformationDictionary),
                    KelXML_1_3::FindPmmlVersion(root).value_or(""));
}

KelStatus KelTransformation::AddTransformationDictionary(std::istream& stream) {
  std::unique_ptr<ElementTree> tree;
  const KelStatus status = ReadTree(stream, KelScoringConst::kPmmlTransformationDictionary, tree);
  return status.IsOK() ? fImpl->Add(Element(), tree->Root(), "") : status;
}

KelStatus KelTransformation::GetDerivedVariableInfo(ValueRecord& record, bool /*flag*/) const {
  for (const auto& stage : fImpl->stages) {
    for (const TransformStage::Derived& derived : stage->derived) record.Add(derived.key, Value::NULL_VALUE);
  }
  return KelStatus();
}

KelStatus KelTransformation::Transform(ValueRecord& record) const {
  const auto bind = [&] { return std::make_unique<const TransformPlan>(fImpl->stages, fImpl->pool, record); };
  fImpl->plans->Get(record.Layout(), bind)->Run(record);
  return KelStatus();
}

}  // namespace KelTransformNS
