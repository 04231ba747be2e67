#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/components/keltransform/TransformTestSupport.h"
#include "tests/support/CaseName.h"
#include "tests/support/XmlPlatform.h"

namespace {

using namespace KelTransformTest;
using KelTest::CaseName;
using testing::HasSubstr;

const auto* const kPlatform = KelTest::XmlPlatform::KeepUp();
const Value kNull;

std::string Index(const std::string& term, const std::string& attributes, const std::string& tables = "") {
  return "<TextIndex textField=\"s\" " + attributes + ">" + tables + "<Constant dataType=\"string\">" + term +
         "</Constant></TextIndex>";
}

std::string Row(const std::string& from, const std::string& to, const std::string& more = "") {
  return "<row><string>" + from + "</string><stem>" + to + "</stem>" + more + "</row>";
}

std::string Pattern(const std::string& from, const std::string& to) { return Row(from, to, "<regex>true</regex>"); }

std::string Table(const std::string& rows, const std::string& attributes = "") {
  return "<TextIndexNormalization " + attributes + "><InlineTable>" + rows + "</InlineTable></TextIndexNormalization>";
}

// How often the term stands in the text, counted by hand.
struct CountCase {
  const char* name;
  const char* text;
  std::string index;
  Value expected;
};

void PrintTo(const CountCase& row, std::ostream* stream) { *stream << row.index << " of \"" << row.text << '"'; }

class TextIndexTest : public testing::TestWithParam<CountCase> {};

TEST_P(TextIndexTest, TextIndex_KnownAnswer) {
  const Value result = Evaluate("double", GetParam().index, {{"s", GetParam().text}});
  ASSERT_EQ(result.GetType(), GetParam().expected.GetType()) << Show(result);
  EXPECT_DOUBLE_EQ(result.GetReal(), GetParam().expected.GetReal());
}

// "quick" stands there four times, which is more often than any other word, and "fox" twice.
constexpr const char* kFox = "The quick fox. A QUICK fox jumps;\tquick, (quick)!";

INSTANTIATE_TEST_SUITE_P(
    Words, TextIndexTest,
    testing::Values(
        CountCase{"any_case", kFox, Index("Quick", ""), 4},
        CountCase{"with_case", kFox, Index("quick", R"(isCaseSensitive="true")"), 3},
        CountCase{"two_words", kFox, Index("quick fox", ""), 2},
        CountCase{"punctuation_between", kFox, Index("fox a", ""), 1},
        CountCase{"a_part_of_a_word", kFox, Index("qui", ""), 0},
        CountCase{"begin_of_a_term_only", kFox, Index("fox jumps high", ""), 0},
        CountCase{"places_overlap", "a a a", Index("a a", ""), 2},
        CountCase{"other_scripts", "STRASSE straße", Index("Straße", ""), 2},
        CountCase{"binary", kFox, Index("quick", R"(localTermWeights="binary")"), 1},
        CountCase{"binary_none", kFox, Index("dog", R"(localTermWeights="binary")"), 0},
        CountCase{"logarithmic", kFox, Index("quick", R"(localTermWeights="logarithmic")"), std::log10(5.0)},
        CountCase{"augmented", kFox, Index("fox", R"(localTermWeights="augmentedNormalizedTermFrequency")"), 0.75},
        CountCase{"augmented_none", kFox, Index("dog", R"(localTermWeights="augmentedNormalizedTermFrequency")"), 0},
        CountCase{"separator", "a,b;;b c", Index("b", R"(wordSeparatorCharacterRE="[,;]")"), 1},
        CountCase{"number_in_a_text_field", "", Index("2.5", ""), 0},
        CountCase{"no_tokens", kFox, Index("qui", R"(tokenize="false")"), 4},
        CountCase{"no_tokens_with_case", kFox, Index("k fox.", R"(tokenize="false" isCaseSensitive="true")"), 1},
        CountCase{"no_tokens_don_t_overlap", "aaaaa", Index("aa", R"(tokenize="false")"), 2}),
    CaseName());

INSTANTIATE_TEST_SUITE_P(
    Similar, TextIndexTest,
    testing::Values(
        CountCase{"one_letter_less", kFox, Index("quik", R"(maxLevenshteinDistance="1")"), 4},
        CountCase{"too_far", kFox, Index("quik fax", R"(maxLevenshteinDistance="1")"), 0},
        CountCase{"sum_of_the_words", kFox, Index("quik fax", R"(maxLevenshteinDistance="2")"), 2},
        CountCase{"all_hits", "color colour colr", Index("color", R"(maxLevenshteinDistance="1")"), 3},
        CountCase{"best_hits", "colr color colour color",
                  Index("color", R"(maxLevenshteinDistance="1" countHits="bestHits")"), 2},
        CountCase{"best_hits_that_aren_t_equal", "color colour colours",
                  Index("colouur", R"(maxLevenshteinDistance="2" countHits="bestHits")"), 1},
        CountCase{"a_character_of_two_units", "ab a𝒳 ba", Index("a𝒳b", R"(maxLevenshteinDistance="1")"), 2},
        CountCase{"more_similar_words_than_equal_ones", "colr color",
                  Index("color", R"(maxLevenshteinDistance="1" localTermWeights="augmentedNormalizedTermFrequency")"),
                  1}),
    CaseName());

const std::string kPhrases = Table(Pattern("interfaces?", "interface") + Pattern("is|are|seem(ed|s?)|were", "be") +
                                   Pattern("easy to (\\w+)", "$1_well")) +
                             Table(Pattern("interface be (use_well|good)", "ui_good"));

INSTANTIATE_TEST_SUITE_P(
    Normalized, TextIndexTest,
    testing::Values(
        CountCase{"patterns_in_two_tables", "The Interfaces are easy to use.", Index("ui_good", "", kPhrases), 1},
        CountCase{"patterns_without_match", "The interface broke.", Index("ui_good", "", kPhrases), 0},
        CountCase{"words", "days Days, holidays", Index("day", "", Table(Row("days", "day"))), 2},
        CountCase{"phrase", "I love New York, (new york)!", Index("ny", "", Table(Row("new york", "ny"))), 2},
        CountCase{"stem_of_two_words", "NY", Index("new york", "", Table(Row("ny", "new york"))), 1},
        CountCase{"deleted_word", "fire and ice", Index("fire ice", "", Table(Row("and", ""))), 1},
        CountCase{"term_as_well", "run ran running", Index("running", "", Table(Row("running", "run"))), 2},
        CountCase{"rows_in_order", "a", Index("c", "", Table(Row("a", "b") + Row("b", "c"))), 1},
        CountCase{"rows_in_the_other_order", "a", Index("c", "", Table(Row("b", "c") + Row("a", "b"))), 0},
        CountCase{"over_and_over", "a", Index("c", "", Table(Row("b", "c") + Row("a", "b"), R"(recursive="true")")), 1},
        CountCase{"over_and_over_without_end", "a", Index("c", "", Table(Row("a", "a a"), R"(recursive="true")")),
                  kNull},
        CountCase{"case_of_its_own", "us US", Index("usa", "", Table(Row("US", "usa"), R"(isCaseSensitive="true")")),
                  1},
        CountCase{"case_of_the_index", "us US", Index("usa", R"(isCaseSensitive="true")", Table(Row("US", "usa"))), 1},
        CountCase{"similar_words", "colr", Index("hue", R"(maxLevenshteinDistance="1")", Table(Row("color", "hue"))),
                  1},
        CountCase{"parts_of_words", "a$b a$c", Index("e", "", Table(Row("a$", "\\ $1 e "), R"(tokenize="false")")), 2},
        CountCase{"columns_of_other_names", "a",
                  Index("b", "",
                        Table("<row><from>A</from><to>b</to><re>0</re></row>",
                              R"(inField="from" outField="to" regexField="re")")),
                  1}),
    CaseName());

TEST(TextIndexTest, TextIndex_OfMissingTextsAndNumbers_AsOtherExpressions) {
  EXPECT_TRUE(Evaluate("integer", Index("a", ""), {}).IsNull());
  EXPECT_EQ(Show(Evaluate("integer", R"(<TextIndex textField="x"><Constant>2.5</Constant></TextIndex>)", {{"x", 2.5}})),
            "number 1");
}

// The producers of such documents put the rules into a function, and the text into a derived field further down.
TEST(TextIndexTest, TextIndex_InAFunction_OfAFieldThatIsDeclaredLater) {
  const std::string fields =
      R"(<DefineFunction name="tf" optype="continuous"><ParameterField name="document"/><ParameterField name="term"/>
         <TextIndex textField="document"><FieldRef field="term"/></TextIndex></DefineFunction>)" +
      Derived("good", "integer", R"(<Apply function="tf"><FieldRef field="lower"/><Constant>good</Constant></Apply>)") +
      Derived("bad", "integer", R"(<TextIndex textField="lower"><Constant>bad</Constant></TextIndex>)") +
      Derived("lower", "string", R"(<Apply function="lowercase"><FieldRef field="s"/></Apply>)");
  KelTransformation transformation;
  ASSERT_TRUE(AddPmml(transformation, Pmml(StandardFields(), fields)).IsOK()) << KelDiagnostics::Last();
  for (const auto& [text, good, bad] : {std::tuple("Good, good. Bad!", 2, 1), std::tuple("Bad", 0, 1)}) {
    const auto results = Compute(transformation, {{"s", text}}, {"good", "bad"});
    EXPECT_EQ(results[0].GetReal(), good);
    EXPECT_EQ(results[1].GetReal(), bad);
  }
}

// Counters remember the last text of a thread. Another one with the same text doesn't read what is remembered.
TEST(TextIndexTest, TextIndex_ManyRulesOfOneText_CountEachForItself) {
  std::string fields;
  std::vector<std::string> names;
  for (int index = 0; index < 20; ++index) {
    names.push_back(Numbered("d", index));
    fields +=
        Derived(names.back(), "integer",
                Index(index % 2 == 0 ? "b" : "a b", "wordSeparatorCharacterRE=\"[" + Numbered(" ", index) + "]\""));
  }
  KelTransformation transformation;
  ASSERT_TRUE(AddPmml(transformation, Pmml(StandardFields(), fields)).IsOK()) << KelDiagnostics::Last();
  const auto results = Compute(transformation, {{"s", "a b b"}}, names);
  for (std::size_t index = 0; index < results.size(); ++index) {
    EXPECT_EQ(results[index].GetReal(), index % 2 == 0 ? 2 : 1) << index;
  }
}

TEST(TextIndexTest, TextIndex_TextAboveTheLimit_IsInvalid) {
  const std::string half(std::size_t{1} << 19U, 'x');
  EXPECT_EQ(Show(Evaluate("integer", Index("x", ""), {{"s", "x " + half}})), "number 1");
  EXPECT_TRUE(Evaluate("integer", Index("x", ""), {{"s", "x " + half + half}}).IsNull());
}

struct RefusedIndexCase {
  const char* name;
  std::string index;
  const char* reason;
};

void PrintTo(const RefusedIndexCase& row, std::ostream* stream) { *stream << row.index; }

class TextIndexRefusalTest : public testing::TestWithParam<RefusedIndexCase> {};

TEST_P(TextIndexRefusalTest, AddPMML_BadTextIndex_SaysWhy) {
  KelTransformation transformation;
  EXPECT_TRUE(AddPmml(transformation, Pmml(StandardFields(), Derived("bad", "double", GetParam().index))).IsError());
  EXPECT_THAT(KelDiagnostics::Last(), HasSubstr(GetParam().reason));
}

INSTANTIATE_TEST_SUITE_P(
    All, TextIndexRefusalTest,
    testing::Values(
        RefusedIndexCase{"no_term", R"(<TextIndex textField="s"/>)", "<TextIndex> line 18: it has no expression"},
        RefusedIndexCase{"two_terms",
                         R"(<TextIndex textField="s"><Constant>a</Constant><Constant>b</Constant></TextIndex>)",
                         "the <TextIndex> has another expression already"},
        RefusedIndexCase{"no_field", "<TextIndex><Constant>a</Constant></TextIndex>", "textField"},
        RefusedIndexCase{"unknown_field", R"(<TextIndex textField="z"><Constant>a</Constant></TextIndex>)",
                         R"(<TextIndex textField="z"> line 18: there is no such field)"},
        RefusedIndexCase{"date", R"(<TextIndex textField="day"><Constant>a</Constant></TextIndex>)",
                         "can't be converted to string"},
        RefusedIndexCase{"term_of_the_record", R"(<TextIndex textField="s"><FieldRef field="t"/></TextIndex>)",
                         R"(<FieldRef> line 18: the term of a TextIndex must be a constant text)"},
        RefusedIndexCase{
            "term_that_is_computed",
            R"(<TextIndex textField="s"><Apply function="uppercase"><Constant>a</Constant></Apply></TextIndex>)",
            "<Apply> line 18: the term of a TextIndex must be a constant text"},
        RefusedIndexCase{"term_without_words", Index("...", ""), R"(the term "..." has no words)"},
        RefusedIndexCase{"empty_term", Index("", R"(tokenize="false")"), R"(the term "" has no words)"},
        RefusedIndexCase{"term_without_end", Index("a", "", Table(Row("a", "a a"), R"(recursive="true")")),
                         R"(the normalization of the term "a" finds no end)"},
        RefusedIndexCase{"weights", Index("a", R"(localTermWeights="idf")"), "augmentedNormalizedTermFrequency"},
        RefusedIndexCase{"hits", Index("a", R"(countHits="someHits")"), "is none of allHits, bestHits"},
        RefusedIndexCase{"negative_distance", Index("a", R"(maxLevenshteinDistance="-1")"), "is negative"},
        RefusedIndexCase{"distance_of_no_words", Index("a", R"(maxLevenshteinDistance="1" tokenize="false")"),
                         R"(<TextIndex maxLevenshteinDistance="1"> line 18: needs a text that is taken apart)"},
        RefusedIndexCase{"weights_of_no_words",
                         Index("a", R"(localTermWeights="augmentedNormalizedTermFrequency" tokenize="false")"),
                         "needs a text that is taken apart into words"},
        RefusedIndexCase{"separator", Index("a", R"(wordSeparatorCharacterRE="[")"), R"("[" is no regular expression)"},
        RefusedIndexCase{"no_table", Index("a", "", "<TextIndexNormalization/>"), "InlineTable"},
        RefusedIndexCase{
            "two_tables",
            Index("a", "", "<TextIndexNormalization><InlineTable/><InlineTable/></TextIndexNormalization>"),
            "is a second one in <TextIndexNormalization>"},
        RefusedIndexCase{"two_cells_of_a_column", Index("a", "", Table(Row("a", "b", "<stem>c</stem>"))),
                         "is a second one in <row>"},
        RefusedIndexCase{"table_elsewhere",
                         Index("a", "", "<TextIndexNormalization><TableLocator/></TextIndexNormalization>"),
                         "a table outside the document"},
        RefusedIndexCase{"no_column", Index("a", "", Table("<row><string>a</string></row>")),
                         R"(<row> line 18: it has no column "stem")"},
        RefusedIndexCase{"no_flag", Index("a", "", Table(Row("a", "b", "<regex>maybe</regex>"))),
                         "neither true nor false"},
        RefusedIndexCase{"no_pattern", Index("a", "", Table(Pattern("a(", "b"))), R"("a(" is no regular expression)"},
        RefusedIndexCase{"no_group", Index("a", "", Table(Pattern("a", "$1"))), R"("$1" refers to a group)"},
        RefusedIndexCase{"row_without_words", Index("a", "", Table(Row("!", "b"))), R"("!" has no words)"}),
    CaseName());

}  // namespace
