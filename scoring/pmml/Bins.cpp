// How `ScoringPMMLParser` finds the bins of a continuous field.

#include <xercesc/dom/DOM.hpp>

#include "scoring/common/KelScoringConst.h"
#include "scoring/pmml/Field.h"
#include "scoring/pmml/ScoringPMMLParser.h"

namespace KelScoring_20 {

using xercesc::DOMElement;

using namespace KelScoringConst;

namespace {

using Reader = ScoringBaseParser;

/// The margin, or the open end for one that is absent or no number.
double MarginOr(const DOMElement* interval, const char* name, double open) {
  double margin = open;
  Reader::GetDoubleAttribute(interval, name, margin);
  return margin;
}

DOMElement* FindDiscretizeIn(DOMElement* derivedField, const std::string& fieldName) {
  for (DOMElement* discretize = Reader::GetFirstChildElement(derivedField, kPmmlDiscretize); discretize;
       discretize = Reader::GetNextSiblingElement(discretize, kPmmlDiscretize)) {
    const XMLCh* field = Reader::GetAttribute(discretize, kPmmlField);
    if (field && Reader::IsEqual(field, fieldName)) return discretize;
  }
  return nullptr;
}

DOMElement* FindDiscretize(DOMElement* dictionary, const std::string& fieldName) {
  for (DOMElement* derivedField = Reader::GetFirstChildElement(dictionary, kPmmlDerivedField); derivedField;
       derivedField = Reader::GetNextSiblingElement(derivedField, kPmmlDerivedField)) {
    if (DOMElement* discretize = FindDiscretizeIn(derivedField, fieldName)) return discretize;
  }
  return nullptr;
}

/// Only the first interval's left margin is read: bins are taken to adjoin.
void AppendBoundaries(DOMElement* bin, std::vector<double>& boundaries) {
  for (DOMElement* interval = Reader::GetFirstChildElement(bin, kPmmlInterval); interval;
       interval = Reader::GetNextSiblingElement(interval, kPmmlInterval)) {
    if (boundaries.size() == 1) boundaries.front() = MarginOr(interval, kPmmlLeftMargin, Field::kLowest);
    boundaries.push_back(MarginOr(interval, kPmmlRightMargin, Field::kHighest));
  }
}

}  // namespace

bool ScoringPMMLParser::SetBinsFrTransDict(DOMElement* dictionary, const std::string& fieldName,
                                           std::vector<double>& boundaries, std::vector<std::string>& labels) const {
  boundaries.clear();
  labels.clear();
  DOMElement* discretize = FindDiscretize(dictionary, fieldName);
  if (!discretize) return false;
  boundaries.push_back(0.0);  // the place of the first left margin
  for (DOMElement* bin = GetFirstChildElement(discretize, kPmmlDiscretizeBin); bin;
       bin = GetNextSiblingElement(bin, kPmmlDiscretizeBin)) {
    if (const XMLCh* binValue = GetAttribute(bin, kPmmlBinValue)) labels.push_back(ToString(binValue));
    AppendBoundaries(bin, boundaries);
  }
  return true;
}

}  // namespace KelScoring_20
