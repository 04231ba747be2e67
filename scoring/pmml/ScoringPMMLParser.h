#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "scoring/common/KelExport.h"
#include "scoring/common/KelSettings.h"
#include "scoring/common/KelStatus.h"
#include "scoring/common/KelVarList.h"
#include "scoring/common/Value.h"
#include "scoring/pmml/ScoringBaseParser.h"

XERCES_CPP_NAMESPACE_BEGIN
class XercesDOMParser;
XERCES_CPP_NAMESPACE_END

namespace KelScoring_20 {

/// Reads the dictionaries of a PMML document, or of a piece of one, into a variable list, and parameters into
/// settings. Its static operations answer questions on variables and need neither object nor XML.
///
///     ScoringPMMLParser parser("UTF-8");
///     KelStatus status = parser.FillVarList(varList, stream);
///
/// A parser is short-lived and belongs to one thread at a time. The document that it read lives in it, so no element
/// of that may outlive it. The XML platform must be up when a parser with an encoding is made, and a platform that
/// the parser started itself goes down with it.
class KEL_EXPORT ScoringPMMLParser : public ScoringBaseParser {
 public:
  /// Text comes out in the platform's local code page.
  ScoringPMMLParser();
  /// Text comes out in that encoding; an empty name means "UTF-8".
  explicit ScoringPMMLParser(const std::string& encoding);
  ~ScoringPMMLParser() override;

  /// Adds the fields that are children of a "DataDictionary", a "TransformationDictionary" or a
  /// "LocalTransformations" element to `list`, in document order and without a role.
  ///
  /// Gives the parser's status if that isn't OK or `element` is null. Errors: 108 a field without "name" or "optype",
  /// 109 an unknown "dataType" or a malformed "Interval", 111 a variable that the list refused; the fields in front
  /// of the faulty one stay in `list`, and `KelDiagnostics` has the reason. `GetStatus` doesn't reflect this call.
  virtual KelCommon_1_3::KelStatus FillVarList(KelXML_1_3::KelVarList& list, xercesc::DOMElement* element);
  /// Parses the stream from its current position and adds the fields of its dictionaries to `list`, which is not
  /// cleared. The root is "PMML", with both dictionaries optional, or one of the three dictionary elements.
  ///
  /// Errors besides those of the other form: 103 the XML platform or its parser didn't start (this stays), 104 the
  /// text can't be parsed, 105 no root or one of another name. Only `XMLException` is caught.
  virtual KelCommon_1_3::KelStatus FillVarList(KelXML_1_3::KelVarList& list, std::istream& stream);
  /// Adds a setting for each "Parameter" child of `element` (null: none) that has a "value", a text, or a "ListValue",
  /// a list of texts. Nothing is cleared, and a name may repeat.
  ///
  /// Gives the parser's status, or 108 at a "Parameter" without "name": the settings in front of it stay.
  virtual KelCommon_1_3::KelStatus FillSettings(KelXML_1_3::KelSettings& settings, xercesc::DOMElement* element);

  /// The outcome of the last reading of a stream.
  [[nodiscard]] KelCommon_1_3::KelStatus GetStatus() const { return fStatus; }
  /// What the XML library said when the last reading of a stream failed, else empty.
  [[nodiscard]] std::string GetXercesMessage() const { return fXercesMessage; }
  /// Starts the XML platform and makes the DOM parser if the status is OK and there is none yet. Reading a stream
  /// does this by itself. Gives 103 on failure.
  KelCommon_1_3::KelStatus InitXerces();

  // Questions on variables. The answer for a null variable is given with each.

  /// The targets, in the order of the list.
  static std::vector<const KelXML_1_3::IKelVariable*> GetTargetVars(const KelXML_1_3::KelVarList& list);
  /// The categories with their labels; the text of a category without a label is its value. Empty for a null and for
  /// a continuous variable. No label is used when the encoder's values are fewer than the variable's categories.
  static std::vector<std::pair<KelCommon_1_3::Value, std::string>> GetValueLabels(const KelXML_1_3::IKelVariable* var);
  /// The categories, numbers or texts by the variable's level. Empty for a null and for a continuous variable.
  static std::vector<KelCommon_1_3::Value> GetValues(const KelXML_1_3::IKelVariable* var);
  /// Whether the value equals a category, declared missing or not. False for a null and for a continuous variable.
  static bool IsValidCatValue(const KelXML_1_3::IKelVariable* var, const KelCommon_1_3::Value& value);
  /// Whether the value is null, the missing mark (of a variable of numbers) or declared missing. True for a null
  /// variable.
  static bool IsMissingValue(const KelXML_1_3::IKelVariable* var, const KelCommon_1_3::Value& value);
  /// Whether the value isn't missing and is a category or, of a continuous variable, a number, whatever the
  /// variable's range. False for a null variable.
  static bool IsValidValue(const KelXML_1_3::IKelVariable* var, const KelCommon_1_3::Value& value);
  /// Whether the variable is categorical with two categories. False for a null variable.
  static bool IsFlagVariable(const KelXML_1_3::IKelVariable* var);

 protected:
  /// Finds the first "Discretize" of the field among the derived fields that are children of `dictionary`, which must
  /// not be null. False, with both vectors empty, if there is none.
  ///
  /// `boundaries` gets the left margin of the first interval and the right margins of all, with the extreme finite
  /// doubles for open ends: bins are taken to adjoin. A "Discretize" without intervals gives the single boundary 0.
  /// `labels` gets the value of each bin that has one.
  bool SetBinsFrTransDict(xercesc::DOMElement* dictionary, const std::string& fieldName,
                          std::vector<double>& boundaries, std::vector<std::string>& labels) const;

 private:
  void Parse(std::istream& stream);
  xercesc::DOMElement* FindRoot();
  void ReadDictionaries(KelXML_1_3::KelVarList& list, xercesc::DOMElement* root);

  KelCommon_1_3::KelStatus fStatus;
  std::unique_ptr<xercesc::XercesDOMParser> fParser;  // holds the last document; made by InitXerces
  std::string fXercesMessage;
  std::string fEncoding;
};

}  // namespace KelScoring_20
