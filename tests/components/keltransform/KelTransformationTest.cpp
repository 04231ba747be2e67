#include <atomic>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>

#include "scoring/common/KelTransformation.h"
#include "tests/components/keltransform/TransformTestSupport.h"

namespace {

using namespace KelTransformTest;
using testing::ElementsAre;
using testing::HasSubstr;

// A field that is `factor` times `field`.
std::string Times(const std::string& name, int factor, const std::string& field) {
  return Derived(name, "double",
                 "<NormContinuous field=\"" + field +
                     R"("><LinearNorm orig="0" norm="0"/><LinearNorm orig="1" norm=")" + std::to_string(factor) +
                     "\"/></NormContinuous>");
}

// "six" = 6 x, by way of "three" and "two", which stand behind it.
const std::string kChain = Times("six", 2, "three") + Times("three", 3, "x") + Times("two", 2, "x");

class KelTransformationTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(AddPmml(fTransformation, Pmml(StandardFields(), kChain)).IsOK()) << KelDiagnostics::Last();
  }

  std::vector<std::string> DerivedNames() {
    ValueRecord record;
    EXPECT_TRUE(fTransformation.GetDerivedVariableInfo(record, false).IsOK());
    return record.Names(true);
  }

  KelTransformation fTransformation;
};

TEST_F(KelTransformationTest, GetDerivedVariableInfo_OfAnyRecord_AddsNullsInDocumentOrder) {
  ValueRecord record = RecordOf({{"x", 1}, {"two", 99}});
  EXPECT_TRUE(fTransformation.GetDerivedVariableInfo(record, true).IsOK());
  EXPECT_THAT(record.Names(true), ElementsAre("x", "two", "six", "three"));
  EXPECT_EQ(record.At(0), Value(1));
  for (int position = 1; position < 4; ++position) EXPECT_TRUE(record.At(position).IsNull());
}

TEST_F(KelTransformationTest, Transform_NamedFields_WritesTheseOnly) {
  ValueRecord record = RecordOf({{"six", "left over"}, {"other", 5}, {"x", 7}});
  EXPECT_TRUE(fTransformation.Transform(record).IsOK());
  EXPECT_EQ(record.At(0), Value(42));
  EXPECT_EQ(record.At(1), Value(5));
  EXPECT_EQ(record.At(2), Value(7));
  EXPECT_EQ(record.Size(), 3);
}

// A value that is left over from another row must not be taken for an input.
TEST_F(KelTransformationTest, Transform_DependencyInTheRecord_IsComputedAnew) {
  ValueRecord record = RecordOf({{"x", 7}, {"three", 1000}, {"six", 1}});
  for (const double x : {7.0, -1.0, 0.5}) {
    record[0] = x;
    EXPECT_TRUE(fTransformation.Transform(record).IsOK());
    EXPECT_EQ(record.At(1), Value(3 * x));
    EXPECT_EQ(record.At(2), Value(6 * x));
  }
}

TEST_F(KelTransformationTest, Transform_LayoutsChangeBetweenCalls_EachIsBoundAnew) {
  for (int round = 0; round < 3; ++round) {
    for (int extra = 0; extra < 100; ++extra) {  // more layouts than are remembered
      ValueRecord record;
      for (int field = 0; field < extra; ++field) record.Add(Numbered("field", field), Value(field));
      record.Add("x", Value(extra));
      record.Add("two", Value());
      EXPECT_TRUE(fTransformation.Transform(record).IsOK());
      EXPECT_EQ(record.At(extra + 1), Value(2 * extra));
    }
  }
}

TEST_F(KelTransformationTest, Transform_EmptyRecordAndNoDerivedField_ChangesNothing) {
  ValueRecord empty;
  EXPECT_TRUE(fTransformation.Transform(empty).IsOK());
  EXPECT_EQ(empty.Size(), 0);
  ValueRecord inputs = RecordOf({{"x", "abc"}, {"y", Value()}});
  EXPECT_TRUE(fTransformation.Transform(inputs).IsOK());
  EXPECT_EQ(inputs.At(0), Value("abc"));
}

TEST_F(KelTransformationTest, Transform_InvalidInput_MakesEveryFieldThatUsesItNull) {
  const auto results = Compute(fTransformation, {{"x", "abc"}}, {"two", "three", "six"});
  for (const Value& result : results) EXPECT_TRUE(result.IsNull());
}

TEST_F(KelTransformationTest, Transform_ThreadsAtOnce_GiveWhatOneThreadGives) {
  std::atomic<int> wrong = 0;
  const auto work = [&](int seed) {
    for (int step = 0; step < 3000; ++step) {
      ValueRecord record;
      for (int field = 0; field < (step + seed) % 7; ++field) record.Add(Numbered("f", field), Value(field));
      record.Add("x", Value(step));
      record.Add("six", Value());
      if (!fTransformation.Transform(record).IsOK() || !(record.At(record.Size() - 1) == Value(6 * step))) ++wrong;
    }
  };
  std::thread first(work, 0);
  std::thread second(work, 3);
  first.join();
  second.join();
  EXPECT_EQ(wrong, 0);
}

TEST_F(KelTransformationTest, AddTransformationDictionary_AfterAddPMML_SeesItsFields) {
  ASSERT_EQ(Compute(fTransformation, {{"x", 1}}, {"six"}).front(), Value(6));  // binds the layout
  const KelStatus status = AddDictionary(fTransformation, Times("twelve", 2, "six") + Times("ten", 10, "y"));
  ASSERT_TRUE(status.IsOK()) << KelDiagnostics::Last();
  EXPECT_THAT(DerivedNames(), ElementsAre("six", "three", "two", "twelve", "ten"));
  const auto results = Compute(fTransformation, {{"x", 1}, {"y", 2}}, {"twelve", "ten", "six"});
  EXPECT_THAT(results, ElementsAre(Value(12), Value(20), Value(6)));
}

TEST_F(KelTransformationTest, AddTransformationDictionary_Error_LeavesWhatWasThere) {
  const struct {
    std::string content;
    const char* reason;
  } cases[] = {
      {Times("new", 2, "x") + Times("bad", 2, "unknown"), R"(field="unknown")"},
      {Times("two", 2, "x"), "another derived field"},
      {Times("new", 2, "x") + Times("new", 2, "x"), "twice"},
      {Derived("new", "double", "<Apply function=\"ln\"/>"), "<Apply"},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(AddDictionary(fTransformation, row.content).GetErrorCode(), 109);
    EXPECT_THAT(KelDiagnostics::Last(), HasSubstr(row.reason));
    EXPECT_THAT(DerivedNames(), ElementsAre("six", "three", "two"));
    EXPECT_EQ(Compute(fTransformation, {{"x", 1}}, {"six"}).front(), Value(6));
  }
  std::istringstream pmml(Pmml("", ""));
  EXPECT_EQ(fTransformation.AddTransformationDictionary(pmml).GetErrorCode(), 105);
  std::istringstream noise("\x01\x02 no xml");
  EXPECT_EQ(fTransformation.AddTransformationDictionary(noise).GetErrorCode(), 104);
  EXPECT_TRUE(AddDictionary(fTransformation, Times("new", 2, "x")).IsOK());
}

TEST_F(KelTransformationTest, AddPMML_ASecondDocument_AddsItsFields) {
  const std::string fields =
      R"(<DataField name="x" optype="continuous" dataType="double"/><DataField name="z" optype="continuous" dataType="double"/>)";
  ASSERT_TRUE(AddPmml(fTransformation, Pmml(fields, Times("four", 4, "z") + Times("twelve", 2, "six"))).IsOK())
      << KelDiagnostics::Last();
  const auto results = Compute(fTransformation, {{"z", 1}, {"x", 1}}, {"twelve", "four"});
  EXPECT_THAT(results, ElementsAre(Value(12), Value(4)));
}

TEST(KelTransformationDocumentTest, AddPMML_WithoutTransformations_DerivesNothing) {
  KelTransformation transformation;
  std::istringstream stream("<PMML version=\"3.2\"/>");
  EXPECT_TRUE(transformation.AddPMML(stream, false).IsOK());
  ValueRecord record = RecordOf({{"x", 1}});
  EXPECT_TRUE(transformation.GetDerivedVariableInfo(record, false).IsOK());
  EXPECT_TRUE(transformation.Transform(record).IsOK());
  EXPECT_EQ(record.Size(), 1);
}

TEST(KelTransformationDocumentTest, AddPMML_FunctionThatNothingCalls_IsNoError) {
  KelTransformation transformation;
  const std::string function =
      R"(<DefineFunction name="f" optype="continuous"><ParameterField name="p"/><Apply function="ln"><FieldRef field="p"/></Apply></DefineFunction>)";
  EXPECT_TRUE(AddPmml(transformation, Pmml(StandardFields(), function + Times("two", 2, "x"))).IsOK());
  EXPECT_EQ(Compute(transformation, {{"x", 1}}, {"two"}).front(), Value(2));
}

TEST(KelTransformationDocumentTest, Transform_MoreSlotsThanTheStackHolds_Works) {
  std::string fields;
  for (int index = 1; index <= 500; ++index) {
    const std::string before = index == 1 ? "x" : Numbered("d", index - 1);
    fields += Derived(Numbered("d", index), "double",
                      "<NormContinuous field=\"" + before +
                          R"("><LinearNorm orig="0" norm="1"/><LinearNorm orig="1" norm="2"/></NormContinuous>)");
  }
  KelTransformation transformation;
  ASSERT_TRUE(AddPmml(transformation, Pmml(StandardFields(), fields)).IsOK());
  const auto results = Compute(transformation, {{"x", 0.5}}, {"d500", "d250"});
  EXPECT_THAT(results, ElementsAre(Value(500.5), Value(250.5)));
}

}  // namespace
