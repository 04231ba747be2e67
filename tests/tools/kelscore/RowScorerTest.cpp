#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>

#include "tests/tools/kelscore/FakeModel.h"
#include "tools/kelscore/RowScorer.h"

namespace kelscore {
namespace {

using KelCommon_1_3::KelStatus;
using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;
using testing::HasSubstr;

/// Doubles "x"; refuses 13 with a status and 14 with an exception, and gives text for 15.
KelStatus Double(ValueRecord& in, ValueRecord& out) {
  const double x = in.At(0).GetReal();
  if (x == 13) return {260009, false};
  if (x == 14) throw std::runtime_error("boom");
  if (!in.At(0).IsNull()) out[0] = 2 * x;
  if (x == 15) out[0] = "a,\"b\"";
  return {};
}

RowScorer MakeScorer(FakeModel& model, RowStyle style) {
  ValueRecord announced;
  model.Scorable(announced);
  const RecordBinding binding({{"x", FieldKind::kNumber, true}}, {"id", "x"}, {});
  const OutputLayout layout(announced, {});
  return {RecordScorer(model, binding, layout.Prototype(), {}), layout, style};
}

RowBatch Rows(const std::vector<std::vector<std::string>>& rows) {
  RowBatch batch;
  std::uint64_t line = 2;
  for (const auto& row : rows) {
    for (const std::string& field : row) batch.AddField(field, field.find_first_of(",\"\n") != std::string::npos);
    batch.EndRow(line++);
  }
  batch.SetFirstRowNumber(101);
  return batch;
}

ScoredBatch Score(const RowBatch& batch, RowStyle style) {
  FakeModel model(Double);
  ScoredBatch result;
  MakeScorer(model, style).Score(batch, result);
  return result;
}

TEST(RowScorer, GoodRows_AreWrittenBehindTheirInput) {
  const RowBatch batch = Rows({{"a", "1"}, {"b,c", " 2.5"}, {"d", ""}, {"e", "15"}});
  EXPECT_EQ(Score(batch, {}).text, "a,1,2\n\"b,c\", 2.5,5\nd,,\ne,15,\"a,\"\"b\"\"\"\n");
  EXPECT_EQ(Score(batch, {.writeInput = false}).text, "2\n5\n\"\"\n\"a,\"\"b\"\"\"\n");  // no blank line
  EXPECT_EQ(Score(batch, {.writeInput = false, .writeErrors = true}).text, "2,\n5,\n,\n\"a,\"\"b\"\"\",\n");
}

TEST(RowScorer, FailedRow_StopsBeforeIt) {
  const ScoredBatch result = Score(Rows({{"a", "1"}, {"b", "x"}, {"c", "3"}}), {});
  EXPECT_EQ(result.text, "a,1,2\n");
  EXPECT_TRUE(result.stopped);
  EXPECT_EQ(result.rows, 1U);
  ASSERT_EQ(result.failures.size(), 1U);
  EXPECT_EQ(result.failures[0].row, 102U);
  EXPECT_EQ(result.failures[0].line, 3U);
}

TEST(RowScorer, SkippedRows_KeepTheirPlaceWithEmptyOutputs) {
  const RowBatch batch = Rows({{"a", "1"}, {"b", "x"}, {"c", "13"}, {"d", "14"}, {"e"}, {"f", "6", "7"}, {"g", "7"}});
  const ScoredBatch result = Score(batch, {.stopOnError = false});
  EXPECT_EQ(result.text, "a,1,2\nb,x,\nc,13,\nd,14,\ne,,\nf,6,\ng,7,14\n");
  EXPECT_FALSE(result.stopped);
  EXPECT_EQ(result.rows, 7U);
  const char* const kReasons[] = {"\"x\" is not a finite number", "status 260009", "threw an exception: boom",
                                  "has 1 fields", "has 3 fields"};
  ASSERT_EQ(result.failures.size(), std::size(kReasons));
  for (std::size_t i = 0; i < std::size(kReasons); ++i) {
    EXPECT_EQ(result.failures[i].row, 102 + i);
    EXPECT_THAT(result.failures[i].reason, HasSubstr(kReasons[i]));
  }
}

TEST(RowScorer, ErrorColumn_HoldsTheReason) {
  const ScoredBatch result =
      Score(Rows({{"a", "1"}, {"b", "14"}}), {.delimiter = ',', .writeErrors = true, .stopOnError = false});
  EXPECT_EQ(result.text, "a,1,2,\nb,14,,the plug-in threw an exception: boom\n");
}

TEST(RowScorer, OutputThatAModelLeavesAlone_IsEmptyNotStale) {
  int calls = 0;
  FakeModel model([&calls](ValueRecord&, ValueRecord& out) {
    if (++calls == 1) out[0] = 1.0;
    return KelStatus();
  });
  ScoredBatch result;
  MakeScorer(model, {}).Score(Rows({{"a", "1"}, {"b", "2"}}), result);
  EXPECT_EQ(result.text, "a,1,1\nb,2,\n");
}

}  // namespace
}  // namespace kelscore
