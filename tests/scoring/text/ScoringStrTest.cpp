#include <string>

#include "scoring/text/ScoringStr.h"
#include "tests/scoring/text/XmlPlatform.h"

namespace KelScoring_20 {
namespace {

const char* const kNoChars = nullptr;
const XMLCh* const kNoText = nullptr;

std::u16string Text(const ScoringStr& string) { return string.xc_str() ? string.xc_str() : u"(null)"; }

std::string Repeated(const std::string& piece, int count) {
  std::string result;
  for (int i = 0; i < count; ++i) result += piece;
  return result;
}

TEST(ScoringStr, Sources_KeepNullAndEmptyApart) {
  EXPECT_EQ(ScoringStr().xc_str(), nullptr);
  EXPECT_EQ(ScoringStr(kNoChars).xc_str(), nullptr);
  EXPECT_EQ(ScoringStr(kNoText).xc_str(), nullptr);
  EXPECT_EQ(ScoringStr(ScoringStr()).xc_str(), nullptr);
  EXPECT_EQ(Text(ScoringStr(std::string())), u"");
  EXPECT_EQ(Text(ScoringStr("")), u"");
  EXPECT_EQ(Text(ScoringStr(u"")), u"");
  EXPECT_TRUE(ScoringStr().empty() && ScoringStr("").empty());
  EXPECT_EQ(ScoringStr().length() + ScoringStr("").length(), 0U);
}

TEST(ScoringStr, Assignment_ReplacesAndNullGivesNull) {
  ScoringStr string("old");
  EXPECT_EQ(Text(string = u"wide"), u"wide");
  EXPECT_EQ(Text(string = "narrow"), u"narrow");
  EXPECT_EQ(Text(string.assign(ScoringStr(u"other"))), u"other");
  EXPECT_EQ(Text(string.assign(XMLCh(u'c'))), u"c");
  EXPECT_EQ(Text(string.assign(XMLCh(0))), u"");
  EXPECT_EQ((string = kNoText).xc_str(), nullptr);
  EXPECT_EQ((ScoringStr("x") = kNoChars).xc_str(), nullptr);
  EXPECT_EQ((ScoringStr("x") = ScoringStr()).xc_str(), nullptr);
}

TEST(ScoringStr, Assignment_FromOwnText_KeepsIt) {
  ScoringStr string(u"prefix:name");
  const ScoringStr& itself = string;
  EXPECT_EQ(Text(string = itself), u"prefix:name");
  EXPECT_EQ(Text(string = string.xc_str()), u"prefix:name");
  EXPECT_EQ(Text(string.append(string.xc_str() + 6)), u"prefix:name:name");
  EXPECT_EQ(Text(string = string.xc_str() + 7), u"name:name");
}

TEST(ScoringStr, Comparisons_TreatNullDifferently) {
  EXPECT_TRUE(ScoringStr().equals(kNoText));
  EXPECT_TRUE(ScoringStr().equals(u""));
  EXPECT_FALSE(ScoringStr() == ScoringStr());
  EXPECT_FALSE(ScoringStr().equals(ScoringStr("")));
  EXPECT_FALSE(ScoringStr("") == ScoringStr());
  EXPECT_TRUE(ScoringStr("") == ScoringStr(u""));
  EXPECT_TRUE(ScoringStr("ab") == ScoringStr(u"ab"));
  EXPECT_FALSE(ScoringStr("ab") == ScoringStr("aB"));
}

TEST(ScoringStr, Append_NothingLeavesTheArray) {
  ScoringStr null;
  null.append("").append(kNoText).append(XMLCh(0)).append(ScoringStr());
  EXPECT_EQ(null.xc_str(), nullptr);

  ScoringStr string("a");
  const XMLCh* const before = string.xc_str();
  string.append(u"").append(kNoChars).append(XMLCh(0));
  EXPECT_EQ(string.xc_str(), before);
  EXPECT_EQ(Text(string.append("b").append(u"c").append(XMLCh(u'd')).append(ScoringStr("e"))), u"abcde");
  EXPECT_EQ(string.length(), 5U);
}

TEST(ScoringStr, ContainsString_SearchesAllPositions) {
  const ScoringStr string("abab");
  EXPECT_TRUE(string.ContainsString(u"abab"));
  EXPECT_TRUE(string.ContainsString(u"ba"));
  EXPECT_TRUE(string.ContainsString(u""));
  EXPECT_TRUE(ScoringStr("").ContainsString(u""));
  EXPECT_FALSE(string.ContainsString(u"ababa"));
  EXPECT_FALSE(string.ContainsString(u"bb"));
  EXPECT_FALSE(string.ContainsString(nullptr));
  EXPECT_FALSE(ScoringStr().ContainsString(u""));
}

struct ReplaceCase {
  const char* text;
  const XMLCh* from;
  const XMLCh* to;
  unsigned int count;
  const XMLCh* result;  // "(null)" for the null state
} const kReplaceCases[] = {
    {"a.b.c", u".", u"--", 2, u"a--b--c"},
    {"a.b.c", u"b", nullptr, 1, u"a..c"},
    {"a.b.c", u"xyz", u"!", 0, u"a.b.c"},
    {"a.b.c", u"", u"!", 0, u"a.b.c"},
    {"a.b.c", nullptr, u"!", 0, u"a.b.c"},
    {"a.b.c", u"a.b.c!", u"!", 0, u"a.b.c"},
    {"whole", u"whole", nullptr, 1, u"(null)"},
    {"whole", u"whole", u"", 1, u"(null)"},
    {"aaaaa", u"aa", u"b", 2, u"bba"},
    {"aa", u"a", u"aa", 2, u"aaaa"},  // what was put in is not searched again
};

TEST(ScoringStr, ReplaceSubstring_ReplacesFromLeftToRight) {
  for (const ReplaceCase& row : kReplaceCases) {
    ScoringStr string(row.text);
    const XMLCh* const before = string.xc_str();
    EXPECT_EQ(string.replaceSubstring(row.from, row.to), row.count) << row.text;
    EXPECT_EQ(Text(string), row.result) << row.text;
    EXPECT_EQ(string.xc_str() == before, row.count == 0) << row.text;
  }
  EXPECT_EQ(ScoringStr().replaceSubstring(u"a", u"b"), 0U);
}

TEST(ScoringStr, TruncateString_CountsFromTheEnd) {
  ScoringStr string("abcde");
  string.truncateString(2);
  EXPECT_EQ(Text(string), u"abc");
  string.truncateString(4);
  EXPECT_EQ(Text(string), u"");
  string.truncateString(1);
  ScoringStr null;
  null.truncateString(1);
  EXPECT_EQ(null.xc_str(), nullptr);
}

TEST(ScoringStr, ConvertToInteger_TakesDigitsOnlyAndWraps) {
  const std::pair<const char*, unsigned int> cases[] = {{"123", 123},      {"12a", 0},        {"-1", 0}, {" 1", 0},
                                                        {"", 0},           {"4294967296", 0},  // 2 to the power of 32
                                                        {"4294967297", 1}, {"007", 7}};
  for (const auto& [text, number] : cases) EXPECT_EQ(ScoringStr(text).convertToInteger(), number) << text;
  EXPECT_EQ(ScoringStr().convertToInteger(), 0U);
}

TEST(ScoringStr, Utf8_SurvivesTheRoundTripAtEveryBlockBoundary) {
  for (const std::string& character :
       {std::string("x"), std::string("\xC3\xA9"), std::string("\xE2\x82\xAC"), std::string("\xF0\x9F\x98\x80")}) {
    for (int shift = 0; shift < 4; ++shift) {
      const std::string utf8 = std::string(static_cast<std::size_t>(shift), '.') + Repeated(character, 1100);
      ScoringStr string;
      EXPECT_EQ(string.assignUTF8(utf8).toUTF8(), utf8) << character << " shifted by " << shift;
    }
  }
  EXPECT_EQ(ScoringStr().toUTF8(), "");
}

TEST(ScoringStr, AssignUTF8_MalformedBytes_KeepTheBlocksInFront) {
  ScoringStr string("old");
  EXPECT_EQ(string.assignUTF8("ab\xC3(").xc_str(), nullptr);  // the one block failed
  EXPECT_EQ((string = "old").assignUTF8("").xc_str(), nullptr);
  EXPECT_EQ(Text(string.assignUTF8(std::string("ab\0cd", 5))), u"ab");  // a zero byte ends its block
  EXPECT_EQ(string.assignUTF8(std::string("\0cd", 3)).xc_str(), nullptr);
  EXPECT_EQ(Text(string.assignUTF8("ab\xE2\x82")), u"ab");  // the input ends within a character
  EXPECT_EQ(string.assignUTF8(Repeated("x", 1000) + Repeated("y", 500) + "\xC3(").length(), 1000U);
  EXPECT_EQ(string.assignUTF8(Repeated("x", 1000) + std::string("\0y", 2)).length(), 1000U);
}

TEST(ScoringStr, ToUTF8_HalfAPairAtTheEnd_GivesTheTextInFront) {
  const XMLCh text[] = {u'a', u'b', XMLCh(0xD83D), 0};
  EXPECT_EQ(ScoringStr(text).toUTF8(), "ab");
}

}  // namespace
}  // namespace KelScoring_20
