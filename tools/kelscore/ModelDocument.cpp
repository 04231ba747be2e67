#include "tools/kelscore/ModelDocument.h"

#include <fstream>
#include <memory>

#include "scoring/common/KelTransformation.h"
#include "scoring/common/ValueRecord.h"
#include "scoring/factory/ScoringModelAttr.h"
#include "scoring/factory/ScoringScorerFactory.h"
#include "tools/kelscore/PmmlDocument.h"

namespace kelscore {
namespace {

using KelCommon_1_3::ValueRecord;
using KelScoring_20::ScoringModelAttr;
using KelScoring_20::ScoringScorerFactory;

std::vector<std::string> DerivedFields(ScoringModelAttr& head) {
  if (!head.hasTransformations) return {};
  const std::unique_ptr<KelTransformNS::KelTransformation> transformation(
      ScoringScorerFactory::GetTransformation(head));
  if (!transformation) return {};
  ValueRecord derived;
  transformation->GetDerivedVariableInfo(derived, false);
  return derived.Names(true);
}

void AddHead(ScoringModelAttr& head, ModelDocument& document) {
  document.element = head.modelType;
  document.name = head.modelName;
  document.id = head.modelID;
  document.function = head.functionName;
  document.algorithm = head.algorithmName;
  document.pmmlVersion = head.version;
  document.application = head.applicationName;
  document.applicationVersion = head.applicationVersion;
  document.ensembleMethod = head.multipleModelMethod;
  ScoringScorerFactory::ParseVarList(document.variables, head);
  document.derivedFields = DerivedFields(head);
}

}  // namespace

ModelDocument ReadModelDocument(const std::string& path, const std::vector<std::string>& modelElements) {
  ModelDocument document;
  document.path = path;
  std::ifstream stream(path, std::ios::binary);
  ScoringModelAttr head;
  if (ScoringScorerFactory::GetModelAttr(stream, modelElements, head, "UTF-8").IsOK()) AddHead(head, document);
  stream.clear();
  stream.seekg(0);
  document.dataFields = ReadDataFields(stream);
  return document;
}

}  // namespace kelscore
