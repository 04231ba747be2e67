#pragma once

#include <iosfwd>
#include <map>
#include <string>
#include <vector>
#include <xercesc/util/XercesDefs.hpp>

#include "scoring/common/KelExport.h"
#include "scoring/common/KelScoringConst.h"
#include "scoring/common/KelStatus.h"

XERCES_CPP_NAMESPACE_BEGIN
class AbstractDOMParser;
class DOMDocument;
class DOMElement;
XERCES_CPP_NAMESPACE_END

namespace KelCommon_1_3 {
class IKelScore;
}
namespace KelTransformNS {
class KelTransformation;
}
namespace KelXML_1_3 {
class KelSettings;
class KelVarList;
}  // namespace KelXML_1_3

namespace KelScoring_20 {

class ScoringModelAttr;

/// The steps of a model's creation, as static functions: name tables, prescan, choice and loading of a plug-in,
/// variable list, transformation.
///
/// They share no state and take no lock, so threads may call them on objects of their own. All but the first three
/// need the XML platform, which is up as long as a `ScoringFactory` lives.
class KEL_EXPORT ScoringScorerFactory {
 public:
  ScoringScorerFactory() = delete;

  /// Reads "scoringDll", model element or "Torvane" -> base name of a plug-in. 260006, and an empty map, without it.
  static KelCommon_1_3::KelStatus GetScoringNames(std::map<std::string, std::string>& names,
                                                  KelXML_1_3::KelSettings& settings);
  /// Reads the names of the entries of "modelDll", the elements that count as a model, in their order. 260005, and an
  /// empty list, without it.
  static KelCommon_1_3::KelStatus GetModelNames(std::vector<std::string>& names, KelXML_1_3::KelSettings& settings);
  /// The kind of the model element of exactly that name; 0 for any other name.
  static KelScoringConst::ModelType GetModelType(const std::string& name);

  /// The scorer for a document, null if there is none; the caller owns it.
  ///
  /// A document of exactly the version "versionSupported" goes to the plug-in that "scoringDll" has for its model
  /// element, any other one to that of "Torvane". The plug-in is asked by way of the stream, which it gets as an
  /// earlier pass left it, and then, after a parse of the whole document, by way of the DOM. It may change `settings`
  /// and `varList`, which must outlive the scorer. What it throws goes on to the caller.
  static KelCommon_1_3::IKelScore* GetScorer(KelXML_1_3::KelSettings& settings, KelXML_1_3::KelVarList& varList,
                                             std::istream& stream);
  /// Asks the plug-in of that base name by way of the stream. It stays loaded until the process ends.
  static KelCommon_1_3::IKelScore* GetScorer(const std::string& name, KelXML_1_3::KelSettings& settings,
                                             KelXML_1_3::KelVarList& varList, std::istream& stream);
  /// Asks the plug-in of that base name by way of a parsed document and its model element.
  static KelCommon_1_3::IKelScore* GetScorer(const std::string& name, KelXML_1_3::KelSettings& settings,
                                             KelXML_1_3::KelVarList& varList, xercesc::DOMDocument* document,
                                             xercesc::DOMElement* model);

  /// The prescan: reads the document from the stream's position as far as it needs, and fills `attr`. A warning
  /// (260007) leaves `attr` untouched: no "PMML" root, or the part that was read is no well-formed document.
  /// `encoding` is that of the texts in `attr`.
  static KelCommon_1_3::KelStatus GetModelAttr(std::istream& stream, const std::vector<std::string>& modelNames,
                                               ScoringModelAttr& attr, const std::string& encoding);
  /// Parses the whole stream, from its start, with a parser that the caller made and that owns the document. `model`
  /// is the first element of the first of `modelNames` that occurs at any depth. 260010, and both null: the document
  /// isn't well-formed, its root isn't "PMML", or no such element occurs.
  static KelCommon_1_3::KelStatus GetDOMDocument(const std::vector<std::string>& modelNames, std::istream& stream,
                                                 xercesc::AbstractDOMParser* parser, xercesc::DOMDocument*& document,
                                                 xercesc::DOMElement*& model);

  /// Adds the variables of the reduced document in `attr` to `varList` and sets the roles of those that the mining
  /// schema names. A warning with the reader's code tells that reading failed; roles are set all the same.
  static KelCommon_1_3::KelStatus ParseVarList(KelXML_1_3::KelVarList& varList, ScoringModelAttr& attr);
  /// The transformation of the reduced document in `attr`, null if it is refused; the caller owns it.
  static KelTransformNS::KelTransformation* GetTransformation(ScoringModelAttr& attr);
};

}  // namespace KelScoring_20
