#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "components/kelparsexml/ElementTree.h"
#include "components/kelparsexml/PmmlArray.h"
#include "tests/support/CaseName.h"

namespace {

using KelXML_1_3::Element;
using KelXML_1_3::ElementTree;
using KelXML_1_3::ParsePmmlNumber;
using KelXML_1_3::PmmlError;
using KelXML_1_3::ReadNumberArray;
using KelXML_1_3::ReadStringArray;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(ParsePmmlNumberTest, Numbers) {
  const struct {
    const char* text;
    double number;
  } kCases[] = {{"0", 0},
                {"-12.5", -12.5},
                {"+3", 3},
                {" \t\r\n7\n", 7},
                {"1.", 1},
                {".5", 0.5},
                {"-.5E+1", -5},
                {"1E-6", 1e-6},
                {"INF", kInfinity},
                {"-INF", -kInfinity},
                {"Infinity", kInfinity},
                {"-Infinity", -kInfinity},
                {"1.7976931348623157e308", 1.7976931348623157e308},
                {"4.9E-324", 4.9E-324},
                {"9007199254740993", 9007199254740992.0},  // the nearest double, ties to even
                // Beyond the range of a double: the nearest there is.
                {"1e400", kInfinity},
                {"-1e400", -kInfinity},
                {"1e-400", 0.0},
                {"0e99999", 0.0},
                {"1e99999999999999999999", kInfinity},
                {"1e9223372036854775807", kInfinity},  // an exponent that just fits
                {"0.01e-9223372036854775808", 0.0},
                {"1e-99999999999999999999", 0.0}};
  for (const auto& row : kCases) EXPECT_EQ(ParsePmmlNumber(row.text), row.number) << row.text;
  EXPECT_TRUE(std::isnan(ParsePmmlNumber("NaN").value()));
  EXPECT_EQ(ParsePmmlNumber(std::string("0.").append(400, '0') + "1"), 0.0);
  EXPECT_EQ(ParsePmmlNumber(std::string("1").append(400, '0') + ".0e-10"), kInfinity);
  EXPECT_TRUE(std::signbit(ParsePmmlNumber("-0").value()));
}

TEST(ParsePmmlNumberTest, NoNumbers) {
  for (const char* const text : {"",
                                 " ",
                                 "x",
                                 "1x",
                                 "1 2",
                                 "1,5",
                                 "--1",
                                 "+-1",
                                 "- 1",
                                 ".",
                                 "e5",
                                 "1e",
                                 "1e+",
                                 "0x10",
                                 "inf",
                                 "nan",
                                 "INFINITY",
                                 "nan(1)",
                                 "-NaN",
                                 "1.2.3",
                                 "\xC2\xA0"
                                 "1"}) {
    EXPECT_EQ(ParsePmmlNumber(text), std::nullopt) << text;
  }
}

class ElementValuesTest : public testing::Test {
 protected:
  Element Read(const std::string& document) {
    std::istringstream stream(document);
    fTree = ElementTree::Read(stream);
    return fTree->Root();
  }

  std::unique_ptr<ElementTree> fTree;
};

TEST_F(ElementValuesTest, Values_ReadByTheirKind) {
  const Element e = Read("<e i=' 42 ' whole='1e3' d='-0.25' yes=' true ' one='1' no='false' zero='0' empty=''/>");
  EXPECT_EQ(e.Integer("i"), 42);
  EXPECT_EQ(e.Integer("whole"), 1000);
  EXPECT_EQ(e.Integer("absent"), std::nullopt);
  EXPECT_EQ(e.Number("d"), -0.25);
  EXPECT_EQ(e.Number("absent"), std::nullopt);
  EXPECT_EQ(e.Number("absent", 1.5), 1.5);
  EXPECT_EQ(e.RequiredNumber("d"), -0.25);
  EXPECT_TRUE(e.Boolean("yes", false));
  EXPECT_TRUE(e.Boolean("one", false));
  EXPECT_FALSE(e.Boolean("no", true));
  EXPECT_FALSE(e.Boolean("zero", true));
  EXPECT_TRUE(e.Boolean("absent", true));
  EXPECT_EQ(e.Required("empty"), "");
}

struct ErrorCase {
  const char* name;
  std::function<void(const Element&)> read;
  const char* error;
};

class ElementErrorTest : public testing::TestWithParam<ErrorCase> {};

TEST_P(ElementErrorTest, Message_NamesElementAttributeTextAndLine) {
  std::istringstream stream("<r>\n<e v='x' big='3000000000' half='0.5' empty=''><Array n='3'>1 2 y</Array></e></r>");
  const auto tree = ElementTree::Read(stream);
  try {
    GetParam().read(tree->Root().Child("e"));
    FAIL() << "no error";
  } catch (const PmmlError& error) {
    EXPECT_STREQ(error.what(), GetParam().error);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Reads, ElementErrorTest,
    testing::Values(
        ErrorCase{"required", [](const Element& e) { (void)e.Required("w"); },
                  "<e> line 2: attribute \"w\" is missing"},
        ErrorCase{"required_number", [](const Element& e) { (void)e.RequiredNumber("w"); },
                  "<e> line 2: attribute \"w\" is missing"},
        ErrorCase{"child", [](const Element& e) { (void)e.RequiredChild("f"); },
                  "<e> line 2: child element <f> is missing"},
        ErrorCase{"number", [](const Element& e) { (void)e.Number("v", 1.0); }, "<e v=\"x\"> line 2: not a number"},
        ErrorCase{"empty_number", [](const Element& e) { (void)e.Number("empty"); },
                  "<e empty=\"\"> line 2: not a number"},
        ErrorCase{"integer", [](const Element& e) { (void)e.Integer("v"); }, "<e v=\"x\"> line 2: not an integer"},
        ErrorCase{"large_integer", [](const Element& e) { (void)e.Integer("big"); },
                  "<e big=\"3000000000\"> line 2: not an integer"},
        ErrorCase{"half_integer", [](const Element& e) { (void)e.Integer("half"); },
                  "<e half=\"0.5\"> line 2: not an integer"},
        ErrorCase{"boolean", [](const Element& e) { (void)e.Boolean("v", true); },
                  "<e v=\"x\"> line 2: not a boolean: \"true\", \"false\", \"1\" or \"0\" is expected"},
        ErrorCase{"own", [](const Element& e) { throw e.AttributeError("w", "is needed here"); },
                  "<e w> line 2: is needed here"},
        ErrorCase{"array_value", [](const Element& e) { (void)ReadNumberArray(e.Child("Array")); },
                  "<Array> line 2: value 3, \"y\", is not a number"},
        ErrorCase{"no_array", [](const Element& e) { (void)ReadStringArray(e.Child("Values")); },
                  "an <Array> is missing"}),
    KelTest::CaseName());

TEST_F(ElementValuesTest, LongTextInError_IsCutBetweenCharacters) {
  std::string value(99, 'x');
  for (int i = 0; i < 1000; ++i) value += "\xC3\xBC";
  const Element e = Read("<e v='" + value + "'/>");
  EXPECT_EQ(std::string(e.AttributeError("v", "bad").what()),
            std::string("<e v=\"").append(99, 'x') + "...\"> line 1: bad");
}

struct ArrayCase {
  const char* name;
  const char* text;
  std::vector<std::string> values;
};

class StringArrayTest : public testing::TestWithParam<ArrayCase> {};

TEST_P(StringArrayTest, Text_GivesValues) {
  std::istringstream stream(std::string("<Array n='") + std::to_string(GetParam().values.size()) + "' type='string'>" +
                            GetParam().text + "</Array>");
  const auto tree = ElementTree::Read(stream);
  EXPECT_EQ(ReadStringArray(tree->Root()), GetParam().values);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, StringArrayTest,
    testing::Values(ArrayCase{"empty", "", {}}, ArrayCase{"blank", " \n\t ", {}},
                    ArrayCase{"plain", "a b\n c\t\r\n", {"a", "b", "c"}},
                    ArrayCase{"quoted", R"(ab "a b" "with \"quotes\" ")", {"ab", "a b", "with \"quotes\" "}},
                    ArrayCase{"empty_values", R"("" x "")", {"", "x", ""}},
                    ArrayCase{"backslashes", R"(a\b "c\d" "\\")", {R"(a\b)", R"(c\d)", R"("\\")"}},
                    ArrayCase{"quote_within", R"(a"b c" "d"e)", {"a\"b", "c\"", "d", "e"}},
                    ArrayCase{"never_closed", "x \"a b c\n", {"x", "\"a b c"}},
                    ArrayCase{"not_ascii", "\xC3\xBC \"\xE6\xBC\xA2 x\"", {"\xC3\xBC", "\xE6\xBC\xA2 x"}}),
    KelTest::CaseName());

TEST_F(ElementValuesTest, NumberArray_ReadsQuotedToo) {
  EXPECT_EQ(ReadNumberArray(Read("<Array type='real'> 1 \"2.5\"\n-3e2 INF</Array>")),
            (std::vector<double>{1, 2.5, -300, kInfinity}));
}

TEST_F(ElementValuesTest, ArrayOfOtherCount_IsRefused) {
  for (const char* const n : {"1", "3", "-2"}) {
    const Element array = Read(std::string("<Array n='") + n + "'>1 2</Array>");
    const auto expectError = [&](const std::function<void()>& read) {
      try {
        read();
        FAIL() << n;
      } catch (const PmmlError& error) {
        EXPECT_EQ(error.what(), std::string("<Array n=\"") + n + "\"> line 1: the array has 2 values");
      }
    };
    expectError([&] { ReadStringArray(array); });
    EXPECT_EQ(ReadStringArray(array, KelXML_1_3::ArrayCount::kIgnored), (std::vector<std::string>{"1", "2"}));
    expectError([&] { ReadNumberArray(array); });
  }
}

}  // namespace
