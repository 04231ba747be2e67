#include "scoring/factory/ScoringModelAttr.h"

namespace KelScoring_20 {

namespace {

// The target reads the copy from its start, whatever had been read from either stream before.
void CopyText(std::stringstream& target, const std::stringstream& source) {
  target.clear();
  target.str(source.str());
}

void CopyStream(std::stringstream*& target, const std::stringstream* source) {
  if (source == nullptr) {
    delete target;
    target = nullptr;
    return;
  }
  if (target == nullptr) target = new std::stringstream;
  CopyText(*target, *source);
}

}  // namespace

ScoringModelAttr::ScoringModelAttr() = default;

ScoringModelAttr::~ScoringModelAttr() {
  delete dictionaryStream;
  dictionaryStream = nullptr;
  delete propensityStream;
  propensityStream = nullptr;
}

ScoringModelAttr& ScoringModelAttr::operator=(const ScoringModelAttr& other) {
  if (this == &other) return *this;
  type = other.type;
  encoding = other.encoding;
  version = other.version;
  modelType = other.modelType;
  modelName = other.modelName;
  functionName = other.functionName;
  algorithmName = other.algorithmName;
  predictedFields = other.predictedFields;
  activeFields = other.activeFields;
  derivedFields = other.derivedFields;
  CopyText(documentStream, other.documentStream);
  CopyStream(dictionaryStream, other.dictionaryStream);
  hasTransformations = other.hasTransformations;
  CopyStream(propensityStream, other.propensityStream);
  multipleModelMethod = other.multipleModelMethod;
  modelID = other.modelID;
  applicationName = other.applicationName;
  applicationVersion = other.applicationVersion;
  return *this;
}

std::string ScoringModelAttr::GetApplicationName() const { return applicationName; }

void ScoringModelAttr::SetApplicationName(const std::string& name) { applicationName = name; }

std::string ScoringModelAttr::GetApplicationVersion() const { return applicationVersion; }

void ScoringModelAttr::SetApplicationVersion(const std::string& newVersion) { applicationVersion = newVersion; }

}  // namespace KelScoring_20
