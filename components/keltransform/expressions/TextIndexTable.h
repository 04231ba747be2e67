#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "components/keltransform/Cell.h"
#include "components/keltransform/text/TermCounter.h"

namespace KelTransformNS {

/// What becomes of the count of a term. The order is that of the names in a document.
enum class TermWeights : std::uint8_t { kTermFrequency, kBinary, kLogarithmic, kAugmentedNormalizedTermFrequency };

/// The terms of a program, and the counters that look for them.
class TextIndexTable {
 public:
  /// The counter of a "TextIndex", shared with all others of the same rules. Throws `PmmlError`.
  TermCounter& CounterOf(const KelXML_1_3::Element& textIndex);
  /// Gives the number of the entry.
  std::uint32_t Append(const TermCounter& counter, std::uint32_t term, TermWeights weights);

  /// The weight of a term in a text. Invalid if the search is given up.
  [[nodiscard]] Cell Evaluate(std::uint32_t index, const Cell& text) const noexcept;

 private:
  struct Entry {
    const TermCounter* counter;
    std::uint32_t term;
    TermWeights weights;
  };

  std::vector<Entry> fEntries;
  std::unordered_map<std::string, std::unique_ptr<TermCounter>> fCounters;  // by what their rules are
};

}  // namespace KelTransformNS
