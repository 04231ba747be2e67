#include "plugins/torvane/fields/ValueSets.h"

namespace Torvane {
namespace {

// A range of bits may take as much memory as this many sorted numbers for each element.
constexpr std::size_t kBitsPerElement = 256;
// A table of ranks likewise as much as this many listed values.
constexpr std::size_t kPlacesPerValue = 8;

template <typename T>
void SortUnique(std::vector<T>& items) {
  std::sort(items.begin(), items.end());
  items.erase(std::unique(items.begin(), items.end()), items.end());
  items.shrink_to_fit();
}

}  // namespace

void TextSet::Seal() {
  SortUnique(fIds);
  if (fIds.empty()) return;
  const std::size_t range = static_cast<std::size_t>(fIds.back()) - fIds.front() + 1;
  if (range > kBitsPerElement * fIds.size()) return;
  fFirst = fIds.front();
  fBits.assign((range + kBitsPerWord - 1) / kBitsPerWord, 0);
  for (const std::uint32_t id : fIds) {
    fBits[(id - fFirst) / kBitsPerWord] |= std::uint64_t{1} << ((id - fFirst) % kBitsPerWord);
  }
  fIds = {};
}

void NumberSet::Seal() { SortUnique(fNumbers); }

void ValueRanks::Seal() {
  SortUnique(fTexts);
  SortUnique(fNumbers);
  MakeTextTable();
}

// Of a text that stands there twice the first rank counts, as in the list.
void ValueRanks::MakeTextTable() {
  if (fTexts.empty()) return;
  const std::size_t range = std::size_t{1} + fTexts.back().first - fTexts.front().first;
  if (range > kPlacesPerValue * fTexts.size()) return;
  fFirstText = fTexts.front().first;
  fTextTable.assign(range, kNoRank);
  for (const auto& [id, rank] : fTexts) {
    std::uint32_t& place = fTextTable[id - fFirstText];
    place = std::min(place, rank);
  }
  fTexts = {};
}

}  // namespace Torvane
