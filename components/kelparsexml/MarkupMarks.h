#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "components/kelparsexml/TextUnits.h"

namespace KelXML_1_3 {

/// The places of '<', '>' and both quotes in a block of text, one after the other.
///
/// 64 units at a time are turned into a word with a bit for each mark. The words don't depend on what the marks mean,
/// so the processor works on them ahead; a search from mark to mark would wait for each one.
template <class Units>
class MarkupMarks {
 public:
  using Unit = typename Units::Unit;

  MarkupMarks() = default;
  MarkupMarks(Unit* begin, Unit* end) : fNext(begin), fEnd(end) {}

  /// The next mark, null behind the last.
  Unit* Next() {
    while (fBits == 0) {
      if (fNext == fEnd) return nullptr;
      Advance();
    }
    Unit* const mark = fBlock + std::countr_zero(fBits);
    fBits &= fBits - 1;
    return mark;
  }

 private:
  static constexpr std::ptrdiff_t kBlock = 64;

  void Advance() {
    fBlock = fNext;
    const std::ptrdiff_t count = std::min(fEnd - fNext, kBlock);
    fBits = count == kBlock ? WholeBlock(fBlock) : UnitByUnit(fBlock, count);
    fNext += count;
  }

  static bool IsMark(Unit unit) {
    return unit == Units::Of('<') || unit == Units::Of('>') || unit == Units::Of('"') || unit == Units::Of('\'');
  }

  static std::uint64_t UnitByUnit(const Unit* units, std::ptrdiff_t count) {
    std::uint64_t bits = 0;
    for (std::ptrdiff_t i = 0; i < count; ++i) bits |= std::uint64_t{IsMark(units[i])} << i;
    return bits;
  }

#if defined(__SSE2__)
  static std::uint64_t WholeBlock(const Unit* units) {
    return Bits16(units) | Bits16(units + 16) << 16 | Bits16(units + 32) << 32 | Bits16(units + 48) << 48;
  }

  static std::uint64_t Bits16(const Unit* units) {
    if constexpr (sizeof(Unit) == 1) {
      return static_cast<unsigned>(_mm_movemask_epi8(MarksOf(units)));
    } else {
      return static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(MarksOf(units), MarksOf(units + 8))));
    }
  }

  // All bits of the units that are marks, of one register's worth of text.
  static __m128i MarksOf(const Unit* units) {
    const __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units));
    return Equal(text, '<') | Equal(text, '>') | Equal(text, '"') | Equal(text, '\'');
  }

  static __m128i Equal(__m128i text, char ascii) {
    if constexpr (sizeof(Unit) == 1) {
      return _mm_cmpeq_epi8(text, _mm_set1_epi8(static_cast<char>(Units::Of(ascii))));
    } else {
      return _mm_cmpeq_epi16(text, _mm_set1_epi16(static_cast<short>(Units::Of(ascii))));
    }
  }
#else
  static std::uint64_t WholeBlock(const Unit* units) { return UnitByUnit(units, kBlock); }
#endif

  Unit* fBlock = nullptr;
  Unit* fNext = nullptr;
  Unit* fEnd = nullptr;
  std::uint64_t fBits = 0;
};

}  // namespace KelXML_1_3
