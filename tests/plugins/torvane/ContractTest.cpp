#include <gtest/gtest.h>
#include <sstream>
#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/util/XMLString.hpp>

#include "scoring/common/IKelScoreParser.h"
#include "scoring/common/KelDiagnostics.h"
#include "tests/plugins/torvane/ModelHarness.h"

extern "C" KelScoring_20::IKelScoreParser* GetScoreParser();

namespace TorvaneTest {
namespace {

using KelCommon_1_3::KelDiagnostics;

Document OneLeaf() { return {.body = R"(<Node score="yes"><True/></Node>)"}; }

// Parses a text and gives the plug-in's entry for DOMs the element `element` in it, the first one at any depth.
std::unique_ptr<KelCommon_1_3::IKelScore> FromDom(const std::string& text, const std::string& element,
                                                  KelXML_1_3::KelSettings& settings) {
  xercesc::XercesDOMParser parser;
  const auto* bytes = reinterpret_cast<const XMLByte*>(text.data());
  parser.parse(xercesc::MemBufInputSource(bytes, text.size(), "text"));
  XMLCh* const name = xercesc::XMLString::transcode(element.c_str());
  auto* const model = dynamic_cast<xercesc::DOMElement*>(parser.getDocument()->getElementsByTagName(name)->item(0));
  xercesc::XMLString::release(const_cast<XMLCh**>(&name));
  KelXML_1_3::KelVarList varList;
  const std::unique_ptr<KelScoring_20::IKelScoreParser> made(GetScoreParser());
  return std::unique_ptr<KelCommon_1_3::IKelScore>(made->CreateScorer(settings, varList, parser.getDocument(), model));
}

KelXML_1_3::KelSettings Settings(const std::string& modelType) {
  KelXML_1_3::KelSettings settings;
  settings.AddSetting("scoring_modelType", modelType, true);
  return settings;
}

TEST(Version, FromThreeToFourPointFour_IsAccepted) {
  for (const char* version : {"3.0", "3.1", "3.2", "4.0", "4.1", "4.2.1", "4.3", "4.4", "4.4.1"}) {
    Document document = OneLeaf();
    document.version = version;
    EXPECT_NE(TryLoad(document.Text()).scorer, nullptr) << version;
  }
  for (const char* version : {"", "2.1", "3.3", "9.9", "4", "4.5", "4.40", "4.4x", "4.4.", "4.4.x"}) {
    Document document = OneLeaf();
    document.version = version;
    EXPECT_NE(ReasonOf(document).find("versions 3.0 to 4.4"), std::string::npos) << version;
  }
}

TEST(Version, ThatTheDocumentLacks_IsThatOfItsNamespace) {
  const auto withRoot = [](const std::string& attributes) {
    std::string text = OneLeaf().Text();
    const std::size_t version = text.find("version=");
    return text.replace(version, text.find('>') - version, attributes);
  };
  EXPECT_NE(TryLoad(withRoot(R"(xmlns="http://www.dmg.org/PMML-4_1")")).scorer, nullptr);
  for (const char* attributes :
       {"", R"(xmlns="http://example.org/PMML-4_1")", R"(xmlns="http://www.dmg.org/PMML-2_1")"}) {
    EXPECT_NE(TryLoad(withRoot(attributes)).reason.find("version"), std::string::npos) << attributes;
  }
}

TEST(Refusal, OfTheWholeModel_NamesElementAttributeAndLine) {
  Document document = OneLeaf();
  document.attributes = R"(isScorable="false")";
  EXPECT_NE(ReasonOf(document).find("<TreeModel isScorable=\"false\"> line 10: "), std::string::npos)
      << ReasonOf(document);
  document = OneLeaf();
  document.function = "clustering";
  EXPECT_NE(ReasonOf(document).find("<TreeModel functionName=\"clustering\">"), std::string::npos);
  document = OneLeaf();
  document.body += "<Ensemble/>";
  EXPECT_NE(ReasonOf(document).find("<Ensemble>"), std::string::npos);
}

TEST(ModelContent, WithoutInfluence_IsPassedOver) {
  Document document = OneLeaf();
  document.attributes = R"(x-note="a" modelName="m" algorithmName="b" unknown="c")";
  document.body = R"(<Extension name="n"/><ModelStats><Any/></ModelStats><ModelExplanation/><X-Note/>)" +
                  document.body + "<ModelVerification><Any/></ModelVerification>";
  EXPECT_EQ(Load(document).Predict({}).GetString(), "yes");
}

TEST(StreamEntry, UsedUpStream_IsReadFromItsBeginning) {
  std::istringstream stream(OneLeaf().Text());
  stream.ignore(1 << 20);
  ASSERT_TRUE(stream.eof());
  auto settings = Settings("TreeModel");
  KelXML_1_3::KelVarList varList;
  const std::unique_ptr<KelScoring_20::IKelScoreParser> parser(GetScoreParser());
  const std::unique_ptr<KelCommon_1_3::IKelScore> scorer(parser->CreateScorer(settings, varList, stream));
  EXPECT_NE(scorer, nullptr);
}

TEST(StreamEntry, BadDocument_GivesNullAndAReason) {
  const std::string good = OneLeaf().Text();
  for (const std::string& text : {std::string(), std::string("\x01\x02 noise"), good.substr(0, good.size() / 2),
                                  std::string("<TreeModel/>"), std::string("<PMML version=\"4.0\"/>")}) {
    const Scorer loaded = TryLoad(text + "<!-- <TreeModel -->");
    EXPECT_EQ(loaded.scorer, nullptr);
    EXPECT_NE(loaded.reason, "");
  }
}

TEST(StreamEntry, OtherKindOfModel_IsRefusedEvenIfATreeStandsInIt) {
  const std::string text = R"(<PMML version="4.0"><DataDictionary/><MiningModel functionName="classification">
      <MiningSchema/><Segmentation><Segment><True/><TreeModel functionName="classification"><MiningSchema/>
      <Node score="yes"><True/></Node></TreeModel></Segment></Segmentation></MiningModel></PMML>)";
  auto settings = Settings("TreeModel");
  KelXML_1_3::KelVarList varList;
  std::istringstream stream(text);
  const std::unique_ptr<KelScoring_20::IKelScoreParser> parser(GetScoreParser());
  EXPECT_EQ(parser->CreateScorer(settings, varList, stream), nullptr);
  EXPECT_EQ(FromDom(text, "TreeModel", settings), nullptr);
  EXPECT_NE(KelDiagnostics::Last().find("isn't its model"), std::string::npos);
  auto ensemble = Settings("MiningModel");
  EXPECT_EQ(FromDom(text, "MiningModel", ensemble), nullptr);
  EXPECT_NE(KelDiagnostics::Last().find("multipleModelMethod"), std::string::npos);
  auto nothing = Settings("");
  EXPECT_EQ(FromDom(text, "TreeModel", nothing), nullptr);
}

// Also behind an ensemble, whose segments are read one at a time.
TEST(StreamEntry, SecondDictionary_IsRefusedWhereverItStands) {
  for (const char* dictionary : {"<DataDictionary/>", "<TransformationDictionary/>"}) {
    for (const char* place : {"<MiningModel", "</PMML>"}) {
      std::string text = R"(<PMML version="4.0"><DataDictionary/><TransformationDictionary/>
          <MiningModel functionName="regression"><MiningSchema/><Segmentation multipleModelMethod="sum"><Segment><True/>
          <RegressionModel functionName="regression"><MiningSchema/><RegressionTable intercept="1"/></RegressionModel>
          </Segment></Segmentation></MiningModel></PMML>)";
      EXPECT_NE(TryLoad(text).scorer, nullptr);
      text.insert(text.find(place), dictionary);
      EXPECT_NE(TryLoad(text).reason.find("is a second one in <PMML>"), std::string::npos) << dictionary << place;
    }
  }
}

TEST(StreamEntry, SecondModel_IsLeftAlone) {
  std::string text = OneLeaf().Text();
  text.insert(text.find("</PMML>"), "<TreeModel functionName=\"regression\"><Nonsense/></TreeModel>");
  const Scorer loaded = TryLoad(text);
  ASSERT_NE(loaded.scorer, nullptr) << loaded.reason;
  EXPECT_EQ(loaded.scorer->GetType(), "TreeModel");
  EXPECT_TRUE(loaded.scorer->IsReady());
}

TEST(DomEntry, GivesTheSameScorerAsTheStream) {
  auto settings = Settings("TreeModel");
  const Scorer fromDom{nullptr, FromDom(OneLeaf().Text(), "TreeModel", settings), ""};
  ASSERT_NE(fromDom.scorer, nullptr) << KelDiagnostics::Last();
  EXPECT_EQ(fromDom.Predict({}).GetString(), "yes");
}

TEST(DomEntry, SecondRefusalOfTheSameDocument_KeepsTheReasonWithItsLine) {
  Document document = OneLeaf();
  document.attributes = R"(missingValueStrategy="guess")";
  const std::string reason = ReasonOf(document);
  ASSERT_NE(reason.find(" line 10"), std::string::npos) << reason;
  auto settings = Settings("TreeModel");
  EXPECT_EQ(FromDom(document.Text(), "TreeModel", settings), nullptr);
  EXPECT_EQ(KelDiagnostics::Last(), reason);
  KelDiagnostics::Clear();
  EXPECT_EQ(FromDom(document.Text(), "TreeModel", settings), nullptr);
  EXPECT_NE(KelDiagnostics::Last().find("missingValueStrategy=\"guess\""), std::string::npos);
}

TEST(DomEntry, NoElement_GivesNull) {
  auto settings = Settings("TreeModel");
  KelXML_1_3::KelVarList varList;
  const std::unique_ptr<KelScoring_20::IKelScoreParser> parser(GetScoreParser());
  EXPECT_EQ(parser->CreateScorer(settings, varList, nullptr, nullptr), nullptr);
}

TEST(LibraryComputedField, DictionaryThatTheLibraryCannotCompute_IsRefused) {
  Document document = OneLeaf();
  document.transformations = R"(<TransformationDictionary><DerivedField name="d" optype="continuous" dataType="double">
      <FieldRef field="x"/></DerivedField><DerivedField name="e" optype="continuous" dataType="double">
      <Lag field="x"/></DerivedField></TransformationDictionary>)";
  EXPECT_NE(TryLoad(document.Text()).scorer, nullptr);  // nothing needs them
  document.schema += R"(<Extension extender="kelscoring" name="DerivedFields"><MiningField name="d"/></Extension>)";
  EXPECT_NE(ReasonOf(document).find("<Lag"), std::string::npos) << ReasonOf(document);
}

}  // namespace
}  // namespace TorvaneTest
