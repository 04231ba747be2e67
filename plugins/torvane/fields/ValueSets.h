#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace Torvane {

/// A set of text numbers. The categories of one field have numbers close to each other, so that the set is a range of
/// bits; numbers that lie far apart stay a sorted list. `Seal` after the last `Add`.
class TextSet {
 public:
  void Add(std::uint32_t id) { fIds.push_back(id); }
  void Seal();
  [[nodiscard]] bool IsEmpty() const noexcept { return fIds.empty() && fBits.empty(); }
  [[nodiscard]] bool Contains(std::uint32_t id) const noexcept {
    if (fBits.empty()) return std::binary_search(fIds.begin(), fIds.end(), id);
    const std::uint32_t offset = id - fFirst;  // wraps around for a smaller one, and is then too large
    return offset / kBitsPerWord < fBits.size() &&
           ((fBits[offset / kBitsPerWord] >> (offset % kBitsPerWord)) & 1U) != 0;
  }

 private:
  static constexpr std::uint32_t kBitsPerWord = 64;

  std::vector<std::uint32_t> fIds;
  std::vector<std::uint64_t> fBits;
  std::uint32_t fFirst = 0;
};

/// A set of numbers, found by their value. `Seal` after the last `Add`.
class NumberSet {
 public:
  void Add(double number) { fNumbers.push_back(number); }
  void Seal();
  [[nodiscard]] bool IsEmpty() const noexcept { return fNumbers.empty(); }
  [[nodiscard]] bool Contains(double number) const noexcept {
    return std::binary_search(fNumbers.begin(), fNumbers.end(), number);
  }

 private:
  std::vector<double> fNumbers;
};

/// The position of each value of a list, such as those of an ordinal field, the smallest first. Texts whose numbers are
/// close to each other are looked up in a table, others by bisection. `Seal` after the last `Add`.
class ValueRanks {
 public:
  void AddText(std::uint32_t id, std::uint32_t rank) { fTexts.emplace_back(id, rank); }
  void AddNumber(double number, std::uint32_t rank) { fNumbers.emplace_back(number, rank); }
  void Seal();
  /// Nothing for a value that isn't listed.
  [[nodiscard]] std::optional<std::uint32_t> OfText(std::uint32_t id) const noexcept {
    if (fTextTable.empty()) return Find(fTexts, id);
    const std::uint32_t offset = id - fFirstText;  // wraps around for a smaller one, and is then too large
    if (offset >= fTextTable.size() || fTextTable[offset] == kNoRank) return std::nullopt;
    return fTextTable[offset];
  }
  [[nodiscard]] std::optional<std::uint32_t> OfNumber(double number) const noexcept { return Find(fNumbers, number); }

 private:
  static constexpr std::uint32_t kNoRank = 0xFFFFFFFFU;

  void MakeTextTable();
  template <typename Key>
  static std::optional<std::uint32_t> Find(const std::vector<std::pair<Key, std::uint32_t>>& ranks, Key key) noexcept {
    const auto found = std::lower_bound(ranks.begin(), ranks.end(), std::pair<Key, std::uint32_t>(key, 0));
    if (found == ranks.end() || found->first != key) return std::nullopt;
    return found->second;
  }

  std::vector<std::pair<std::uint32_t, std::uint32_t>> fTexts;
  std::vector<std::uint32_t> fTextTable;  // instead of fTexts: the ranks of the texts from fFirstText on
  std::uint32_t fFirstText = 0;
  std::vector<std::pair<double, std::uint32_t>> fNumbers;
};

}  // namespace Torvane
