// The gate's view of markup, at every place where a block of bytes may end.

#include <gtest/gtest.h>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "components/kelparsexml/MarkupGate.h"
#include "tests/support/CaseName.h"

namespace {

using KelXML_1_3::ByteUnits;
using KelXML_1_3::MarkupGate;
using KelXML_1_3::Utf16BigUnits;
using KelXML_1_3::Utf16LittleUnits;

struct Passed {
  std::string text;
  std::string refusal;
  bool operator==(const Passed&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const Passed& passed) {
  return stream << passed.text << " | " << passed.refusal;
}

// Feeds a gate as a stream does: so many new units at a time, behind those that it held back.
template <class Units>
Passed Feed(std::string_view text, std::size_t block, int maxAttributes = 3) {
  using Unit = typename Units::Unit;
  MarkupGate<Units> gate(maxAttributes);
  Passed passed;
  std::vector<Unit> waiting;
  for (std::size_t at = 0;;) {
    const bool atEnd = text.size() - at <= block;
    for (const char c : text.substr(at, block)) waiting.push_back(Units::Of(c));
    at = std::min(text.size(), at + block);
    const Unit* const begin = waiting.data();
    const auto count = gate.Pass(waiting.data(), waiting.data() + waiting.size(), atEnd) - begin;
    for (const Unit unit : std::vector<Unit>(waiting.begin(), waiting.begin() + count)) {
      passed.text += static_cast<char>(sizeof(Unit) == 2 && Units::Of('a') != u'a' ? unit >> 8 : unit);
    }
    waiting.erase(waiting.begin(), waiting.begin() + count);
    passed.refusal = gate.Refusal();
    if (atEnd || !passed.refusal.empty()) return passed;
  }
}

struct Document {
  const char* name;
  std::string text;
  Passed expected;
};

std::ostream& operator<<(std::ostream& stream, const Document& document) { return stream << document.text; }

Document Honest(const char* name, const std::string& text) { return {name, text, {text, ""}}; }
Document Blanked(const char* name, const std::string& before, const std::string& type, const std::string& after) {
  std::string blanks = type;
  for (char& c : blanks) {
    if (c != '\n' && c != '\r') c = ' ';
  }
  return {name, before + type + after, {before + blanks + after, ""}};
}
Document Refused(const char* name, const std::string& passing, const std::string& rest, const std::string& refusal) {
  return {name, passing + rest, {passing, refusal}};
}

constexpr auto kSubset = "a document type declaration with an internal subset is not accepted";
constexpr auto kAttributes = "an element has more than 3 attributes";

std::vector<Document> Documents() {
  return {
      Honest("plain", "<?xml version=\"1.0\"?>\n<a b='1' c=\"2\"><d/>text</a>\n"),
      Honest("marks_in_values", R"(<a b='<>"/' c=">'<!DOCTYPE x ["><d e='/'/></a>)"),
      Honest("slash_before_quote", R"(<a b="x/"></a><a b="/"/>)"),
      Honest("comment", "<!-- <!DOCTYPE x [ ]> -> > \" ' -- --><a/>"),
      Honest("comment_of_dashes", "<!----><a/><!--->--><!-- ---><a/>"),
      Honest("comment_not_closed_by_its_opening", "<!--> <!DOCTYPE x [ --><a/>"),
      Honest("character_data", "<a><![CDATA[ <!DOCTYPE x [ ]> ]> ]] > '\"<b> ]]]></a>"),
      Honest("character_data_of_brackets", "<a><![CDATA[]]><![CDATA[]>]]]]></a>"),
      Honest("instruction", "<?p <!DOCTYPE x [ > ' ?? \"?><a><?q?><?r <b>?></a>"),
      Honest("instruction_not_closed_by_its_opening", "<?> <!DOCTYPE x [ ?><a/>"),
      Honest("quotes_in_text", "<a>it's 5\" <b/> '<c/></a>"),
      Honest("three_attributes", "<a b='' c='' d=''/><a b='' c='' d=''></a>"),
      Honest("type_without_identifier", "<!DOCTYPE a><a/>"),
      Honest("cut_in_tag", "<a b='1"),
      Honest("cut_in_opening", "<a><!"),
      Honest("cut_in_comment", "<a><!-- -"),
      // Where the parser doesn't take it for a declaration, it isn't one.
      Honest("type_in_content", "<a><!DOCTYPE x SYSTEM 'y'></a>"),
      Blanked("external", "<?xml?>\n", "<!DOCTYPE a SYSTEM 'x>['>", "\n<a/>"),
      Blanked("external_public", "", "<!DOCTYPE a\nPUBLIC \"p\"\r\n'q'\t>", "<a/>"),
      Refused("subset", "<?xml?> ", "<!DOCTYPE a [<!ENTITY b 'c'>]><a/>", kSubset),
      Refused("subset_behind_identifier", "", "<!DOCTYPE a PUBLIC '[' \"]\" [ ]><a/>", kSubset),
      Refused("subset_behind_fake_comment_end", "<!-- -- > -->", "<!DOCTYPE a [ ]>", kSubset),
      Refused("second_type", "<!DOCTYPE a>", "<!DOCTYPE a SYSTEM 'b'><a/>",
              "a second document type declaration is not accepted"),
      Refused("type_not_closed", " ", "<!DOCTYPE a SYSTEM '", "the document type declaration is not closed"),
      Refused("four_attributes", "<a><a b='' c='' d='' e=", "''/>", kAttributes),
  };
}

class MarkupGateTest : public testing::TestWithParam<Document> {};

TEST_P(MarkupGateTest, AnyBlockSize_SameBytesPass) {
  const Document& document = GetParam();
  for (std::size_t block = 1; block <= document.text.size() + 1; ++block) {
    SCOPED_TRACE(block);
    EXPECT_EQ(Feed<ByteUnits>(document.text, block), document.expected);
    EXPECT_EQ(Feed<Utf16LittleUnits>(document.text, block), document.expected);
    EXPECT_EQ(Feed<Utf16BigUnits>(document.text, block), document.expected);
  }
}

INSTANTIATE_TEST_SUITE_P(Documents, MarkupGateTest, testing::ValuesIn(Documents()), KelTest::CaseName());

// The marks are found 64 units at a time: every construct at every place of such a group.
TEST(MarkupGateTest, AnyOffset_SameBytesPass) {
  for (const Document& document : Documents()) {
    for (std::size_t offset = 0; offset < 64; ++offset) {
      SCOPED_TRACE(document.name + std::string(" at ") + std::to_string(offset));
      const std::string blanks(offset, ' ');
      const Passed expected{blanks + document.expected.text, document.expected.refusal};
      EXPECT_EQ(Feed<ByteUnits>(blanks + document.text, 1 << 20), expected);
      EXPECT_EQ(Feed<Utf16BigUnits>(blanks + document.text, 1 << 20), expected);
    }
  }
}

std::string Repeat(std::string_view text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) all += text;
  return all;
}

TEST(MarkupGateTest, Depth_EndsBeforeElement10001) {
  const std::string deep = Repeat("<a>", 10'000);
  const std::string honest = Repeat("<b/><c></c>", 20'000) + deep + Repeat("</a>", 10'000);
  EXPECT_EQ(Feed<ByteUnits>(honest, 5000), (Passed{honest, ""}));
  EXPECT_EQ(Feed<ByteUnits>(deep + "<a/>", 5000), (Passed{deep, "elements are nested deeper than 10000"}));
}

TEST(MarkupGateTest, DocumentType_EndsWhenLongerThanBuffered) {
  const std::string honest = "<!DOCTYPE a SYSTEM '" + std::string(30'000, 'x') + "'>";
  EXPECT_EQ(Feed<ByteUnits>(honest + "<a/>", 4096), (Passed{std::string(honest.size(), ' ') + "<a/>", ""}));
  const std::string endless = "<!DOCTYPE a SYSTEM '" + std::string(40'000, 'x') + "'><a/>";
  EXPECT_EQ(Feed<ByteUnits>(endless, 4096), (Passed{"", "the document type declaration is too long"}));
}

}  // namespace
