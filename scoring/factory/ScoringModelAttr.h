#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "scoring/common/KelExport.h"
#include "scoring/common/KelScoringConst.h"

namespace KelScoring_20 {

/// What the prescan found in one document: kind of model, version, the parts that its fields play, who produced it,
/// and two texts cut out of the document.
///
/// A record lives for one creation and belongs to one thread. The fields are plain: the classes that fill and read
/// the record reach them directly.
class KEL_EXPORT ScoringModelAttr {
 public:
  ScoringModelAttr();
  ScoringModelAttr(const ScoringModelAttr&) = delete;
  /// A deep, independent copy: each stream of the target reads from the start of a copy of the source's text.
  ScoringModelAttr& operator=(const ScoringModelAttr& other);

  virtual ~ScoringModelAttr();
  [[nodiscard]] virtual std::string GetApplicationName() const;
  virtual void SetApplicationName(const std::string& name);
  [[nodiscard]] virtual std::string GetApplicationVersion() const;
  virtual void SetApplicationVersion(const std::string& newVersion);

  [[nodiscard]] std::string GetEncoding() const { return encoding; }
  [[nodiscard]] std::string GetVersion() const { return version; }
  [[nodiscard]] std::string GetModelTypeName() const { return modelType; }
  [[nodiscard]] std::string GetAlgorithmName() const { return algorithmName; }
  [[nodiscard]] std::string GetMultipleModelMethod() const { return multipleModelMethod; }
  [[nodiscard]] std::string GetModelID() const { return modelID; }

  KelScoringConst::ModelType type = KelScoringConst::UnknownModel;  ///< follows from `modelType`
  std::string encoding = "UTF-8";                                   ///< of the text in `documentStream`
  std::string version;                                              ///< of PMML
  std::string modelType;                                            ///< name of the model's element
  std::string modelName;
  std::string functionName;
  std::string algorithmName;
  std::vector<std::string> predictedFields;       ///< targets of the mining schema
  std::vector<std::string> activeFields;          ///< inputs of the mining schema
  std::vector<std::string> derivedFields;         ///< derived fields that the model wants in its input record
  std::stringstream documentStream;               ///< the reduced document: dictionaries, no model body
  std::stringstream* dictionaryStream = nullptr;  ///< owned; a further dictionary, which the prescan never makes
  bool hasTransformations = false;                ///< the document has a transformation dictionary
  std::stringstream* propensityStream = nullptr;  ///< owned; the "adjustedPropensity" extension, null without one
  std::string multipleModelMethod;                ///< how an ensemble combines its segments
  std::string modelID;
  std::string applicationName;
  std::string applicationVersion;
};

}  // namespace KelScoring_20
