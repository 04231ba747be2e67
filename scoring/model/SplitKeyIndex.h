#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "scoring/common/Value.h"
#include "scoring/common/ValueRecord.h"

namespace KelScoring_20 {

class ScoringModel;

/// Finds the member of a split model by the values of a record, where they stand: no key is put together for that, and
/// the search takes as long for many members as for few. Values match as their `==` says.
class SplitKeyIndex {
 public:
  using Key = std::vector<KelCommon_1_3::Value>;

  /// `key` must be another one than all before, and stay where it is as long as the index lives.
  void Add(const Key& key, ScoringModel* model) { fModels.emplace(&key, model); }

  /// The model whose key are the values at `positions`, all of which are in `record`; null if there is none.
  [[nodiscard]] ScoringModel* Find(const KelCommon_1_3::ValueRecord& record,
                                   const std::vector<std::int32_t>& positions) const {
    const auto found = fModels.find(View{record, positions});
    return found == fModels.end() ? nullptr : found->second;
  }

 private:
  struct View {
    const KelCommon_1_3::ValueRecord& record;
    const std::vector<std::int32_t>& positions;
  };
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(const Key* key) const;
    std::size_t operator()(const View& view) const;
  };
  struct Equal {
    using is_transparent = void;
    bool operator()(const Key* left, const Key* right) const { return *left == *right; }
    bool operator()(const View& view, const Key* key) const;
    bool operator()(const Key* key, const View& view) const { return (*this)(view, key); }
  };

  std::unordered_map<const Key*, ScoringModel*, Hash, Equal> fModels;
};

}  // namespace KelScoring_20
