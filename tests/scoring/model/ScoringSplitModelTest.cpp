#include <cmath>
#include <gtest/gtest.h>
#include <thread>

#include "scoring/common/ValueRecord.h"
#include "scoring/model/ScoringSoloModel.h"
#include "scoring/model/ScoringSplitModel.h"
#include "tests/support/ScriptedScorer.h"

namespace KelScoring_20 {
namespace {

using KelCommon_1_3::KelStatus;
using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;
using KelTest::CallLog;
using KelTest::Offers;
using KelTest::ScriptedScorer;
using Key = ScoringSplitModel::Key;

class ScoringSplitModelTest : public testing::Test {
 protected:
  // A member whose scorer writes its name as the prediction.
  ScoringSoloModel* Member(const std::string& name) {
    auto* member = new ScoringSoloModel(KelXML_1_3::KelSettings(), KelXML_1_3::KelVarList());
    auto* scorer = new ScriptedScorer(fLog, name);
    scorer->OnScore(KelTest::Writes("prediction", Value(name))).OnScorable(Offers({"of_" + name}));
    member->SetScorer(scorer);
    return member;
  }

  void Add(const Key& key, const std::string& name) { ASSERT_TRUE(fModel->AddModel(key, Member(name))); }

  void SplitBy(std::vector<std::string> fields) { fModel->SetSplitFields(fields); }

  // The name of the member that scored, or the code of the failure.
  std::string Chosen(ValueRecord in) {
    ValueRecord out;
    out.Add("prediction", Value::NULL_VALUE);
    const KelStatus status = fModel->Score(in, out);
    return status.IsOK() ? out["prediction"].GetString() : std::to_string(status.GetErrorCode());
  }

  CallLog fLog;
  std::unique_ptr<ScoringSplitModel> fModel = std::make_unique<ScoringSplitModel>();
};

ValueRecord Record(const std::vector<std::pair<std::string, Value>>& fields) {
  ValueRecord record;
  for (const auto& [name, value] : fields) record.Add(name, value);
  return record;
}

TEST_F(ScoringSplitModelTest, EmptySet_Refuses) {
  SplitBy({"missing"});
  EXPECT_EQ(Chosen(ValueRecord()), "260009");  // before the split field is looked for
  ValueRecord record;
  EXPECT_EQ(fModel->Scorable(record).GetErrorCode(), 260009);
  EXPECT_EQ(fModel->Clone(), nullptr);
}

TEST_F(ScoringSplitModelTest, Key_ChoosesTheMember) {
  Add({Value(1.0), Value("a")}, "one-a");
  Add({Value(1.0), Value("b")}, "one-b");
  Add({Value("1"), Value("a")}, "text-a");
  Add({Value(2.0), Value::NULL_VALUE}, "two-null");
  Add({Value(1.0)}, "short");
  SplitBy({"n", "t"});
  const auto chosen = [this](const Value& n, const Value& t) {
    return Chosen(Record({{"x", Value(0.0)}, {"t", t}, {"n", n}}));
  };
  EXPECT_EQ(chosen(Value(1.0), Value("a")), "one-a");
  EXPECT_EQ(chosen(Value(1.0), Value("b")), "one-b");
  EXPECT_EQ(chosen(Value("1"), Value("a")), "text-a");
  EXPECT_EQ(chosen(Value(2.0), Value::NULL_VALUE), "two-null");
  EXPECT_EQ(chosen(Value(1.0), Value::NULL_VALUE), "260009");  // no prefix of a longer key
  EXPECT_EQ(chosen(Value(3.0), Value("a")), "260009");
  EXPECT_EQ(chosen(Value::NULL_VALUE, Value("a")), "260009");
}

// Values that are equal choose the same member, however they came to be.
TEST_F(ScoringSplitModelTest, Key_EqualsByValue) {
  const double nan = std::nan("");
  const Value text("a text that is too long to lie in the value itself");
  Value members;
  members["a"] = 1.0;
  Value otherMembers;
  otherMembers["a"] = 2.0;
  Add({Value(0.0)}, "zero");
  Add({Value(nan)}, "nan");
  Add({text}, "text");
  Add({members}, "members");
  Add({otherMembers}, "other members");
  for (int i = 1; i <= 1000; ++i) Add({Value(i)}, std::to_string(i));
  SplitBy({"n"});
  const auto chosen = [this](const Value& n) { return Chosen(Record({{"n", n}})); };
  EXPECT_EQ(chosen(Value(-0.0)), "zero");
  EXPECT_EQ(chosen(Value(std::copysign(nan, -1.0))), "nan");
  EXPECT_EQ(chosen(text), "text");
  EXPECT_EQ(chosen(members), "members");
  EXPECT_EQ(chosen(otherMembers), "other members");
  for (int i = 1; i <= 1000; ++i) EXPECT_EQ(chosen(Value(i)), std::to_string(i));
  EXPECT_EQ(chosen(Value(0.5)), "260009");
  EXPECT_EQ(chosen(Value::NULL_VALUE), "260009");
}

TEST_F(ScoringSplitModelTest, NoSplitFields_OnlyTheEmptyKeyScores) {
  Add({Value(1.0)}, "one");
  EXPECT_EQ(Chosen(Record({{"n", Value(1.0)}})), "260009");
  Add({}, "empty");
  EXPECT_EQ(Chosen(Record({{"n", Value(1.0)}})), "empty");
  SplitBy({"n"});  // nothing was worked out before, so they count
  EXPECT_EQ(Chosen(Record({{"n", Value(1.0)}})), "one");
}

TEST_F(ScoringSplitModelTest, Positions_HoldFromTheFirstRecordThatHasAllFields) {
  Add({Value(1.0)}, "one");
  Add({Value(2.0)}, "two");
  SplitBy({"n"});
  EXPECT_EQ(Chosen(Record({{"x", Value(1.0)}})), "260027");
  EXPECT_EQ(Chosen(Record({{"x", Value(1.0)}, {"n", Value(2.0)}})), "two");
  EXPECT_EQ(Chosen(Record({{"n", Value(2.0)}, {"x", Value(1.0)}})), "one");  // names aren't looked at any more
  EXPECT_EQ(Chosen(Record({{"other", Value(2.0)}, {"y", Value(1.0)}})), "one");
  EXPECT_EQ(Chosen(Record({{"n", Value(2.0)}})), "260027");  // too short
  SplitBy({"other"});
  EXPECT_EQ(Chosen(Record({{"x", Value(1.0)}, {"n", Value(2.0)}})), "two");
}

TEST_F(ScoringSplitModelTest, FailingMember_GivesItsStatusUnchanged) {
  auto* member = new ScoringSoloModel(KelXML_1_3::KelSettings(), KelXML_1_3::KelVarList());
  auto* scorer = new ScriptedScorer(fLog, "failing");
  scorer->OnScore([](const ValueRecord&, ValueRecord&) { return KelStatus(5, true); });
  member->SetScorer(scorer);
  fModel->AddModel({}, member);
  ValueRecord in;
  ValueRecord out;
  const KelStatus status = fModel->Score(in, out);
  EXPECT_EQ(status.GetErrorCode(), 5);
  EXPECT_FALSE(status.IsError());
}

TEST_F(ScoringSplitModelTest, TakenKey_LeavesTheModelWithTheCaller) {
  Add({Value(1.0)}, "first");
  const std::unique_ptr<ScoringModel> second(Member("second"));
  EXPECT_FALSE(fModel->AddModel({Value(1.0)}, second.get()));
  SplitBy({"n"});
  EXPECT_EQ(Chosen(Record({{"n", Value(1.0)}})), "first");
}

TEST_F(ScoringSplitModelTest, SetModel_CountsOnlyOnAnEmptySet) {
  std::map<ScoringSplitModel::Key, ScoringModel*> models;
  models[{Value(1.0)}] = Member("one");
  models[{Value(2.0)}] = Member("two");
  fModel->SetModel(models);
  EXPECT_EQ(fModel->GetModel().size(), 2u);
  models[{Value(3.0)}] = nullptr;
  fModel->SetModel(models);
  EXPECT_EQ(fModel->GetModel().size(), 2u);
  fModel.reset();  // owns them from then on
  EXPECT_EQ(fLog, (CallLog{"~one", "~two"}));
}

TEST_F(ScoringSplitModelTest, FirstMember_IsTheOneWithTheLeastKey) {
  Add({Value("z")}, "text");
  Add({Value(7.0), Value(1.0)}, "longer");
  Add({Value(7.0)}, "shorter");
  ValueRecord record;
  EXPECT_TRUE(fModel->Scorable(record).IsOK());
  EXPECT_EQ(record.Names(true), std::vector<std::string>{"of_shorter"});
  fModel.reset();
  EXPECT_EQ(fLog, (CallLog{"shorter.Scorable", "~shorter", "~longer", "~text"}));
}

// Every thread meets the model with its positions not worked out yet.
TEST(ScoringSplitModelThreads, RaceOnTheFirstRecord_AllScore) {
  for (int round = 0; round < 200; ++round) {
    ScoringSplitModel model;
    for (const double key : {1.0, 2.0}) {
      auto* member = new ScoringSoloModel(KelXML_1_3::KelSettings(), KelXML_1_3::KelVarList());
      class Silent : public KelCommon_1_3::IKelScore {
        bool IsReady() override { return true; }
        KelStatus Score(const ValueRecord& in, ValueRecord& out) override {
          out["prediction"] = in.At(1);
          return {};
        }
        KelStatus Scorable(ValueRecord&) override { return {}; }
        std::string GetType() override { return ""; }
      };
      member->SetScorer(new Silent);
      model.AddModel({Value(key)}, member);
    }
    std::vector<std::string> fields = {"n"};
    model.SetSplitFields(fields);
    const auto score = [&model](double key, double& prediction) {
      ValueRecord in = Record({{"x", Value(0.0)}, {"n", Value(key)}});
      ValueRecord out;
      out.Add("prediction", Value::NULL_VALUE);
      for (int i = 0; i < 20; ++i) model.Score(in, out);
      prediction = out["prediction"].GetReal();
    };
    double one = 0.0;
    double two = 0.0;
    std::thread other(score, 1.0, std::ref(one));
    score(2.0, two);
    other.join();
    EXPECT_EQ(one, 1.0);
    EXPECT_EQ(two, 2.0);
  }
}

}  // namespace
}  // namespace KelScoring_20
