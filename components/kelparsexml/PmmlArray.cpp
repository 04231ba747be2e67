#include "components/kelparsexml/PmmlArray.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "components/kelparsexml/Lexical.h"
#include "components/kelparsexml/Utf8.h"

namespace KelXML_1_3 {
namespace {

/// Takes the values from an array's text, one after the other.
class ArrayText {
 public:
  explicit ArrayText(std::string_view text) : fRest(TrimXmlSpace(text)) {}

  /// Whether there was another value; it is valid until the next is taken.
  bool Take(std::string_view& value) {
    if (fRest.empty()) return false;
    value = fRest.front() == '"' ? TakeQuoted() : TakeTo(Find(IsXmlSpace));
    fRest.remove_prefix(Find([](char c) { return !IsXmlSpace(c); }));
    return true;
  }

 private:
  template <class Condition>
  [[nodiscard]] std::size_t Find(Condition condition) const {
    return static_cast<std::size_t>(std::find_if(fRest.begin(), fRest.end(), condition) - fRest.begin());
  }

  std::string_view TakeTo(std::size_t end) {
    const std::string_view value = fRest.substr(0, end);
    fRest.remove_prefix(value.size());
    return value;
  }

  // A quote that is never closed is part of the value, which goes to the end then.
  std::string_view TakeQuoted() {
    const std::size_t close = FindClosingQuote();
    if (close == std::string_view::npos) return TakeTo(close);
    const std::string_view quoted = TakeTo(close + 1);
    return WithoutEscapes(quoted.substr(1, quoted.size() - 2));
  }

  [[nodiscard]] std::size_t FindClosingQuote() const {
    std::size_t quote = fRest.find('"', 1);
    while (quote != std::string_view::npos && fRest[quote - 1] == '\\') quote = fRest.find('"', quote + 1);
    return quote;
  }

  std::string_view WithoutEscapes(std::string_view text) {
    constexpr std::string_view kEscapedQuote = "\\\"";
    if (text.find(kEscapedQuote) == std::string_view::npos) return text;
    fUnescaped.clear();
    for (std::size_t i = 0; i < text.size(); ++i) {
      if (text.substr(i).starts_with(kEscapedQuote)) ++i;
      fUnescaped += text[i];
    }
    return fUnescaped;
  }

  std::string_view fRest;
  std::string fUnescaped;
};

void CheckCount(const Element& array, std::size_t count) {
  const std::optional<int> declared = array.Integer("n");
  if (!declared || (*declared >= 0 && static_cast<std::size_t>(*declared) == count)) return;
  throw array.AttributeError("n", "the array has " + std::to_string(count) + " values");
}

void RequireArray(const Element& array) {
  if (!array) throw PmmlError("an <Array> is missing");
}

void RefuseChildren(const Element& array) {
  if (array.FirstChild()) throw array.FirstChild().Error("an array holds values only");
}

// The numbers in an element's text; none of no element.
std::vector<double> ReadNumbers(const Element& list) {
  RefuseChildren(list);
  std::vector<double> numbers;
  ArrayText text(list.Text());
  for (std::string_view value; text.Take(value);) {
    const std::optional<double> number = ParsePmmlNumber(value);
    if (!number) {
      throw list.Error("value " + std::to_string(numbers.size() + 1) + ", \"" + std::string(CutUtf8(value, 100)) +
                       "\", is not a number");
    }
    numbers.push_back(*number);
  }
  return numbers;
}

// --- Sparse arrays ---

struct Lists {
  Element indices;
  Element values;
};

// Both lists may be absent.
Lists FindLists(const Element& array, std::string_view valuesName) {
  Lists lists;
  for (Element child = array.FirstChild(); child; child = child.NextSibling()) {
    if (child.Is("Extension") || child.Name().starts_with("X-")) continue;
    if (!child.Is("Indices") && !child.Is(valuesName)) throw child.Error("is not supported in a sparse array");
    Element& list = child.Is("Indices") ? lists.indices : lists.values;
    if (list) throw child.Error("is a second one in its sparse array");
    list = child;
  }
  return lists;
}

std::optional<std::uint32_t> ReadLength(const Element& array) {
  const std::optional<int> length = array.Integer("n");
  if (length && *length < 0) throw array.AttributeError("n", "is negative");
  return length ? std::optional(static_cast<std::uint32_t>(*length)) : std::nullopt;
}

void RequireIntegers(const Element& array, double defaultValue, const std::vector<double>& numbers) {
  const auto isFraction = [](double number) { return number != std::trunc(number); };
  if (isFraction(defaultValue) || std::any_of(numbers.begin(), numbers.end(), isFraction)) {
    throw array.Error("it holds a value that is no integer");
  }
}

std::uint32_t PlaceOf(const Element& indices, double index, std::optional<std::uint32_t> length) {
  constexpr std::uint32_t kLargest = std::numeric_limits<std::int32_t>::max();
  if (index >= 1.0 && index <= length.value_or(kLargest) && index == std::trunc(index)) {
    return static_cast<std::uint32_t>(index) - 1;
  }
  throw indices.Error("an index is no integer from 1 to " + std::to_string(length.value_or(kLargest)));
}

void Sort(std::vector<SparseArray::Entry>& entries, const Element& indices) {
  using Entry = SparseArray::Entry;
  const auto isBefore = [](const Entry& a, const Entry& b) { return a.place < b.place; };
  if (!std::is_sorted(entries.begin(), entries.end(), isBefore)) std::sort(entries.begin(), entries.end(), isBefore);
  const auto twice = std::adjacent_find(entries.begin(), entries.end(),
                                        [](const Entry& a, const Entry& b) { return a.place == b.place; });
  if (twice != entries.end()) throw indices.Error("index " + std::to_string(twice->place + 1) + " stands there twice");
}

}  // namespace

std::vector<std::string> ReadStringArray(const Element& array, ArrayCount count) {
  RequireArray(array);
  RefuseChildren(array);
  std::vector<std::string> values;
  ArrayText text(array.Text());
  for (std::string_view value; text.Take(value);) values.emplace_back(value);
  if (count == ArrayCount::kChecked) CheckCount(array, values.size());
  return values;
}

std::vector<double> ReadNumberArray(const Element& array) {
  RequireArray(array);
  std::vector<double> numbers = ReadNumbers(array);
  CheckCount(array, numbers.size());
  return numbers;
}

SparseArray ReadSparseArray(const Element& array) {
  RequireArray(array);
  const bool isOfIntegers = array.Is("INT-SparseArray");
  SparseArray sparse;
  sparse.defaultValue = array.Number("defaultValue", 0.0);
  sparse.length = ReadLength(array);
  const auto [indices, values] = FindLists(array, isOfIntegers ? "INT-Entries" : "REAL-Entries");
  const std::vector<double> places = ReadNumbers(indices);
  const std::vector<double> numbers = ReadNumbers(values);
  if (places.size() != numbers.size()) {
    throw array.Error("it has " + std::to_string(places.size()) + " indices for " + std::to_string(numbers.size()) +
                      " values");
  }
  if (isOfIntegers) RequireIntegers(array, sparse.defaultValue, numbers);
  for (std::size_t i = 0; i < places.size(); ++i) {
    sparse.entries.push_back({PlaceOf(indices, places[i], sparse.length), numbers[i]});
  }
  Sort(sparse.entries, indices);
  return sparse;
}

}  // namespace KelXML_1_3
