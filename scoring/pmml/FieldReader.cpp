#include "scoring/pmml/FieldReader.h"

#include <memory>
#include <optional>
#include <tuple>
#include <utility>
#include <xercesc/dom/DOM.hpp>

#include "scoring/common/KelDiagnostics.h"
#include "scoring/common/KelScoringConst.h"

namespace KelScoring_20 {

using KelCommon_1_3::KelDiagnostics;
using KelCommon_1_3::KelStatus;
using KelXML_1_3::XMLElement;
using xercesc::DOMElement;
using xercesc::DOMNode;

using namespace KelScoringConst;

namespace {

using Reader = ScoringBaseParser;

enum StorageType : int { kInteger = 1, kReal = 2, kText = 3, kDate = 4, kTime = 5, kDateTime = 6 };

// Names of this library family, of the attribute and the extensions that a field may carry.
constexpr char kStorageTypeName[] = "x-storageType";
constexpr char kNumeric[] = "numeric";
constexpr char kFlagTrueName[] = "flagTypeTrueValue";
constexpr char kFormatName[] = "format";
constexpr char kStringLengthName[] = "stringLength";
constexpr char kDecimalsName[] = "decimals";
constexpr char kMissingValueName[] = "MissingValue";
constexpr char kInvalidLowName[] = "invalidRangeLower";
constexpr char kInvalidHighName[] = "invalidRangeUpper";

// "date", "time" and "dateTime" count as real: no date text is converted, so values must be plain numbers.
constexpr std::pair<const char*, StorageType> kDataTypes[] = {
    {kPmmlString, kText},
    {kPmmlDouble, kReal},
    {kPmmlInteger, kInteger},
    {kPmmlBoolean, kInteger},
    {kPmmlFloat, kReal},
    {kPmmlDate, kReal},
    {kPmmlTime, kReal},
    {kPmmlDateTime, kReal},
    {"dateDaysSince[0]", kDate},
    {"dateDaysSince[1960]", kDate},
    {kPmmlDateDaysSince1970, kDate},
    {"dateDaysSince[1980]", kDate},
    {kPmmlTimeSeconds, kTime},
    {"dateTimeSecondsSince[0]", kDateTime},
    {"dateTimeSecondsSince[1960]", kDateTime},
    {kPmmlDateTimeSecondsSince1970, kDateTime},
    {"dateTimeSecondsSince[1980]", kDateTime},
};

/// The storage that the field's attributes ask for; nothing for an unknown data type.
std::optional<StorageType> FindStorage(const DOMElement* element, bool isCategorical) {
  const XMLCh* storage = Reader::GetAttribute(element, kStorageTypeName);
  if (Reader::IsEqual(storage, kPmmlString)) return kText;
  if (Reader::IsEqual(storage, kNumeric)) return kReal;

  const XMLCh* dataType = Reader::GetAttribute(element, kPmmlDataType);
  if (!dataType) return isCategorical ? kText : kReal;
  for (const auto& [name, type] : kDataTypes) {
    if (Reader::IsEqual(dataType, name)) return type;
  }
  return std::nullopt;
}

/// The last extensions below a field that tell its flag and format; null where there is none.
struct DisplayTexts {
  const XMLCh* flagTrue = nullptr;
  const XMLCh* format = nullptr;
  const XMLCh* width = nullptr;
  const XMLCh* decimals = nullptr;
};

/// Takes note of an extension; a later one of the same name counts, even one without a value.
void NoteExtension(const DOMElement* extension, DisplayTexts& texts) {
  const XMLCh* name = Reader::GetAttribute(extension, kPmmlName);
  const XMLCh* value = Reader::GetAttribute(extension, kPmmlValue);
  if (Reader::IsEqual(name, kFlagTrueName)) {
    texts.flagTrue = value;
  } else if (Reader::IsEqual(name, kFormatName)) {
    texts.format = value;
  } else if (Reader::IsEqual(name, kPmmlWidth) || Reader::IsEqual(name, kStringLengthName)) {
    texts.width = value;
  } else if (Reader::IsEqual(name, kDecimalsName)) {
    texts.decimals = value;
  }
}

/// The node that follows in document order, as long as it lies below `root`; null at the end.
DOMNode* NextBelow(const DOMElement* root, const DOMNode* node) {
  if (DOMNode* child = node->getFirstChild()) return child;
  while (node != root && !node->getNextSibling()) node = node->getParentNode();
  return node == root ? nullptr : node->getNextSibling();
}

/// Extensions count at any depth below the field. The document's own search would do, but it keeps each list that it
/// gave, and finding the next one's place takes longer with every field.
DisplayTexts FindDisplayTexts(const DOMElement* element) {
  DisplayTexts texts;
  for (DOMNode* node = NextBelow(element, element); node; node = NextBelow(element, node)) {
    if (const DOMElement* extension = Reader::AsElement(node, kPmmlExtension)) NoteExtension(extension, texts);
  }
  return texts;
}

std::unique_ptr<XMLElement> MakeNumberFormat(const std::string& width, const std::string& decimals) {
  std::unique_ptr<XMLElement> format(XMLElement::Create("NumberFormat"));
  format->AddAttribute("name", "");
  format->AddAttribute("formatType", "standard");
  format->AddAttribute("width", width);
  format->AddAttribute("decimalPlaces", decimals);
  format->AddAttribute("decimalSymbol", "local");
  format->AddAttribute("groupingSymbol", "none");
  return format;
}

std::unique_ptr<XMLElement> MakeStringFormat(const std::string& width) {
  std::unique_ptr<XMLElement> format(XMLElement::Create("StringFormat"));
  format->AddAttribute("name", "");
  format->AddAttribute("hexadecimal", "false");
  format->AddAttribute("width", width);
  return format;
}

/// False for a margin that is there and no number; an absent one is open, whatever an earlier interval said.
bool ReadMargin(const DOMElement* interval, const char* name, double open, double& margin) {
  const int outcome = Reader::GetDoubleAttribute(interval, name, margin);
  if (outcome < 0) margin = open;
  return outcome <= 0;
}

bool IsValidProperty(const XMLCh* property) { return !property || Reader::IsEqual(property, kPmmlValid); }

}  // namespace

KelStatus FieldReader::Read(DOMElement* element, Field& field) {
  KelStatus status = ReadNames(element, field);
  if (status.IsOK()) status = ReadStorage(element, field);
  if (!status.IsOK()) return status;
  ReadFlagAndFormat(element, field);
  return ReadContent(element, field);
}

KelStatus FieldReader::ReadNames(const DOMElement* element, Field& field) {
  const XMLCh* name = Reader::GetAttribute(element, kPmmlName);
  if (!name) return Refuse(kRequiredAttributeMissing, field, "attribute name is missing");
  const XMLCh* displayName = Reader::GetAttribute(element, kPmmlDisplayName);
  field.name = fParser.ToString(name);
  field.label = displayName ? fParser.ToString(displayName) : field.name;

  const XMLCh* optype = Reader::GetAttribute(element, kPmmlOptype);
  if (!optype) return Refuse(kRequiredAttributeMissing, field, "attribute optype is missing");
  field.isCategorical = !Reader::IsEqual(optype, kPmmlContinuous);
  field.isOrdinal = Reader::IsEqual(optype, kPmmlOrdinal);
  return KelStatus();
}

KelStatus FieldReader::ReadStorage(const DOMElement* element, Field& field) {
  const std::optional<StorageType> storage = FindStorage(element, field.isCategorical);
  if (!storage) {
    const std::string dataType = fParser.ToString(Reader::GetAttribute(element, kPmmlDataType));
    return Refuse(kMalformedField, field, "dataType \"" + dataType + "\" is unknown");
  }
  field.storageType = *storage;
  field.isNumeric = *storage != kText;
  return KelStatus();
}

void FieldReader::ReadFlagAndFormat(const DOMElement* element, Field& field) {
  const DisplayTexts texts = FindDisplayTexts(element);
  if (texts.flagTrue) {
    field.flagTrueText = fParser.ToString(texts.flagTrue);
    double number = 0.0;
    if (Reader::ParseDouble(texts.flagTrue, number)) field.flagTrueNumber = number;
  }
  const std::string width = fParser.ToString(texts.width);
  if (field.storageType == kInteger || field.storageType == kReal) {
    if (texts.format || texts.width || texts.decimals) {
      field.format = MakeNumberFormat(width, fParser.ToString(texts.decimals));
    }
  } else if (field.storageType == kText && texts.width) {
    field.format = MakeStringFormat(width);
  }
}

KelStatus FieldReader::ReadContent(DOMElement* element, Field& field) {
  KelStatus status;
  for (DOMElement* child = Reader::GetFirstChildElement(element); child && status.IsOK();
       child = Reader::GetNextSiblingElement(child)) {
    if (Reader::TagNameEquals(child, kPmmlValueElement)) {
      ReadValue(child, field);
    } else if (field.isNumeric && Reader::TagNameEquals(child, kPmmlInterval)) {
      status = ReadInterval(child, field);
    } else if (Reader::TagNameEquals(child, kPmmlExtension)) {
      ReadExtension(child, field);
    }
  }
  return status;
}

// Intervals don't add up: the last one stands.
KelStatus FieldReader::ReadInterval(const DOMElement* interval, Field& field) {
  for (const auto& [name, open, margin] : {std::tuple{kPmmlLeftMargin, Field::kLowest, &field.intervalLow},
                                           std::tuple{kPmmlRightMargin, Field::kHighest, &field.intervalHigh}}) {
    if (ReadMargin(interval, name, open, *margin)) continue;
    const std::string text = fParser.ToString(Reader::GetAttribute(interval, name));
    return Refuse(kMalformedField, field, "Interval with the " + std::string(name) + " \"" + text + "\"");
  }
  if (field.intervalLow <= field.intervalHigh) return KelStatus();
  return Refuse(kMalformedField, field, "Interval whose leftMargin is above its rightMargin");
}

void FieldReader::ReadExtension(DOMElement* extension, Field& field) {
  const XMLCh* name = Reader::GetAttribute(extension, kPmmlName);
  if (Reader::IsEqual(name, kMissingValueName)) {
    for (DOMElement* value = Reader::GetFirstChildElement(extension, kPmmlValueElement); value;
         value = Reader::GetNextSiblingElement(value, kPmmlValueElement)) {
      ReadValue(value, field);
    }
  } else if (Reader::IsEqual(name, kInvalidLowName)) {
    Reader::GetDoubleAttribute(extension, kPmmlValue, field.invalidLow);
  } else if (Reader::IsEqual(name, kInvalidHighName)) {
    Reader::GetDoubleAttribute(extension, kPmmlValue, field.invalidHigh);
  }
}

// A value that is no number is passed over but leaves its label behind: values and labels then no longer pair up,
// and the labels are dropped with the field's others.
void FieldReader::ReadValue(const DOMElement* value, Field& field) {
  if (!value->hasAttributes()) return;
  const bool isValid = IsValidProperty(Reader::GetAttribute(value, kPmmlProperty));
  const XMLCh* text = Reader::GetAttribute(value, kPmmlValue);
  double number = 0.0;
  if (!field.isNumeric) {
    if (text) (isValid ? field.validStrings : field.missingStrings).push_back(fParser.ToString(text));
  } else if (text && Reader::ParseDouble(text, number)) {
    (isValid ? field.validNumbers : field.missingNumbers).push_back(number);
  }
  const XMLCh* display = Reader::GetAttribute(value, kPmmlDisplayValue);
  std::string label = fParser.ToString(display ? display : text);
  if (!label.empty()) (isValid ? field.validLabels : field.missingLabels).push_back(std::move(label));
}

KelStatus FieldReader::Refuse(long code, const Field& field, const std::string& reason) {
  const std::string name = field.name.empty() ? std::string("A field") : "Field \"" + field.name + "\"";
  KelDiagnostics::Report(name + " of the dictionary: " + reason);
  return KelStatus(code, false);
}

}  // namespace KelScoring_20
