#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "scoring/common/KelExport.h"
#include "scoring/common/KelStatus.h"

namespace KelXML_1_3 {
class KelSettings;
}

namespace KelScoring_20 {

class ScoringModel;

/// Makes models from PMML documents, and keeps the XML platform up as long as it lives.
///
///     ScoringFactory factory;
///     factory.CreateScoringModel(settings, stream);
///     if (factory.GetStatus().IsError()) ...                       // before Detach, which clears the status
///     std::unique_ptr<ScoringModel> model(factory.Detach());
///
/// A factory holds at most one model and owns it until `Detach`; a detached model lives on without the factory. One
/// thread uses a factory at a time; factories on several threads don't disturb each other.
///
/// Every creation gives the model, which the factory holds, or null. Null: `GetStatus` has the code and
/// `KelDiagnostics::Last()` the reason, if there is more to say. A warning (260007) with a model: the document couldn't
/// be described, but a plug-in scores it; then there is no metadata, transformation or propensity. What a plug-in
/// throws goes on to the caller and leaves the factory empty and usable.
///
/// A creation refuses with 260002 if a model is held, which stays, and with 103 if the XML platform never started. It
/// writes "scoring_version", "scoring_modelType" and "scoring_multipleModelMethod" into `settings`, anew for each
/// document.
class KEL_EXPORT ScoringFactory {
 public:
  /// Starts the XML platform. A failure shows in `GetStatus` (103).
  ScoringFactory();
  /// Destroys a held model, then ends the XML platform.
  ~ScoringFactory();
  ScoringFactory(const ScoringFactory&) = delete;
  ScoringFactory& operator=(const ScoringFactory&) = delete;

  /// A model of the one document in `stream`, read from its position. 260005, 260006: no "modelDll", no "scoringDll";
  /// 260010: no plug-in makes a scorer.
  ScoringModel* CreateScoringModel(KelXML_1_3::KelSettings& settings, std::istream& stream);
  /// The same from a file. 260004: it can't be opened.
  ScoringModel* CreateScoringModel(KelXML_1_3::KelSettings& settings, const std::string& path);
  /// From the files in "scoring_pmmlFiles": one file gives its model; otherwise "scoring_modelIDs" names the members of
  /// a multi model, a file for each. 260003: the one file name is empty, or identifiers are missing, or files for them;
  /// 260004: a file can't be opened.
  ///
  /// With one file, does nothing as long as an earlier status is not OK: `Detach` clears it.
  ScoringModel* CreateScoringModel(KelXML_1_3::KelSettings& settings);
  /// From streams, which stay the caller's: "scoring_splitModel" describes a split model, else "scoring_modelIDs" names
  /// the members of a multi model, with the stream at the identifier's position; else one stream gives its model.
  /// 260028: none of these, or a stream is missing.
  ScoringModel* CreateScoringModel(KelXML_1_3::KelSettings& settings, const std::vector<std::stringstream*>& streams);

  /// Takes ownership of `model`, null for none; a model that is held is destroyed first. The status stays.
  void Attach(ScoringModel* model);
  /// Hands the held model to the caller, null if there is none, and clears the status.
  ScoringModel* Detach();
  /// The outcome of the last operation.
  [[nodiscard]] KelCommon_1_3::KelStatus GetStatus() const { return fStatus; }

 private:
  KelCommon_1_3::KelStatus InitXerces();
  void TermXerces();

  bool MayCreate();

  KelCommon_1_3::KelStatus fStatus;
  std::unique_ptr<ScoringModel> fModel;
  bool fXercesInitialized = false;
};

}  // namespace KelScoring_20
