#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>

#include "components/keltransform/Cell.h"

namespace KelTransformNS {

/// What a text function writes its result into. A text that grows over the limit is given up.
class TextSink {
 public:
  TextSink(std::string& text, std::size_t limit) noexcept : fText(text), fLimit(limit) {}

  void Append(std::string_view piece) {
    if (Take(piece.size())) fText.append(piece);
  }
  void Append(char character) { Append(std::string_view(&character, 1)); }
  /// Whether `size` more bytes fit. If they don't, the text is given up.
  bool Take(std::size_t size) noexcept {
    fIsTooLong = fIsTooLong || size > fLimit - fText.size();
    return !fIsTooLong;
  }
  /// The text itself, for writers that know the size, which they have asked `Take` for.
  [[nodiscard]] std::string& Text() noexcept { return fText; }
  [[nodiscard]] bool IsTooLong() const noexcept { return fIsTooLong; }

 private:
  std::string& fText;
  std::size_t fLimit;
  bool fIsTooLong = false;
};

/// The texts that the functions of one thread have made for the frames that are open on it. They live until the frame
/// during which they were made ends (see `FrameStorage`), and leave their memory to those of the next record, so that
/// nothing is allocated in the steady state.
///
/// A document can double a text over and over. So all texts of the open frames together are bounded: what would go
/// beyond is an invalid value.
class MadeTexts {
 public:
  static constexpr std::size_t kMaxBytes = std::size_t{16} << 20U;

  [[nodiscard]] static MadeTexts& OfThisThread();

  /// The texts made so far. `ReleaseTo` ends those that were made since.
  [[nodiscard]] std::size_t Mark() const noexcept { return fOpen; }
  void ReleaseTo(std::size_t mark) noexcept;

  /// A cell of the text that `write(sink)` makes, with its number in the pool if it has one. Invalid if `write` gives
  /// false, or if there is no room for the text.
  template <typename Write>
  [[nodiscard]] Cell Make(const TextPool& pool, const Write& write) {
    std::string& text = Next();
    TextSink sink(text, kMaxBytes - fBytes);
    if (!write(sink) || sink.IsTooLong()) return Cell::Invalid();
    fBytes += text.size();
    ++fOpen;
    return {0.0, &text, pool.Find(text), Cell::kText};
  }

 private:
  static constexpr std::size_t kMaxKeptBytes = std::size_t{64} << 10U;  // of one text's memory

  std::string& Next();

  std::deque<std::string> fTexts;  // keeps addresses while it grows
  std::size_t fOpen = 0;
  std::size_t fBytes = 0;  // of the open ones
};

}  // namespace KelTransformNS
