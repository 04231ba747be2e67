#include <gtest/gtest.h>

#include "scoring/model/ScoringMultiModel.h"
#include "scoring/model/ScoringSoloModel.h"
#include "tests/support/ScriptedScorer.h"

namespace KelScoring_20 {
namespace {

using KelCommon_1_3::KelStatus;
using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;
using KelTest::CallLog;
using KelTest::Offers;
using KelTest::ScriptedScorer;
using KelTest::Writes;

class ScoringMultiModelTest : public testing::Test {
 protected:
  // A member whose scorer is called as the identifier is.
  ScriptedScorer& Add(const std::string& id) {
    KelXML_1_3::KelVarList varList;
    varList.AddContVar("of_" + id, "", KelXML_1_3::kRoleInput);
    auto* member = new ScoringSoloModel(KelXML_1_3::KelSettings(), varList);
    auto* scorer = new ScriptedScorer(fLog, id);
    member->SetScorer(scorer);
    member->SetType(id == "a" ? KelScoringConst::TreeModel : KelScoringConst::NeuralNetwork);
    member->SetSubType("sub_" + id);
    member->SetAlgName("alg_" + id);
    fModel->AddModel(id, member);
    return *scorer;
  }

  // The value of a member's result, null if there is none.
  Value Result(const std::string& name, const std::string& id) {
    const ValueRecord* members = fOut.At(fOut.IndexOf(name)).Members();
    return members == nullptr ? Value() : members->Get(members->IndexOf(id));
  }

  CallLog fLog;
  std::unique_ptr<ScoringMultiModel> fModel = std::make_unique<ScoringMultiModel>();
  ValueRecord fIn;
  ValueRecord fOut;
};

TEST_F(ScoringMultiModelTest, WithoutMembers_RefusesAndShowsItsOwnFields) {
  fOut.Add("prediction", Value(1.0));
  fModel->SetSubType("own");
  fModel->SetType(KelScoringConst::MiningModel);
  EXPECT_EQ(fModel->Score(fIn, fOut).GetErrorCode(), 260009);
  EXPECT_EQ(fModel->Scorable(fOut).GetErrorCode(), 260009);
  EXPECT_EQ(fOut["prediction"], Value(1.0));
  EXPECT_EQ(fModel->GetModelType(), "UNKNOWN");
  EXPECT_EQ(fModel->GetSubType(), "own");
  EXPECT_EQ(fModel->GetType(), KelScoringConst::MiningModel);
  EXPECT_EQ(fModel->GetVarList().Size(), 0);
  EXPECT_EQ(fModel->Clone(), nullptr);
}

TEST_F(ScoringMultiModelTest, Score_FilesEachResultUnderItsIdentifier) {
  Add("a").OnScore(Writes("prediction", Value(1.0)));
  Add("b").OnScore(Writes("prediction", Value("two")));
  fOut.Add("prediction", Value("flat"));
  fOut.Add("probability", Value::NULL_VALUE);
  EXPECT_TRUE(fModel->Score(fIn, fOut).IsOK());
  EXPECT_EQ(fLog, (CallLog{"a.Score", "b.Score"}));
  EXPECT_EQ(Result("prediction", "a"), Value(1.0));
  EXPECT_EQ(Result("prediction", "b"), Value("two"));
  // What nobody wrote is filed as null.
  ASSERT_NE(fOut["probability"].Members(), nullptr);
  EXPECT_EQ(fOut["probability"].Members()->Names(true), (std::vector<std::string>{"a", "b"}));
  EXPECT_TRUE(Result("probability", "a").IsNull());
}

TEST_F(ScoringMultiModelTest, Score_EachMemberStartsFromNullNames) {
  const auto dirty = [](const ValueRecord&, ValueRecord& out) {
    EXPECT_EQ(out.Names(true), (std::vector<std::string>{"prediction", "probcategory"}));
    for (int i = 0; i < out.Size(); ++i) EXPECT_TRUE(out.At(i).IsNull());
    EXPECT_EQ(out["probcategory"].MakeMembers().Size(), 0);
    out["probcategory"]["leftover"] = 1.0;
    out["prediction"] = "text";
    return KelStatus();
  };
  // The second one adds a name, the third one has to start without it.
  Add("a").OnScore(dirty);
  Add("b").OnScore([&dirty](const ValueRecord& in, ValueRecord& out) {
    dirty(in, out);
    out["extra"] = 7.0;
    return KelStatus();
  });
  Add("c").OnScore(dirty);
  fOut.Add("prediction", Value::NULL_VALUE);
  fOut.Add("probcategory", Value::NULL_VALUE);
  EXPECT_TRUE(fModel->Score(fIn, fOut).IsOK());
  EXPECT_EQ(Result("probcategory", "a")["leftover"], Value(1.0));
  EXPECT_EQ(Result("extra", "b"), Value(7.0));
  EXPECT_EQ(fOut["extra"].Members()->Size(), 1);
  EXPECT_EQ(Result("prediction", "b"), Value("text"));
}

TEST_F(ScoringMultiModelTest, FailingMember_KeepsItsEarlierResultAndTheOthersAreWritten) {
  Add("a").OnScore(Writes("prediction", Value(1.0), KelStatus(5, false)));
  Add("b").OnScore(Writes("prediction", Value(2.0), KelStatus(5, true)));  // a warning is a failure here
  Add("c").OnScore(Writes("prediction", Value(3.0)));
  fOut["prediction"]["a"] = -1.0;
  EXPECT_TRUE(fModel->Score(fIn, fOut).IsOK());
  EXPECT_EQ(Result("prediction", "a"), Value(-1.0));
  EXPECT_TRUE(Result("prediction", "b").IsNull());
  EXPECT_EQ(Result("prediction", "c"), Value(3.0));
}

TEST_F(ScoringMultiModelTest, ReusedRecordSetToNull_ShowsOnlyMembersThatScoredNow) {
  bool fails = false;
  Add("a").OnScore([&fails](const ValueRecord&, ValueRecord& out) {
    out["prediction"] = 1.0;
    return fails ? KelStatus(5, false) : KelStatus();
  });
  Add("b").OnScore(Writes("prediction", Value(2.0)));
  fOut.Add("prediction", Value::NULL_VALUE);
  fModel->Score(fIn, fOut);
  fOut.SetAllNull();
  fails = true;
  fModel->Score(fIn, fOut);
  EXPECT_EQ(fOut["prediction"].Members()->Names(true), std::vector<std::string>{"b"});
}

TEST_F(ScoringMultiModelTest, SameIdentifierTwice_LaterResultStays) {
  Add("a").OnScore(Writes("prediction", Value(1.0)));
  Add("a").OnScore(Writes("prediction", Value(2.0)));
  fOut.Add("prediction", Value::NULL_VALUE);
  fModel->Score(fIn, fOut);
  EXPECT_EQ(Result("prediction", "a"), Value(2.0));
  EXPECT_EQ(fOut["prediction"].Members()->Size(), 1);
}

// Once every member has written to a value, places are no longer looked up.
TEST_F(ScoringMultiModelTest, ReusedRecord_KeepsEachResultInItsPlace) {
  double row = 0.0;
  const auto writes = [&row](double factor) {
    return [&row, factor](const ValueRecord&, ValueRecord& out) {
      out["prediction"] = factor * row;
      if (factor != 10.0) out["rare"] = factor + row;
      return factor == 100.0 && row == 1.0 ? KelStatus(5, false) : KelStatus();
    };
  };
  Add("a").OnScore(writes(1.0));
  Add("b").OnScore(writes(10.0));
  Add("a").OnScore(writes(100.0));
  Add("c").OnScore(writes(1000.0));
  fOut.Add("prediction", Value::NULL_VALUE);
  for (row = 1.0; row < 4.0; ++row) {
    SCOPED_TRACE(row);
    EXPECT_TRUE(fModel->Score(fIn, fOut).IsOK());
    EXPECT_EQ(fOut["prediction"].Members()->Names(true), (std::vector<std::string>{"a", "b", "c"}));
    EXPECT_EQ(Result("prediction", "a"), Value(row == 1.0 ? 1.0 : 100.0 * row));  // the second "a" fails at first
    EXPECT_EQ(Result("prediction", "b"), Value(10.0 * row));
    EXPECT_EQ(Result("prediction", "c"), Value(1000.0 * row));
    EXPECT_EQ(Result("rare", "c"), Value(1000.0 + row));
    fOut["prediction"]["a"] = -1.0;
  }
}

TEST_F(ScoringMultiModelTest, NoNamesWanted_MembersRunAllTheSame) {
  Add("a").OnScore(Writes("prediction", Value(1.0)));
  EXPECT_TRUE(fModel->Score(fIn, fOut).IsOK());
  EXPECT_EQ(fLog, CallLog{"a.Score"});
  EXPECT_EQ(fOut.Size(), 0);
}

// The status of a member isn't looked at, what it offered is.
TEST_F(ScoringMultiModelTest, Scorable_GathersWhatMembersOffer) {
  Add("a").OnScorable(Offers({"prediction"}));
  Add("b").OnScorable(Offers({"prediction", "probability"}, KelStatus(5, false)));
  EXPECT_TRUE(fModel->Scorable(fOut).IsOK());
  EXPECT_EQ(fOut.Names(true), (std::vector<std::string>{"prediction", "probability"}));
  EXPECT_EQ(fOut["prediction"].Members()->Names(true), (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(fOut["probability"].Members()->Names(true), std::vector<std::string>{"b"});
}

TEST_F(ScoringMultiModelTest, Metadata_IsThatOfTheFirstMember) {
  Add("a");
  Add("b");
  const ScoringMultiModel& constModel = *fModel;
  EXPECT_EQ(fModel->GetModelType(), "a");
  EXPECT_EQ(fModel->GetType(), KelScoringConst::TreeModel);
  EXPECT_EQ(fModel->GetSubType(), "sub_a");
  EXPECT_EQ(fModel->GetVarList().Size(), 1);
  EXPECT_NE(constModel.GetVarList().GetVariable("of_a"), nullptr);
  EXPECT_EQ(&constModel.GetSettings(), &fModel->GetSettings());
  EXPECT_EQ(fModel->GetAlgName(), "");  // of the composite itself
  fModel->SetSubType("own");
  EXPECT_EQ(fModel->GetSubType(), "sub_a");
}

TEST_F(ScoringMultiModelTest, Destruction_InTheOrderOfAdding) {
  Add("b");
  Add("a");
  Add("c");
  fModel.reset();
  EXPECT_EQ(fLog, (CallLog{"~b", "~a", "~c"}));
}

}  // namespace
}  // namespace KelScoring_20
