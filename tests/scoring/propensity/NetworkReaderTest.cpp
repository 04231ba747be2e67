#include <gtest/gtest.h>
#include <sstream>

#include "scoring/common/KelMV.h"
#include "scoring/common/KelSettings.h"
#include "scoring/common/KelVarList.h"
#include "scoring/propensity/ScoringAdjustedPropensity.h"
#include "tests/support/CaseName.h"
#include "tests/support/XmlPlatform.h"

namespace KelScoring_20 {
namespace {

using KelXML_1_3::KelSettings;
using KelXML_1_3::KelVarList;
using Numbers = std::vector<double>;
using Texts = std::vector<std::string>;

const auto* const kPlatform = KelTest::XmlPlatform::KeepUp();

constexpr double kMissing = KelCommon_1_3::KelMV::gMissingValue;

// A network of two units, with what a test wants otherwise.
struct NetworkText {
  std::string attributes = R"(description="standalone")";
  std::string hiddenWeights = "1 2";
  std::string hiddenBiases = "3 4";
  std::string outputWeights = "<Array>5</Array><Array>6</Array>";
  std::string outputBias = "<Array>7</Array>";

  [[nodiscard]] std::string Text() const {
    return "<AdjustedPropensityByNN " + attributes + "><HiddenLayer><Matrix><Array>" + hiddenWeights +
           "</Array></Matrix><Array>" + hiddenBiases + "</Array></HiddenLayer><OutputLayer><Matrix>" + outputWeights +
           "</Matrix>" + outputBias + "</OutputLayer></AdjustedPropensityByNN>";
  }
};

std::string Extension(const std::string& content) { return "<Extension>" + content + "</Extension>"; }
std::string Described(const std::string& attributes) { return NetworkText{.attributes = attributes}.Text(); }

struct ReadCase {
  const char* name;
  std::string text;
  const char* method;  // null: no setting
  bool result;
  Numbers hiddenWeights, hiddenBiases, outputWeights;
  double outputBias;
};

class ReadNetwork : public testing::TestWithParam<ReadCase> {};

TEST_P(ReadNetwork, GathersTheSelectedNetworks) {
  const ReadCase& param = GetParam();
  KelSettings settings;
  KelVarList varList;
  if (param.method != nullptr) settings.AddSetting("scoring_multipleModelMethod", param.method, true);
  ScoringAdjustedPropensity evaluator(settings, varList);
  std::istringstream stream(param.text);
  EXPECT_EQ(evaluator.ReadNetwork(&stream), param.result);
  EXPECT_EQ(evaluator.fNetworkRead, param.result);
  EXPECT_EQ(evaluator.fHiddenWeights, param.hiddenWeights);
  EXPECT_EQ(evaluator.fHiddenBiases, param.hiddenBiases);
  EXPECT_EQ(evaluator.fOutputWeights, param.outputWeights);
  EXPECT_EQ(evaluator.fOutputBias, param.outputBias);
}

const Numbers k12 = {1, 2}, k34 = {3, 4}, k56 = {5, 6}, kNothing;
const ReadCase kReadCases[] = {
    {"OneNetwork", Extension(NetworkText().Text()), nullptr, true, k12, k34, k56, 7.0},
    {"AttributesOfTheRootDontMatter", R"(<Extension extender="other" name="other"/>)", nullptr, true, kNothing,
     kNothing, kNothing, 0.0},
    // Selection by description.
    {"NoneSelected", Extension(Described(R"(description="average")")), "majorityVote", true, kNothing, kNothing,
     kNothing, 0.0},
    {"SelectedByMethod", Extension(Described(R"(description="average")")), "average", true, k12, k34, k56, 7.0},
    {"StandaloneAndMethodAddUp",
     Extension(Described(R"(description="standalone")") + Described(R"(description="average")") + "<Other/>" +
               NetworkText{.attributes = R"(description="majorityVote")",
                           .hiddenWeights = "8",
                           .hiddenBiases = "9",
                           .outputWeights = "<Array>10</Array>",
                           .outputBias = "<Array>11</Array>"}
                   .Text()),
     "majorityVote",
     true,
     {1, 2, 8},
     {3, 4, 9},
     {5, 6, 10},
     11.0},
    {"NoDescription", Extension(Described("")), nullptr, true, kNothing, kNothing, kNothing, 0.0},
    {"NoDescriptionWithEmptyMethod", Extension(Described("")), "", true, k12, k34, k56, 7.0},
    {"EmptyDescriptionWithEmptyMethod", Extension(Described(R"(description="")")), "", true, k12, k34, k56, 7.0},
    {"KeywordsCompareExactly", Extension(Described(R"(description="Standalone")")), nullptr, true, kNothing, kNothing,
     kNothing, 0.0},
    // Layers.
    {"NoOutputBias", Extension(NetworkText{.outputBias = ""}.Text()), nullptr, true, k12, k34, k56, 0.0},
    {"NoLayers", Extension(R"(<AdjustedPropensityByNN description="standalone"/>)"), nullptr, true, kNothing, kNothing,
     kNothing, 0.0},
    {"OutputLayerAlone",
     Extension(R"(<AdjustedPropensityByNN description="standalone"><OutputLayer><Matrix><Array>5</Array></Matrix>)"
               R"(<Array>7</Array></OutputLayer></AdjustedPropensityByNN>)"),
     nullptr,
     false,
     kNothing,
     kNothing,
     {5},
     7.0},
    {"MatrixWithoutArray",
     Extension(R"(<AdjustedPropensityByNN description="standalone"><HiddenLayer><Matrix/><Array>3</Array>)"
               R"(</HiddenLayer></AdjustedPropensityByNN>)"),
     nullptr,
     false,
     kNothing,
     {3},
     kNothing,
     0.0},
    {"FirstMatrixAndFirstArrayCount",
     Extension(R"(<AdjustedPropensityByNN description="standalone"><HiddenLayer><Array>3</Array><Array>0</Array>)"
               R"(<Matrix><Array>1</Array><Array>0</Array></Matrix><Matrix><Array>0</Array></Matrix></HiddenLayer>)"
               R"(<OutputLayer><Matrix><Array>5</Array></Matrix><Matrix><Array>0</Array></Matrix></OutputLayer>)"
               R"(<OutputLayer><Array>0</Array></OutputLayer></AdjustedPropensityByNN>)"),
     nullptr,
     true,
     {1},
     {3},
     {5},
     0.0},
    // Numbers.
    {"OneArrayTooFew",
     Extension(NetworkText{.outputWeights = "<Array>5</Array>"}.Text()),
     nullptr,
     false,
     k12,
     k34,
     {5},
     7.0},
    {"OutputArraysAreNotSplit",
     Extension(NetworkText{.outputWeights = "<Array>5 6</Array>"}.Text()),
     nullptr,
     false,
     k12,
     k34,
     {kMissing},
     7.0},
    {"TwoBlanksMakeAnEmptyToken",
     Extension(NetworkText{.hiddenBiases = "3  4"}.Text()),
     nullptr,
     false,
     k12,
     {3, kMissing, 4},
     k56,
     7.0},
    {"LineBreakDoesntSeparate",
     Extension(NetworkText{.hiddenBiases = "3\n4"}.Text()),
     nullptr,
     false,
     k12,
     {kMissing},
     k56,
     7.0},
    {"NoNumbersGoUnnoticed",
     Extension(NetworkText{.hiddenBiases = "a b"}.Text()),
     nullptr,
     true,
     k12,
     {kMissing, kMissing},
     k56,
     7.0},
    {"ArrayThatCantBeSplitAddsNothing", Extension(NetworkText{.hiddenBiases = R"(3 4\x)"}.Text()), nullptr, false, k12,
     kNothing, k56, 7.0},
    // Documents.
    {"OtherRoot", "<extension/>", nullptr, false, kNothing, kNothing, kNothing, 0.0},
    {"PrefixedRoot", "<p:Extension xmlns:p='u'/>", nullptr, false, kNothing, kNothing, kNothing, 0.0},
    {"Empty", "", nullptr, false, kNothing, kNothing, kNothing, 0.0},
    {"Noise", "\x01\xFF no XML", nullptr, false, kNothing, kNothing, kNothing, 0.0},
};
INSTANTIATE_TEST_SUITE_P(Cases, ReadNetwork, testing::ValuesIn(kReadCases), KelTest::CaseName());

TEST(ReadNetworkStream, NullOrBadStream_GivesNoNetwork) {
  KelSettings settings;
  KelVarList varList;
  ScoringAdjustedPropensity evaluator(settings, varList);
  evaluator.fNetworkRead = true;
  EXPECT_FALSE(evaluator.ReadNetwork(nullptr));
  EXPECT_FALSE(evaluator.fNetworkRead);
  std::istringstream bad(Extension(""));
  bad.setstate(std::ios::badbit);
  EXPECT_FALSE(evaluator.ReadNetwork(&bad));
}

TEST(ReadNetworkStream, StreamAtItsEnd_IsReadFromTheStart) {
  KelSettings settings;
  KelVarList varList;
  ScoringAdjustedPropensity evaluator(settings, varList);
  std::istringstream stream(Extension(NetworkText().Text()));
  std::string all;
  std::getline(stream, all);
  ASSERT_TRUE(stream.eof());
  EXPECT_TRUE(evaluator.ReadNetwork(&stream));
  EXPECT_EQ(evaluator.fHiddenWeights, k12);
}

// Texts come in the encoding that the settings name; one that the platform doesn't serve makes them empty.
TEST(ReadNetworkStream, UnknownEncoding_ReadsNoNumbers) {
  KelSettings settings;
  settings.AddSetting("encoding", "no-such-encoding", true);
  KelVarList varList;
  ScoringAdjustedPropensity evaluator(settings, varList);
  std::istringstream stream(Extension(NetworkText().Text()));
  EXPECT_FALSE(evaluator.ReadNetwork(&stream));
  EXPECT_EQ(evaluator.fHiddenWeights, Numbers{});
  EXPECT_EQ(evaluator.fOutputWeights, (Numbers{kMissing, kMissing}));
}

struct SplitCase {
  const char* name;
  const char* text;
  bool result;
  Texts tokens;
};

class SplitArray : public testing::TestWithParam<SplitCase> {};

TEST_P(SplitArray, SplitsAtBlanks) {
  Texts tokens = {"old"};
  EXPECT_EQ(ScoringAdjustedPropensity::SplitArray(tokens, GetParam().text), GetParam().result);
  EXPECT_EQ(tokens, GetParam().tokens);
}

const SplitCase kSplitCases[] = {
    {"Empty", "", true, {}},
    {"One", "a", true, {"a"}},
    {"Two", "ab c", true, {"ab", "c"}},
    {"TwoBlanks", "a  b", true, {"a", "", "b"}},
    {"BlankInFront", " a", true, {"", "a"}},
    {"BlankBehind", "a ", true, {"a"}},
    {"OneBlank", " ", true, {""}},
    {"TabAndLineFeedStay", "a\tb\nc d", true, {"a\tb\nc", "d"}},
    {"EscapedBlank", R"(a\ b c)", true, {"a b", "c"}},
    {"EscapedBackslash", R"(a\\ b)", true, {R"(a\)", "b"}},
    {"EscapedBlankAtTheEnd", R"(a \ )", true, {"a", " "}},
    {"BackslashAtTheEnd", R"(a b\)", false, {"a", R"(b\)"}},
    {"BackslashBeforeAnother", R"(a b\c d e)", false, {"a", R"(b\c d e)"}},
    {"EscapesBeforeTheFault", R"(a\ \x)", false, {R"(a \x)"}},
};
INSTANTIATE_TEST_SUITE_P(Cases, SplitArray, testing::ValuesIn(kSplitCases), KelTest::CaseName());

}  // namespace
}  // namespace KelScoring_20
