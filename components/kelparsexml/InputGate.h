#pragma once

#include <cstddef>
#include <string>
#include <variant>

#include "components/kelparsexml/MarkupGate.h"
#include "components/kelparsexml/TextUnits.h"

namespace KelXML_1_3 {

/// Watches the bytes of one document on their way to the parser, see `KelXInputSource`. It finds out how they are
/// encoded, exactly as the parser will, and has a `MarkupGate` for that encoding look at the rest.
class InputGate {
 public:
  /// The most bytes that a call holds back.
  static constexpr std::size_t kMaxHeldBack = 32'768;

  explicit InputGate(int maxAttributes) : fMaxAttributes(maxAttributes) {}

  /// Looks at `size` bytes, the first call at the document's beginning, each later one where the admitted bytes of
  /// the last ended. Gives how many of them may pass, at least one of more than `kMaxHeldBack`; what is held back
  /// must come again with more behind it. May blank out bytes. At the end nothing is held back.
  std::size_t Admit(char16_t* buffer, std::size_t size, bool atEnd);

  /// Whether the input ends with the bytes admitted last.
  [[nodiscard]] bool Refused() const noexcept { return !fReason.empty(); }
  /// Why, with the line.
  [[nodiscard]] std::string Refusal() const;

 private:
  bool Begin(const unsigned char* bytes, std::size_t size, bool atEnd);
  template <class Units>
  std::size_t Watch(MarkupGate<Units>& gate, typename Units::Unit* units, std::size_t count, bool atEnd);

  int fMaxAttributes;
  std::variant<std::monostate, MarkupGate<ByteUnits>, MarkupGate<Utf16LittleUnits>, MarkupGate<Utf16BigUnits>> fGate;
  std::size_t fLine = 1;
  std::string fReason;
};

}  // namespace KelXML_1_3
