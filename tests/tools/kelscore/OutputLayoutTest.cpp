#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "scoring/common/KelMV.h"
#include "tools/kelscore/Failure.h"
#include "tools/kelscore/OutputLayout.h"

namespace kelscore {
namespace {

using KelCommon_1_3::KelMV;
using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;
using testing::ElementsAre;
using testing::HasSubstr;

ValueRecord Announced() {
  ValueRecord record;
  record.Add("prediction", Value::NULL_VALUE);
  record.Add("probability", Value::NULL_VALUE);
  record.Add("probcategory", Value::NULL_VALUE);
  return record;
}

std::string Line(OutputLayout& layout, const ValueRecord& scored) {
  std::string line;
  std::string reason;
  EXPECT_TRUE(layout.Append(scored, ',', line, reason)) << reason;
  return line;
}

TEST(OutputLayout, AnnouncedMembers_AreTheColumns) {
  ValueRecord announced = Announced();
  announced["probcategory"]["yes"];
  announced["probcategory"]["no"];
  OutputLayout layout(announced, {});
  layout.AddCategories({"other"});
  ValueRecord scored = layout.Prototype();
  scored["probcategory"]["unheard of"] = 1.0;
  layout.LearnFrom(scored);
  EXPECT_THAT(layout.Columns(), ElementsAre("prediction", "probability", "probcategory.yes", "probcategory.no"));
}

TEST(OutputLayout, UnannouncedMembers_ComeFromCategoriesThenFromARow) {
  OutputLayout layout(Announced(), {});
  EXPECT_THAT(layout.Columns(), ElementsAre("prediction", "probability", "probcategory"));
  layout.AddCategories({"no", "yes"});
  ValueRecord scored = layout.Prototype();
  scored["probcategory"]["yes"] = 0.25;
  scored["probcategory"]["maybe"] = 0.75;
  layout.LearnFrom(scored);
  EXPECT_THAT(layout.Columns(),
              ElementsAre("prediction", "probability", "probcategory.no", "probcategory.yes", "probcategory.maybe"));
  EXPECT_EQ(Line(layout, scored), ",,,,0.25,0.75");
}

TEST(OutputLayout, MembersOfMembers_HaveNamesWithTwoDots) {
  ValueRecord announced;
  announced["prediction"]["m1"];
  announced["prediction"]["m2"];
  announced["probcategory"]["m1"];
  OutputLayout layout(announced, {});
  ValueRecord scored = layout.Prototype();
  scored["prediction"]["m2"] = "b";
  scored["probcategory"]["m1"]["a"] = 0.5;
  scored["probcategory"]["m1"]["b"] = 0.5;
  layout.LearnFrom(scored);
  EXPECT_THAT(layout.Columns(),
              ElementsAre("prediction.m1", "prediction.m2", "probcategory.m1.a", "probcategory.m1.b"));
  EXPECT_EQ(Line(layout, scored), ",,b,0.5,0.5");
}

TEST(OutputLayout, RowsOfOtherShape_KeepTheColumnsOrSayWhyNot) {
  OutputLayout layout(Announced(), {});
  layout.AddCategories({"no", "yes"});
  ValueRecord scored = layout.Prototype();
  scored["prediction"] = "a,b";
  scored["probability"] = KelMV::gMissingValue;  // the mark of a missing number is no number
  scored["probcategory"]["yes"] = 1.0;
  EXPECT_EQ(Line(layout, scored), ",\"a,b\",,,1");

  ValueRecord reordered = layout.Prototype();
  reordered["probcategory"]["no"] = 0.75;
  reordered["probcategory"]["yes"] = 0.25;
  EXPECT_EQ(Line(layout, reordered), ",,,0.75,0.25");
  EXPECT_EQ(Line(layout, scored), ",\"a,b\",,,1");  // and back again

  std::string line;
  std::string reason;
  ValueRecord surprising = layout.Prototype();
  surprising["probcategory"]["new"] = 1.0;
  EXPECT_FALSE(layout.Append(surprising, ',', line, reason));
  EXPECT_THAT(reason, HasSubstr("\"probcategory\" has a member \"new\" in this row, which has no column"));
  surprising["probcategory"]["new"].SetNull();
  EXPECT_EQ(Line(layout, surprising), ",,,,");  // a null is nothing to lose
  EXPECT_EQ(Line(layout, reordered), ",,,0.75,0.25");

  ValueRecord plain = layout.Prototype();
  plain["probcategory"] = 1.0;
  EXPECT_FALSE(layout.Append(plain, ',', line, reason));
  EXPECT_THAT(reason, HasSubstr("\"probcategory\" has no members in this row"));

  line.clear();
  layout.AppendEmpty(',', line);
  EXPECT_EQ(line, ",,,,");
}

TEST(OutputLayout, ChosenOutputs_StandInTheirOrder) {
  OutputLayout layout(Announced(), {"probability", "prediction"});
  EXPECT_THAT(layout.Columns(), ElementsAre("probability", "prediction"));
  EXPECT_THAT(layout.Prototype().Names(true), ElementsAre("probability", "prediction"));
}

TEST(OutputLayout, ChosenPropensity_BringsWhatItIsComputedFrom) {
  ValueRecord announced = Announced();
  announced.Add("rawpropensity", Value::NULL_VALUE);
  OutputLayout layout(announced, {"rawpropensity"});
  EXPECT_THAT(layout.Columns(), ElementsAre("rawpropensity"));
  EXPECT_THAT(layout.Prototype().Names(true), ElementsAre("rawpropensity", "prediction", "probability"));
}

TEST(OutputLayout, UnknownChoice_IsBadUsageAndListsTheOutputs) {
  try {
    OutputLayout layout(Announced(), {"score"});
    ADD_FAILURE() << "no failure";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.Status(), kBadUsage);
    EXPECT_EQ(failure.Message(), "the model has no output \"score\"; it has prediction, probability, probcategory");
  }
}

}  // namespace
}  // namespace kelscore
