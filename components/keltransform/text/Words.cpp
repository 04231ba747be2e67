#include "components/keltransform/text/Words.h"

#include <algorithm>
#include <numeric>
#include <unicode/uchar.h>
#include <unicode/utf16.h>

#include "components/keltransform/text/Utf16.h"

namespace KelTransformNS {

using KelXML_1_3::Element;

namespace {

int ReadDistance(const Element& element, int otherwise) {
  const int distance = element.Integer("maxLevenshteinDistance").value_or(otherwise);
  if (distance < 0) throw element.AttributeError("maxLevenshteinDistance", "is negative");
  return distance;
}

// The end of the punctuation that the text begins with.
std::size_t SkipPunctuation(std::u16string_view text, std::size_t begin, std::size_t end) {
  while (begin < end) {
    std::size_t next = begin;
    UChar32 character = 0;
    U16_NEXT(text.data(), next, end, character);
    if (u_ispunct(character) == 0) break;
    begin = next;
  }
  return begin;
}

// The begin of the punctuation that the text ends with.
std::size_t SkipPunctuationBackwards(std::u16string_view text, std::size_t begin, std::size_t end) {
  while (begin < end) {
    std::size_t before = end;
    UChar32 character = 0;
    U16_PREV(text.data(), begin, before, character);
    if (u_ispunct(character) == 0) break;
    end = before;
  }
  return end;
}

void TakeCharacters(std::u16string_view text, std::u32string& characters) {
  characters.clear();
  for (std::size_t index = 0; index < text.size();) {
    UChar32 character = 0;
    U16_NEXT(text.data(), index, text.size(), character);
    characters.push_back(static_cast<char32_t>(character));
  }
}

// Row after row of the usual table: the distances of the first characters of `left` to each beginning of `right`.
int DistanceOf(const std::u32string& left, const std::u32string& right, int limit, std::vector<int>& row) {
  row.resize(right.size() + 1);
  std::iota(row.begin(), row.end(), 0);
  for (std::size_t i = 0; i < left.size(); ++i) {
    int diagonal = row[0]++;
    int least = row[0];
    for (std::size_t j = 0; j < right.size(); ++j) {
      const int exchanged = diagonal + (left[i] == right[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({exchanged, diagonal + 1, row[j] + 1});
      least = std::min(least, row[j + 1]);
    }
    if (least > limit) return least;
  }
  return row.back();
}

}  // namespace

WordSettings ReadWordSettings(const Element& element, const WordSettings& otherwise) {
  WordSettings settings;
  settings.isCaseSensitive = element.Boolean("isCaseSensitive", otherwise.isCaseSensitive);
  settings.maxDistance = ReadDistance(element, otherwise.maxDistance);
  settings.separator = element.Attribute("wordSeparatorCharacterRE").value_or(otherwise.separator);
  settings.isTokenized = element.Boolean("tokenize", otherwise.isTokenized);
  if (!settings.isTokenized && settings.maxDistance > 0) {
    throw element.AttributeError("maxLevenshteinDistance", "needs a text that is taken apart into words");
  }
  return settings;
}

bool WordList::Split(std::u16string_view text, const RegularExpression& separator, bool isCaseSensitive) {
  fWords.clear();
  fForms.clear();
  std::size_t begin = 0;
  const auto outcome = separator.ForEachMatch(text, [&](std::size_t matchBegin, std::size_t matchEnd) {
    Add(text, begin, matchBegin, isCaseSensitive);
    begin = matchEnd;
  });
  Add(text, begin, text.size(), isCaseSensitive);
  const bool isDone = outcome != RegularExpression::Outcome::kGivenUp;
  if (!isDone) fWords.clear();
  return isDone;
}

void WordList::Add(std::u16string_view text, std::size_t begin, std::size_t end, bool isCaseSensitive) {
  begin = SkipPunctuation(text, begin, end);
  end = SkipPunctuationBackwards(text, begin, end);
  if (begin == end) return;
  const std::size_t formBegin = fForms.size();
  const std::u16string_view word = text.substr(begin, end - begin);
  if (isCaseSensitive) {
    fForms.append(word);
  } else {
    AppendFolded(word, fForms);
  }
  fWords.push_back({begin, end, formBegin, fForms.size()});
}

std::optional<int> DistanceAt(const WordList& words, std::size_t first, const Term& term, int limit) {
  if (words.Count() - first < term.size()) return std::nullopt;
  int sum = 0;
  for (std::size_t index = 0; index < term.size(); ++index) {
    const std::optional<int> distance = EditDistance(words[first + index], term[index], limit - sum);
    if (!distance) return std::nullopt;
    sum += *distance;
  }
  return sum;
}

std::optional<int> EditDistance(std::u16string_view left, std::u16string_view right, int limit) {
  if (left == right) return 0;
  if (limit == 0) return std::nullopt;
  thread_local std::u32string leftCharacters;
  thread_local std::u32string rightCharacters;
  thread_local std::vector<int> row;
  TakeCharacters(left, leftCharacters);
  TakeCharacters(right, rightCharacters);
  const int distance = DistanceOf(leftCharacters, rightCharacters, limit, row);
  return distance <= limit ? std::optional(distance) : std::nullopt;
}

}  // namespace KelTransformNS
