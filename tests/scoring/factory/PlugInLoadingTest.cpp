#include <gtest/gtest.h>
#include <memory>
#include <sstream>

#include "scoring/common/IKelScore.h"
#include "scoring/common/KelDiagnostics.h"
#include "scoring/common/KelVarList.h"
#include "scoring/factory/ScoringScorerFactory.h"
#include "tests/scoring/factory/HostSettings.h"
#include "tests/support/CaseName.h"
#include "tests/support/PmmlText.h"
#include "tests/support/XmlPlatform.h"

namespace KelScoring_20 {
namespace {

using KelCommon_1_3::IKelScore;
using KelCommon_1_3::KelDiagnostics;
using KelTest::HostSettings;
using KelTest::Nested;
using KelTest::PlugIn;
using KelTest::PmmlText;
using KelTest::Text;
using KelXML_1_3::KelSettings;
using KelXML_1_3::KelVarList;

const auto* const kPlatform = KelTest::XmlPlatform::KeepUp();

std::unique_ptr<IKelScore> GetScorer(KelSettings& settings, std::istream& stream) {
  KelVarList varList;
  KelDiagnostics::Clear();
  return std::unique_ptr<IKelScore>(ScoringScorerFactory::GetScorer(settings, varList, stream));
}

struct ChoiceCase {
  const char* name;
  const char* version;
  const char* modelType;
  const char* supported;  // null: not set
  const char* entry;      // a key of "scoringDll" beside "Torvane"
  const char* chosen;     // "stream" is the plug-in of the entry, "dom" that of "Torvane"
};

class PlugInChoice : public testing::TestWithParam<ChoiceCase> {};

TEST_P(PlugInChoice, FollowsVersionAndModelElement) {
  const ChoiceCase& param = GetParam();
  KelSettings settings = HostSettings("dom");
  settings.AddSetting("scoringDll", Nested({{"Torvane", PlugIn("dom")}, {param.entry, PlugIn("stream")}}), true);
  settings.AddSetting("scoring_version", param.version, true);
  settings.AddSetting("scoring_modelType", param.modelType, true);
  if (param.supported != nullptr) settings.AddSetting("versionSupported", param.supported, true);
  std::stringstream stream = PmmlText().Stream();
  EXPECT_NE(GetScorer(settings, stream), nullptr);
  EXPECT_EQ(Text(settings, "seen_road"), param.chosen);
}

const ChoiceCase kChoiceCases[] = {
    {"DefaultVersion", "4.0", "TreeModel", nullptr, "TreeModel", "stream"},
    {"OtherVersion", "3.2", "TreeModel", nullptr, "TreeModel", "dom"},
    {"SupportedVersionSet", "3.2", "TreeModel", "3.2", "TreeModel", "stream"},
    {"DefaultVersionNoLongerSupported", "4.0", "TreeModel", "3.2", "TreeModel", "dom"},
    {"VersionsCompareAsTexts", "4.00", "TreeModel", nullptr, "TreeModel", "dom"},
    {"NoEntryForTheElement", "4.0", "NeuralNetwork", nullptr, "TreeModel", "dom"},
    {"NoModelElement", "4.0", "", nullptr, "TreeModel", "dom"},
    {"EmptyVersionSupported", "", "TreeModel", "", "TreeModel", "stream"},
};
INSTANTIATE_TEST_SUITE_P(Cases, PlugInChoice, testing::ValuesIn(kChoiceCases), KelTest::CaseName());

struct RefusalCase {
  const char* name;
  std::string plugIn;
  std::string document;
  const char* reason;  // a part of it
};

class PlugInRefusal : public testing::TestWithParam<RefusalCase> {};

TEST_P(PlugInRefusal, GivesNullAndAReason) {
  KelSettings settings = HostSettings("unused");
  settings.AddSetting("scoringDll", Nested({{"Torvane", GetParam().plugIn}}), true);
  std::istringstream stream(GetParam().document);
  EXPECT_EQ(GetScorer(settings, stream), nullptr);
  EXPECT_NE(KelDiagnostics::Last().find(GetParam().reason), std::string::npos) << KelDiagnostics::Last();
}

const std::string kGood = PmmlText().Text();
const RefusalCase kRefusalCases[] = {
    {"NoName", "", kGood, "scoringDll"},
    {"NoFile", PlugIn("nosuchfile"), kGood, "nosuchfile20r"},
    {"NoSymbol", PlugIn("nosymbol"), kGood, "GetScoreParser"},
    {"NullParser", PlugIn("nullparser"), kGood, "gives no score parser"},
    {"NullScorer", PlugIn("null"), kGood, "makes no scorer"},
    {"ControlCharacter", "a\nb", kGood, "control characters"},
    {"DomOfMalformedDocument", PlugIn("dom"), kGood.substr(0, kGood.size() / 2), "makes no scorer"},
};
INSTANTIATE_TEST_SUITE_P(Cases, PlugInRefusal, testing::ValuesIn(kRefusalCases), KelTest::CaseName());

TEST(PlugInLoading, ReasonOfThePlugIn_Stays) {
  KelSettings settings = HostSettings("null");
  settings.AddSetting("give_reason", "because of line 7", true);
  std::stringstream stream = PmmlText().Stream();
  EXPECT_EQ(GetScorer(settings, stream), nullptr);
  EXPECT_EQ(KelDiagnostics::Last(), "because of line 7");
}

TEST(PlugInLoading, TablesMissing_GiveNull) {
  for (const char* missing : {"scoringDll", "modelDll"}) {
    KelSettings settings = HostSettings("stream");
    settings.AddSetting(missing, "no table", true);
    std::stringstream stream = PmmlText().Stream();
    EXPECT_EQ(GetScorer(settings, stream), nullptr);
    EXPECT_EQ(Text(settings, "seen_road"), "(none)");
  }
}

TEST(PlugInLoading, NoEntryForTheDefaultPlugIn_GivesNull) {
  KelSettings settings = HostSettings("stream");
  settings.AddSetting("scoringDll", Nested({{"TreeModel", PlugIn("stream")}}), true);
  std::stringstream stream = PmmlText().Stream();
  EXPECT_EQ(GetScorer(settings, stream), nullptr);
}

// The stream comes to the plug-in as it is, neither rewound nor cleared.
TEST(PlugInLoading, StreamRoad_GetsTheStreamUntouched) {
  KelSettings settings = HostSettings("stream");
  std::stringstream stream = PmmlText().Stream();
  stream.seekg(7);
  stream.setstate(std::ios::failbit);
  EXPECT_NE(GetScorer(settings, stream), nullptr);
  EXPECT_EQ(Text(settings, "seen_flags"), std::to_string(std::ios::failbit));
}

TEST(PlugInLoading, DomRoad_ReadsTheWholeDocumentFromItsStart) {
  KelSettings settings = HostSettings("dom");
  std::stringstream stream = PmmlText().Stream();
  stream.seekg(0, std::ios::end);
  stream.setstate(std::ios::eofbit | std::ios::failbit);
  EXPECT_NE(GetScorer(settings, stream), nullptr);
  EXPECT_EQ(Text(settings, "seen_root"), "PMML");
  EXPECT_EQ(Text(settings, "seen_element"), "TreeModel");
}

TEST(PlugInLoading, WhatAPlugInThrows_GoesOn) {
  for (const char* road : {"stream", "dom"}) {
    KelSettings settings = HostSettings("throwing");
    settings.AddSetting("throw_on", road, true);
    std::stringstream stream = PmmlText().Stream();
    EXPECT_THROW(GetScorer(settings, stream), std::runtime_error) << road;
  }
}

}  // namespace
}  // namespace KelScoring_20
