#include <deque>
#include <vector>

#include "components/keltransform/Cell.h"
#include "components/keltransform/Hashing.h"

namespace KelTransformNS {
namespace {

// One place of the open addressing table. The upper half of the hash spares most comparisons of texts.
struct Place {
  std::uint32_t tag = 0;
  std::uint32_t id = TextPool::kUnknown;
};

std::uint32_t Tag(std::uint64_t hash) { return static_cast<std::uint32_t>(hash >> 32U); }

constexpr std::size_t kFirstPlaces = 16;  // a power of two, as all later sizes

}  // namespace

struct TextPool::Storage {
  std::deque<std::string> texts;  // keeps addresses while it grows
  std::vector<Place> places = std::vector<Place>(kFirstPlaces);

  // The place of `text`, or the empty place where it belongs.
  [[nodiscard]] std::size_t PlaceOf(std::string_view text, std::uint64_t hash) const noexcept {
    const std::size_t mask = places.size() - 1;
    std::size_t index = hash & mask;
    while (places[index].id != kUnknown && !(places[index].tag == Tag(hash) && texts[places[index].id] == text)) {
      index = (index + 1) & mask;
    }
    return index;
  }

  void Grow() {
    std::vector<Place> larger(2 * places.size());
    places.swap(larger);
    for (const Place& place : larger) {
      if (place.id == kUnknown) continue;
      const std::string& text = texts[place.id];
      places[PlaceOf(text, HashBytes(text.data(), text.size()))] = place;
    }
  }
};

TextPool::TextPool() : fStorage(std::make_unique<Storage>()) {}
TextPool::~TextPool() = default;

std::uint32_t TextPool::Intern(std::string_view text) {
  const std::uint64_t hash = HashBytes(text.data(), text.size());
  const std::uint32_t known = fStorage->places[fStorage->PlaceOf(text, hash)].id;
  if (known != kUnknown) return known;
  if (4 * (Size() + 1) > 3 * fStorage->places.size()) fStorage->Grow();
  const auto id = static_cast<std::uint32_t>(Size());
  fStorage->texts.emplace_back(text);
  fStorage->places[fStorage->PlaceOf(text, hash)] = {Tag(hash), id};
  return id;
}

std::uint32_t TextPool::Find(std::string_view text) const noexcept {
  return fStorage->places[fStorage->PlaceOf(text, HashBytes(text.data(), text.size()))].id;
}

const std::string& TextPool::Text(std::uint32_t id) const noexcept { return fStorage->texts[id]; }

std::size_t TextPool::Size() const noexcept { return fStorage->texts.size(); }

}  // namespace KelTransformNS
