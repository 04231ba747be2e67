#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "components/kelcommon/Hashing.h"

namespace KelXML_1_3 {

/// What tells one number from another: -0 is 0, and NaN is itself.
[[nodiscard]] inline std::uint64_t KeyOf(double number) {
  if (std::isnan(number)) return ~std::uint64_t{0};   // the bits of a NaN that no computation gives
  return std::bit_cast<std::uint64_t>(number + 0.0);  // the sum turns -0 into 0
}

[[nodiscard]] inline std::string_view KeyOf(const std::string& text) { return text; }

/// Distinct entries in the order of adding, each with an optional label. Entries are found by hash, so adding many is
/// linear overall.
template <typename Entry>
class LabelledList {
 public:
  LabelledList() = default;
  LabelledList(const LabelledList& other) {
    for (const Entry& entry : other.fEntries) Append(entry);
    fLabels = other.fLabels;
  }
  LabelledList& operator=(const LabelledList&) = delete;

  /// An entry that is there is ignored together with its label.
  void Add(const Entry& entry, const std::string& label) {
    if (Find(entry)) return;
    if (label.empty()) return Append(entry);
    // What can fail comes first, so that an entry comes with its label or not at all.
    std::string ownLabel = label;
    if (fLabels.capacity() <= fEntries.size()) fLabels.reserve(2 * fEntries.size() + 1);
    Append(entry);
    fLabels.resize(fEntries.size());
    fLabels.back() = std::move(ownLabel);
  }

  /// The entry's position, nothing if it is absent.
  [[nodiscard]] std::optional<int> Find(const Entry& entry) const {
    const auto found = fPositions.find(KeyOf(entry));
    if (found == fPositions.end()) return std::nullopt;
    return found->second;
  }

  [[nodiscard]] int Size() const noexcept { return static_cast<int>(fEntries.size()); }
  /// Null outside the list.
  [[nodiscard]] const Entry* At(int index) const {
    return index >= 0 && index < Size() ? &fEntries[static_cast<std::size_t>(index)] : nullptr;
  }
  /// Beside the entries; an empty one is no label, and those behind the last label are left out.
  [[nodiscard]] const std::vector<std::string>& Labels() const noexcept { return fLabels; }

 private:
  using Key = decltype(KeyOf(Entry()));

  struct Hash {
    std::size_t operator()(std::uint64_t key) const { return KelCommon_1_3::HashBits(key); }
    std::size_t operator()(std::string_view key) const { return KelCommon_1_3::HashBytes(key); }
  };

  // Both or neither.
  void Append(const Entry& entry) {
    fEntries.push_back(entry);
    try {
      fPositions.emplace(KeyOf(fEntries.back()), Size() - 1);
    } catch (...) {
      fEntries.pop_back();
      throw;
    }
  }

  std::deque<Entry> fEntries;  // entries stay where they are, as the keys of texts look at them
  std::unordered_map<Key, int, Hash> fPositions;
  std::vector<std::string> fLabels;
};

}  // namespace KelXML_1_3
