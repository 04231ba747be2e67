#include "scoring/common/KelStatus.h"

#include "scoring/common/KelScoringConst.h"

namespace KelCommon_1_3 {

namespace Const = KelScoring_20::KelScoringConst;

const char* KelStatus::GetMessage(long code) noexcept {
  switch (code) {
    case 0:
      return "success";
    case Const::kXmlPlatformFailed:
      return "the XML parser could not be started";
    case Const::kXmlParseFailed:
      return "the PMML text could not be parsed";
    case Const::kWrongRootElement:
      return "the document has no root element PMML";
    case Const::kRequiredAttributeMissing:
      return "a required attribute is missing: name or optype of a field, or name of a parameter";
    case Const::kMalformedField:
      return "a field has an unknown dataType or a malformed Interval";
    case Const::kVariableRefused:
      return "a field could not be added to the variable list; its name is empty or stands twice";
    case Const::kFactoryHoldsModel:
      return "the factory already holds a model; detach it first";
    case Const::kFilesOrModelIDsMissing:
      return "the setting scoring_pmmlFiles names no file, or several without the setting scoring_modelIDs";
    case Const::kFileNotOpened:
      return "a PMML file could not be opened";
    case Const::kModelDllMissing:
      return "the setting modelDll is missing";
    case Const::kScoringDllMissing:
      return "the setting scoringDll is missing";
    case Const::kPrescanIncomplete:
      return "the document could not be scanned to its model element";
    case Const::kNothingToScoreWith:
      return "there is nothing to score with: no scorer, no member model, or none for the split key";
    case Const::kNoScorer:
      return "no scorer could be made for the document, or it has no model element";
    case Const::kNotImplemented:
      return "the scorer lacks this operation, or the model has no adjusted propensity network";
    case Const::kNoPropensity:
      return "no propensity can be computed from this record, target and prediction";
    case Const::kNetworkMalformed:
      return "the vectors of the adjusted propensity network differ in length";
    case Const::kSplitFieldMissing:
      return "a split field is missing in the input record";
    case Const::kStreamsWithoutModelIDs:
      return "not exactly one stream is given, without scoring_modelIDs or scoring_splitModel in the settings";
    // Of the default plug-in.
    case 270001:
      return "the input record lacks a derived field that the library was to compute";
    case 270002:
      return "there was not enough memory to score the record";
    default:
      return "unknown status code";
  }
}

}  // namespace KelCommon_1_3
