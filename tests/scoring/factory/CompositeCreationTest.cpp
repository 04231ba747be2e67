#include <cstdio>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>

#include "scoring/common/KelDiagnostics.h"
#include "scoring/common/KelVecValue.h"
#include "scoring/common/ValueRecord.h"
#include "scoring/factory/ScoringFactory.h"
#include "scoring/model/ScoringMultiModel.h"
#include "scoring/model/ScoringSoloModel.h"
#include "scoring/model/ScoringSplitModel.h"
#include "tests/scoring/factory/HostSettings.h"
#include "tests/support/PmmlText.h"

namespace KelScoring_20 {
namespace {

using KelCommon_1_3::KelDiagnostics;
using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;
using KelTest::HostSettings;
using KelTest::PmmlText;
using KelTest::Text;
using KelXML_1_3::KelSettings;
using KelXML_1_3::KelVecValue;
using Texts = std::vector<std::string>;

// What became of a creation: the kind of model, or the code of the failure.
std::string Outcome(const ScoringFactory& factory, const ScoringModel* model) {
  if (model == nullptr) return std::to_string(factory.GetStatus().GetErrorCode());
  if (dynamic_cast<const ScoringMultiModel*>(model) != nullptr) return "multi";
  if (dynamic_cast<const ScoringSplitModel*>(model) != nullptr) return "split";
  return dynamic_cast<const ScoringSoloModel*>(model) != nullptr ? "solo" : "other";
}

// Files of one test, removed when it ends.
class Files {
 public:
  ~Files() {
    for (const std::string& path : fPaths) std::remove(path.c_str());
  }

  std::string Add(const std::string& text) {
    const auto folder = std::filesystem::temp_directory_path();
    const auto* info = testing::UnitTest::GetInstance()->current_test_info();
    fPaths.push_back(folder / ("kel_" + std::string(info->name()) + std::to_string(fPaths.size()) + ".xml"));
    std::ofstream(fPaths.back()) << text;
    return fPaths.back();
  }

 private:
  Texts fPaths;
};

class CompositeCreation : public testing::Test {
 protected:
  std::string FromSettings(const Texts& files, const Texts* ids = nullptr) {
    fSettings.AddSetting("scoring_pmmlFiles", files, true);
    if (ids != nullptr) fSettings.AddSetting("scoring_modelIDs", *ids, true);
    return Outcome(fFactory, fFactory.CreateScoringModel(fSettings));
  }

  std::string FromStreams(const std::vector<std::string>& documents) {
    fStreams.clear();
    for (const std::string& document : documents) fStreams.push_back(std::make_unique<std::stringstream>(document));
    std::vector<std::stringstream*> streams;
    for (const auto& stream : fStreams) streams.push_back(stream.get());
    return Outcome(fFactory, fFactory.CreateScoringModel(fSettings, streams));
  }

  // The identifiers under which a member offers a prediction.
  static Texts Members(ScoringModel& model) {
    ValueRecord offered;
    EXPECT_TRUE(model.Scorable(offered).IsOK());
    return offered["prediction"].MakeMembers().Names(true);
  }

  void ExpectUsableAgain() {
    fFactory.Detach();
    fSettings = HostSettings("stream");
    EXPECT_EQ(FromStreams({kTree}), "solo");
  }

  const std::string kTree = PmmlText().Text();
  const std::string kBroken = "<broken";
  Files fFiles;
  KelSettings fSettings = HostSettings("dom");
  ScoringFactory fFactory;
  std::vector<std::unique_ptr<std::stringstream>> fStreams;
};

TEST_F(CompositeCreation, Path_OpensTheFile) {
  EXPECT_EQ(Outcome(fFactory, fFactory.CreateScoringModel(fSettings, "/no/such/file.xml")), "260004");
  EXPECT_NE(KelDiagnostics::Last().find("/no/such/file.xml"), std::string::npos);
  EXPECT_EQ(Outcome(fFactory, fFactory.CreateScoringModel(fSettings, "")), "260004");
  EXPECT_EQ(Outcome(fFactory, fFactory.CreateScoringModel(fSettings, fFiles.Add(kTree))), "solo");
  EXPECT_TRUE(fFactory.GetStatus().IsOK());
}

TEST_F(CompositeCreation, OneFile_WinsOverTheEnsemble) {
  const Texts ids = {"a", "b", "c"};
  EXPECT_EQ(FromSettings({fFiles.Add(kTree)}, &ids), "solo");
}

TEST_F(CompositeCreation, OneFileWithoutName_Refused) {
  EXPECT_EQ(FromSettings({""}), "260003");
  ExpectUsableAgain();
}

TEST_F(CompositeCreation, OneFileAfterAFailure_WaitsForDetach) {
  EXPECT_EQ(FromSettings({"/no/such/file.xml"}), "260004");
  const std::string good = fFiles.Add(kTree);
  EXPECT_EQ(FromSettings({good}), "260004");
  fFactory.Detach();
  EXPECT_EQ(FromSettings({good}), "solo");
}

TEST_F(CompositeCreation, SeveralFilesWithoutIdentifiers_Refused) {
  EXPECT_EQ(FromSettings({}), "260003");
  EXPECT_EQ(FromSettings({"a", "b"}), "260003");
}

TEST_F(CompositeCreation, FilesWithIdentifiers_GiveAnEnsemble) {
  const Texts ids = {"a", "b"};
  EXPECT_EQ(FromSettings({fFiles.Add(kTree), fFiles.Add(kTree)}, &ids), "multi");
  const std::unique_ptr<ScoringModel> model(fFactory.Detach());
  EXPECT_EQ(Members(*model), ids);
  EXPECT_EQ(model->GetSubType(), "TreeModel");
}

TEST_F(CompositeCreation, MoreFilesThanIdentifiers_SurplusIsNotOpened) {
  const Texts ids = {"a"};
  EXPECT_EQ(FromSettings({fFiles.Add(kTree), "/no/such/file.xml"}, &ids), "multi");
  const std::unique_ptr<ScoringModel> model(fFactory.Detach());
  EXPECT_EQ(Members(*model), ids);
}

TEST_F(CompositeCreation, NoIdentifiers_GiveAnEmptyEnsembleUnlessAnErrorIsLeft) {
  const Texts none;
  EXPECT_EQ(FromSettings({}, &none), "multi");
  delete fFactory.Detach();
  EXPECT_EQ(Outcome(fFactory, fFactory.CreateScoringModel(fSettings, "/no/such/file.xml")), "260004");
  EXPECT_EQ(FromSettings({}, &none), "260004");
  fFactory.Detach();
  fSettings.AddSetting("scoring_splitModel", KelSettings(), true);
  EXPECT_EQ(FromStreams({}), "split");
}

TEST_F(CompositeCreation, MemberThatFails_EndsTheEnsemble) {
  const Texts ids = {"a", "b", "c"};
  const std::string good = fFiles.Add(kTree);
  EXPECT_EQ(FromSettings({good, "/no/such/file.xml", good}, &ids), "260004");
  fFactory.Detach();
  EXPECT_EQ(FromSettings({good, fFiles.Add(kBroken), good}, &ids), "260010");
  fFactory.Detach();
  EXPECT_EQ(FromSettings({good, good}, &ids), "260003");  // no file for the third
  EXPECT_NE(KelDiagnostics::Last().find("\"c\""), std::string::npos);
  ExpectUsableAgain();
}

TEST_F(CompositeCreation, StreamsWithoutDescription_OneGivesItsModel) {
  EXPECT_EQ(FromStreams({}), "260028");
  EXPECT_EQ(FromStreams({kTree, kTree}), "260028");
  EXPECT_EQ(FromStreams({kTree}), "solo");
}

TEST_F(CompositeCreation, StreamsWithIdentifiers_GiveAnEnsemble) {
  fSettings.AddSetting("scoring_modelIDs", Texts{"a"}, true);
  EXPECT_EQ(FromStreams({kTree}), "multi");
  delete fFactory.Detach();
  fSettings.AddSetting("scoring_modelIDs", Texts{"a", "b"}, true);
  EXPECT_EQ(FromStreams({kTree}), "260028");
  fFactory.Detach();
  EXPECT_EQ(FromStreams({kTree, kBroken}), "260010");
  fFactory.Detach();
  EXPECT_EQ(FromStreams({kTree, kTree}), "multi");
}

TEST_F(CompositeCreation, NullStream_CountsAsMissing) {
  std::stringstream good(kTree);
  EXPECT_EQ(Outcome(fFactory, fFactory.CreateScoringModel(fSettings, std::vector<std::stringstream*>{nullptr})),
            "260028");
  fSettings.AddSetting("scoring_modelIDs", Texts{"a", "b"}, true);
  EXPECT_EQ(Outcome(fFactory, fFactory.CreateScoringModel(fSettings, std::vector<std::stringstream*>{&good, nullptr})),
            "260028");
}

// A warning of a member doesn't show in the composite.
TEST_F(CompositeCreation, MemberWithAWarning_EnsembleIsOK) {
  fSettings = HostSettings("stream");
  fSettings.AddSetting("scoring_modelIDs", Texts{"a", "b"}, true);
  EXPECT_EQ(FromStreams({kTree, kBroken}), "multi");
  EXPECT_TRUE(fFactory.GetStatus().IsOK());
}

// The keys that choose a plug-in are written anew for each document.
TEST_F(CompositeCreation, MembersOfDifferentVersions_ChooseTheirOwnPlugIns) {
  fSettings.AddSetting("scoringDll",
                       KelTest::Nested({{"Torvane", KelTest::PlugIn("dom")}, {"TreeModel", KelTest::PlugIn("stream")}}),
                       true);
  KelSettings description;
  description.AddSetting("scoring_splitModelIDs", Texts{"a", "b"}, true);
  description.AddSetting("a", Texts{"1"}, true);
  description.AddSetting("b", Texts{"2"}, true);
  fSettings.AddSetting("scoring_splitModel", description, true);
  EXPECT_EQ(FromStreams({kTree, PmmlText{.version = "3.2"}.Text()}), "split");
  const std::unique_ptr<ScoringModel> model(fFactory.Detach());
  const auto& members = dynamic_cast<ScoringSplitModel&>(*model).GetModel();
  ASSERT_EQ(members.size(), 2u);
  EXPECT_EQ(Text(members.begin()->second->GetSettings(), "seen_road"), "stream");
  EXPECT_EQ(Text(members.rbegin()->second->GetSettings(), "seen_road"), "dom");
  EXPECT_EQ(Text(fSettings, "scoring_version"), "3.2");
}

KelSettings Description(const Texts& ids) {
  KelSettings description;
  description.AddSetting("scoring_splitFields", Texts{"s"}, true);
  description.AddSetting("scoring_splitModelIDs", ids, true);
  for (const std::string& id : ids) {
    description.AddSetting(id, KelVecValue<Value>(std::vector<Value>{Value(id)}), true);
  }
  return description;
}

TEST_F(CompositeCreation, SplitDescription_WinsOverIdentifiers) {
  fSettings.AddSetting("scoring_modelIDs", Texts{"a"}, true);
  fSettings.AddSetting("scoring_splitModel", Description({"a", "b"}), true);
  EXPECT_EQ(FromStreams({kTree, PmmlText{.attributes = R"(algorithmName="other")"}.Text()}), "split");
  const std::unique_ptr<ScoringModel> model(fFactory.Detach());
  auto& split = dynamic_cast<ScoringSplitModel&>(*model);
  EXPECT_EQ(split.GetSplitFields(), Texts{"s"});
  ASSERT_EQ(split.GetModel().size(), 2u);
  EXPECT_EQ(split.GetModel().at({Value("b")})->GetAlgName(), "other");
  ValueRecord in;
  in.Add("s", "b");
  ValueRecord out;
  EXPECT_TRUE(split.Score(in, out).IsOK());
  in["s"] = "c";
  EXPECT_EQ(split.Score(in, out).GetErrorCode(), 260009);
}

// A member without exactly one entry that holds a list is left out, and its stream stays unread and may be missing.
TEST_F(CompositeCreation, SplitMembersWithoutKey_AreLeftOut) {
  const KelVecValue<Value> key(std::vector<Value>{Value("good")});
  KelSettings description;
  description.AddSetting("scoring_splitModelIDs", Texts{"text", "twice", "absent", "flag", "good", "last"}, true);
  description.AddSetting("text", "no list", true);
  description.AddSetting("twice", key, false);
  description.AddSetting("twice", key, false);
  description.AddSetting("flag", true, true);
  description.AddSetting("good", key, true);
  fSettings.AddSetting("scoring_splitModel", description, true);
  EXPECT_EQ(FromStreams({kBroken, kBroken, kBroken, kBroken, kTree}), "split");
  const std::unique_ptr<ScoringModel> model(fFactory.Detach());
  const auto& members = dynamic_cast<ScoringSplitModel&>(*model).GetModel();
  ASSERT_EQ(members.size(), 1u);
  EXPECT_EQ(members.begin()->first, std::vector<Value>{Value("good")});
  EXPECT_EQ(fStreams[0]->tellg(), 0);
}

TEST_F(CompositeCreation, SplitKeyTaken_FirstMemberStays) {
  KelSettings description = Description({"a", "b"});
  description.AddSetting("b", KelVecValue<Value>(std::vector<Value>{Value("a")}), true);
  fSettings.AddSetting("scoring_splitModel", description, true);
  EXPECT_EQ(FromStreams({kTree, PmmlText{.attributes = R"(algorithmName="second")"}.Text()}), "split");
  const std::unique_ptr<ScoringModel> model(fFactory.Detach());
  const auto& members = dynamic_cast<ScoringSplitModel&>(*model).GetModel();
  ASSERT_EQ(members.size(), 1u);
  EXPECT_EQ(members.begin()->second->GetAlgName(), "CRT");
}

TEST_F(CompositeCreation, SplitMemberThatFails_EndsTheCreation) {
  fSettings.AddSetting("scoring_splitModel", Description({"a", "b"}), true);
  EXPECT_EQ(FromStreams({kTree, kBroken}), "260010");
  fFactory.Detach();
  EXPECT_EQ(FromStreams({kTree}), "260028");
  ExpectUsableAgain();
}

TEST_F(CompositeCreation, PlugInThatThrowsAtTheSecondMember_LeavesNothingBehind) {
  fSettings.AddSetting(
      "scoringDll", KelTest::Nested({{"Torvane", KelTest::PlugIn("throwing")}, {"TreeModel", KelTest::PlugIn("dom")}}),
      true);
  fSettings.AddSetting("throw_on", "stream", true);
  fSettings.AddSetting("scoring_modelIDs", Texts{"a", "b"}, true);
  EXPECT_THROW(FromStreams({kTree, PmmlText{.version = "3.2"}.Text()}), std::runtime_error);
  EXPECT_EQ(fFactory.Detach(), nullptr);
  ExpectUsableAgain();
}

}  // namespace
}  // namespace KelScoring_20
