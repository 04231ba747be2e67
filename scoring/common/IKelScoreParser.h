#pragma once

#include <iosfwd>
#include <xercesc/util/XercesDefs.hpp>

#include "scoring/common/KelExport.h"

XERCES_CPP_NAMESPACE_BEGIN
class DOMDocument;
class DOMElement;
XERCES_CPP_NAMESPACE_END

namespace KelCommon_1_3 {
class IKelScore;
}
namespace KelXML_1_3 {
class KelSettings;
class KelVarList;
}  // namespace KelXML_1_3

namespace KelScoring_20 {

/// What a plug-in's `GetScoreParser` gives: a maker of scorers, used for one call and destroyed by the library.
///
/// The order of the virtual operations is part of the contract between library and plug-ins.
class KEL_EXPORT IKelScoreParser {
 public:
  virtual ~IKelScoreParser() = default;

  /// Makes a scorer from a parsed document, or gives null. `settings` and `varList` are the model's own; the plug-in
  /// may change them, and they outlive the scorer. `document` and `model` die right after the call. The caller owns
  /// the result.
  virtual KelCommon_1_3::IKelScore* CreateScorer(KelXML_1_3::KelSettings& settings, KelXML_1_3::KelVarList& varList,
                                                 xercesc::DOMDocument* document, xercesc::DOMElement* model) = 0;
  /// Makes a scorer from the host's stream, or gives null. The stream comes as an earlier pass left it: a plug-in
  /// that reads the document clears its state and positions it.
  virtual KelCommon_1_3::IKelScore* CreateScorer(KelXML_1_3::KelSettings& settings, KelXML_1_3::KelVarList& varList,
                                                 std::istream& stream) = 0;
};

/// The type of the one symbol that a plug-in exports, under the name "GetScoreParser". The caller owns the result.
using GetScoreParserFunction = IKelScoreParser* (*)();

}  // namespace KelScoring_20
