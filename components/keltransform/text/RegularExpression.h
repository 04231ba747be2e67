#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "components/kelparsexml/ElementTree.h"

struct URegularExpression;

namespace KelTransformNS {

/// A regular expression, compiled once. Immutable; any number of threads may match at the same time, each with a
/// matcher of its own, which is kept for the next record.
///
/// A pattern can take exponential time. So a search is given up after `kMaxMilliseconds` of processor time, or if it
/// needs too much memory, and texts have `kMaxUnits` at most.
class RegularExpression {
 public:
  static constexpr std::size_t kMaxUnits = std::size_t{1} << 20U;
  static constexpr long kMaxMilliseconds = 250;

  enum class Outcome { kFound, kNotFound, kGivenUp };

  /// Throws an error about `element` if the pattern is none.
  RegularExpression(std::string_view pattern, bool isCaseSensitive, const KelXML_1_3::Element& element);
  RegularExpression(const RegularExpression&) = delete;
  RegularExpression& operator=(const RegularExpression&) = delete;
  ~RegularExpression();

  /// Looks for a match anywhere in the text.
  [[nodiscard]] Outcome Find(std::u16string_view text) const;
  /// The text in `result` with each match replaced. In the replacement "$1" and "${name}" are groups of the match, and
  /// a backslash takes the meaning from the character that follows it. Given up, too, if it refers to a group that
  /// isn't there, or if the result has more than `kMaxUnits`.
  [[nodiscard]] Outcome Replace(std::u16string_view text, std::u16string_view replacement,
                                std::u16string& result) const;
  /// Whether the replacement refers to no group but those of the pattern.
  [[nodiscard]] bool TakesReplacement(std::string_view replacement) const;
  /// Calls `take(begin, end)` for each match that isn't empty.
  template <typename Take>
  [[nodiscard]] Outcome ForEachMatch(std::u16string_view text, const Take& take) const {
    Search search(*this, text);
    std::size_t begin = 0;
    std::size_t end = 0;
    while (search.Next(begin, end)) {
      if (begin != end) take(begin, end);
    }
    return search.Result();
  }

 private:
  struct CloseMatcher {
    void operator()(URegularExpression* matcher) const noexcept;
  };
  using MatcherPointer = std::unique_ptr<URegularExpression, CloseMatcher>;

  // One search through a text, with a matcher that nobody else uses meanwhile.
  class Search {
   public:
    Search(const RegularExpression& expression, std::u16string_view text);
    Search(const Search&) = delete;
    Search& operator=(const Search&) = delete;
    ~Search();

    /// The next match; false if there is none, or if the search is given up.
    bool Next(std::size_t& begin, std::size_t& end);
    /// A group of that match; empty if it took no part.
    [[nodiscard]] std::u16string_view Group(int number) const;
    void GiveUp() noexcept { fIsGivenUp = true; }
    [[nodiscard]] Outcome Result() const noexcept;

   private:
    const RegularExpression& fExpression;
    const std::u16string_view fText;
    MatcherPointer fMatcher;
    long fDeadline;
    bool fIsGivenUp = false;
    std::int64_t fMatchCount = 0;
  };

  static constexpr std::size_t kKeptMatchers = 16;

  MatcherPointer TakeMatcher() const;
  void ReturnMatcher(MatcherPointer matcher) const noexcept;

  MatcherPointer fPattern;  // matches nothing itself, so that it can be cloned by any thread
  mutable std::array<std::atomic<URegularExpression*>, kKeptMatchers> fFree{};
};

}  // namespace KelTransformNS
