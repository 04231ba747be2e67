#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <xercesc/framework/XMLFormatter.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>

#include "scoring/common/KelExport.h"
#include "scoring/text/ScoringTranscoder.h"

namespace KelScoring_20 {

/// Base of the SAX2 handlers: an output formatter that writes UTF-8 to the handler itself, a transcoder for text of
/// the document, and a way to end a parse by throwing a `HandlerState`.
///
/// By itself it takes part in a parse and throws away what it formats. It serves one parse on one thread, as content
/// handler and error handler; the XML platform must be up from its construction to its destruction.
class KEL_EXPORT ScoringSAX2Handler : public xercesc::DefaultHandler, public xercesc::XMLFormatTarget {
 public:
  /// Thrown by value out of a parse, to be caught by value. In `fState` the same type counts the positions of a
  /// derived handler, which have no relation to these.
  enum HandlerState : std::int32_t {
    kPassFinished = 1,         ///< the handler has all it wants
    kParserReportedError = 3,  ///< what the parser said reaches nobody
    kParserReportedFatalError = 4,
  };

  /// `encoding` names the narrow encoding for text of the document: empty means "UTF-8", and one that the platform
  /// doesn't serve makes all such text empty.
  explicit ScoringSAX2Handler(const std::string& encoding);
  ~ScoringSAX2Handler() override;
  ScoringSAX2Handler(const ScoringSAX2Handler&) = delete;
  ScoringSAX2Handler& operator=(const ScoringSAX2Handler&) = delete;

  /// Formats the text with the escapes of character data, unless `fDropsText` says that it is of no use.
  void characters(const XMLCh* const chars, const XMLSize_t length) override;
  void endElement(const XMLCh* const uri, const XMLCh* const localname, const XMLCh* const qname) override;
  void ignorableWhitespace(const XMLCh* const chars, const XMLSize_t length) override;
  void processingInstruction(const XMLCh* const target, const XMLCh* const data) override;
  void startElement(const XMLCh* const uri, const XMLCh* const localname, const XMLCh* const qname,
                    const xercesc::Attributes& attrs) override;
  void warning(const xercesc::SAXParseException& exception) override;
  /// Throws `kParserReportedError`.
  void error(const xercesc::SAXParseException& exception) override;
  /// Throws `kParserReportedFatalError`.
  void fatalError(const xercesc::SAXParseException& exception) override;
  /// Everything that the formatter produces passes through here.
  void writeChars(const XMLByte* const bytes, const XMLSize_t count, xercesc::XMLFormatter* const formatter) override;

  /// Whether the text is exactly the name, widened in the platform's local code page.
  static bool IsEqual(const XMLCh* text, const std::string& name);
  /// Whether the text, narrowed by the transcoder, is the name; without a transcoder as above.
  static bool IsEqual(ScoringTranscoder* transcoder, const XMLCh* text, const std::string& name);
  /// The attribute of that qualified name, null if there is none. It belongs to `attrs`.
  static const XMLCh* GetAttribute(const xercesc::Attributes& attrs, const std::string& name);
  /// The text in the handler's encoding; empty for a null text.
  [[nodiscard]] std::string ToString(const XMLCh* text) const;

 protected:
  xercesc::XMLFormatter fFormatter;
  HandlerState fState;
  std::unique_ptr<ScoringTranscoder> fTranscoder;
  bool fDropsText = false;  // set while `writeChars` would drop it, which saves the formatting

 private:
  XMLCh fHeldBack = 0;  // the first half of a pair whose second half comes with the next piece of text
};

}  // namespace KelScoring_20
