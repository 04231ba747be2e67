#pragma once

#include <string>

#include "scoring/common/IKelScore.h"
#include "scoring/common/KelExport.h"
#include "scoring/common/KelSettings.h"
#include "scoring/common/KelVarList.h"

namespace KelScoring_20 {

/// A base class for the scorers of plug-ins: it keeps the settings and the variables that a plug-in was given, and
/// answers what a derived scorer doesn't.
///
/// Settings are shared with the model, the variable list is the scorer's own: a scorer sees later changes of the
/// model's settings and none of its variables. The order of the virtual operations is part of the contract.
class KEL_EXPORT ScoringBaseScorer : public KelCommon_1_3::IKelScore {
 public:
  /// Refers to `settings`, which must outlive the scorer, and copies `varList`.
  ScoringBaseScorer(KelXML_1_3::KelSettings& settings, const KelXML_1_3::KelVarList& varList);
  /// Shares the settings object of `other` and copies its variable list.
  ScoringBaseScorer(const ScoringBaseScorer& other);
  ScoringBaseScorer& operator=(const ScoringBaseScorer&) = delete;
  ~ScoringBaseScorer() override;

  /// False.
  bool IsReady() override;
  /// To be replaced. The body touches neither record and gives 260016.
  KelCommon_1_3::KelStatus Score(const KelCommon_1_3::ValueRecord& in, KelCommon_1_3::ValueRecord& out) override = 0;
  /// To be replaced, as above.
  KelCommon_1_3::KelStatus Scorable(KelCommon_1_3::ValueRecord& record) override = 0;
  /// "UNKNOWN".
  std::string GetType() override;

  virtual KelXML_1_3::KelSettings& GetSettings();
  [[nodiscard]] virtual const KelXML_1_3::KelSettings& GetSettings() const;
  /// Assigns into the shared settings object, so the model's settings change, too.
  virtual void SetSettings(const KelXML_1_3::KelSettings& settings);
  virtual KelXML_1_3::KelVarList& GetVarList();
  [[nodiscard]] virtual const KelXML_1_3::KelVarList& GetVarList() const;
  /// Replaces the scorer's own list; the model's stays as it is.
  virtual void SetVarList(const KelXML_1_3::KelVarList& varList);

 protected:
  KelXML_1_3::KelSettings& fSettings;
  KelXML_1_3::KelVarList fVarList;
};

}  // namespace KelScoring_20
