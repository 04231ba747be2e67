#include <gtest/gtest.h>

#include "scoring/factory/ScoringScorerFactory.h"
#include "tests/scoring/factory/HostSettings.h"

namespace KelScoring_20 {
namespace {

using KelTest::Nested;
using KelXML_1_3::KelSettings;
using Map = std::map<std::string, std::string>;
using Names = std::vector<std::string>;

TEST(NameTables, GetModelType_KnowsElementsExactly) {
  const char* const elements[] = {"",
                                  "AssociationModel",
                                  "ClusteringModel",
                                  "GeneralRegressionModel",
                                  "MiningModel",
                                  "NaiveBayesModel",
                                  "NeuralNetwork",
                                  "RegressionModel",
                                  "RuleSetModel",
                                  "SequenceModel",
                                  "SupportVectorMachineModel",
                                  "TextModel",
                                  "TimeSeriesModel",
                                  "TreeModel",
                                  "BayesNetModel",
                                  "NearestNeighborModel"};
  int number = 0;
  for (const char* element : elements) EXPECT_EQ(ScoringScorerFactory::GetModelType(element), number++) << element;
  for (const char* other : {"treemodel", "TreeModel ", "UnknownModel", "Scorecard"}) {
    EXPECT_EQ(ScoringScorerFactory::GetModelType(other), KelScoringConst::UnknownModel) << other;
  }
}

TEST(NameTables, TablesInSettings_ReplaceWhatTheResultsHeld) {
  KelSettings settings;
  settings.AddSetting("scoringDll", Nested({{"TreeModel", "b"}, {"Torvane", "a"}, {"", "empty"}}), true);
  settings.AddSetting("modelDll", Nested({{"TreeModel", "unread"}, {"Any", ""}, {"AModel", "x"}}), true);
  Map scoringNames = {{"old", "old"}};
  Names modelNames = {"old"};
  EXPECT_TRUE(ScoringScorerFactory::GetScoringNames(scoringNames, settings).IsOK());
  EXPECT_TRUE(ScoringScorerFactory::GetModelNames(modelNames, settings).IsOK());
  EXPECT_EQ(scoringNames, (Map{{"", "empty"}, {"Torvane", "a"}, {"TreeModel", "b"}}));
  EXPECT_EQ(modelNames, (Names{"TreeModel", "Any", "AModel"}));  // in the order of adding
}

TEST(NameTables, EmptyTables_AreNoFailure) {
  KelSettings settings;
  settings.AddSetting("scoringDll", KelSettings(), true);
  settings.AddSetting("modelDll", KelSettings(), true);
  Map scoringNames;
  Names modelNames;
  EXPECT_TRUE(ScoringScorerFactory::GetScoringNames(scoringNames, settings).IsOK());
  EXPECT_TRUE(ScoringScorerFactory::GetModelNames(modelNames, settings).IsOK());
}

TEST(NameTables, MissingTables_EmptyTheResultsAndGiveErrors) {
  KelSettings settings;
  settings.AddSetting("scoringDll", "a text is no table", true);
  Map scoringNames = {{"old", "old"}};
  Names modelNames = {"old"};
  const auto noScoringDll = ScoringScorerFactory::GetScoringNames(scoringNames, settings);
  const auto noModelDll = ScoringScorerFactory::GetModelNames(modelNames, settings);
  EXPECT_TRUE(noScoringDll.IsError());
  EXPECT_EQ(noScoringDll.GetErrorCode(), 260006);
  EXPECT_TRUE(noModelDll.IsError());
  EXPECT_EQ(noModelDll.GetErrorCode(), 260005);
  EXPECT_TRUE(scoringNames.empty());
  EXPECT_TRUE(modelNames.empty());
}

}  // namespace
}  // namespace KelScoring_20
