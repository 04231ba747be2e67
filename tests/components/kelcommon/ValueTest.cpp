#include <clocale>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <locale>
#include <string>
#include <vector>

#include "scoring/common/KelMV.h"
#include "scoring/common/Value.h"
#include "scoring/common/ValueRecord.h"

namespace {

using KelCommon_1_3::KelMV;
using KelCommon_1_3::Value;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

Value Members(std::initializer_list<std::pair<const char*, Value>> members) {
  Value value;
  value.MakeMembers();
  for (const auto& [name, member] : members) value[name] = member;
  return value;
}

struct TextCase {
  double number;
  const char* text;
} const kTextCases[] = {
    {20, "20"},
    {0.0, "0"},
    {-0.0, "-0"},
    {0.1, "0.1"},
    {-1.5, "-1.5"},
    {100000, "100000"},  // the shortest form alone would be 1e+05
    {1e15, "1000000000000000"},
    {9007199254740993.0, "9007199254740992"},  // 2^53
    {1e16, "1e+16"},
    {1e300, "1e+300"},
    {0.00001, "0.00001"},
    {0.000001, "1e-06"},
    {1.0 / 3.0, "0.3333333333333333"},
    {5e-324, "5e-324"},
    {kInfinity, "inf"},
    {kNaN, "nan"},
};

TEST(ValueTest, GetString_Number_IsShortestText) {
  for (const TextCase& each : kTextCases) {
    EXPECT_EQ(Value(each.number).GetString(), each.text);
    if (std::isfinite(each.number)) {
      EXPECT_EQ(Value(each.text).GetReal(), each.number) << each.text;
    }
  }
  EXPECT_EQ(Value(20).GetString(), "20");
  EXPECT_EQ(Value("some text").GetString(), "some text");
  EXPECT_EQ(Value().GetString(), "");
  EXPECT_EQ(Members({{"a", 1}}).GetString(), "");
}

struct NumberCase {
  const char* text;
  double number;
};

const double kMissing = KelMV::gMissingValue;

const std::vector<NumberCase> kNumberCases = {
    {"12", 12},
    {"-12.5", -12.5},
    {"+3", 3},
    {" \t\r\n7 \n", 7},
    {".5", 0.5},
    {"5.", 5},
    {"1e3", 1000},
    {"1E+3", 1000},
    {"-2.5e-1", -0.25},
    {"000012", 12},
    {"4.9e-324", 5e-324},
    {"1e-400", 0},  // too small for a double: the nearest one is 0
    {"-1e-400", 0},
    {"1e-99999999999999999999", 0},
    {"0.00001e-320", 0},
    {"0e99999", 0},
    {"-1.7976931348623157e308", kMissing},  // this very number, which marks a missing one
    // No numbers:
    {"", kMissing},
    {" ", kMissing},
    {"+", kMissing},
    {"-", kMissing},
    {".", kMissing},
    {"+-1", kMissing},
    {"- 1", kMissing},
    {"--1", kMissing},
    {"12 13", kMissing},
    {"12x", kMissing},
    {"1,5", kMissing},
    {"1e", kMissing},
    {"1d5", kMissing},
    {"0x10", kMissing},
    {"inf", kMissing},
    {"-Infinity", kMissing},
    {"nan", kMissing},
    {"+nan(1)", kMissing},
    {"1e400", kMissing},  // too large for a finite number
    {"-1e400", kMissing},
    {"1e99999999999999999999", kMissing},
    {"1e9223372036854775807", kMissing},  // an exponent that just fits
    {"12\v", kMissing},                   // no white space of XML
};

void ExpectNumbersOfTexts() {
  for (const NumberCase& each : kNumberCases) EXPECT_EQ(Value(each.text).GetReal(), each.number) << each.text;
}

TEST(ValueTest, GetReal_Text_IsNumberOfWholeText) {
  ExpectNumbersOfTexts();
  EXPECT_EQ(Value(std::string("1\0", 2)).GetReal(), kMissing);
  EXPECT_EQ(Value("1" + std::string(400, '0') + "e-400").GetReal(), 1.0);
  EXPECT_EQ(Value("0." + std::string(400, '0') + "1").GetReal(), 0.0);
  EXPECT_EQ(Value("1" + std::string(400, '0')).GetReal(), kMissing);
}

TEST(ValueTest, GetReal_OtherKinds_IsMissing) {
  EXPECT_EQ(Value().GetReal(), kMissing);
  EXPECT_EQ(Members({{"a", 1}}).GetReal(), kMissing);
  EXPECT_EQ(Value(2.5).GetReal(), 2.5);
}

// Streams follow the global C++ locale.
class CommaLocale {
 public:
  CommaLocale() : fEarlier(std::locale::global(std::locale(std::locale::classic(), new Punctuation))) {}
  ~CommaLocale() { std::locale::global(fEarlier); }

 private:
  struct Punctuation : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  std::locale fEarlier;
};

TEST(ValueTest, Numbers_StreamLocaleWithComma_StayTheSame) {
  const CommaLocale locale;
  ExpectNumbersOfTexts();
  EXPECT_EQ(Value(1234567.5).GetString(), "1234567.5");
}

TEST(ValueTest, Numbers_HostLocaleWithComma_StayTheSame) {
  const std::string earlier = std::setlocale(LC_ALL, nullptr);
  const char* locale = nullptr;
  for (const char* const name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "de_DE", "pt_BR.UTF-8"}) {
    if (locale == nullptr) locale = std::setlocale(LC_ALL, name);
  }
  if (locale == nullptr) GTEST_SKIP() << "no locale with a decimal comma is installed";
  ExpectNumbersOfTexts();
  EXPECT_EQ(Value(1234567.5).GetString(), "1234567.5");
  std::setlocale(LC_ALL, earlier.c_str());
}

TEST(ValueTest, Order_AscendingValues_IsStrictWeakOrder) {
  const std::vector<Value> ascending = {
      Value(),
      Value(kNaN),
      Value(-kInfinity),
      Value(kMissing),
      Value(-1),
      Value(0),
      Value(0.5),
      Value(kInfinity),
      Value(""),
      Value("-1"),
      Value("B"),
      Value("a"),
      Value("a\x01"),
      Value("ab"),
      Value("\xC3\xA4"),  // bytes beyond ASCII are above all others
      Members({}),
      Members({{"a", Value()}}),
      Members({{"a", 1}}),
      Members({{"a", 1}, {"b", 1}}),
      Members({{"a", 1}, {"b", 2}}),
      Members({{"a", 2}}),
      Members({{"a", "1"}}),
      Members({{"a", Members({})}}),
      Members({{"b", 0}}),
      Members({{"b", 0}, {"a", 0}}),
  };
  for (std::size_t i = 0; i < ascending.size(); ++i) {
    for (std::size_t k = 0; k < ascending.size(); ++k) {
      EXPECT_EQ(ascending[i] < ascending[k], i < k) << i << " " << k;
      EXPECT_EQ(ascending[i] == ascending[k], i == k) << i << " " << k;
    }
  }
}

TEST(ValueTest, Equality_SpecialNumbers_NaNAndZeros) {
  EXPECT_TRUE(Value(kNaN) == Value(-kNaN));
  EXPECT_TRUE(Value(0.0) == Value(-0.0));
  EXPECT_FALSE(Value(-0.0) < Value(0.0));
  EXPECT_FALSE(Value(1) == Value("1"));
  EXPECT_TRUE(Members({{"a", kNaN}}) == Members({{"a", kNaN}}));
}

TEST(ValueTest, Kinds_EachWayOfSetting_GivesTheCode) {
  EXPECT_EQ(Value::NULL_VALUE.GetType(), 0);
  EXPECT_TRUE(Value().IsNull());
  EXPECT_EQ(Value(1).GetType(), 3);
  EXPECT_EQ(Value(1.5).GetType(), 3);
  EXPECT_EQ(Value("").GetType(), 4);
  EXPECT_FALSE(Value("").IsNull());
  EXPECT_EQ(Members({}).GetType(), 5);

  Value value("text");
  value = 0;
  EXPECT_TRUE(value == Value(0));
  value = std::string("t");
  EXPECT_TRUE(value == Value("t"));
  value = Value();
  EXPECT_TRUE(value.IsNull());
  EXPECT_EQ(value.Text(), "");  // and not what its buffer holds
}

TEST(ValueTest, NumberInPlace_AnyKind_BecomesTheNumber) {
  Value value("12");
  static_cast<double&>(value) += 1;
  EXPECT_TRUE(value == Value(13));
  Value null;
  EXPECT_EQ(static_cast<double&>(null), kMissing);
  EXPECT_EQ(null.GetType(), 3);
}

TEST(ValueTest, Members_ByName_AppendInOrderAndDropTheRest) {
  Value value("text");
  value["b"] = 1;
  value["a"]["x"] = "deep";
  value["b"] = 2;
  ASSERT_EQ(value.GetType(), 5);
  ASSERT_NE(value.Members(), nullptr);
  EXPECT_EQ(value.Members()->Names(true), (std::vector<std::string>{"b", "a"}));
  EXPECT_EQ(value["a"]["x"].GetString(), "deep");

  value = 5;
  EXPECT_EQ(value.Members(), nullptr);
  value["c"];
  EXPECT_EQ(value.Members()->Names(true), (std::vector<std::string>{"c"}));  // "b" and "a" were dropped
  EXPECT_TRUE(value["c"].IsNull());
}

TEST(ValueTest, MakeMembers_AfterOtherKind_TakesUpNamesAsNull) {
  Value value = Members({{"a", 1}, {"b", "x"}});
  value.SetNull();
  const auto& members = value.MakeMembers();
  EXPECT_EQ(members.Names(true), (std::vector<std::string>{"a", "b"}));
  EXPECT_TRUE(members.At(0).IsNull());
  EXPECT_TRUE(members.At(1).IsNull());
  value["a"] = 1;
  EXPECT_EQ(value.MakeMembers().At(0).GetReal(), 1);  // already composite: nothing changes
}

TEST(ValueTest, Copy_IsDeepAndIndependent) {
  Value original = Members({{"a", Members({{"x", 1}})}});
  Value copy = original;
  Value assigned;
  assigned = original;
  original["a"]["x"] = 2;
  original["b"] = 3;
  EXPECT_TRUE(copy == Members({{"a", Members({{"x", 1}})}}));
  EXPECT_TRUE(assigned == copy);
}

TEST(ValueTest, Assign_FromOwnMemberOrIntoIt_KeepsTheContent) {
  const Value inner = Members({{"x", 1}, {"y", "long enough to need memory of its own"}});
  const Value whole = Members({{"a", inner}, {"b", "text of some length, for memory of its own"}, {"n", 4}});

  for (const char* const name : {"a", "b", "n"}) {
    const Value expected = Value(whole)[name];
    Value copied = whole;
    copied = copied[name];
    EXPECT_TRUE(copied == expected) << name;
    Value moved = whole;
    moved = std::move(moved[name]);
    EXPECT_TRUE(moved == expected) << name;
  }

  Value into = whole;
  into["a"] = into;
  EXPECT_TRUE(into["a"] == whole);
  into["n"] = into;  // where no members were before
  EXPECT_TRUE(into["n"]["a"] == whole);

  Value self = whole;
  Value& same = self;
  self = same;
  EXPECT_TRUE(self == whole);
  self = std::move(same);
  EXPECT_TRUE(self == whole);

  // Members that are out of use still lie in the value that held them.
  Value unused = whole;
  const Value& former = unused["a"];
  unused = 1;
  unused = former;
  EXPECT_TRUE(unused == inner);
}

TEST(ValueTest, Move_LeavesNull) {
  Value source = Members({{"a", 1}});
  const Value target = std::move(source);
  EXPECT_TRUE(source.IsNull());  // NOLINT(bugprone-use-after-move,clang-analyzer-cplusplus.Move): what is left is fixed
  EXPECT_TRUE(target == Members({{"a", 1}}));
  source["b"] = 1;
  EXPECT_EQ(source.Members()->Size(), 1);
}

}  // namespace
