// Whole documents through the factory and the plug-in as it is loaded by a host.

#include <gtest/gtest.h>
#include <sstream>
#include <thread>

#include "scoring/common/KelDiagnostics.h"
#include "scoring/factory/ScoringFactory.h"
#include "scoring/model/ScoringModel.h"
#include "tests/plugins/torvane/ModelHarness.h"
#include "tests/support/PmmlText.h"

namespace TorvaneTest {
namespace {

using KelScoring_20::ScoringFactory;
using KelScoring_20::ScoringModel;

class FullRun : public testing::Test {
 protected:
  ScoringModel* Create(const std::string& text, bool needsDerived = false) {
    KelXML_1_3::KelSettings settings;
    KelXML_1_3::KelSettings plugIns;
    plugIns.AddSetting("Torvane", KEL_TORVANE, true);
    KelXML_1_3::KelSettings kinds;
    for (const char* kind : {"MiningModel", "TreeModel", "RegressionModel"}) kinds.AddSetting(kind, "", true);
    settings.AddSetting("scoringDll", plugIns, true);
    settings.AddSetting("modelDll", kinds, true);
    if (needsDerived) settings.AddSetting("scoring_needDerivedPredictor", true, true);
    std::istringstream stream(text);
    return fFactory.CreateScoringModel(settings, stream);
  }

  ScoringFactory fFactory;
};

TEST_F(FullRun, FlagTarget_GivesBothPropensities) {
  KelTest::PmmlText text{.dictionary = KelTest::PmmlText::FlagFields(),
                         .extensions = KelTest::PmmlText::Propensity("AdjustedPropensityByNN"),
                         .body = R"(<Node score="no"><True/><ScoreDistribution value="yes" recordCount="1"/>
                             <ScoreDistribution value="no" recordCount="3"/></Node>)"};
  ScoringModel* model = Create(text.Text());
  ASSERT_NE(model, nullptr) << KelCommon_1_3::KelDiagnostics::Last();
  EXPECT_EQ(model->GetModelType(), "TreeModel");
  ValueRecord out(2);
  ASSERT_TRUE(model->Scorable(out).IsOK());
  ASSERT_TRUE(out.Contains("rawpropensity"));
  ValueRecord in = Record({{"x", 1.0}});
  ASSERT_TRUE(model->Score(in, out).IsOK());
  EXPECT_EQ(Number(out, "rawpropensity"), 0.25);
}

TEST_F(FullRun, DerivedFieldsOfTheLibrary_ReachTheModel) {
  Document document = Identity("d");
  document.transformations = R"(<TransformationDictionary><DerivedField name="d" optype="continuous" dataType="double">
      <NormContinuous field="x"><LinearNorm orig="0" norm="0"/><LinearNorm orig="1" norm="10"/></NormContinuous>
      </DerivedField></TransformationDictionary>)";
  const std::string computedHere = document.Text();
  document.schema += R"(<Extension extender="kelscoring" name="DerivedFields"><MiningField name="d"/></Extension>)";
  const std::string listed = document.Text();
  for (const auto& [text, needsDerived] : {std::pair(computedHere, false), {listed, false}, {computedHere, true}}) {
    const std::unique_ptr<ScoringModel> model(Create(text, needsDerived));
    ASSERT_NE(model, nullptr) << KelCommon_1_3::KelDiagnostics::Last();
    fFactory.Detach();
    ValueRecord in = Record({{"x", 0.5}});
    ValueRecord out = Record({{"prediction", Value::NULL_VALUE}});
    for (const double x : {0.5, 2.0, -1.0}) {
      in[0] = x;
      ASSERT_TRUE(model->Score(in, out).IsOK());
      EXPECT_EQ(Number(out, "prediction"), 10.0 * x);
    }
  }
}

TEST_F(FullRun, RefusedEnsemble_IsNotScoredByItsFirstTree) {
  EXPECT_EQ(Create(R"(<PMML version="4.0"><DataDictionary/><MiningModel functionName="classification">
      <MiningSchema/><Segmentation multipleModelMethod="sum"><Segment><True/><TreeModel
      functionName="classification"><MiningSchema/><Node score="yes"><True/></Node></TreeModel></Segment></Segmentation>
      </MiningModel></PMML>)"),
            nullptr);
  EXPECT_NE(KelCommon_1_3::KelDiagnostics::Last().find("multipleModelMethod=\"sum\""), std::string::npos);
}

// One model, threads with records of different layouts: each gets what a single thread gets.
TEST_F(FullRun, ManyThreadsOnOneModel_ScoreAsOneDoes) {
  const Document document{.attributes = R"(missingValueStrategy="weightedConfidence")",
                          .body = R"(<Output><OutputField name="p"/></Output><Node recordCount="4"><True/>
    <Node score="yes" recordCount="1"><SimplePredicate field="x" operator="lessThan" value="0"/></Node>
    <Node score="no" recordCount="3"><SimplePredicate field="x" operator="greaterOrEqual" value="0"/></Node></Node>)"};
  ScoringModel* model = Create(document.Text());
  ASSERT_NE(model, nullptr) << KelCommon_1_3::KelDiagnostics::Last();
  const auto run = [&](int seed) {
    int wrong = 0;
    for (int row = 0; row < 300; ++row) {
      ValueRecord in(2);
      for (int i = 0; i < (seed + row) % 90; ++i) in.Add("filler" + std::to_string(i), i);
      const int kind = row % 3;
      in.Add("x", kind == 0 ? Value(-1.0) : kind == 1 ? Value(1.0) : Value::NULL_VALUE);
      ValueRecord out(2);
      if (!model->Scorable(out).IsOK() || !model->Score(in, out).IsOK()) ++wrong;
      const double expected = kind == 0 ? 1.0 : kind == 1 ? 0.0 : 0.25;
      if (Probability(out, "yes") != expected || Shown(out, "p") != (kind == 0 ? "yes" : "no")) ++wrong;
    }
    EXPECT_EQ(wrong, 0);
  };
  std::vector<std::thread> threads;
  for (int seed = 0; seed < 4; ++seed) threads.emplace_back(run, seed * 20);
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace TorvaneTest
