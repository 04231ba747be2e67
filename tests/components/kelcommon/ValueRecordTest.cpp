#include <gtest/gtest.h>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "scoring/common/ValueRecord.h"

namespace {

using KelCommon_1_3::FieldKey;
using KelCommon_1_3::RecordLayout;
using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;

ValueRecord Named(const std::vector<std::string>& names) {
  ValueRecord record;
  for (const std::string& name : names) record.Add(name, Value());
  return record;
}

TEST(ValueRecordTest, Add_NewAndKnownNames_KeepsOrderAndPosition) {
  ValueRecord record(2);
  EXPECT_EQ(record.Add("b", 1), 0);
  EXPECT_EQ(record.Add("a", "x"), 1);
  EXPECT_EQ(record.Add("", 3), 2);  // an empty name is a name
  EXPECT_EQ(record.Add("b", 4), 0);
  EXPECT_EQ(record.Size(), 3);
  EXPECT_EQ(record.Names(true), (std::vector<std::string>{"b", "a", ""}));
  EXPECT_TRUE(record.Get(0) == Value(4));
  EXPECT_EQ(record.GetName(1), "a");
  EXPECT_EQ(record.IndexOf("a"), 1);
  EXPECT_EQ(record.IndexOf("A"), -1);
  EXPECT_TRUE(record.Contains(""));
  EXPECT_FALSE(ValueRecord().Contains(""));
}

TEST(ValueRecordTest, Access_OutsideTheRecord_IsHarmless) {
  ValueRecord record = Named({"a"});
  for (const int position : {-1, 1, -2147483647 - 1, 2147483647}) {
    EXPECT_EQ(record.GetName(position), "");
    EXPECT_TRUE(record.Get(position).IsNull());
    EXPECT_TRUE(record.At(position).IsNull());
    EXPECT_THROW(record[position], std::out_of_range);
  }
}

TEST(ValueRecordTest, ByName_MissingName_AppendsNull) {
  ValueRecord record;
  EXPECT_TRUE(record["a"].IsNull());
  record[std::string("b")] = 2;
  record[FieldKey("c")] = 3;
  record[FieldKey("b")] = 4;
  EXPECT_EQ(record.Names(true), (std::vector<std::string>{"a", "b", "c"}));
  EXPECT_EQ(record["b"].GetReal(), 4);
  EXPECT_EQ(record.Add(FieldKey("d"), 5), 3);
  EXPECT_EQ(record.IndexOf(FieldKey("d")), 3);
  EXPECT_TRUE(record.Contains(FieldKey("a")));
}

TEST(ValueRecordTest, Layout_TellsNamesAndOrder) {
  const std::vector<std::vector<std::string>> different = {
      {}, {""}, {"a"}, {"b"}, {"a", "b"}, {"b", "a"}, {"ab"}, {"a", "b", "c"}, {"c", "a", "b"}, {"a", ""}, {"", "a"},
  };
  std::set<RecordLayout> layouts;
  for (const auto& names : different) layouts.insert(Named(names).Layout());
  EXPECT_EQ(layouts.size(), different.size());
  EXPECT_EQ(Named({}).Layout(), 0U);
  EXPECT_EQ(Named({"a", "b"}).Layout(), Named({"a", "b", "a"}).Layout());
}

TEST(ValueRecordTest, Layout_ThroughALife_FollowsTheNames) {
  ValueRecord record = Named({"a", "b"});
  const RecordLayout layout = record.Layout();
  record["a"] = 1;
  record.SetAllNull();
  EXPECT_EQ(record.Layout(), layout);
  EXPECT_TRUE(record.At(0).IsNull());

  ValueRecord copy(record);
  EXPECT_EQ(copy.Layout(), layout);
  copy["c"];
  EXPECT_NE(copy.Layout(), layout);
  copy = record;
  EXPECT_EQ(copy.Layout(), layout);
  EXPECT_EQ(copy.Size(), 2);

  const ValueRecord moved = std::move(copy);
  EXPECT_EQ(moved.Layout(), layout);
  EXPECT_EQ(copy.Layout(), 0U);  // NOLINT(bugprone-use-after-move): what is left is fixed
  EXPECT_EQ(copy.Size(), 0);
  copy["a"];
  copy["b"];
  EXPECT_EQ(copy.Layout(), layout);

  record.Clear();
  EXPECT_EQ(record.Layout(), 0U);
  EXPECT_EQ(record.IndexOf("a"), -1);
}

// Small records look through the names, larger ones have an index that grows: all the sizes around the changes.
TEST(ValueRecordTest, Lookup_AnySize_FindsEachNameAndNoOther) {
  ValueRecord record;
  for (int size = 1; size <= 1500; ++size) {
    record["field" + std::to_string(size)] = size;
    ASSERT_EQ(record.IndexOf("field" + std::to_string(size)), size - 1);
    ASSERT_EQ(record.IndexOf("field1"), 0);
    ASSERT_EQ(record.IndexOf("field" + std::to_string(size + 1)), -1);
  }
  ValueRecord copy = record;
  const ValueRecord moved = std::move(record);
  for (int i = 0; i < 1500; ++i) {
    ASSERT_EQ(copy.IndexOf(moved.NameAt(i)), i);
    ASSERT_EQ(moved.IndexOf(FieldKey(copy.NameAt(i))), i);
    ASSERT_EQ(moved.At(i).GetReal(), i + 1);
  }
  copy.Clear();
  for (int i = 40; i > 0; --i) copy["f" + std::to_string(i)];
  EXPECT_EQ(copy.IndexOf("f40"), 0);
  EXPECT_EQ(copy.IndexOf("f1"), 39);
  for (int i = 0; i <= 1500; ++i) ASSERT_EQ(copy.IndexOf("field" + std::to_string(i)), -1);
}

TEST(ValueRecordTest, Add_OwnValueOrName_SurvivesGrowth) {
  ValueRecord record;
  record["a"] = "a text that is too long to lie in the value itself";
  record["b"]["x"] = 7;
  for (int i = 0; i < 100; ++i) {
    record.Add("text" + std::to_string(i), record.At(0));
    record.Add("member" + std::to_string(i), record.At(1).Members()->At(0));
  }
  EXPECT_TRUE(record.At(200) == record.At(0));
  EXPECT_TRUE(record.At(201) == Value(7));
  record.Add("b", record.At(1).Members()->At(0));  // its own member
  EXPECT_TRUE(record.At(1) == Value(7));
  record.Add(record.NameAt(0), record.At(1));
  EXPECT_TRUE(record.At(0) == Value(7));
}

Value AsValue(const ValueRecord& record) {
  Value value;
  value.MakeMembers() = record;
  return value;
}

struct Member : Value {
  using Value::Value;
  Member(const ValueRecord& record) : Value(AsValue(record)) {}
};

ValueRecord Pair(const Member& left, const Member& right) {
  ValueRecord record;
  record.Add("left", left);
  record.Add("right", right);
  return record;
}

TEST(ValueRecordTest, Assign_RecordsWithinEachOther_KeepTheContent) {
  ValueRecord whole;
  whole["a"]["x"] = 1;
  whole["a"]["y"]["z"] = "a text that is too long to lie in the value itself";
  const Value inner = whole.At(0);

  ValueRecord copied = whole;
  copied = *copied.At(0).Members();
  EXPECT_EQ(copied.Names(true), (std::vector<std::string>{"x", "y"}));
  ValueRecord moved = whole;
  moved = std::move(moved[0].MakeMembers());
  EXPECT_EQ(moved.Names(true), (std::vector<std::string>{"x", "y"}));

  // Equal layouts are copied in place, which must see that one record lies in the other.
  ValueRecord sameNames = Pair(Pair(Pair(5, 6), 2), 3);
  sameNames = *sameNames.At(0).Members();
  EXPECT_TRUE(AsValue(sameNames) == AsValue(Pair(Pair(5, 6), 2)));
  sameNames = Pair(3, Pair(2, 1));
  sameNames[1].MakeMembers() = sameNames;
  EXPECT_TRUE(AsValue(sameNames) == AsValue(Pair(3, Pair(3, Pair(2, 1)))));

  const ValueRecord& self = whole;
  whole = self;
  EXPECT_TRUE(whole.At(0) == inner);
}

TEST(ValueRecordTest, TakeNames_GivesNullsOnly) {
  for (const int size : {0, 2, 100}) {
    ValueRecord source;
    for (int i = 0; i < size; ++i) source[std::to_string(i)] = i;
    ValueRecord record = Named({"old"});
    record.TakeNames(source);
    EXPECT_EQ(record.Names(true), source.Names(true));
    EXPECT_EQ(record.Layout(), source.Layout());
    EXPECT_EQ(record.IndexOf(std::to_string(size - 1)), size - 1);
    EXPECT_EQ(record.IndexOf("old"), -1);
    for (int i = 0; i < size; ++i) EXPECT_TRUE(record.At(i).IsNull());
  }
  ValueRecord whole;
  whole["a"]["x"] = 1;
  whole.TakeNames(*whole.At(0).Members());
  EXPECT_EQ(whole.Names(true), std::vector<std::string>{"x"});
  whole.TakeNames(whole);
  EXPECT_EQ(whole.Names(true), std::vector<std::string>{"x"});
}

}  // namespace
