#include "components/kelparsexml/TextArena.h"

#include <cstring>
#include <limits>
#include <utility>

#include "components/kelparsexml/PmmlError.h"
#include "components/kelparsexml/Utf8.h"

namespace KelXML_1_3 {
namespace {
// A text is its length and its bytes. The length is one byte, or kLongMark and four bytes.
constexpr unsigned char kLongMark = 0xFF;
constexpr std::size_t kLongPrefix = 1 + sizeof(std::uint32_t);
constexpr std::size_t kMaxShort = kLongMark - 1;

// A name is the number of the chunk and the place in it, 16 bits each.
constexpr int kOffsetBits = 16;
constexpr std::size_t kChunkBytes = std::size_t{1} << kOffsetBits;
constexpr std::size_t kFirstChunkBytes = 8192;  // enough for a small document
constexpr std::size_t kMaxChunks = std::size_t{1} << (32 - kOffsetBits);
// Longer ones would leave too much of a chunk unused.
constexpr std::size_t kMaxShared = kChunkBytes / 4;

TextArena::Ref NameOf(std::size_t chunk, std::size_t offset) {
  return static_cast<TextArena::Ref>(chunk << kOffsetBits | offset);
}
}  // namespace

TextArena::TextArena() {
  AddChunk(kFirstChunkBytes);
  fChunks[0].bytes[0] = 0;
  fFilled = 1;
}

// Almost every text is short and ASCII, so it is first taken for that, and copied before its length is known.
TextArena::Ref TextArena::Add(const char16_t* text) {
  if (*text == 0) return 0;
  const Place place = Reserve(1 + kMaxShort);
  char* const to = place.at + 1;
  std::size_t size = 0;
  for (; text[size] != 0; ++size) {
    if (text[size] >= 0x80 || size == kMaxShort) return AddLong(text);
    to[size] = static_cast<char>(text[size]);
  }
  *place.at = static_cast<char>(size);
  fFilled += 1 + size;
  return place.ref;
}

TextArena::Ref TextArena::AddLong(const char16_t* text) {
  const std::size_t size = LengthOf(text);
  const Place place = ReserveLong(Utf8Size(text, size));
  WriteUtf8(text, size, place.at);
  return place.ref;
}

TextArena::Ref TextArena::Add(std::string_view utf8) {
  if (utf8.empty()) return 0;
  const Place place = ReserveLong(utf8.size());
  std::memcpy(place.at, utf8.data(), utf8.size());
  return place.ref;
}

std::string_view TextArena::Get(Ref ref) const noexcept {
  const char* const at = fChunks[ref >> kOffsetBits].bytes.get() + (ref & (kChunkBytes - 1));
  const auto first = static_cast<unsigned char>(*at);
  if (first != kLongMark) return {at + 1, first};
  std::uint32_t size = 0;
  std::memcpy(&size, at + 1, sizeof size);
  return {at + kLongPrefix, size};
}

TextArena::Place TextArena::Reserve(std::size_t bytes) {
  if (fFilled + bytes > fChunks[fOpen].size) {
    fOpen = AddChunk(kChunkBytes);
    fFilled = 0;
  }
  return {fChunks[fOpen].bytes.get() + fFilled, NameOf(fOpen, fFilled)};
}

// Writes the length; the place is the one of the text behind it.
TextArena::Place TextArena::ReserveLong(std::size_t size) {
  if (size > std::numeric_limits<std::uint32_t>::max()) throw PmmlError("a text of the document is too long");
  const std::size_t bytes = kLongPrefix + size;
  Place place{};
  if (bytes > kMaxShared) {
    const std::size_t chunk = AddChunk(bytes);
    place = {fChunks[chunk].bytes.get(), NameOf(chunk, 0)};
  } else {
    place = Reserve(bytes);
    fFilled += bytes;
  }
  const auto length = static_cast<std::uint32_t>(size);
  *place.at = static_cast<char>(kLongMark);
  std::memcpy(place.at + 1, &length, sizeof length);
  return {place.at + kLongPrefix, place.ref};
}

std::size_t TextArena::AddChunk(std::size_t bytes) {
  if (fChunks.size() == kMaxChunks) throw PmmlError("the document's texts are too large to be held");
  if (bytes == kChunkBytes && !fSpare.empty()) {
    fChunks.push_back(std::move(fSpare.back()));
    fSpare.pop_back();
  } else {
    fChunks.push_back({std::make_unique_for_overwrite<char[]>(bytes), bytes});
  }
  return fChunks.size() - 1;
}

// A chunk of another size held a single long text, the like of which may not come again.
void TextArena::Truncate(const Mark& mark) {
  while (fChunks.size() > mark.chunks) {
    if (fChunks.back().size == kChunkBytes) fSpare.push_back(std::move(fChunks.back()));
    fChunks.pop_back();
  }
  fOpen = mark.open;
  fFilled = mark.filled;
}

}  // namespace KelXML_1_3
