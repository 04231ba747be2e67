#pragma once

#include <gtest/gtest.h>
#include <string>

namespace KelTest {

/// Names the tests of a table after the field `name` of its rows.
struct CaseName {
  template <typename Case>
  std::string operator()(const testing::TestParamInfo<Case>& row) const {
    return row.param.name;
  }
};

}  // namespace KelTest
