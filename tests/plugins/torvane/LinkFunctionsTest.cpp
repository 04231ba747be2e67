#include <cmath>
#include <gtest/gtest.h>

#include "plugins/torvane/models/LinkFunctions.h"
#include "tests/support/CaseName.h"

namespace Torvane {
namespace {

constexpr double kInfinity = HUGE_VAL;

struct LinkCase {
  const char* name;
  Link link;
  double y;
  double parameter;
  double expected;
};

class LinkFunctions : public testing::TestWithParam<LinkCase> {};

TEST_P(LinkFunctions, Inverse_IsTheFormulaToTheLastDigits) {
  const LinkCase& row = GetParam();
  const double actual = InverseLink(row.link, row.y, row.parameter);
  if (std::isnan(row.expected)) {
    EXPECT_TRUE(std::isnan(actual)) << actual;
  } else if (std::isinf(row.expected)) {
    EXPECT_EQ(actual, row.expected);
  } else {
    EXPECT_NEAR(actual, row.expected, 4e-15 * std::abs(row.expected));
  }
}

// Expected values from the formulas at 50 digits (Python's decimal): ln(2) = 0.69314718055994530942.
INSTANTIATE_TEST_SUITE_P(
    Formulas, LinkFunctions,
    testing::Values(
        LinkCase{"identity", Link::kIdentity, -2.5, 0, -2.5}, LinkCase{"log", Link::kLog, 1, 0, 2.718281828459045},
        LinkCase{"logc", Link::kLogc, -0.69314718055994531, 0, 0.5},
        LinkCase{"logc_small", Link::kLogc, -1e-12, 0, 9.999999999995e-13},  // 1 - exp(y) would keep four digits
        LinkCase{"logit", Link::kLogit, 1, 0, 0.7310585786300049}, LinkCase{"logit_far", Link::kLogit, -800, 0, 0},
        LinkCase{"probit", Link::kProbit, 1, 0, 0.8413447460685429},
        LinkCase{"probit_far", Link::kProbit, -5, 0, 2.8665157187919391e-7},
        LinkCase{"cloglog", Link::kCloglog, 0, 0, 0.6321205588285577},
        LinkCase{"cloglog_small", Link::kCloglog, -40, 0, 4.248354255291589e-18},
        LinkCase{"loglog", Link::kLoglog, 0, 0, 0.36787944117144233}, LinkCase{"cauchit", Link::kCauchit, 1, 0, 0.75},
        LinkCase{"negbin", Link::kNegbin, -0.69314718055994531, 2, 0.5},   // 1 / (2 (2 - 1))
        LinkCase{"negbin_small", Link::kNegbin, -1e-10, 1, 9999999999.5},  // 1 / c|y| - 1 / 2c + ...
        LinkCase{"negbin_at_its_limit", Link::kNegbin, -0.0, 1, kInfinity},
        LinkCase{"negbin_at_its_limit_from_above", Link::kNegbin, 0.0, 1, kInfinity},
        LinkCase{"oddspower", Link::kOddspower, 3, 1, 0.8},                      // 1 / (1 + 4^-1)
        LinkCase{"oddspower_negative", Link::kOddspower, 0.5, -1, 2.0 / 3.0},    // 1 / (1 + 0.5^1)
        LinkCase{"oddspower_zero", Link::kOddspower, 1, 0, 0.7310585786300049},  // the logistic function
        LinkCase{"oddspower_tiny", Link::kOddspower, 1, 1e-14, 0.7310585786300039},
        LinkCase{"oddspower_at_its_limit", Link::kOddspower, -0.5, 2, 0},
        LinkCase{"oddspower_outside", Link::kOddspower, -2, 1, NAN}, LinkCase{"power", Link::kPower, 9, 2, 3},
        LinkCase{"power_inverse", Link::kPower, 8, -1, 0.125},
        LinkCase{"power_zero", Link::kPower, 1, 0, 2.718281828459045},
        LinkCase{"power_outside", Link::kPower, -4, 2, NAN}),
    KelTest::CaseName());

}  // namespace
}  // namespace Torvane
