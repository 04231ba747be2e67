#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/util/XercesDefs.hpp>

// One pass over a document, element by element. The XML platform must be up.

namespace kelscore {

[[nodiscard]] std::string ToUtf8(const XMLCh* text);

/// A name of the vocabulary, which is plain ASCII, as the parser writes text.
class WideName {
 public:
  explicit WideName(const char* name) : fName(name, name + std::char_traits<char>::length(name)) {}
  [[nodiscard]] bool Is(const XMLCh* text) const { return fName == text; }
  [[nodiscard]] const XMLCh* Text() const { return fName.c_str(); }

 private:
  std::basic_string<XMLCh> fName;
};

/// Remembers the first fault of a document.
class FaultHandler : public xercesc::DefaultHandler {
 public:
  void error(const xercesc::SAXParseException& fault) override { Remember(fault); }
  void fatalError(const xercesc::SAXParseException& fault) override { Remember(fault); }
  /// "line 17, column 5: ..."; nothing while there is none.
  [[nodiscard]] const std::optional<std::string>& Fault() const { return fFault; }
  /// Whether the pass may end here.
  [[nodiscard]] virtual bool Done() const { return fFault.has_value(); }

 private:
  void Remember(const xercesc::SAXParseException& fault);

  std::optional<std::string> fFault;
};

/// Reads until the handler is done. Gives the first fault of the XML, if any.
[[nodiscard]] std::optional<std::string> ReadXml(std::istream& document, FaultHandler& handler);

}  // namespace kelscore
