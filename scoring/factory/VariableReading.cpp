#include <memory>

#include "scoring/common/KelTransformation.h"
#include "scoring/common/KelVarList.h"
#include "scoring/factory/ScoringModelAttr.h"
#include "scoring/factory/ScoringScorerFactory.h"
#include "scoring/pmml/ScoringPMMLParser.h"

namespace KelScoring_20 {

using KelCommon_1_3::KelStatus;
using KelTransformNS::KelTransformation;
using KelXML_1_3::KelVarList;

namespace {

KelStatus ReadVariables(KelVarList& varList, ScoringModelAttr& attr) {
  attr.documentStream.seekg(0);
  ScoringPMMLParser parser(attr.encoding);
  KelStatus status = parser.FillVarList(varList, attr.documentStream);
  if (!status.IsError() && attr.dictionaryStream != nullptr) {
    status = parser.FillVarList(varList, *attr.dictionaryStream);
  }
  return status;
}

// Names that the dictionary lacks are passed over; of two roles the later one stays.
void SetRoles(KelVarList& varList, const std::vector<std::string>& names, KelXML_1_3::VariableRole role) {
  for (const std::string& name : names) {
    const int index = varList.FindVariable(name);
    if (index >= 0) varList.SetVariableRole(index, role);
  }
}

std::istream& Rewound(std::stringstream& stream) {
  stream.clear();
  return stream.seekg(0);
}

KelStatus AddTexts(KelTransformation& transformation, ScoringModelAttr& attr) {
  const KelStatus status = transformation.AddPMML(Rewound(attr.documentStream), false);
  if (status.IsError() || attr.dictionaryStream == nullptr) return status;
  return transformation.AddTransformationDictionary(Rewound(*attr.dictionaryStream));
}

}  // namespace

KelStatus ScoringScorerFactory::ParseVarList(KelVarList& varList, ScoringModelAttr& attr) {
  if (!attr.documentStream.good()) return KelStatus();
  const KelStatus status = ReadVariables(varList, attr);
  SetRoles(varList, attr.predictedFields, KelXML_1_3::kRoleTarget);
  SetRoles(varList, attr.activeFields, KelXML_1_3::kRoleInput);
  SetRoles(varList, attr.derivedFields, KelXML_1_3::kRoleInput);
  return status.IsError() ? KelStatus(status.GetErrorCode(), true) : KelStatus();
}

KelTransformation* ScoringScorerFactory::GetTransformation(ScoringModelAttr& attr) {
  auto transformation = std::make_unique<KelTransformation>();
  return AddTexts(*transformation, attr).IsError() ? nullptr : transformation.release();
}

}  // namespace KelScoring_20
