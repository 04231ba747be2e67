#pragma once

#include <memory>
#include <string>
#include <vector>

#include "scoring/factory/ScoringFactory.h"
#include "scoring/model/ScoringModel.h"
#include "tools/kelscore/Arguments.h"
#include "tools/kelscore/Console.h"
#include "tools/kelscore/ModelField.h"

namespace kelscore {

/// A model that is ready to score, with the factory that keeps the XML platform up.
class LoadedModel {
 public:
  /// Creates the model. Tells warnings; throws `Failure` (no model) with file, status and reason.
  LoadedModel(const ModelArguments& arguments, Console& console);

  [[nodiscard]] KelScoring_20::ScoringModel& Model() const { return *fModel; }
  [[nodiscard]] const std::string& Path() const { return fPath; }
  /// The data fields that the document declares.
  [[nodiscard]] const DataTypes& DataFields() const { return fDataFields; }

 private:
  void Create(const ModelArguments& arguments);
  [[nodiscard]] std::string FailureReason() const;

  std::string fPath;
  DataTypes fDataFields;
  KelScoring_20::ScoringFactory fFactory;
  std::unique_ptr<KelScoring_20::ScoringModel> fModel;  // goes before the factory
};

/// The outputs that a model announces. Throws `Failure` (no model) when it can't tell them.
[[nodiscard]] KelCommon_1_3::ValueRecord AnnouncedOutputs(const LoadedModel& model);

/// The categories of the model's target, as text; none for a continuous or unknown target.
[[nodiscard]] std::vector<std::string> TargetCategories(const KelScoring_20::ScoringModel& model);

}  // namespace kelscore
