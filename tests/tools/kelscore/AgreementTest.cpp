#include <cmath>
#include <gtest/gtest.h>
#include <optional>
#include <string>

#include "scoring/common/KelMV.h"
#include "tools/kelscore/Agreement.h"

namespace kelscore {
namespace {

using KelCommon_1_3::KelMV;
using KelCommon_1_3::Value;

struct AgreementCase {
  const char* name;
  std::optional<std::string> expected;
  Value actual;
  bool agrees;
  double precision = 0.01;
  double zeroThreshold = 1e-6;
};

const std::optional<std::string> kNothing;

const AgreementCase kCases[] = {
    {"nothing and nothing", kNothing, Value(), true},
    {"nothing and the mark of a missing number", kNothing, Value(KelMV::gMissingValue), true},
    {"nothing and a number", kNothing, Value(0.0), false},
    {"nothing and a text", kNothing, Value(""), false},
    {"a number and nothing", "1", Value(), false},
    {"a text and nothing", "yes", Value(), false},
    {"at the upper bound", "100", Value(101.0), true},
    {"above it", "100", Value(101.0001), false},
    {"at the lower bound", "100", Value(99.0), true},
    {"below it", "100", Value(98.9999), false},
    {"at the bound of a negative number", "-100", Value(-101.0), true},
    {"at its other bound", "-100", Value(-99.0), true},
    {"beyond them", "-100", Value(-101.0001), false},
    {"another sign", "-100", Value(100.0), false},
    {"both next to zero", "0", Value(1e-6), true},
    {"both next to zero, on both sides", "-1e-6", Value(1e-6), true},
    {"only one next to zero", "0", Value(1.1e-6), false},
    {"no precision at all", "0.1", Value(0.1), true, 0.0},
    {"no precision and the next number", "0.1", Value(0.1000000001), false, 0.0},
    {"a precision of more than the number", "1", Value(-0.5), true, 2.0},  // -1 to 3
    {"a number that isn't finite", "1", Value(HUGE_VAL), false},
    {"a number and NaN", "1", Value(NAN), false},
    {"equal texts", "yes", Value("yes"), true},
    {"texts that differ in case", "yes", Value("Yes"), false},
    {"a blank more", "yes ", Value("yes"), false},
    {"a text that is the number", "1.0", Value("1"), true},
    {"texts of numbers within the precision", "100", Value("100.5"), true},
    {"a number and a text", "1", Value("one"), false},
    {"a text and a number", "one", Value(1.0), false},
};

TEST(Agreement, NumbersTextsAndNothing) {
  for (const AgreementCase& c : kCases) {
    const VerificationField field{"f", "f", c.precision, c.zeroThreshold};
    EXPECT_EQ(Agrees(c.expected, c.actual, field), c.agrees) << c.name;
  }
  Value composite;
  composite["member"] = 1.0;
  EXPECT_FALSE(Agrees("1", composite, {}));
}

}  // namespace
}  // namespace kelscore
