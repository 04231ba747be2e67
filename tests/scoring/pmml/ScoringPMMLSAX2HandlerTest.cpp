#include <memory>
#include <string>
#include <utility>
#include <vector>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "scoring/pmml/ScoringPMMLSAX2Handler.h"
#include "tests/scoring/text/XmlPlatform.h"

namespace KelScoring_20 {
namespace {

using Fields = std::vector<std::string>;

/// One pass over a document.
class Prescan {
 public:
  explicit Prescan(const std::string& document, const Fields& modelNames = {"MiningModel", "TreeModel"},
                   const std::string& encoding = "UTF-8")
      : fModelNames(modelNames), fHandler(fModelNames, encoding) {
    const std::unique_ptr<xercesc::SAX2XMLReader> reader(xercesc::XMLReaderFactory::createXMLReader());
    reader->setFeature(xercesc::XMLUni::fgSAX2CoreValidation, false);
    reader->setFeature(xercesc::XMLUni::fgSAX2CoreNameSpacePrefixes, false);
    reader->setContentHandler(&fHandler);
    reader->setErrorHandler(&fHandler);
    try {
      reader->parse(
          xercesc::MemBufInputSource(reinterpret_cast<const XMLByte*>(document.data()), document.size(), "test"));
    } catch (ScoringSAX2Handler::HandlerState state) {
      fThrown = state;
    }
  }

  int Thrown() const { return fThrown; }  // 0 for nothing
  const ScoringModelAttr& Record() const { return fHandler.GetModelAttr(); }
  std::string Document() const { return Record().documentStream.str(); }
  std::string Propensity() const {
    return Record().propensityStream ? Record().propensityStream->str() : std::string("(null)");
  }

 private:
  Fields fModelNames;
  ScoringPMMLSAX2Handler fHandler;
  int fThrown = 0;
};

constexpr char kDictionary[] = "<DataDictionary/>";
constexpr char kDictionaryOut[] = "<DataDictionary></DataDictionary>";
constexpr char kSchema[] = "<MiningSchema><MiningField name='x'/></MiningSchema>";

std::string Pmml(const std::string& content) { return "<PMML version='4.0'>" + content + "</PMML>"; }

/// A document whose chosen model holds the content.
std::string WithModel(const std::string& content) {
  return Pmml(kDictionary + std::string("<TreeModel>") + content + "</TreeModel>");
}

constexpr char kAllLandmarks[] = R"(<?xml version="1.0"?>
<PMML xmlns="http://www.dmg.org/PMML-4_0" version="4.0" x="1">
<Header copyright="c">
 <Annotation>dropped</Annotation>
 <Application name="Maker" version="1.2"/>
 <Timestamp>kept</Timestamp>
</Header>
<MiningBuildTask><Extension name="a">task</Extension></MiningBuildTask>
<DataDictionary numberOfFields="1"><!-- c --><DataField name="x" optype="continuous"/></DataDictionary>
<TransformationDictionary>
 <DerivedField name="d"/>
</TransformationDictionary>
<OtherModel><MiningSchema/></OtherModel>
<MiningModel modelName="Ens" functionName="classification" algorithmName="forest">
 <Extension extender="kelscoring" name="modelID" value="M1"/>
 <Extension extender="kelscoring" name="adjustedPropensity"><Net description="n">1 2</Net></Extension>
 <MiningSchema>
  <Extension extender="kelscoring" name="DerivedFields"><MiningField name="d"/><MiningField name="p2" usageType="predicted"/></Extension>
  <MiningField name="x" usageType="active"/><MiningField name="y" usageType="predicted"/>
 </MiningSchema>
 <Output/>
 <Segmentation multipleModelMethod="majorityVote"><Segment></Oops>)";

TEST(ScoringPMMLSAX2Handler, AllLandmarks_FillTheRecord) {
  const Prescan pass(kAllLandmarks);  // it ends before the fault behind the start of the segmentation
  EXPECT_EQ(pass.Thrown(), ScoringSAX2Handler::kPassFinished);
  const ScoringModelAttr& record = pass.Record();
  EXPECT_EQ(record.version, "4.0");
  EXPECT_EQ(record.applicationName, "Maker");
  EXPECT_EQ(record.applicationVersion, "1.2");
  EXPECT_EQ(record.modelType, "MiningModel");
  EXPECT_EQ(record.modelName, "Ens");
  EXPECT_EQ(record.functionName, "classification");
  EXPECT_EQ(record.algorithmName, "forest");
  EXPECT_EQ(record.modelID, "M1");
  EXPECT_EQ(record.multipleModelMethod, "majorityVote");
  EXPECT_TRUE(record.hasTransformations);
  EXPECT_EQ(record.predictedFields, (Fields{"p2", "y"}));
  EXPECT_EQ(record.activeFields, Fields{"x"});
  EXPECT_EQ(record.derivedFields, Fields{"d"});
  EXPECT_EQ(record.type, KelScoringConst::UnknownModel);
  EXPECT_EQ(record.encoding, "UTF-8");
  EXPECT_EQ(record.dictionaryStream, nullptr);
}

TEST(ScoringPMMLSAX2Handler, AllLandmarks_WriteBothTexts) {
  const Prescan pass(kAllLandmarks);
  EXPECT_EQ(pass.Document(),
            R"(<PMML version="4.0">


 kept

<MiningBuildTask><Extension name="a">task</Extension></MiningBuildTask>)"
            R"(<DataDictionary numberOfFields="1"><DataField name="x" optype="continuous"></DataField>)"
            R"(</DataDictionary><TransformationDictionary>
 <DerivedField name="d"></DerivedField>
</TransformationDictionary>
  
  
 </PMML>)");
  EXPECT_EQ(pass.Propensity(),
            R"(<Extension extender="kelscoring" name="adjustedPropensity"><Net description="n">1 2</Net></Extension>)");
}

struct ReducedCase {
  std::string document;
  int thrown;
  std::string modelType;
  std::string reduced;
} const kReducedCases[] = {
    // No root, or none that counts.
    {"<Other><PMML", 4, "", ""},
    {"<Other/>", 0, "", ""},
    {"<p:PMML xmlns:p='urn:x' version='4.0'><DataDictionary/></p:PMML>", 0, "", ""},
    {"<Other><PMML version='3.2'>t</PMML><Oops>", 1, "", "<PMML version=\"3.2\">\nt"},
    {"<PMML/>", 1, "", "<PMML version=\"\">\n"},
    // Parts of the head that are missing or out of order.
    {WithModel(kSchema), 1, "TreeModel", std::string("<PMML version=\"4.0\">\n") + kDictionaryOut + "</PMML>"},
    {Pmml("<TreeModel>" + std::string(kSchema) + "</TreeModel>"), 1, "", "<PMML version=\"4.0\">\n"},
    {WithModel(""), 1, "TreeModel", std::string("<PMML version=\"4.0\">\n") + kDictionaryOut},
    {Pmml(kDictionary + std::string("<MiningBuildTask><a/></MiningBuildTask><TreeModel/>")), 1, "",
     std::string("<PMML version=\"4.0\">\n") + kDictionaryOut},
    {Pmml("<TransformationDictionary>t<DerivedField/></TransformationDictionary>" + std::string(kDictionary)), 1, "",
     "<PMML version=\"4.0\">\nt"},
    {Pmml("<MiningBuildTask/>dropped" + std::string(kDictionary)), 1, "",
     std::string("<PMML version=\"4.0\">\n<MiningBuildTask></MiningBuildTask>") + kDictionaryOut},
    // End tags of the head act at any place.
    {Pmml("<MiningBuildTask><a/><Header><b/></Header>text<c/></MiningBuildTask>"), 1, "",
     "<PMML version=\"4.0\">\n<MiningBuildTask><a></a><Header><b></b></Header>text"},
    {Pmml("<Header>no<Application/>text<Annotation>more</Annotation></Header>end"), 1, "",
     "<PMML version=\"4.0\">\ntextmoreend"},
    // Escapes.
    {"<PMML version='a&lt;&amp;&quot;&gt;'><DataDictionary a='&lt;&amp;&quot;&gt;&#10;\"' "
     "b=\"'\">&lt;&amp;\"&gt;'<![CDATA[<&]]>"
     "<?pi x?></DataDictionary></PMML>",
     1, "",
     "<PMML version=\"a<&\">\">\n<DataDictionary a=\"&lt;&amp;&quot;>&#xA;&quot;\" b=\"'\">&lt;&amp;\"&gt;'&lt;&amp;"
     "</DataDictionary>"},
    {"<PMML version='4.0' xmlns:e='urn:e'><DataDictionary xmlns:f='urn:f' e:a='1'><e:b/></DataDictionary></PMML>", 1,
     "", "<PMML version=\"4.0\">\n<DataDictionary e:a=\"1\"><e:b></e:b></DataDictionary>"},
    // The model.
    {Pmml(kDictionary + std::string("<OtherModel><a><TreeModel/></a></OtherModel><MiningModel/>")), 1, "TreeModel",
     std::string("<PMML version=\"4.0\">\n") + kDictionaryOut},
    {WithModel("<a/>text<MiningSchema> <Extension/>\n</MiningSchema>text"), 1, "TreeModel",
     std::string("<PMML version=\"4.0\">\n") + kDictionaryOut + " \n</PMML>"},
    // Faults.
    {Pmml(kDictionary) + "behind", 1, "", std::string("<PMML version=\"4.0\">\n") + kDictionaryOut},
    {"<PMML><DataDictionary>text</Oops>", 4, "", "<PMML version=\"\">\n<DataDictionary>text"},
};

TEST(ScoringPMMLSAX2Handler, ReducedDocument_FollowsTheLandmarks) {
  for (const ReducedCase& row : kReducedCases) {
    const Prescan pass(row.document);
    EXPECT_EQ(pass.Thrown(), row.thrown) << row.document;
    EXPECT_EQ(pass.Record().modelType, row.modelType) << row.document;
    EXPECT_EQ(pass.Document(), row.reduced) << row.document;
  }
}

constexpr char kOwn[] = "extender='kelscoring' name='adjustedPropensity'";

std::string Copied(const std::string& content) {
  return "<Extension extender=\"kelscoring\" name=\"adjustedPropensity\">" + content + "</Extension>";
}

TEST(ScoringPMMLSAX2Handler, PropensityText_IsTheLastMatchingExtension) {
  const std::string own = kOwn;
  const std::pair<std::string, std::string> cases[] = {
      {"", "(null)"},
      {"<Extension extender='other' name='adjustedPropensity'><a/></Extension>", "(null)"},
      {"<Extension name='adjustedPropensity'/>", "(null)"},
      {"<Extension extender='kelscoring' name='AdjustedPropensity'/>", "(null)"},
      {"<Extension extender='kelscoring' name='modelID'/>", "(null)"},
      {"<Extension " + own + "> <a b='&lt;'>1\n2</a>&amp;</Extension>", Copied(" <a b=\"&lt;\">1\n2</a>&amp;")},
      {"<Extension " + own + "/><Other/><Extension " + own + "><b/></Extension>", Copied("<b></b>")},
      {"<Extension " + own + "><Extension>1</Extension>lost<c/></Extension>", Copied("<Extension>1")},
  };
  for (const auto& [content, expected] : cases) {
    const Prescan pass(WithModel(content + kSchema));
    EXPECT_EQ(pass.Propensity(), expected) << content;
    EXPECT_EQ(pass.Record().activeFields, Fields{"x"}) << content;
  }
  EXPECT_EQ(Prescan(WithModel(kSchema + ("<Extension " + own + "/>"))).Propensity(), "(null)");  // too late
}

struct FieldsCase {
  const char* schema;  // what the mining schema holds
  Fields predicted;
  Fields active;
  Fields derived;
} const kFieldsCases[] = {
    {"<MiningField name='a'/><MiningField/><MiningField usageType='active'/>", {}, {"a", ""}, {}},
    {"<MiningField name='a' usageType='Predicted'/><MiningField name='b' usageType='supplementary'/>"
     "<MiningField usageType='predicted' name='c'/>",
     {"c"},
     {"a", "b"},
     {}},
    {"<Extension extender='kelscoring' name='DerivedFields'><MiningField name='a'/><MiningField/>"
     "<MiningField name='b' usageType='predicted'/></Extension><MiningField name='c'/>",
     {"b"},
     {"c"},
     {"a"}},
    {"<Extension name='DerivedFields'><MiningField name='a'/></Extension><Other><MiningField name='b'/></Other>",
     {},
     {"a", "b"},
     {}},
    {"<Extension extender='kelscoring' name='DerivedFields'><Extension/><MiningField name='a'/></Extension>"
     "<MiningField name='b'/>",
     {},
     {"a", "b"},
     {}},  // the inner end tag ends the list
};

TEST(ScoringPMMLSAX2Handler, MiningFields_AreListedByUseAndPlace) {
  for (const FieldsCase& row : kFieldsCases) {
    const Prescan pass(WithModel("<MiningSchema>" + std::string(row.schema) + "</MiningSchema>"));
    EXPECT_EQ(pass.Record().predictedFields, row.predicted) << row.schema;
    EXPECT_EQ(pass.Record().activeFields, row.active) << row.schema;
    EXPECT_EQ(pass.Record().derivedFields, row.derived) << row.schema;
  }
}

TEST(ScoringPMMLSAX2Handler, ModelID_IsTheLastOne) {
  const std::string id = "<Extension extender='kelscoring' name='modelID'";
  EXPECT_EQ(Prescan(WithModel(id + " value='1'/>" + id + " value='2'/>" + kSchema)).Record().modelID, "2");
  EXPECT_EQ(Prescan(WithModel(id + " value='1'/>" + id + "/>")).Record().modelID, "");
}

TEST(ScoringPMMLSAX2Handler, Segmentation_EndsThePassEvenInALaterModel) {
  const Prescan pass(Pmml(kDictionary + std::string("<TreeModel>") + kSchema + "</TreeModel><MiningModel>" + kSchema +
                          "<Segmentation multipleModelMethod='sum'/></MiningModel>"));
  EXPECT_EQ(pass.Record().modelType, "TreeModel");
  EXPECT_EQ(pass.Record().multipleModelMethod, "sum");
  EXPECT_EQ(pass.Record().activeFields, Fields{"x"});
  EXPECT_EQ(Prescan(WithModel("<Segmentation multipleModelMethod='sum'/>")).Record().multipleModelMethod, "");
}

TEST(ScoringPMMLSAX2Handler, NoModelNames_EndAtTheRootWithoutAModel) {
  const Prescan pass(WithModel(kSchema), {});
  EXPECT_EQ(pass.Thrown(), ScoringSAX2Handler::kPassFinished);
  EXPECT_EQ(pass.Record().modelType, "");
}

TEST(ScoringPMMLSAX2Handler, ServedEncoding_AppliesToTextButNamesOfTheModelAreUtf8) {
  const std::string document = Pmml(
      "<Header><Application name='Caf\xC3\xA9'/></Header><DataDictionary a='\xC3\xA9'/>"
      "<TreeModel modelName='Caf\xC3\xA9' algorithmName='\xC3\xA9'><MiningSchema><MiningField name='\xC3\xA9'/>"
      "</MiningSchema><Segmentation multipleModelMethod='\xC3\xA9'/></TreeModel>");
  const Prescan pass(document, {"TreeModel"}, "ISO-8859-1");
  EXPECT_EQ(pass.Record().applicationName, "Caf\xE9");
  EXPECT_EQ(pass.Record().activeFields, Fields{"\xE9"});
  EXPECT_EQ(pass.Record().multipleModelMethod, "\xE9");
  EXPECT_EQ(pass.Record().modelName, "Caf\xC3\xA9");
  EXPECT_EQ(pass.Record().algorithmName, "\xC3\xA9");
  EXPECT_EQ(pass.Document(), "<PMML version=\"4.0\">\n<DataDictionary a=\"\xC3\xA9\"></DataDictionary></PMML>");
}

TEST(ScoringPMMLSAX2Handler, UnservedEncoding_EmptiesAllButTheNamesOfTheModel) {
  const std::string model = "<TreeModel modelName='n' functionName='f' algorithmName='a'>";
  const Prescan pass(Pmml(kDictionary + model + kSchema + "</TreeModel>"), {"TreeModel"}, "no-such-encoding");
  EXPECT_EQ(pass.Thrown(), ScoringSAX2Handler::kPassFinished);
  EXPECT_EQ(pass.Record().version, "");
  EXPECT_EQ(pass.Record().activeFields, Fields{""});
  EXPECT_EQ(pass.Record().modelType, "TreeModel");
  EXPECT_EQ(pass.Record().modelName + pass.Record().functionName + pass.Record().algorithmName, "nfa");
  EXPECT_EQ(pass.Document(), std::string("<PMML version=\"\">\n") + kDictionaryOut + "</PMML>");
}

TEST(ScoringPMMLSAX2Handler, LongText_StaysWhole) {
  std::string text;
  for (int i = 0; i < 30'000; ++i) text += i % 7 ? "\xE2\x82\xAC" : "\xF0\x9F\x98\x80";
  const std::string dictionary = "<DataDictionary a=\"" + text + "\">" + text + "</DataDictionary>";
  const Prescan pass(Pmml(dictionary + "<TreeModel modelName='" + text + "'><MiningSchema><MiningField name='" + text +
                          "'/></MiningSchema></TreeModel>"));
  EXPECT_TRUE(pass.Document() == "<PMML version=\"4.0\">\n" + dictionary + "</PMML>");
  EXPECT_TRUE(pass.Record().modelName == text);
  EXPECT_TRUE(pass.Record().activeFields == Fields{text});
}

}  // namespace
}  // namespace KelScoring_20
