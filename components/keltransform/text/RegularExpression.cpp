#include "components/keltransform/text/RegularExpression.h"

#include <ctime>
#include <new>
#include <unicode/uregex.h>
#include <utility>

#include "components/keltransform/Attributes.h"
#include "components/keltransform/text/Utf16.h"

namespace KelTransformNS {

using KelXML_1_3::Element;

namespace {

constexpr std::int32_t kMaxStackBytes = 8000000;

std::int32_t SizeOf(std::u16string_view text) noexcept { return static_cast<std::int32_t>(text.size()); }

// The processor time of this thread, which a busy machine doesn't use up.
long MillisecondsOfThisThread() noexcept {
  timespec now{};
  (void)clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<long>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

bool IsBefore(const void* deadline) noexcept {
  return MillisecondsOfThisThread() < *static_cast<const long*>(deadline);
}

// The clock costs more than a step, so it is looked at now and then only.
constexpr std::int64_t kStepsBetweenLooks = 64;

// The library asks at each ten thousandth step within one attempt to match, ...
UBool GoesOn(const void* deadline, std::int32_t /*steps*/) { return IsBefore(deadline) ? 1 : 0; }

// ... and before it tries another place of the text, which lies one or two units further on.
UBool GoesOnAt(const void* deadline, std::int64_t place) {
  return place % kStepsBetweenLooks > 1 || IsBefore(deadline) ? 1 : 0;
}

URegularExpression* Open(std::string_view pattern, std::uint32_t flags, const Element& element) {
  std::u16string text;
  ToUtf16(pattern, text);
  UErrorCode code = U_ZERO_ERROR;
  UParseError where{};
  URegularExpression* const opened =
      text.empty() ? nullptr : uregex_open(text.data(), SizeOf(text), flags, &where, &code);
  if (opened == nullptr || U_FAILURE(code) != 0) {
    uregex_close(opened);
    throw element.Error(Quoted(pattern) + " is no regular expression");
  }
  return opened;
}

}  // namespace

void RegularExpression::CloseMatcher::operator()(URegularExpression* matcher) const noexcept { uregex_close(matcher); }

RegularExpression::RegularExpression(std::string_view pattern, bool isCaseSensitive, const Element& element)
    : fPattern(Open(pattern, isCaseSensitive ? 0U : static_cast<std::uint32_t>(UREGEX_CASE_INSENSITIVE), element)) {}

RegularExpression::~RegularExpression() {
  for (auto& kept : fFree) MatcherPointer(kept.load()).reset();
}

RegularExpression::MatcherPointer RegularExpression::TakeMatcher() const {
  for (auto& kept : fFree) {
    if (URegularExpression* const matcher = kept.exchange(nullptr)) return MatcherPointer(matcher);
  }
  UErrorCode code = U_ZERO_ERROR;
  MatcherPointer matcher(uregex_clone(fPattern.get(), &code));
  if (U_FAILURE(code) == 0) uregex_setStackLimit(matcher.get(), kMaxStackBytes, &code);
  if (U_FAILURE(code) != 0) throw std::bad_alloc();
  return matcher;
}

void RegularExpression::ReturnMatcher(MatcherPointer matcher) const noexcept {
  for (auto& kept : fFree) {
    URegularExpression* empty = nullptr;
    if (kept.compare_exchange_strong(empty, matcher.get())) return (void)matcher.release();
  }
}

RegularExpression::Search::Search(const RegularExpression& expression, std::u16string_view text)
    : fExpression(expression),
      fText(text),
      fMatcher(expression.TakeMatcher()),
      fDeadline(MillisecondsOfThisThread() + kMaxMilliseconds),
      fIsGivenUp(text.size() > kMaxUnits) {
  if (fIsGivenUp) return;
  UErrorCode code = U_ZERO_ERROR;
  uregex_setMatchCallback(fMatcher.get(), GoesOn, &fDeadline, &code);
  uregex_setFindProgressCallback(fMatcher.get(), GoesOnAt, &fDeadline, &code);
  uregex_setText(fMatcher.get(), text.empty() ? u"" : text.data(), SizeOf(text), &code);
  fIsGivenUp = U_FAILURE(code) != 0;
}

RegularExpression::Search::~Search() { fExpression.ReturnMatcher(std::move(fMatcher)); }

bool RegularExpression::Search::Next(std::size_t& begin, std::size_t& end) {
  if (fIsGivenUp) return false;
  UErrorCode code = U_ZERO_ERROR;
  const bool isFound = uregex_findNext(fMatcher.get(), &code) != 0;
  fIsGivenUp = U_FAILURE(code) != 0;
  if (!isFound || fIsGivenUp) return false;
  begin = static_cast<std::size_t>(uregex_start(fMatcher.get(), 0, &code));
  end = static_cast<std::size_t>(uregex_end(fMatcher.get(), 0, &code));
  fIsGivenUp = ++fMatchCount % kStepsBetweenLooks == 0 && !IsBefore(&fDeadline);
  return !fIsGivenUp;
}

std::u16string_view RegularExpression::Search::Group(int number) const {
  UErrorCode code = U_ZERO_ERROR;
  const std::int32_t begin = uregex_start(fMatcher.get(), number, &code);
  const std::int32_t end = uregex_end(fMatcher.get(), number, &code);
  if (U_FAILURE(code) != 0 || begin < 0) return {};
  return fText.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin));
}

RegularExpression::Outcome RegularExpression::Search::Result() const noexcept {
  if (fIsGivenUp) return Outcome::kGivenUp;
  return fMatchCount > 0 ? Outcome::kFound : Outcome::kNotFound;
}

RegularExpression::Outcome RegularExpression::Find(std::u16string_view text) const {
  Search search(*this, text);
  std::size_t begin = 0;
  std::size_t end = 0;
  (void)search.Next(begin, end);
  return search.Result();
}

namespace {

// Takes a replacement apart into literal characters and groups.
class ReplacementReader {
 public:
  ReplacementReader(const URegularExpression* pattern, std::u16string_view text)
      : fPattern(const_cast<URegularExpression*>(pattern)), fRest(text) {
    UErrorCode code = U_ZERO_ERROR;
    fGroupCount = uregex_groupCount(fPattern, &code);
  }

  // False if there is a reference to a group that isn't there.
  template <typename PutCharacter, typename PutGroup>
  bool ForEach(const PutCharacter& putCharacter, const PutGroup& putGroup) {
    while (!fRest.empty()) {
      const char16_t unit = Take();
      if (unit != u'$') {
        putCharacter(unit == u'\\' && !fRest.empty() ? Take() : unit);
        continue;
      }
      const int group = fRest.starts_with(u'{') ? TakeName() : TakeNumber();
      if (group < 0) return false;
      putGroup(group);
    }
    return true;
  }

 private:
  static constexpr int kNoGroup = -1;

  char16_t Take() {
    const char16_t unit = fRest.front();
    fRest.remove_prefix(1);
    return unit;
  }

  // As many digits as there are groups for: with nine groups, "$10" is the first one and a zero.
  int TakeNumber() {
    int number = kNoGroup;
    while (!fRest.empty() && fRest.front() >= u'0' && fRest.front() <= u'9') {
      const int longer = (number < 0 ? 0 : number) * 10 + (fRest.front() - u'0');
      if (longer > fGroupCount) break;
      number = longer;
      fRest.remove_prefix(1);
    }
    return number;
  }

  int TakeName() {
    const std::size_t end = fRest.find(u'}');
    if (end == std::u16string_view::npos) return kNoGroup;
    const std::u16string_view name = fRest.substr(1, end - 1);
    fRest.remove_prefix(end + 1);
    UErrorCode code = U_ZERO_ERROR;
    const int group = uregex_groupNumberFromName(fPattern, name.data(), SizeOf(name), &code);
    return U_FAILURE(code) != 0 ? kNoGroup : group;
  }

  URegularExpression* fPattern;  // the interface knows no const, but asking for groups changes nothing
  std::u16string_view fRest;
  int fGroupCount = 0;
};

}  // namespace

RegularExpression::Outcome RegularExpression::Replace(std::u16string_view text, std::u16string_view replacement,
                                                      std::u16string& result) const {
  Search search(*this, text);
  std::size_t begin = 0;
  std::size_t end = 0;
  std::size_t done = 0;
  result.clear();
  while (search.Next(begin, end)) {
    result.append(text.substr(done, begin - done));
    done = end;
    ReplacementReader reader(fPattern.get(), replacement);
    const auto append = [&](std::u16string_view piece) {
      if (result.size() <= kMaxUnits) result.append(piece);
    };
    const bool isWhole = reader.ForEach(
        [&](char16_t unit) {
          append({&unit, 1});
        },
        [&](int group) { append(search.Group(group)); });
    if (!isWhole || result.size() > kMaxUnits) search.GiveUp();
  }
  result.append(text.substr(done));
  return search.Result();
}

bool RegularExpression::TakesReplacement(std::string_view replacement) const {
  std::u16string text;
  ToUtf16(replacement, text);
  return ReplacementReader(fPattern.get(), text).ForEach([](char16_t) {}, [](int) {});
}

}  // namespace KelTransformNS
