#pragma once

#include <bit>
#include <cstdint>
#include <vector>

#include "components/keltransform/Cell.h"
#include "components/keltransform/Hashing.h"

namespace KelTransformNS {

/// The mapping tables of a program: rows of keys with a result each, found by hash.
class MapValuesTable {
 public:
  /// A value as a key: the pool's number of a text, the bits of a number. Both kinds never meet in a column.
  using Key = std::uint64_t;

  static Key KeyOf(const Cell& cell) noexcept {
    if (cell.state == Cell::kText) return cell.textId;
    return cell.number == 0.0 ? 0 : std::bit_cast<Key>(cell.number);  // -0 equals 0
  }

  /// Begins an entry that holds up to `rowCount` rows, and gives its number.
  std::uint32_t Append(std::size_t columnCount, std::size_t rowCount, const Cell& whenMissing, const Cell& otherwise) {
    const std::size_t bucketCount = std::bit_ceil(2 * rowCount + 1);
    fEntries.push_back(
        {columnCount, fKeys.size(), fResults.size(), fBuckets.size(), bucketCount - 1, whenMissing, otherwise});
    fBuckets.resize(fBuckets.size() + bucketCount, kEmpty);
    return static_cast<std::uint32_t>(fEntries.size() - 1);
  }

  /// Adds a row to the last entry, with one key for each column. Of rows with equal keys the first one counts.
  void AppendRow(const std::vector<Key>& keys, const Cell& result) {
    const Entry& entry = fEntries.back();
    const auto keyAt = [&](std::size_t column) { return keys[column]; };
    std::uint32_t& bucket = fBuckets[FindBucket(entry, keyAt)];
    if (bucket != kEmpty) return;
    bucket = static_cast<std::uint32_t>(fResults.size() - entry.firstResult);
    fKeys.insert(fKeys.end(), keys.begin(), keys.end());
    fResults.push_back(result);
  }

  /// The result for the inputs that `cellAt(column)` gives. An invalid input makes it invalid, else a missing one
  /// makes it the entry's result for missing inputs.
  template <typename CellAt>
  [[nodiscard]] Cell Evaluate(std::uint32_t index, const CellAt& cellAt) const noexcept {
    const Entry& entry = fEntries[index];
    bool isMissing = false;
    for (std::size_t column = 0; column < entry.columnCount; ++column) {
      const Cell& cell = cellAt(column);
      if (cell.IsInvalid()) return cell;
      isMissing = isMissing || cell.IsMissing();
    }
    if (isMissing) return entry.whenMissing;
    const auto keyAt = [&](std::size_t column) { return KeyOf(cellAt(column)); };
    const std::uint32_t row = fBuckets[FindBucket(entry, keyAt)];
    return row == kEmpty ? entry.otherwise : fResults[entry.firstResult + row];
  }

 private:
  static constexpr std::uint32_t kEmpty = 0xFFFFFFFFU;

  struct Entry {
    std::size_t columnCount;
    std::size_t firstKey;     // row by row
    std::size_t firstResult;  // one for each row
    std::size_t firstBucket;  // open addressing; a bucket holds the number of a row
    std::size_t bucketMask;
    Cell whenMissing;
    Cell otherwise;
  };

  // The bucket of the row with these keys, or the empty one where it belongs.
  template <typename KeyAt>
  [[nodiscard]] std::size_t FindBucket(const Entry& entry, const KeyAt& keyAt) const noexcept {
    std::uint64_t bucket = 0;
    for (std::size_t column = 0; column < entry.columnCount; ++column) {
      const std::uint64_t link[] = {bucket, keyAt(column)};
      bucket = HashBytes(link, sizeof(link));
    }
    for (bucket &= entry.bucketMask;; bucket = (bucket + 1) & entry.bucketMask) {
      const std::uint32_t row = fBuckets[entry.firstBucket + bucket];
      if (row == kEmpty || HasKeys(entry, row, keyAt)) return entry.firstBucket + bucket;
    }
  }

  template <typename KeyAt>
  [[nodiscard]] bool HasKeys(const Entry& entry, std::uint32_t row, const KeyAt& keyAt) const noexcept {
    const Key* const keys = fKeys.data() + entry.firstKey + row * entry.columnCount;
    for (std::size_t column = 0; column < entry.columnCount; ++column) {
      if (keys[column] != keyAt(column)) return false;
    }
    return true;
  }

  std::vector<Entry> fEntries;
  std::vector<Key> fKeys;
  std::vector<Cell> fResults;
  std::vector<std::uint32_t> fBuckets;
};

}  // namespace KelTransformNS
