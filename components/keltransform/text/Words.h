#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "components/kelparsexml/ElementTree.h"
#include "components/keltransform/text/RegularExpression.h"

namespace KelTransformNS {

/// How texts are compared with terms, as a "TextIndex" and each of its "TextIndexNormalization"s say.
struct WordSettings {
  bool isCaseSensitive = false;
  int maxDistance = 0;  ///< of all words of a term together, in characters to insert, delete or exchange
  std::string separator = "\\s+";
  bool isTokenized = true;
};

/// What an element doesn't say is as in `otherwise`.
[[nodiscard]] WordSettings ReadWordSettings(const KelXML_1_3::Element& element, const WordSettings& otherwise);

/// The words of a text: what stands between the separators, without punctuation at either end, and without differences
/// of case if these don't count. Keeps its memory for the next text.
class WordList {
 public:
  /// False if the search for separators is given up; then there are no words.
  bool Split(std::u16string_view text, const RegularExpression& separator, bool isCaseSensitive);

  [[nodiscard]] std::size_t Count() const noexcept { return fWords.size(); }
  /// A word as it is compared.
  [[nodiscard]] std::u16string_view operator[](std::size_t index) const noexcept {
    const Word& word = fWords[index];
    return std::u16string_view(fForms).substr(word.formBegin, word.formEnd - word.formBegin);
  }
  /// Where the word begins and ends in the text.
  [[nodiscard]] std::size_t Begin(std::size_t index) const noexcept { return fWords[index].begin; }
  [[nodiscard]] std::size_t End(std::size_t index) const noexcept { return fWords[index].end; }

 private:
  struct Word {
    std::size_t begin;
    std::size_t end;
    std::size_t formBegin;
    std::size_t formEnd;
  };

  void Add(std::u16string_view text, std::size_t begin, std::size_t end, bool isCaseSensitive);

  std::vector<Word> fWords;
  std::u16string fForms;  // of all words, one after the other
};

/// A term of one word or several.
using Term = std::vector<std::u16string>;

/// The edit distance of the words from `first` on to those of the term; nothing if it is above `limit`, or if there are
/// too few words.
[[nodiscard]] std::optional<int> DistanceAt(const WordList& words, std::size_t first, const Term& term, int limit);

/// The least number of characters to insert, delete or exchange that makes one word of the other; nothing if it is
/// above `limit`.
[[nodiscard]] std::optional<int> EditDistance(std::u16string_view left, std::u16string_view right, int limit);

}  // namespace KelTransformNS
