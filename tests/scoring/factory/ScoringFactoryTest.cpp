#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>
#include <thread>

#include "scoring/common/KelDiagnostics.h"
#include "scoring/common/KelVarList.h"
#include "scoring/common/ValueRecord.h"
#include "scoring/factory/ScoringFactory.h"
#include "scoring/model/ScoringModel.h"
#include "scoring/propensity/ScoringAdjustedPropensity.h"
#include "tests/scoring/factory/HostSettings.h"
#include "tests/support/CaseName.h"
#include "tests/support/PmmlText.h"

namespace KelScoring_20 {
namespace {

using KelCommon_1_3::KelDiagnostics;
using KelCommon_1_3::KelStatus;
using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;
using KelTest::Entries;
using KelTest::HostSettings;
using KelTest::PlugIn;
using KelTest::PmmlText;
using KelTest::Text;
using KelXML_1_3::KelSettings;

// One creation on a factory of its own.
struct Creation {
  explicit Creation(KelSettings& settings, const std::string& document) {
    std::istringstream stream(document);
    created = factory.CreateScoringModel(settings, stream);
    status = factory.GetStatus();
    model.reset(factory.Detach());
  }

  std::unique_ptr<ScoringModel> model;  // outlives its factory
  KelStatus status;
  ScoringModel* created = nullptr;
  ScoringFactory factory;
};

TEST(ScoringFactory, OneDocument_GivesAModelWithItsMetadata) {
  KelSettings settings = HostSettings("stream");
  const Creation creation(
      settings, PmmlText{.extensions = R"(<Extension extender="kelscoring" name="modelID" value="id7"/>)"}.Text());
  EXPECT_TRUE(creation.status.IsOK());
  ASSERT_NE(creation.model, nullptr);
  EXPECT_EQ(creation.created, creation.model.get());
  const ScoringModel& model = *creation.model;
  EXPECT_EQ(model.GetType(), KelScoringConst::TreeModel);
  EXPECT_EQ(model.GetSubType(), "TreeModel");
  EXPECT_EQ(model.GetAlgName(), "CRT");
  EXPECT_EQ(model.GetModelID(), "id7");
  EXPECT_EQ(model.GetAppName() + model.GetAppVersion(), "Maker7.1");
  EXPECT_EQ(model.GetVersion(), "");
  EXPECT_EQ(model.GetModelType(), "echo");
  EXPECT_EQ(model.GetVarList().Size(), 3);
  EXPECT_EQ(Text(model.GetSettings(), "seen_variables"), "3");
  EXPECT_EQ(Text(settings, "seen_road"), "(none)");  // the plug-in works on the model's own settings
  for (const KelSettings* each : {&std::as_const(settings), &model.GetSettings()}) {
    EXPECT_EQ(Text(*each, "scoring_version"), "4.0");
    EXPECT_EQ(Text(*each, "scoring_modelType"), "TreeModel");
    EXPECT_EQ(Text(*each, "scoring_multipleModelMethod"), "");
  }
}

struct StatusCase {
  const char* name;
  const char* missing;  // a setting that is left out; null: none
  std::string plugIn;
  std::string document;
  long code;
  bool hasModel;
};

class CreationStatus : public testing::TestWithParam<StatusCase> {};

TEST_P(CreationStatus, TellsWhatHappened) {
  const StatusCase& param = GetParam();
  KelSettings settings = HostSettings(param.plugIn);
  if (param.missing != nullptr) settings.AddSetting(param.missing, "no table", true);
  const Creation creation(settings, param.document);
  EXPECT_EQ(creation.status.GetErrorCode(), param.code);
  EXPECT_EQ(creation.status.IsError(), !param.hasModel);
  EXPECT_EQ(creation.model != nullptr, param.hasModel);
  // The keys are written once the prescan is behind, whatever it gave.
  EXPECT_EQ(Text(settings, "scoring_version") == "(none)", param.missing != nullptr);
}

const std::string kGood = PmmlText().Text();
const StatusCase kStatusCases[] = {
    {"Good", nullptr, "stream", kGood, 0, true},
    {"ServedByDom", nullptr, "dom", kGood, 0, true},
    {"NoScoringDll", "scoringDll", "stream", kGood, 260006, false},
    {"NoModelDll", "modelDll", "stream", kGood, 260005, false},
    {"EmptyStreamThatAPlugInTakes", nullptr, "stream", "", 260007, true},
    {"EmptyStream", nullptr, "dom", "", 260010, false},
    {"NoRootOfPmml", nullptr, "dom", "<Other/>", 260010, false},
    {"Truncated", nullptr, "dom", kGood.substr(0, 400), 260010, false},
    {"NoPlugIn", nullptr, "nosuchfile", kGood, 260010, false},
    {"NullScorer", nullptr, "null", kGood, 260010, false},
    {"BadDictionary", nullptr, "stream", PmmlText{.dictionary = "<DataDictionary><DataField/></DataDictionary>"}.Text(),
     0, true},
};
INSTANTIATE_TEST_SUITE_P(Cases, CreationStatus, testing::ValuesIn(kStatusCases), KelTest::CaseName());

TEST(ScoringFactory, FailedPrescan_ModelHasNothingOfTheDocument) {
  KelSettings settings = HostSettings("stream");
  settings.AddSetting("scoring_modelType", "of an earlier document", true);
  const std::string flagged =
      PmmlText{
          .dictionary = PmmlText::FlagFields(), .transformations = PmmlText::Constant("d"), .body = "<Node></Other>"}
          .Text();
  const Creation creation(settings, flagged);
  EXPECT_EQ(creation.status.GetErrorCode(), 260007);
  ASSERT_NE(creation.model, nullptr);
  EXPECT_EQ(creation.model->GetType(), KelScoringConst::UnknownModel);
  EXPECT_EQ(creation.model->GetAlgName() + creation.model->GetSubType(), "");
  EXPECT_EQ(creation.model->GetTransformation(), nullptr);
  EXPECT_EQ(creation.model->GetAdjustedPropensity(), nullptr);
  EXPECT_EQ(Text(settings, "scoring_modelType"), "");
}

struct KindCase {
  const char* name;
  std::string element;
  Entries modelDll;
  KelScoringConst::ModelType type;
  const char* subType;
  const char* variables;
};

class ModelKinds : public testing::TestWithParam<KindCase> {};

TEST_P(ModelKinds, DecideTypeAndVariables) {
  const KindCase& param = GetParam();
  KelSettings settings = HostSettings("stream", param.modelDll);
  const Creation creation(settings, PmmlText{.element = param.element}.Text());
  EXPECT_TRUE(creation.status.IsOK());
  ASSERT_NE(creation.model, nullptr);
  EXPECT_EQ(creation.model->GetType(), param.type);
  EXPECT_EQ(creation.model->GetSubType(), param.subType);
  EXPECT_EQ(Text(creation.model->GetSettings(), "seen_variables"), param.variables);
}

const KindCase kKindCases[] = {
    {"Tree", "TreeModel", {{"TreeModel", ""}}, KelScoringConst::TreeModel, "TreeModel", "3"},
    {"Association",
     "AssociationModel",
     {{"AssociationModel", ""}},
     KelScoringConst::AssociationModel,
     "AssociationModel",
     "0"},
    {"Sequence", "SequenceModel", {{"SequenceModel", ""}}, KelScoringConst::SequenceModel, "SequenceModel", "0"},
    {"ListedOutsideTheTable", "Scorecard", {{"Scorecard", ""}}, KelScoringConst::UnknownModel, "Scorecard", "0"},
    {"NotListed", "TreeModel", {{"NeuralNetwork", ""}}, KelScoringConst::UnknownModel, "", "0"},
    {"NothingListed", "TreeModel", {}, KelScoringConst::UnknownModel, "", "0"},
};
INSTANTIATE_TEST_SUITE_P(Cases, ModelKinds, testing::ValuesIn(kKindCases), KelTest::CaseName());

TEST(ScoringFactory, PlugInThatChangesSettings_HasTheLastWord) {
  KelSettings settings = HostSettings("stream");
  settings.AddSetting("set_modelType", "replaced", true);
  settings.AddSetting("set_needDerived", true, true);
  const Creation creation(settings, PmmlText{.transformations = PmmlText::Constant("d")}.Text());
  ASSERT_NE(creation.model, nullptr);
  EXPECT_EQ(creation.model->GetSubType(), "replaced");
  EXPECT_EQ(creation.model->GetType(), KelScoringConst::TreeModel);
  EXPECT_TRUE(creation.model->NeedDerivedPredictor());
  EXPECT_EQ(Text(settings, "scoring_modelType"), "TreeModel");
}

TEST(ScoringFactory, DerivedFieldsOfTheSchema_AreComputedIntoTheInput) {
  KelSettings settings = HostSettings("stream");
  const std::string derivedFields =
      R"(<MiningField name="x"/><Extension extender="kelscoring" name="DerivedFields"><MiningField name="d"/></Extension>)";
  Creation creation(settings, PmmlText{.transformations = PmmlText::Constant("d"), .schema = derivedFields}.Text());
  ASSERT_NE(creation.model, nullptr);
  EXPECT_EQ(creation.model->GetDerivedFields(), std::vector<std::string>{"d"});
  EXPECT_FALSE(creation.model->NeedDerivedPredictor());
  ValueRecord in;
  ValueRecord out;
  out.Add("d", Value::NULL_VALUE);
  EXPECT_TRUE(creation.model->Score(in, out).IsOK());
  EXPECT_EQ(out["d"], Value(3.0));
}

// The setting is read for a document with transformations only; without the extension no field is listed.
TEST(ScoringFactory, NeedDerivedPredictor_OfTheHostReachesTheModel) {
  for (const bool hasTransformations : {true, false}) {
    KelSettings settings = HostSettings("stream");
    settings.AddSetting("scoring_needDerivedPredictor", true, true);
    PmmlText text;
    if (hasTransformations) text.transformations = PmmlText::Constant("d");
    const Creation creation(settings, text.Text());
    ASSERT_NE(creation.model, nullptr);
    EXPECT_EQ(creation.model->NeedDerivedPredictor(), hasTransformations);
    EXPECT_EQ(creation.model->GetTransformation() != nullptr, hasTransformations);
  }
}

TEST(ScoringFactory, TransformationThatIsRefused_ModelDoesWithout) {
  KelSettings settings = HostSettings("stream");
  const Creation creation(
      settings,
      PmmlText{.transformations = "<TransformationDictionary><DerivedField/></TransformationDictionary>"}.Text());
  EXPECT_TRUE(creation.status.IsOK());
  ASSERT_NE(creation.model, nullptr);
  EXPECT_EQ(creation.model->GetTransformation(), nullptr);
}

struct EvaluatorCase {
  const char* name;
  std::string dictionary;
  std::string extensions;
  bool hasEvaluator;
  bool hasNetwork;
};

class Evaluators : public testing::TestWithParam<EvaluatorCase> {};

TEST_P(Evaluators, GoWithFlagTargets) {
  const EvaluatorCase& param = GetParam();
  KelSettings settings = HostSettings("stream");
  Creation creation(settings, PmmlText{.dictionary = param.dictionary, .extensions = param.extensions}.Text());
  EXPECT_TRUE(creation.status.IsOK());
  ASSERT_NE(creation.model, nullptr);
  EXPECT_EQ(creation.model->GetAdjustedPropensity() != nullptr, param.hasEvaluator);
  ValueRecord offered;
  EXPECT_TRUE(creation.model->Scorable(offered).IsOK());
  EXPECT_EQ(offered.Contains("rawpropensity"), param.hasEvaluator);
  EXPECT_EQ(offered.Contains("adjustedpropensity"), param.hasNetwork);
}

const EvaluatorCase kEvaluatorCases[] = {
    {"NoFlag", PmmlText::Fields(""), PmmlText::Propensity("standalone"), false, false},
    {"FlagAlone", PmmlText::FlagFields(), "", true, false},
    {"FlagAndNetwork", PmmlText::FlagFields(), PmmlText::Propensity("standalone"), true, true},
    // A network of no units, because none is selected: read all the same.
    {"NoNetworkSelected", PmmlText::FlagFields(), PmmlText::Propensity("average"), true, true},
    {"NetworkThatCantBeRead", PmmlText::FlagFields(),
     R"(<Extension extender="kelscoring" name="adjustedPropensity"><AdjustedPropensityByNN description="standalone">)"
     R"(<HiddenLayer><Array>1</Array></HiddenLayer></AdjustedPropensityByNN></Extension>)",
     false, false},
};
INSTANTIATE_TEST_SUITE_P(Cases, Evaluators, testing::ValuesIn(kEvaluatorCases), KelTest::CaseName());

TEST(ScoringFactory, FlagTargetWithNetwork_ScoresBothPropensities) {
  KelSettings settings = HostSettings("stream");
  Creation creation(
      settings,
      PmmlText{.dictionary = PmmlText::FlagFields(), .extensions = PmmlText::Propensity("standalone")}.Text());
  ASSERT_NE(creation.model, nullptr);
  ValueRecord in;
  in.Add("p", "no");
  in.Add("q", 0.5);
  ValueRecord out;
  creation.model->Scorable(out);
  EXPECT_TRUE(creation.model->Score(in, out).IsOK());
  EXPECT_EQ(out["prediction"], Value("no"));
  EXPECT_EQ(out["rawpropensity"], Value(0.5));
  EXPECT_DOUBLE_EQ(out["adjustedpropensity"].GetReal(), 1.2615941559557649);  // python: math.tanh(1.0) + 0.5
}

// Only a document that was described gets an evaluator, also when the target comes from the plug-in.
TEST(ScoringFactory, FlagTargetOfThePlugIn_CountsUnlessThePrescanFailed) {
  for (const bool wellFormed : {true, false}) {
    KelSettings settings = HostSettings("stream", {{"AssociationModel", ""}});
    settings.AddSetting("set_flagTarget", "theirs", true);
    const Creation creation(settings,
                            PmmlText{.element = "AssociationModel", .body = wellFormed ? "" : "<broken"}.Text());
    ASSERT_NE(creation.model, nullptr);
    EXPECT_EQ(creation.model->GetVarList().Size(), 1);
    EXPECT_EQ(creation.model->GetAdjustedPropensity() != nullptr, wellFormed);
  }
}

TEST(ScoringFactory, HeldModel_RefusesEveryCreationAndStays) {
  ScoringFactory factory;
  KelSettings settings = HostSettings("stream");
  std::stringstream first = PmmlText().Stream();
  ScoringModel* const held = factory.CreateScoringModel(settings, first);
  ASSERT_NE(held, nullptr);
  KelSettings untouched = HostSettings("stream");
  std::stringstream second = PmmlText().Stream();
  const auto expectRefused = [&](const ScoringModel* result) {
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(factory.GetStatus().GetErrorCode(), 260002);
  };
  expectRefused(factory.CreateScoringModel(untouched, second));
  expectRefused(factory.CreateScoringModel(untouched, "no such file"));
  expectRefused(factory.CreateScoringModel(untouched));
  expectRefused(factory.CreateScoringModel(untouched, std::vector<std::stringstream*>{}));
  EXPECT_EQ(second.tellg(), 0);
  EXPECT_EQ(Text(untouched, "scoring_version"), "(none)");
  const std::unique_ptr<ScoringModel> model(factory.Detach());
  EXPECT_EQ(model.get(), held);
  EXPECT_TRUE(factory.GetStatus().IsOK());
  EXPECT_EQ(factory.Detach(), nullptr);
}

TEST(ScoringFactory, NextDocument_ReplacesTheKeys) {
  ScoringFactory factory;
  KelSettings settings = HostSettings("stream", {{"TreeModel", ""}, {"MiningModel", ""}});
  std::stringstream first =
      PmmlText{.version = "3.2", .element = "MiningModel", .body = R"(<Segmentation multipleModelMethod="average"/>)"}
          .Stream();
  EXPECT_NE(factory.CreateScoringModel(settings, first), nullptr);
  EXPECT_EQ(Text(settings, "scoring_version") + Text(settings, "scoring_modelType") +
                Text(settings, "scoring_multipleModelMethod"),
            "3.2MiningModelaverage");
  delete factory.Detach();
  std::stringstream second = PmmlText().Stream();
  EXPECT_NE(factory.CreateScoringModel(settings, second), nullptr);
  EXPECT_EQ(Text(settings, "scoring_version") + Text(settings, "scoring_modelType") +
                Text(settings, "scoring_multipleModelMethod"),
            "4.0TreeModel");
  EXPECT_EQ(settings.GetSettingByName("scoring_version").size(), 1u);
}

TEST(ScoringFactory, FailureThenSuccess_StatusAndReasonAreThoseOfTheLastCall) {
  ScoringFactory factory;
  KelSettings bad = HostSettings("nosuchfile");
  std::stringstream first = PmmlText().Stream();
  EXPECT_EQ(factory.CreateScoringModel(bad, first), nullptr);
  EXPECT_NE(KelDiagnostics::Last(), "");
  KelSettings good = HostSettings("stream");
  std::stringstream second = PmmlText().Stream();
  EXPECT_NE(factory.CreateScoringModel(good, second), nullptr);
  EXPECT_TRUE(factory.GetStatus().IsOK());
  EXPECT_EQ(KelDiagnostics::Last(), "");
}

TEST(ScoringFactory, PlugInThatThrows_LeavesTheFactoryEmptyAndUsable) {
  ScoringFactory factory;
  for (const char* road : {"stream", "dom"}) {
    KelSettings settings = HostSettings("throwing");
    settings.AddSetting("throw_on", road, true);
    std::stringstream stream = PmmlText().Stream();
    EXPECT_THROW(factory.CreateScoringModel(settings, stream), std::runtime_error);
    EXPECT_EQ(factory.Detach(), nullptr);
  }
  KelSettings settings = HostSettings("stream");
  std::stringstream stream = PmmlText().Stream();
  EXPECT_NE(factory.CreateScoringModel(settings, stream), nullptr);
}

TEST(ScoringFactory, EncodingSetting_IsThatOfTheDocumentsTexts) {
  KelSettings settings = HostSettings("stream");
  settings.AddSetting("encoding", "ISO-8859-1", true);
  const Creation creation(settings,
                          PmmlText{.header = "<Header><Application name=\"M\xC3\xBCller\"/></Header>"}.Text());
  ASSERT_NE(creation.model, nullptr);
  EXPECT_EQ(creation.model->GetAppName(), "M\xFCller");
}

TEST(ScoringFactory, DocumentCutAnywhere_NeverGivesAModelByDom) {
  const std::string text = PmmlText{.dictionary = PmmlText::FlagFields(),
                                    .transformations = PmmlText::Constant("d"),
                                    .extensions = PmmlText::Propensity("standalone")}
                               .Text();
  const std::size_t end = text.find("</PMML>") + 7;
  for (std::size_t length = 0; length < end; length += 3) {
    KelSettings settings = HostSettings("dom");
    const Creation creation(settings, text.substr(0, length));
    ASSERT_EQ(creation.status.GetErrorCode(), 260010) << length;
  }
}

TEST(ScoringFactoryThreads, FactoriesOnTwoThreads_EachMakeTheirModels) {
  const auto createMany = [] {
    for (int i = 0; i < 20; ++i) {
      KelSettings settings = HostSettings(i % 2 == 0 ? "stream" : "dom");
      const Creation creation(settings, PmmlText{.dictionary = PmmlText::FlagFields(),
                                                 .transformations = PmmlText::Constant("d"),
                                                 .extensions = PmmlText::Propensity("standalone")}
                                            .Text());
      EXPECT_TRUE(creation.status.IsOK());
      ASSERT_NE(creation.model, nullptr);
      EXPECT_NE(creation.model->GetAdjustedPropensity(), nullptr);
    }
  };
  std::thread other(createMany);
  createMany();
  other.join();
}

}  // namespace
}  // namespace KelScoring_20
