#include <gtest/gtest.h>

#include "tests/components/kelcommon/AllocationCount.h"
#include "tests/components/keltransform/TransformTestSupport.h"
#include "tests/support/XmlPlatform.h"

namespace {

using namespace KelTransformTest;

const auto* const kPlatform = KelTest::XmlPlatform::KeepUp();

std::string EveryKind() {
  return Derived(
             "scaled", "float",
             R"(<NormContinuous field="x"><LinearNorm orig="0" norm="0"/><LinearNorm orig="1" norm="2"/></NormContinuous>)") +
         Derived("flag", "double", R"(<NormDiscrete field="s" value="a"/>)") +
         Derived(
             "bin", "string",
             R"(<Discretize field="x" defaultValue="a default text that is too long to lie in a value"><DiscretizeBin binValue="low"><Interval closure="openOpen" rightMargin="0"/></DiscretizeBin></Discretize>)") +
         Derived(
             "mapped", "string",
             R"(<MapValues outputColumn="o"><FieldColumnPair field="s" column="c"/><FieldColumnPair field="i" column="d"/><InlineTable><row><c>a</c><d>1</d><o>A1</o></row></InlineTable></MapValues>)") +
         Derived("copy", "string", R"(<FieldRef field="s"/>)") + Derived("text", "string", R"(<FieldRef field="x"/>)") +
         Derived("upper", "string", R"(<Apply function="uppercase"><FieldRef field="s"/></Apply>)") +
         Derived(
             "joined", "string",
             R"(<Apply function="concat"><FieldRef field="upper"/><Constant> and </Constant><FieldRef field="x"/></Apply>)") +
         Derived(
             "formatted", "string",
             R"(<Apply function="formatNumber"><FieldRef field="x"/><Constant>a number of eight places: %.8f</Constant></Apply>)") +
         Derived(
             "day text", "string",
             R"(<Apply function="formatDatetime"><FieldRef field="day"/><Constant>%A, %d of %B %Y, day %j</Constant></Apply>)") +
         Derived(
             "middle", "double",
             R"(<Apply function="median"><FieldRef field="x"/><FieldRef field="y"/><FieldRef field="i"/></Apply>)") +
         Derived("total", "double", R"(<Aggregate field="f" function="sum"/>)") +
         Derived("terms", "double", R"(<TextIndex textField="s" localTermWeights="augmentedNormalizedTermFrequency"
             maxLevenshteinDistance="1"><TextIndexNormalization><InlineTable><row><string>that</string><stem>which</stem>
             </row><row><string>kno[a-z]*</string><stem>knew</stem><regex>true</regex></row></InlineTable>
             </TextIndexNormalization><Constant>category</Constant></TextIndex>)") +
         Derived("term", "double", R"(<TextIndex textField="upper"><Constant>THE DOCUMENT</Constant></TextIndex>)") +
         Derived("matched", "boolean",
                 R"(<Apply function="matches"><FieldRef field="s"/><Constant>^a.*know$</Constant></Apply>)") +
         Derived(
             "replaced", "string",
             R"(<Apply function="replace"><FieldRef field="s"/><Constant>a (\w+)</Constant><Constant>the $1</Constant></Apply>)") +
         Derived(
             "chosen", "string",
             R"(<Apply function="if"><Apply function="equal"><FieldRef field="upper"/><FieldRef field="s"/></Apply><FieldRef field="s"/><FieldRef field="joined"/></Apply>)") +
         Derived("date", "date", R"(<FieldRef field="day"/>)") + Derived("five", "double", "<Constant>5</Constant>");
}

std::string LongChain(int length) {
  std::string fields;
  for (int index = 0; index < length; ++index) {
    const std::string before = index == 0 ? "y" : Numbered("c", index - 1);
    fields += Derived(Numbered("c", index), "float", "<FieldRef field=\"" + before + "\"/>");
  }
  return fields;
}

TEST(AllocationTest, Transform_InTheSteadyState_AllocatesNothing) {
  KelTransformation transformation;
  ASSERT_TRUE(AddPmml(transformation,
                      Pmml(StandardFields(),
                           EveryKind() + Derived("whole", "integer", R"(<FieldRef field="c0"/>)") + LongChain(200)))
                  .IsOK())
      << KelDiagnostics::Last();
  ValueRecord record = RecordOf({{"x", 0}, {"s", Value()}, {"i", 1}, {"day", "2004-08-20"}, {"y", 1}});
  ASSERT_TRUE(transformation.GetDerivedVariableInfo(record, false).IsOK());
  record.Add("f", Value::NULL_VALUE);
  for (const char* const member : {"one", "two", "three"}) record["f"][member] = 0.5;
  const std::string category = "a";
  const std::string unknown = "a category that the document doesn't know";
  const auto scoreRows = [&] {
    for (int row = 0; row < 100; ++row) {
      record[0] = row * 0.1 - 5.0;
      record[1] = row % 2 == 0 ? category : unknown;
      if (row % 5 == 0) record[1].SetNull();
      ASSERT_TRUE(transformation.Transform(record).IsOK());
    }
  };
  scoreRows();
  const long before = AllocationCount();
  scoreRows();
  EXPECT_EQ(AllocationCount(), before);
}

}  // namespace
