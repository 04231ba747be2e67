#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "scoring/common/KelExport.h"
#include "scoring/common/KelScoringConst.h"
#include "scoring/common/KelStatus.h"

namespace KelCommon_1_3 {
class ValueRecord;
}
namespace KelXML_1_3 {
class KelSettings;
class KelVarList;
}  // namespace KelXML_1_3
namespace KelTransformNS {
class KelTransformation;
}

namespace KelScoring_20 {

class ScoringAdjustedPropensity;

/// One loaded model, as a host holds it. Made by `ScoringFactory`; whoever detached it from there destroys it. It
/// outlives its factory.
///
///     ValueRecord outputs;
///     model->Scorable(outputs);                    // which outputs there are
///     ValueRecord out;
///     out.Add("prediction", Value::NULL_VALUE);    // those that are wanted
///     KelStatus status = model->Score(in, out);    // for each record
///
/// Threads: `Score` and `Scorable` change nothing in a model, so several threads may score on one, each on records of
/// its own, as far as its scorer allows that. (A split model remembers where its split fields stand; threads may race
/// on that.) A call that changes a field must not run beside any other call.
///
/// The order of the virtual operations is part of the contract with hosts.
class KEL_EXPORT ScoringModel {
 public:
  ScoringModel();
  ScoringModel(const ScoringModel&);
  ScoringModel& operator=(const ScoringModel&);
  virtual ~ScoringModel();

  /// Always null: models aren't copied.
  [[nodiscard]] virtual ScoringModel* Clone() const = 0;
  /// Scores the fields of `in` and fills those names that `out` holds. Derived fields are added to `in`, where they
  /// stay. An error leaves in both records what was written up to then.
  virtual KelCommon_1_3::KelStatus Score(KelCommon_1_3::ValueRecord& in, KelCommon_1_3::ValueRecord& out) = 0;
  /// Adds the names of all outputs that the model can give to `record`.
  virtual KelCommon_1_3::KelStatus Scorable(KelCommon_1_3::ValueRecord& record) = 0;

  // The references live as long as the model.
  virtual KelXML_1_3::KelSettings& GetSettings() = 0;
  [[nodiscard]] virtual const KelXML_1_3::KelSettings& GetSettings() const = 0;
  virtual KelXML_1_3::KelVarList& GetVarList() = 0;
  [[nodiscard]] virtual const KelXML_1_3::KelVarList& GetVarList() const = 0;

  /// What the scorer calls itself, "UNKNOWN" without one.
  [[nodiscard]] virtual std::string GetModelType() const = 0;
  /// The kind of model as a number.
  [[nodiscard]] virtual KelScoringConst::ModelType GetType() const = 0;
  virtual void SetType(KelScoringConst::ModelType type) = 0;
  /// The name of the model's PMML element.
  [[nodiscard]] virtual std::string GetSubType() const = 0;
  virtual void SetSubType(const std::string& subType) = 0;
  /// The algorithm that the model element names.
  [[nodiscard]] virtual std::string GetAlgName() const = 0;
  virtual void SetAlgName(const std::string& algName) = 0;
  /// For the host's own use: a factory leaves it empty.
  [[nodiscard]] virtual std::string GetVersion() const = 0;
  virtual void SetVersion(const std::string& version) = 0;

  /// The transformation that computes derived fields, null without one; the model owns it.
  [[nodiscard]] virtual const KelTransformNS::KelTransformation* GetTransformation() const = 0;
  /// Takes ownership; a transformation that is held is destroyed.
  virtual void SetTransformation(KelTransformNS::KelTransformation* transformation) = 0;
  /// The names of the derived fields that are computed into each input record.
  [[nodiscard]] virtual const std::vector<std::string>& GetDerivedFields() const = 0;
  virtual void SetDerivedFields(const std::vector<std::string>& derivedFields) = 0;
  /// True: every derived field that the transformation knows is computed, whatever the list says.
  virtual void SetNeedDerivedPredictor(bool need) = 0;
  [[nodiscard]] virtual bool NeedDerivedPredictor() const = 0;

  /// The evaluator of propensities, null without one; the model owns it.
  [[nodiscard]] virtual ScoringAdjustedPropensity* GetAdjustedPropensity() const = 0;
  /// Takes ownership. An evaluator that is held is NOT destroyed: whoever replaces it does that.
  virtual void SetAdjustedPropensity(ScoringAdjustedPropensity* adjustedPropensity) = 0;

  /// The model's identifier in its document, and the application that wrote it.
  [[nodiscard]] virtual std::string GetModelID() const = 0;
  virtual void SetModelID(const std::string& modelID) = 0;
  [[nodiscard]] virtual std::string GetAppName() const = 0;
  virtual void SetAppName(const std::string& appName) = 0;
  [[nodiscard]] virtual std::string GetAppVersion() const = 0;
  virtual void SetAppVersion(const std::string& appVersion) = 0;

  /// The status of the construction, which is OK. What `Score` and `Scorable` return doesn't show here.
  [[nodiscard]] virtual KelCommon_1_3::KelStatus GetStatus() const = 0;
  /// Writes nothing.
  virtual void Display(std::ostream& stream) const = 0;
};

}  // namespace KelScoring_20
