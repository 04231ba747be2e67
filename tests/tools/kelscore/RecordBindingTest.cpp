#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools/kelscore/RecordBinding.h"

namespace kelscore {
namespace {

using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;
using testing::ElementsAre;
using testing::HasSubstr;

const std::vector<ModelField> kFields = {
    {"age", FieldKind::kNumber, true},     {"region", FieldKind::kText, true},
    {"income", FieldKind::kNumber, true},  {"since", FieldKind::kNumberOrText, false},
    {"unused", FieldKind::kNumber, false},
};

/// One row, given as fields.
RowBatch Row(const std::vector<std::string>& fields) {
  RowBatch batch;
  for (const std::string& field : fields) batch.AddField(field, false);
  batch.EndRow(2);
  return batch;
}

TEST(RecordBinding, Columns_BindByNameInAnyOrder) {
  RecordBinding binding(kFields, {"id", "since", "region", "age"}, {"NA", "?"});
  EXPECT_THAT(binding.MissingColumns(), ElementsAre("income"));
  ValueRecord record = binding.Prototype();
  EXPECT_THAT(record.Names(true), ElementsAre("age", "region", "income", "since"));
  std::string reason;
  ASSERT_TRUE(binding.Fill(Row({"7", "2024-02-29", "12", " 34.5 "}).Row(0), record, reason));
  EXPECT_EQ(record.At(0), Value(34.5));
  EXPECT_EQ(record.At(1), Value("12"));  // text stays text, even if it looks like a number
  EXPECT_TRUE(record.At(2).IsNull());
  EXPECT_EQ(record.At(3), Value("2024-02-29"));
}

TEST(RecordBinding, MissingFields_AreNullAndNothingOfAnEarlierRowIsLeft) {
  RecordBinding binding(kFields, {"age", "region"}, {"NA", "?"});
  ValueRecord record = binding.Prototype();
  std::string reason;
  for (const char* missing : {"", "NA", "?"}) {
    ASSERT_TRUE(binding.Fill(Row({"1", "x"}).Row(0), record, reason));
    record.Add("derived by the model", Value(5));
    ASSERT_TRUE(binding.Fill(Row({missing, missing}).Row(0), record, reason));
    for (int i = 0; i < record.Size(); ++i) EXPECT_TRUE(record.At(i).IsNull()) << record.NameAt(i);
  }
}

TEST(RecordBinding, UnreadableRow_TellsWhy) {
  RecordBinding binding(kFields, {"age", "region"}, {"NA"});
  const struct {
    std::vector<std::string> fields;
    const char* reason;
  } kCases[] = {
      {{"abc", "x"}, "field \"age\": \"abc\" is not a finite number"},
      {{"na", "x"}, "field \"age\": \"na\""},  // tokens are exact
      {{"inf", "x"}, "field \"age\": \"inf\""},
      {{" ", "x"}, "field \"age\": \" \""},
      {{"1"}, "has 1 fields where the header has 2"},
      {{"1", "x", ""}, "has 3 fields where the header has 2"},
  };
  for (const auto& c : kCases) {
    ValueRecord record = binding.Prototype();
    std::string reason;
    EXPECT_FALSE(binding.Fill(Row(c.fields).Row(0), record, reason));
    EXPECT_THAT(reason, HasSubstr(c.reason));
  }
}

}  // namespace
}  // namespace kelscore
