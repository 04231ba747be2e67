#pragma once

#include <string>

#include "scoring/common/KelStatus.h"
#include "scoring/pmml/Field.h"
#include "scoring/pmml/ScoringBaseParser.h"

namespace KelScoring_20 {

/// Reads the declaration of one field of a dictionary, "DataField" and "DerivedField" alike. Expressions are not
/// looked at.
class FieldReader {
 public:
  /// The parser turns the document's text into narrow text; it must outlive the reader.
  explicit FieldReader(const ScoringBaseParser& parser) : fParser(parser) {}

  /// Fills a fresh `field`. Errors: 108 no name or no optype, 109 an unknown data type or a malformed interval; the
  /// field is of no use then, and `KelDiagnostics` has the reason.
  KelCommon_1_3::KelStatus Read(xercesc::DOMElement* element, Field& field);

 private:
  KelCommon_1_3::KelStatus ReadNames(const xercesc::DOMElement* element, Field& field);
  KelCommon_1_3::KelStatus ReadStorage(const xercesc::DOMElement* element, Field& field);
  KelCommon_1_3::KelStatus ReadContent(xercesc::DOMElement* element, Field& field);
  KelCommon_1_3::KelStatus ReadInterval(const xercesc::DOMElement* interval, Field& field);
  void ReadFlagAndFormat(const xercesc::DOMElement* element, Field& field);
  void ReadExtension(xercesc::DOMElement* extension, Field& field);
  void ReadValue(const xercesc::DOMElement* value, Field& field);
  KelCommon_1_3::KelStatus Refuse(long code, const Field& field, const std::string& reason);

  const ScoringBaseParser& fParser;
};

}  // namespace KelScoring_20
