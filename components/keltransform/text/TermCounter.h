#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "components/keltransform/Hashing.h"
#include "components/keltransform/text/TextNormalization.h"
#include "components/keltransform/text/Words.h"

namespace KelTransformNS {

/// How often terms occur in a text. `largest` is the count of the text's most common word.
struct TermCounts {
  std::vector<std::uint32_t> ofTerm;
  std::uint32_t largest = 0;
};

/// The terms that a document looks for under the same rules, which are counted together: producers write a thousand of
/// them for one text. Grows while a document is compiled, immutable afterwards.
class TermCounter {
 public:
  /// Reads the rules of a "TextIndex". Throws `PmmlError`.
  explicit TermCounter(const KelXML_1_3::Element& textIndex);

  /// Gives the number of the term. Throws an error about `element` if it has no words.
  std::uint32_t AddTerm(std::string_view term, const KelXML_1_3::Element& element);
  /// Says that `TermCounts::largest` is wanted. Throws an error about `element` if the text isn't taken apart.
  void WantLargest(const KelXML_1_3::Element& element);

  /// The counts of all terms, valid until this thread counts in another text; null if that is given up. This thread
  /// remembers them, so that asking for one term after the other counts once.
  [[nodiscard]] const TermCounts* Count(std::string_view text) const;

 private:
  static constexpr std::uint32_t kNone = 0xFFFFFFFFU;

  struct Memory;
  struct HashUnits {
    using is_transparent = void;
    std::size_t operator()(std::u16string_view text) const noexcept {
      return HashBytes(text.data(), text.size() * sizeof(char16_t));
    }
  };
  using NumberByText = std::unordered_map<std::u16string, std::uint32_t, HashUnits, std::equal_to<>>;

  [[nodiscard]] bool Normalize(std::u16string& text) const;
  std::uint32_t AddWords(const WordList& words);
  std::uint32_t AddLiteral(const std::u16string& term, const KelXML_1_3::Element& element);
  [[nodiscard]] bool CountInto(std::string_view text, TermCounts& counts) const;
  [[nodiscard]] bool CountLiterals(std::u16string_view text, TermCounts& counts) const;
  void CountExactly(const WordList& words, TermCounts& counts) const;
  [[nodiscard]] std::uint32_t CountSimilar(const WordList& words, const Term& term) const;

  const std::uint64_t fId;
  const WordSettings fSettings;
  std::unique_ptr<const RegularExpression> fSeparator;  // null if the text isn't taken apart
  std::vector<TextNormalization> fNormalizations;
  const bool fCountsBestHits;
  bool fWantsLargest = false;
  std::uint32_t fTermCount = 0;

  // Where the text isn't taken apart, in the order of their numbers.
  std::vector<std::unique_ptr<const RegularExpression>> fLiterals;
  NumberByText fLiteralByText;

  // Else a tree of words: a path from the root is a term, or the begin of one.
  std::vector<Term> fTerms;                          // in the order of their numbers
  std::vector<std::uint32_t> fTermOfNode = {kNone};  // the root is 0
  NumberByText fWordByText;
  std::unordered_map<std::uint64_t, std::uint32_t> fEdges;  // by node and word
};

}  // namespace KelTransformNS
