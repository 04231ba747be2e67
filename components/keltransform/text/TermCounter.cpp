#include "components/keltransform/text/TermCounter.h"

#include <algorithm>
#include <array>
#include <atomic>

#include "components/keltransform/Attributes.h"
#include "components/keltransform/text/Utf16.h"

namespace KelTransformNS {

using KelXML_1_3::Element;

namespace {

constexpr std::array<std::string_view, 2> kCountHits = {"allHits", "bestHits"};

// No two counters of this process have the same one, so that what a thread remembers of one is never taken for another.
std::uint64_t NewId() {
  static std::atomic<std::uint64_t> last{0};
  return ++last;
}

std::uint64_t EdgeOf(std::uint32_t node, std::uint32_t word) { return std::uint64_t{node} << 32U | word; }

std::uint32_t CountOfMostCommon(const WordList& words) {
  thread_local std::vector<std::u16string_view> sorted;
  sorted.clear();
  for (std::size_t index = 0; index < words.Count(); ++index) sorted.push_back(words[index]);
  std::sort(sorted.begin(), sorted.end());
  std::ptrdiff_t largest = 0;
  for (auto run = sorted.begin(); run != sorted.end();) {
    const auto end = std::find_if(run, sorted.end(), [&](std::u16string_view word) { return word != *run; });
    largest = std::max(largest, end - run);
    run = end;
  }
  return static_cast<std::uint32_t>(largest);
}

}  // namespace

// What a thread remembers of the text in which it counted last.
struct TermCounter::Memory {
  std::uint64_t counter = 0;
  std::string text;
  bool isCounted = false;
  TermCounts counts;
};

TermCounter::TermCounter(const Element& textIndex)
    : fId(NewId()),
      fSettings(ReadWordSettings(textIndex, WordSettings())),
      fCountsBestHits(ReadEnum(textIndex, "countHits", kCountHits, 0) != 0) {
  if (fSettings.isTokenized) fSeparator = std::make_unique<RegularExpression>(fSettings.separator, true, textIndex);
  const std::string_view kind = "TextIndexNormalization";
  for (Element child = textIndex.Child(kind); child; child = child.Next(kind)) {
    fNormalizations.emplace_back(child, fSettings);
  }
}

// The tables are applied to the terms as well, so that a term is found whose words they replace in the text.
std::uint32_t TermCounter::AddTerm(std::string_view term, const Element& element) {
  std::u16string units;
  ToUtf16(term, units);
  if (!Normalize(units)) throw element.Error("the normalization of the term " + Quoted(term) + " finds no end");
  if (!fSeparator && !units.empty()) return AddLiteral(units, element);
  WordList words;
  if (!fSeparator || !words.Split(units, *fSeparator, fSettings.isCaseSensitive) || words.Count() == 0) {
    throw element.Error("the term " + Quoted(term) + " has no words");
  }
  return AddWords(words);
}

std::uint32_t TermCounter::AddLiteral(const std::u16string& term, const Element& element) {
  const auto [place, isNew] = fLiteralByText.try_emplace(term, fTermCount);
  if (!isNew) return place->second;
  std::string text;
  ToUtf8(term, text);
  fLiterals.push_back(std::make_unique<RegularExpression>(LiteralPattern(text), fSettings.isCaseSensitive, element));
  return fTermCount++;
}

std::uint32_t TermCounter::AddWords(const WordList& words) {
  std::uint32_t node = 0;
  Term term;
  for (std::size_t index = 0; index < words.Count(); ++index) {
    term.emplace_back(words[index]);
    const auto word = fWordByText.try_emplace(term.back(), static_cast<std::uint32_t>(fWordByText.size())).first;
    const auto [edge, isNew] =
        fEdges.try_emplace(EdgeOf(node, word->second), static_cast<std::uint32_t>(fTermOfNode.size()));
    if (isNew) fTermOfNode.push_back(kNone);
    node = edge->second;
  }
  if (fTermOfNode[node] != kNone) return fTermOfNode[node];
  fTerms.push_back(std::move(term));
  return fTermOfNode[node] = fTermCount++;
}

void TermCounter::WantLargest(const Element& element) {
  if (!fSeparator) throw element.AttributeError("localTermWeights", "needs a text that is taken apart into words");
  fWantsLargest = true;
}

bool TermCounter::Normalize(std::u16string& text) const {
  const auto normalize = [&](const TextNormalization& normalization) { return normalization.Apply(text); };
  return std::all_of(fNormalizations.begin(), fNormalizations.end(), normalize);
}

const TermCounts* TermCounter::Count(std::string_view text) const {
  thread_local std::array<Memory, 8> memories;  // for a few counters that take turns
  Memory& memory = memories[fId % memories.size()];
  if (memory.counter != fId || memory.text != text) {
    memory.counter = 0;
    memory.text = text;
    memory.isCounted = CountInto(text, memory.counts);
    memory.counter = fId;
  }
  return memory.isCounted ? &memory.counts : nullptr;
}

bool TermCounter::CountInto(std::string_view text, TermCounts& counts) const {
  constexpr std::size_t kMostBytesOfUnit = 3;
  thread_local std::u16string units;
  thread_local WordList words;
  if (text.size() > kMostBytesOfUnit * RegularExpression::kMaxUnits) return false;
  counts.ofTerm.assign(fTermCount, 0);
  ToUtf16(text, units);
  if (!Normalize(units)) return false;
  if (!fSeparator) return CountLiterals(units, counts);
  if (!words.Split(units, *fSeparator, fSettings.isCaseSensitive)) return false;
  if (fWantsLargest) counts.largest = CountOfMostCommon(words);
  if (fSettings.maxDistance == 0) {
    CountExactly(words, counts);
  } else {
    for (std::size_t term = 0; term < fTerms.size(); ++term) counts.ofTerm[term] = CountSimilar(words, fTerms[term]);
  }
  return true;
}

bool TermCounter::CountLiterals(std::u16string_view text, TermCounts& counts) const {
  for (std::size_t term = 0; term < fLiterals.size(); ++term) {
    const auto count = [&](std::size_t, std::size_t) { ++counts.ofTerm[term]; };
    if (fLiterals[term]->ForEachMatch(text, count) == RegularExpression::Outcome::kGivenUp) return false;
  }
  return true;
}

// From each word on as far as the tree has a path.
void TermCounter::CountExactly(const WordList& words, TermCounts& counts) const {
  thread_local std::vector<std::uint32_t> ids;
  ids.clear();
  for (std::size_t index = 0; index < words.Count(); ++index) {
    const auto word = fWordByText.find(words[index]);
    ids.push_back(word == fWordByText.end() ? kNone : word->second);
  }
  for (auto first = ids.begin(); first != ids.end(); ++first) {
    std::uint32_t node = 0;
    for (auto id = first; id != ids.end() && *id != kNone; ++id) {
      const auto edge = fEdges.find(EdgeOf(node, *id));
      if (edge == fEdges.end()) break;
      node = edge->second;
      if (fTermOfNode[node] != kNone) ++counts.ofTerm[fTermOfNode[node]];
    }
  }
}

// All places where the words are similar enough, or the most similar ones of these.
std::uint32_t TermCounter::CountSimilar(const WordList& words, const Term& term) const {
  int limit = fSettings.maxDistance;
  std::uint32_t count = 0;
  for (std::size_t first = 0; first < words.Count(); ++first) {
    const std::optional<int> distance = DistanceAt(words, first, term, limit);
    if (!distance) continue;
    if (fCountsBestHits && *distance < limit) {
      limit = *distance;
      count = 0;
    }
    ++count;
  }
  return count;
}

}  // namespace KelTransformNS
