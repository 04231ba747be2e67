#include <functional>
#include <gtest/gtest.h>
#include <new>
#include <string>

#include "scoring/common/KelSettings.h"
#include "scoring/common/KelVarList.h"
#include "scoring/common/Value.h"
#include "scoring/common/ValueRecord.h"
#include "tests/components/kelcommon/AllocationCount.h"

namespace {

using KelCommon_1_3::FieldKey;
using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;

const std::string kLongText = "a text that is too long to lie in the value itself";

long Count(const std::function<void()>& work) {
  const long before = AllocationCount();
  work();
  return AllocationCount() - before;
}

// The first round may allocate, the second one must not.
long CountInSteadyState(const std::function<void()>& work) {
  work();
  return Count(work);
}

TEST(AllocationTest, Count_OfALongText_IsSeen) {
  EXPECT_GE(Count([] { const Value text(kLongText); }), 1);
}

TEST(AllocationTest, NumbersAndNull_NeverAllocate) {
  EXPECT_EQ(Count([] {
              Value number(1.5);
              Value copy(number);
              Value null;
              null = copy;
              copy = Value::NULL_VALUE;
              copy = 3;
              number = std::move(copy);
              number.SetNull();
            }),
            0);
}

TEST(AllocationTest, AlternatingKinds_SettleDown) {
  Value value;
  const Value text(kLongText);
  EXPECT_EQ(CountInSteadyState([&] {
              value = text;
              value = 1.5;
              value = kLongText;
              value = Value();
              value = kLongText.c_str();
              value.SetNull();
            }),
            0);
}

TEST(AllocationTest, RecordByPositionOrKey_SettlesDown) {
  ValueRecord record;
  const FieldKey key("a field name of more than a few letters");
  const std::string name = "another field name of more than a few letters";
  record[key];
  record[name];
  EXPECT_EQ(CountInSteadyState([&] {
              record[0] = 1.5;
              record[1] = kLongText;
              record[key] = 2.5;
              record.Add(key, record.At(1));
              record.Add(name, Value(3));
              record.SetAllNull();
            }),
            0);
}

TEST(AllocationTest, RecordCopies_OfOneLayout_SettleDown) {
  ValueRecord source;
  source["a"] = kLongText;
  source["b"]["x"] = 1;
  source["b"]["y"] = kLongText;
  for (int i = 0; i < 20; ++i) source["more" + std::to_string(i)] = i;
  ValueRecord target;
  EXPECT_EQ(CountInSteadyState([&] { target = source; }), 0);
}

TEST(AllocationTest, CompositeOutput_WrittenAnew_SettlesDown) {
  ValueRecord output;
  output["probcategory"];
  const char* const names[] = {"a category with a rather long name", "b", "c"};
  for (const char* const name : names) output[0][name];
  EXPECT_EQ(CountInSteadyState([&] {
              output.SetAllNull();
              ValueRecord& members = output[0].MakeMembers();
              for (int i = 0; i < members.Size(); ++i) members[i] = 0.25 * i;
              output[0][names[0]] = 1;
            }),
            0);
  EXPECT_EQ(output[0].Members()->Size(), 3);
}

TEST(AllocationTest, CopiesOfSettings_ShareLists) {
  KelXML_1_3::KelSettings settings;
  settings.AddSetting("files", std::vector<std::string>(1000, kLongText), true);
  EXPECT_LT(Count([&settings] { const KelXML_1_3::KelSettings copy(settings); }), 20);
}

// A value that is added when memory runs out comes whole or not at all, and can be added again.
TEST(AllocationTest, EncoderWithoutMemory_StaysInStep) {
  for (const std::string& label : {std::string(), kLongText}) {
    KelXML_1_3::KelVarList list;
    list.AddCatVar("x", "", 0, KelXML_1_3::kCategoricalString, KelXML_1_3::kRoleInput);
    KelXML_1_3::IKelEncoder& encoder = *list.GetVarAt(0)->GetEncoder();
    for (int i = 0; i < 100; ++i) {
      const std::string value = kLongText + std::to_string(i);
      bool added = false;
      for (long allowed = 0; !added; ++allowed) {
        ASSERT_EQ(encoder.EncodeString(value), -1.0);
        ASSERT_EQ(encoder.GetValueCount(), i);
        FailAllocationsAfter(allowed);
        try {
          encoder.AddStringValue(value, label);
          added = true;
        } catch (const std::bad_alloc&) {
        }
        FailAllocationsAfter(-1);
      }
      ASSERT_EQ(encoder.EncodeString(value), i);
      ASSERT_EQ(encoder.GetStringValueAt(i), value);
      ASSERT_EQ(encoder.GetValueLabels()->size(), label.empty() ? 0U : static_cast<std::size_t>(i + 1));
    }
  }
}

}  // namespace
