#include <gtest/gtest.h>
#include <set>
#include <string>

#include "scoring/common/KelStatus.h"

namespace {

using KelCommon_1_3::KelStatus;

TEST(KelStatusTest, EachSeverity_AnswersBothQuestions) {
  const struct {
    KelStatus status;
    bool isOK;
    bool isError;
    long code;
  } cases[] = {
      {KelStatus(), true, false, 0},
      {KelStatus(260007, true), false, false, 260007},  // a warning is neither
      {KelStatus(103, false), false, true, 103},
      {KelStatus(0, false), false, true, 0},
      {KelStatus(-5, true), false, false, -5},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(each.status.IsOK(), each.isOK) << each.code;
    EXPECT_EQ(each.status.IsError(), each.isError) << each.code;
    EXPECT_EQ(each.status.GetErrorCode(), each.code);
  }
}

TEST(KelStatusTest, EveryCode_HasATextOfItsOwn) {
  const long codes[] = {0,      103,    104,    105,    108,    109,    111,    260002, 260003, 260004,
                        260005, 260006, 260007, 260009, 260010, 260016, 260017, 260023, 260027, 260028};
  const std::string unknown = KelStatus::GetMessage(-1);
  EXPECT_NE(unknown, "");
  std::set<std::string> texts = {unknown};
  for (const long code : codes) {
    EXPECT_TRUE(texts.insert(KelStatus(code, false).GetMessage()).second) << code;
  }
  EXPECT_EQ(KelStatus::GetMessage(260001), unknown);
}

}  // namespace
