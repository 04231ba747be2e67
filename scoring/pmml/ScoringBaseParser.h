#pragma once

#include <memory>
#include <string>
#include <xercesc/util/XercesDefs.hpp>

#include "scoring/common/KelExport.h"
#include "scoring/text/ScoringTranscoder.h"

XERCES_CPP_NAMESPACE_BEGIN
class DOMDocument;
class DOMElement;
class DOMNode;
class DOMNodeList;
XERCES_CPP_NAMESPACE_END

namespace KelScoring_20 {

/// Base of the DOM readers: navigation by narrow names, two strict number parsers, and text of the document as narrow
/// text of a chosen encoding.
///
///     for (auto* field = GetFirstChildElement(dictionary, "DataField"); field;
///          field = GetNextSiblingElement(field, "DataField"))
///       names.push_back(ToString(GetAttribute(field, "name")));
///
/// The XML platform must be up. The static operations may be called from any thread on documents of its own; an
/// object belongs to one thread at a time. Elements, lists and texts that are given belong to their document.
class KEL_EXPORT ScoringBaseParser {
 public:
  /// Without a transcoder: `ToString` converts to the platform's local code page.
  ScoringBaseParser();
  virtual ~ScoringBaseParser();
  ScoringBaseParser(const ScoringBaseParser&) = delete;
  ScoringBaseParser& operator=(const ScoringBaseParser&) = delete;

  /// Replaces the transcoder. Empty means "UTF-8"; with a name that the platform doesn't serve, `ToString` gives
  /// empty texts.
  void CreateTranscoder(const std::string& encoding);
  void FreeTranscoder();
  /// The text in the chosen encoding; empty for a null text.
  [[nodiscard]] std::string ToString(const XMLCh* text) const;

  // Navigation. Names are compared exactly with the names as they stand in the document, prefix included. A null
  // argument gives null, false or -1.

  static xercesc::DOMElement* GetFirstChildElement(xercesc::DOMNode* node, const std::string& name);
  static xercesc::DOMElement* GetFirstChildElement(xercesc::DOMNode* node);
  static xercesc::DOMElement* GetNextSiblingElement(xercesc::DOMNode* node, const std::string& name);
  static xercesc::DOMElement* GetNextSiblingElement(xercesc::DOMNode* node);
  /// All descendants of that name, in document order.
  static xercesc::DOMNodeList* GetElementsByTagName(const xercesc::DOMElement* element, const std::string& name);
  static xercesc::DOMNodeList* GetElementsByTagName(const xercesc::DOMDocument* document, const std::string& name);
  /// The attribute's value, null if it is absent; an empty one gives an empty text. A node that is no element has
  /// none.
  static const XMLCh* GetAttribute(const xercesc::DOMElement* element, const std::string& name);
  static const XMLCh* GetAttribute(const xercesc::DOMNode* node, const std::string& name);
  /// 0 if the attribute is a number, -1 if it is absent, 1 if it is malformed. `value` changes only at 0.
  static int GetIntAttribute(const xercesc::DOMElement* element, const std::string& name, int& value);
  static int GetDoubleAttribute(const xercesc::DOMElement* element, const std::string& name, double& value);
  /// The node itself if it is an element (of that name), else null.
  static xercesc::DOMElement* AsElement(xercesc::DOMNode* node);
  static xercesc::DOMElement* AsElement(xercesc::DOMNode* node, const std::string& name);
  static bool TagNameEquals(const xercesc::DOMElement* element, const std::string& name);
  /// Exact; a null text equals the empty name.
  static bool IsEqual(const XMLCh* text, const std::string& name);

  // Strict numbers. The whole text must be a number: no white space, no words, no hexadecimal form, a digit behind a
  // point. `text` must not be null; false leaves `value` alone. The result is that of `atoi` and `atof` in the "C"
  // locale, overflow included, whatever the host's locale.

  static bool ParseInt(const XMLCh* text, int& value);
  static bool ParseDouble(const XMLCh* text, double& value);

 private:
  std::unique_ptr<ScoringTranscoder> fTranscoder;
};

}  // namespace KelScoring_20
