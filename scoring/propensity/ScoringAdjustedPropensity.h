#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "scoring/common/KelStatus.h"

namespace KelCommon_1_3 {
class ValueRecord;
}
namespace KelXML_1_3 {
class KelSettings;
class KelVarList;
}  // namespace KelXML_1_3

namespace KelScoring_20 {

/// Turns the prediction for a binary flag target into propensities, numbers that always refer to the flag's true
/// category: the raw propensity, and the adjusted one, which is the raw one passed through a small neural network.
///
/// A model owns it; it refers to the model's settings and variable list, which outlive it. The computations change
/// nothing in it, so any number of threads may run them on records of their own once the network is read.
class ScoringAdjustedPropensity {
  KelXML_1_3::KelSettings& fSettings;
  KelXML_1_3::KelVarList& fVarList;

 public:
  ScoringAdjustedPropensity(KelXML_1_3::KelSettings& settings, KelXML_1_3::KelVarList& varList);
  virtual ~ScoringAdjustedPropensity();
  ScoringAdjustedPropensity(const ScoringAdjustedPropensity&) = delete;
  ScoringAdjustedPropensity& operator=(const ScoringAdjustedPropensity&) = delete;

  /// Reads the network from the document of an "adjustedPropensity" extension. The networks in it that are described
  /// as "standalone" or with the model's method of combining are taken together. False, and no network, for a null
  /// stream, a text that can't be read, or a network whose parts differ in length. Needs the XML platform.
  bool ReadNetwork(std::istream* stream);
  /// Splits `text` at each blank into `tokens`; a backslash keeps the blank or backslash behind it in the token.
  /// False for any other use of a backslash; `tokens` then ends with the unread rest.
  static bool SplitArray(std::vector<std::string>& tokens, const std::string& text);

  /// Writes "rawpropensity" from "prediction" and "probability". An error (260017) leaves the record unchanged: one of
  /// them is not there, the target is no binary flag with a true category, or the prediction is no category of it.
  KelCommon_1_3::KelStatus ComputeRawPropensity(KelCommon_1_3::ValueRecord& record) const;
  /// Writes "rawpropensity", then "adjustedpropensity". Besides the above: 260016 without a network, before anything is
  /// computed; 260023 for a network whose parts differ in length, with "rawpropensity" written.
  KelCommon_1_3::KelStatus ComputeAdjustedPropensity(KelCommon_1_3::ValueRecord& record) const;

  // One entry per hidden unit.
  std::vector<double> fHiddenWeights;  ///< of the raw propensity
  std::vector<double> fHiddenBiases;
  std::vector<double> fOutputWeights;  ///< of the unit at the output
  double fOutputBias = 0.0;
  bool fNetworkRead = false;  ///< whether `ReadNetwork` succeeded

 private:
  bool ReadNetworkFrom(std::istream& stream);
};

}  // namespace KelScoring_20
