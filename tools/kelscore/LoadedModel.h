#pragma once

#include <memory>
#include <string>
#include <vector>

#include "scoring/common/KelSettings.h"
#include "scoring/common/ValueRecord.h"
#include "scoring/factory/ScoringFactory.h"
#include "scoring/model/ScoringModel.h"
#include "tools/kelscore/Arguments.h"
#include "tools/kelscore/Console.h"
#include "tools/kelscore/Members.h"
#include "tools/kelscore/ModelDocument.h"
#include "tools/kelscore/ModelField.h"

namespace kelscore {

/// A model that is ready to score, with the factory that keeps the XML platform up.
class LoadedModel {
 public:
  /// Creates the model. Tells warnings on `console`, which must outlive it; throws `Failure` (no model) with file,
  /// status and reason.
  LoadedModel(const ModelArguments& arguments, Console& console);

  [[nodiscard]] KelScoring_20::ScoringModel& Model() const { return *fModel; }
  /// What messages call the model: its document, or what it is made of.
  [[nodiscard]] const std::string& Name() const { return fName; }
  /// The members of a composite model; none for a single document.
  [[nodiscard]] const std::vector<Member>& Members() const { return fMembers; }
  [[nodiscard]] const std::vector<std::string>& SplitFields() const { return fArguments.splitFields; }
  /// The documents, one for a single one.
  [[nodiscard]] std::vector<std::string> Paths() const;
  /// The fields that the model reads from a table; empty for a model that knows no variables.
  [[nodiscard]] std::vector<ModelField> Fields() const;
  /// What the document, the first one of a composite, declares of its data fields.
  [[nodiscard]] const DataFields& Declared() const { return fDataFields; }
  /// The categories of the target, of the first member in a composite, as text; none for a continuous target.
  [[nodiscard]] std::vector<std::string> TargetCategories() const;
  /// Reads the documents once more for what the model itself doesn't tell.
  [[nodiscard]] std::vector<ModelDocument> ReadDocuments() const;

 private:
  void Create();
  void CreateFromStreams();
  void ReadFirstDocument();
  [[noreturn]] void Fail(const KelCommon_1_3::KelStatus& status) const;
  [[nodiscard]] std::string FailureReason() const;
  [[nodiscard]] std::vector<ModelField> FieldsOfDocuments() const;

  Console& fConsole;
  ModelArguments fArguments;
  std::string fName;
  KelScoring_20::ScoringFactory fFactory;
  KelXML_1_3::KelSettings fSettings;
  std::vector<std::string> fModelElements;
  std::vector<Member> fMembers;                         // of a composite
  DataFields fDataFields;                               // of the first document
  std::unique_ptr<KelScoring_20::ScoringModel> fModel;  // goes before the factory
};

/// The outputs that a model announces. Throws `Failure` (no model) when it can't tell them.
[[nodiscard]] KelCommon_1_3::ValueRecord AnnouncedOutputs(const LoadedModel& model);

}  // namespace kelscore
