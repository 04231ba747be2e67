#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools/kelscore/Arguments.h"
#include "tools/kelscore/Failure.h"

namespace kelscore {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

Command Read(std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), "kelscore");
  return ReadArguments(static_cast<int>(arguments.size()), arguments.data());
}

TEST(Arguments, Score_FewestAndAll) {
  const auto few = std::get<ScoreArguments>(Read({"score", "m.pmml", "-"}));
  EXPECT_EQ(few.model.path, "m.pmml");
  EXPECT_EQ(few.input, "-");
  EXPECT_EQ(few.output, "-");
  EXPECT_EQ(few.delimiter, ',');
  EXPECT_EQ(few.threads, 1U);
  EXPECT_TRUE(few.writeInput);
  EXPECT_FALSE(few.skipFailedRows);

  const auto all = std::get<ScoreArguments>(Read({"score",
                                                  "--missing",
                                                  "-999",
                                                  "m.pmml",
                                                  "d.csv",
                                                  "-o",
                                                  "out.csv",
                                                  "--outputs",
                                                  "a,b",
                                                  "--no-input",
                                                  "--delimiter",
                                                  "tab",
                                                  "--missing",
                                                  "?",
                                                  "--threads",
                                                  "4",
                                                  "--on-error",
                                                  "skip",
                                                  "--error-column",
                                                  "why",
                                                  "--plugin-dir",
                                                  "plugins",
                                                  "--dll",
                                                  "TreeModel=trees",
                                                  "--dll",
                                                  "Torvane=other"}));
  EXPECT_EQ(all.model.path, "m.pmml");
  EXPECT_EQ(all.input, "d.csv");
  EXPECT_EQ(all.output, "out.csv");
  EXPECT_THAT(all.outputs, ElementsAre("a", "b"));
  EXPECT_THAT(all.missingTokens, ElementsAre("-999", "?"));
  EXPECT_FALSE(all.writeInput);
  EXPECT_EQ(all.delimiter, '\t');
  EXPECT_EQ(all.threads, 4U);
  EXPECT_TRUE(all.skipFailedRows);
  EXPECT_EQ(all.errorColumn, "why");
  EXPECT_EQ(all.model.pluginDir, "plugins");
  EXPECT_THAT(all.model.dlls, ElementsAre(Pair("TreeModel", "trees"), Pair("Torvane", "other")));
}

TEST(Arguments, Members_TakeThePlaceOfTheDocument) {
  const auto ensemble = std::get<ScoreArguments>(Read({"score", "--member", "a=x=y.pmml", "d.csv"}));
  EXPECT_EQ(ensemble.model.path, "");
  EXPECT_EQ(ensemble.input, "d.csv");
  EXPECT_THAT(ensemble.model.members, ElementsAre(Pair("a", "x=y.pmml")));

  const auto split = std::get<DescribeArguments>(
      Read({"describe", "--split-field", "f", "--split-field", "g", "--split-member", "1,=a.pmml"}));
  EXPECT_THAT(split.model.splitFields, ElementsAre("f", "g"));
  ASSERT_EQ(split.model.splitMembers.size(), 1U);
  EXPECT_THAT(split.model.splitMembers[0].key, ElementsAre("1", ""));
  EXPECT_EQ(split.model.splitMembers[0].path, "a.pmml");

  const auto settings = std::get<ScoreArguments>(Read({"score", "--settings", "s.xml", "m.pmml", "d.csv"}));
  EXPECT_EQ(settings.model.path, "m.pmml");
  EXPECT_EQ(settings.input, "d.csv");
}

TEST(Arguments, Describe_Formats) {
  EXPECT_FALSE(std::get<DescribeArguments>(Read({"describe", "m.pmml"})).json);
  EXPECT_TRUE(std::get<DescribeArguments>(Read({"describe", "m.pmml", "--format", "json"})).json);
}

TEST(Arguments, Verify_OneDocumentAndPlugIns) {
  const auto few = std::get<VerifyArguments>(Read({"verify", "m.pmml"}));
  EXPECT_EQ(few.model.path, "m.pmml");
  EXPECT_FALSE(few.json);
  const auto all = std::get<VerifyArguments>(Read({"verify", "m.pmml", "--format", "json", "--plugin-dir", "plugins",
                                                   "--settings", "s.xml", "--dll", "TreeModel=trees"}));
  EXPECT_TRUE(all.json);
  EXPECT_EQ(all.model.pluginDir, "plugins");
  EXPECT_EQ(all.model.settingsFile, "s.xml");
  EXPECT_THAT(all.model.dlls, ElementsAre(Pair("TreeModel", "trees")));
}

TEST(Arguments, BadUsage_IsOneLine) {
  const struct {
    std::vector<const char*> arguments;
    const char* message;
  } kCases[] = {
      {{"frobnicate"}, "frobnicate"},
      {{"score"}, "INPUT"},
      {{"score", "m.pmml"}, "MODEL"},
      {{"score", "--member", "a=b"}, "INPUT"},
      {{"score", "m.pmml", "d.csv", "--member", "a=b"}, "m.pmml"},
      {{"score", "d.csv", "--split-member", "b"}, "KEY=MODEL"},
      {{"score", "m.pmml", "d.csv", "e.csv"}, "e.csv"},
      {{"score", "m.pmml", "d.csv", "--frobnicate"}, "--frobnicate"},
      {{"score", "m.pmml", "d.csv", "--threads", "0"}, "--threads"},
      {{"score", "m.pmml", "d.csv", "--threads", "x"}, "--threads"},
      {{"score", "m.pmml", "d.csv", "--on-error", "panic"}, "--on-error"},
      {{"score", "m.pmml", "d.csv", "--delimiter", "ab"}, "--delimiter"},
      {{"score", "m.pmml", "d.csv", "--delimiter", "\""}, "--delimiter"},
      {{"score", "m.pmml", "d.csv", "--dll", "TreeModel"}, "NAME=VALUE"},
      {{"score", "m.pmml", "d.csv", "--missing"}, "--missing"},
      {{"describe", "m.pmml", "--format", "yaml"}, "--format"},
      {{"describe"}, "MODEL"},
      {{"verify"}, "MODEL"},
      {{"verify", "m.pmml", "--format", "yaml"}, "--format"},
      {{"verify", "m.pmml", "--member", "a=b"}, "--member"},
  };
  for (const auto& c : kCases) {
    try {
      Read(c.arguments);
      ADD_FAILURE() << "no failure for " << c.message;
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.Status(), kBadUsage);
      EXPECT_THAT(failure.Message(), HasSubstr(c.message));
      EXPECT_EQ(failure.Message().find('\n'), std::string::npos);
    }
  }
}

}  // namespace
}  // namespace kelscore
