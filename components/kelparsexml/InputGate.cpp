#include "components/kelparsexml/InputGate.h"

#include <algorithm>
#include <cstdint>

#include "components/kelparsexml/DocumentEncoding.h"

namespace KelXML_1_3 {
namespace {

// Counts in bytes as long as they can't overflow, so that a register's worth of text is compared and summed at a time.
template <class Unit>
std::size_t Count(const Unit* begin, const Unit* end, Unit wanted) {
  constexpr std::ptrdiff_t kMost = 255;
  std::size_t total = 0;
  while (begin != end) {
    const Unit* const stop = begin + std::min(end - begin, kMost);
    std::uint8_t count = 0;
    for (; begin != stop; ++begin) count = static_cast<std::uint8_t>(count + (*begin == wanted));
    total += count;
  }
  return total;
}

}  // namespace

std::size_t InputGate::Admit(char16_t* buffer, std::size_t size, bool atEnd) {
  auto* const bytes = reinterpret_cast<unsigned char*>(buffer);
  if (std::holds_alternative<std::monostate>(fGate) && !Begin(bytes, size, atEnd)) return 0;
  if (auto* const gate = std::get_if<MarkupGate<ByteUnits>>(&fGate)) return Watch(*gate, bytes, size, atEnd);
  const std::size_t units = size / sizeof(char16_t);
  auto* const little = std::get_if<MarkupGate<Utf16LittleUnits>>(&fGate);
  const std::size_t admitted = little != nullptr
                                   ? Watch(*little, buffer, units, atEnd)
                                   : Watch(std::get<MarkupGate<Utf16BigUnits>>(fGate), buffer, units, atEnd);
  const bool isAll = atEnd && !Refused();
  return isAll ? size : admitted * sizeof(char16_t);  // half a unit at the end is the parser's to complain about
}

bool InputGate::Begin(const unsigned char* bytes, std::size_t size, bool atEnd) {
  const DocumentEncoding encoding = ReadDocumentEncoding(bytes, size, atEnd);
  fReason = encoding.refusal;
  switch (encoding.units) {
    case UnitKind::kBytes:
      fGate.emplace<MarkupGate<ByteUnits>>(fMaxAttributes);
      break;
    case UnitKind::kUtf16Little:
      fGate.emplace<MarkupGate<Utf16LittleUnits>>(fMaxAttributes);
      break;
    case UnitKind::kUtf16Big:
      fGate.emplace<MarkupGate<Utf16BigUnits>>(fMaxAttributes);
      break;
  }
  return !Refused();
}

template <class Units>
std::size_t InputGate::Watch(MarkupGate<Units>& gate, typename Units::Unit* units, std::size_t count, bool atEnd) {
  const auto* const passed = gate.Pass(units, units + count, atEnd);
  fReason = gate.Refusal();
  fLine += Count<typename Units::Unit>(units, passed, Units::Of('\n'));
  return static_cast<std::size_t>(passed - units);
}

std::string InputGate::Refusal() const { return "line " + std::to_string(fLine) + ": " + fReason; }

}  // namespace KelXML_1_3
