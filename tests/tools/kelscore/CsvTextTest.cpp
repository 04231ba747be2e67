#include <gtest/gtest.h>

#include "tools/kelscore/CsvText.h"

namespace kelscore {
namespace {

TEST(ReadNumber, WholeFiniteNumbersOnly) {
  const struct {
    const char* text;
    std::optional<double> expected;
  } kCases[] = {
      {"0", 0.0},
      {"-1.5", -1.5},
      {"+2", 2.0},
      {" 3 ", 3.0},
      {"\t4\r\n", 4.0},
      {"1e3", 1000.0},
      {".5", 0.5},
      {"5.", 5.0},
      {"1E-2", 0.01},
      {"0.1", 0.1},
      {"", std::nullopt},
      {" ", std::nullopt},
      {"abc", std::nullopt},
      {"1x", std::nullopt},
      {"1 2", std::nullopt},
      {"+-1", std::nullopt},
      {"+", std::nullopt},
      {"1,5", std::nullopt},
      {"0x10", std::nullopt},
      {"nan", std::nullopt},
      {"inf", std::nullopt},
      {"1e999", std::nullopt},  // nothing finite
  };
  for (const auto& c : kCases) EXPECT_EQ(ReadNumber(c.text), c.expected) << '"' << c.text << '"';
}

TEST(AppendNumber, ShortestTextThatReadsBack) {
  for (const auto& [number, expected] : {std::pair(0.1, "0.1"), {20.0, "20"}, {1e300, "1e+300"}, {-0.5, "-0.5"}}) {
    std::string text;
    AppendNumber(text, number);
    EXPECT_EQ(text, expected);
  }
}

TEST(AppendField, QuotesOnlyWhatNeedsThem) {
  const struct {
    const char* field;
    char delimiter;
    const char* expected;
  } kCases[] = {
      {"plain text", ',', "plain text"}, {"", ',', ""},
      {"a,b", ',', "\"a,b\""},           {"a,b", ';', "a,b"},
      {"a;b", ';', "\"a;b\""},           {"5\"", ',', "\"5\"\"\""},
      {"a\nb", ',', "\"a\nb\""},         {"a\rb", ',', "\"a\rb\""},
  };
  for (const auto& c : kCases) {
    std::string text = "x";
    AppendField(text, c.field, c.delimiter);
    EXPECT_EQ(text, std::string("x") + c.expected);
  }
}

TEST(Quoted, AnyText_StaysOneShortLine) {
  EXPECT_EQ(Quoted("abc"), "\"abc\"");
  EXPECT_EQ(Quoted("a\nb\tc\x1b"), "\"a\\nb\\tc\\x1b\"");
  EXPECT_EQ(Quoted(std::string(70, 'x')), "\"" + std::string(60, 'x') + "...\"");
  // 59 letters and a letter of two bytes: cut before it, not in it.
  EXPECT_EQ(Quoted(std::string(59, 'x') + "\xC3\xA4"
                                          "yyy"),
            "\"" + std::string(59, 'x') + "...\"");
}

}  // namespace
}  // namespace kelscore
