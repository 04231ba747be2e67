#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "scoring/factory/ScoringModelAttr.h"
#include "scoring/pmml/ScoringSAX2Handler.h"
#include "scoring/text/ScoringStr.h"

namespace KelScoring_20 {

/// The handler of the prescan: one pass that describes the first model of a document that the library can serve, and
/// writes two texts, a reduced document without model bodies and the "adjustedPropensity" extension of the model.
///
/// It keeps no element stack: it follows a fixed sequence of landmarks with one position, and ends the pass by
/// throwing `kPassFinished` at a "Segmentation" behind the model's schema or at the end of the root. A document
/// without a "PMML" root ends without a throw, and then the record isn't to be used.
class ScoringPMMLSAX2Handler : public ScoringSAX2Handler {
 public:
  /// `modelNames` are the elements that count as a model, the wanted one first; they must outlive the handler.
  /// `encoding` names the narrow encoding for version, names of fields, method and application.
  ScoringPMMLSAX2Handler(const std::vector<std::string>& modelNames, const std::string& encoding);
  ~ScoringPMMLSAX2Handler() override;

  /// What the pass found. The handler owns it.
  [[nodiscard]] const ScoringModelAttr& GetModelAttr() const { return fModelAttr; }

  void startElement(const XMLCh* const uri, const XMLCh* const localname, const XMLCh* const qname,
                    const xercesc::Attributes& attrs) override;
  void endElement(const XMLCh* const uri, const XMLCh* const localname, const XMLCh* const qname) override;
  void writeChars(const XMLByte* const bytes, const XMLSize_t count, xercesc::XMLFormatter* const formatter) override;

 private:
  /// Where the document stands. The numbers are those of `fState`.
  enum Position : std::int32_t {
    Start = 0,     ///< before the root
    InPmml = 1,    ///< among the children of the root; also in "Header" behind "Application"
    InHeader = 2,  ///< in "Header" before "Application"
    InApplication = 3,
    InMiningBuildTask = 6,  ///< copied
    AfterMiningBuildTask = 7,
    InDataDictionary = 8,                ///< copied
    AfterDataDictionary = 9,             ///< looking for a model
    InTransformationDictionary = 10,     ///< copied
    AfterTransformationDictionary = 11,  ///< looking for a model
    InModel = 12,                        ///< in the chosen model before "MiningSchema"
    InPropensityExtension = 13,          ///< copied, to the propensity text
    InMiningSchema = 14,
    InDerivedFields = 15,
    AfterMiningSchema = 17,  ///< looking for "Segmentation"
    AtSegmentation = 18,     ///< the pass has ended
    AtDocumentEnd = 27,      ///< the pass has ended
  };

  [[nodiscard]] Position At() const { return static_cast<Position>(fState); }
  void GoTo(Position position);
  /// Where text goes at this position, null for nowhere.
  [[nodiscard]] std::ostream* Output();
  [[nodiscard]] bool CopiesTags() const;

  void PassLandmark(const XMLCh* qname, const xercesc::Attributes& attrs);
  void EnterRoot(const xercesc::Attributes& attrs);
  void EnterChildOfRoot(const XMLCh* qname);
  void EnterApplication(const xercesc::Attributes& attrs);
  void EnterDataDictionary(const XMLCh* qname);
  void EnterTransformationsOrModel(const XMLCh* qname, const xercesc::Attributes& attrs);
  void ChooseModel(const XMLCh* qname, const xercesc::Attributes& attrs);
  void EnterChildOfModel(const XMLCh* qname, const xercesc::Attributes& attrs);
  void EnterPropensityExtension();
  void EnterChildOfMiningSchema(const XMLCh* qname, const xercesc::Attributes& attrs);
  void ListField(const XMLCh* qname, const xercesc::Attributes& attrs);
  void EnterSegmentation(const xercesc::Attributes& attrs);
  void LeaveElement(const XMLCh* qname);
  void LeaveMiningSchema();

  void WriteRootLine();
  void WriteStartTag(const XMLCh* qname, const xercesc::Attributes& attrs);
  void WriteEndTag(const XMLCh* qname);

  const std::vector<std::string>& fModelNames;
  ScoringModelAttr fModelAttr;
  std::stringstream* fPropensityStream = nullptr;  // belongs to fModelAttr
  std::vector<ScoringStr> fWideModelNames;         // fModelNames, to compare with
};

}  // namespace KelScoring_20
