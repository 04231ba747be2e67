#include "components/kelparsexml/PmmlArray.h"

#include <algorithm>

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

}  // namespace

std::vector<std::string> ReadStringArray(const Element& array, ArrayCount count) {
  RequireArray(array);
  std::vector<std::string> values;
  ArrayText text(array.Text());
  for (std::string_view value; text.Take(value);) values.emplace_back(value);
  if (count == ArrayCount::kChecked) CheckCount(array, values.size());
  return values;
}

std::vector<double> ReadNumberArray(const Element& array) {
  RequireArray(array);
  std::vector<double> numbers;
  ArrayText text(array.Text());
  for (std::string_view value; text.Take(value);) {
    const std::optional<double> number = ParsePmmlNumber(value);
    if (!number) {
      throw array.Error("value " + std::to_string(numbers.size() + 1) + ", \"" + std::string(CutUtf8(value, 100)) +
                        "\", is not a number");
    }
    numbers.push_back(*number);
  }
  CheckCount(array, numbers.size());
  return numbers;
}

}  // namespace KelXML_1_3
