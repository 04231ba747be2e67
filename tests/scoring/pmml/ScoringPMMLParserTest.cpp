#include <functional>
#include <limits>
#include <sstream>
#include <string>
#include <vector>
#include <xercesc/framework/MemoryManager.hpp>
#include <xercesc/util/RuntimeException.hpp>

#include "scoring/common/KelDiagnostics.h"
#include "scoring/pmml/ScoringPMMLParser.h"
#include "tests/scoring/pmml/DomText.h"
#include "tests/scoring/text/XmlPlatform.h"

namespace KelScoring_20 {
namespace {

using KelCommon_1_3::KelDiagnostics;
using KelCommon_1_3::KelStatus;
using KelXML_1_3::KelSetting;
using KelXML_1_3::KelSettings;
using KelXML_1_3::KelVarList;
using xercesc::DOMElement;
using xercesc::XMLPlatformUtils;

constexpr char kData[] = "<DataDictionary><DataField name='data' optype='continuous'/></DataDictionary>";
constexpr char kDerived[] =
    "<TransformationDictionary><DerivedField name='derived' optype='continuous'/></TransformationDictionary>";
constexpr char kLocal[] = "<LocalTransformations><DerivedField name='local' optype='ordinal'/></LocalTransformations>";

std::string Names(const KelVarList& list) {
  std::string names;
  for (int i = 0; i < list.Size(); ++i) names += list.GetVarAt(i)->GetName() + " ";
  return names;
}

KelStatus ReadText(ScoringPMMLParser& parser, const std::string& text, KelVarList& list) {
  std::istringstream stream(text);
  return parser.FillVarList(list, stream);
}

struct DocumentCase {
  std::string text;
  long code;
  const char* names;
} const kDocumentCases[] = {
    {std::string("<PMML version='4.0'>") + kData + kDerived + "</PMML>", 0, "data derived "},
    {std::string("<PMML>") + kDerived + "<Header/>" + kData + "</PMML>", 0, "data derived "},  // the order is fixed
    {std::string("<PMML>") + kLocal + "<TreeModel>" + kData + kLocal + "</TreeModel></PMML>", 0, ""},
    {"<PMML/>", 0, ""},
    {kData, 0, "data "},
    {kDerived, 0, "derived "},
    {kLocal, 0, "local "},
    {"<MiningSchema/>", 105, ""},
    {std::string("<p:PMML xmlns:p='urn:x'>") + kData + "</p:PMML>", 105, ""},
    {"", 105, ""},
    {"noise", 105, ""},
    {std::string("<PMML>\n") + kData + kDerived, 0, "data derived "},  // a reduced text may lack its closing tag
    {"<PMML><DataDictionary><DataField/></DataDictionary>" + std::string(kDerived) + "</PMML>", 108, ""},
};

TEST(ScoringPMMLParser, Stream_IsReadByItsRoot) {
  for (const DocumentCase& row : kDocumentCases) {
    ScoringPMMLParser parser("UTF-8");
    KelVarList list;
    const KelStatus status = ReadText(parser, row.text, list);
    EXPECT_EQ(status.GetErrorCode(), row.code) << row.text;
    EXPECT_EQ(status.IsError(), row.code != 0) << row.text;
    EXPECT_EQ(parser.GetStatus().GetErrorCode(), row.code) << row.text;
    EXPECT_EQ(Names(list), row.names) << row.text;
  }
}

TEST(ScoringPMMLParser, NextStream_ForgetsTheLastFailureAndAppends) {
  ScoringPMMLParser parser("UTF-8");
  KelVarList list;
  EXPECT_TRUE(ReadText(parser, kData, list).IsOK());
  EXPECT_EQ(ReadText(parser, "<Other/>", list).GetErrorCode(), 105);
  EXPECT_TRUE(ReadText(parser, kDerived, list).IsOK());
  EXPECT_EQ(ReadText(parser, kData, list).GetErrorCode(), 111);  // "data" is there
  EXPECT_TRUE(ReadText(parser, "<PMML/>", list).IsOK());
  EXPECT_TRUE(parser.GetStatus().IsOK());
  EXPECT_EQ(Names(list), "data derived ");
}

/// A text that calls a function when its first byte is asked for.
class CallingBuffer : public std::streambuf {
 public:
  CallingBuffer(std::string text, std::function<void()> call) : fText(std::move(text)), fCall(std::move(call)) {}

 protected:
  int_type underflow() override {
    if (eback()) return traits_type::eof();
    fCall();
    setg(fText.data(), fText.data(), fText.data() + fText.size());
    return traits_type::to_int_type(*gptr());
  }

 private:
  std::string fText;
  std::function<void()> fCall;
};

TEST(ScoringPMMLParser, ExceptionOfTheParse_Gives104AndItsMessage) {
  ScoringPMMLParser parser("UTF-8");
  KelVarList list;
  KelStatus innerStatus;
  std::string innerMessage;
  CallingBuffer buffer(kData, [&] {  // the XML library refuses to parse while it parses
    innerStatus = ReadText(parser, kDerived, list);
    innerMessage = parser.GetXercesMessage();
  });
  std::istream stream(&buffer);
  parser.FillVarList(list, stream);
  EXPECT_EQ(innerStatus.GetErrorCode(), 104);
  EXPECT_TRUE(innerStatus.IsError());
  EXPECT_NE(innerMessage, "");

  EXPECT_TRUE(ReadText(parser, kDerived, list).IsOK());
  EXPECT_EQ(parser.GetXercesMessage(), "");
}

/// Passes everything on to the platform's own manager, but for its first allocation.
class FailingOnceManager : public xercesc::MemoryManager {
 public:
  explicit FailingOnceManager(xercesc::MemoryManager* manager) : fManager(manager) {}
  xercesc::MemoryManager* getExceptionMemoryManager() override { return fManager; }
  void* allocate(XMLSize_t size) override {
    if (std::exchange(fHasFailed, true)) return fManager->allocate(size);
    throw xercesc::RuntimeException(__FILE__, __LINE__, xercesc::XMLExcepts::CPtr_PointerIsZero, fManager);
  }
  void deallocate(void* memory) override { fManager->deallocate(memory); }

 private:
  xercesc::MemoryManager* fManager;
  bool fHasFailed = false;
};

TEST(ScoringPMMLParser, ParserThatCannotBeMade_Gives103FromThenOn) {
  ScoringPMMLParser parser;
  xercesc::MemoryManager* const manager = XMLPlatformUtils::fgMemoryManager;
  FailingOnceManager failing(manager);
  XMLPlatformUtils::fgMemoryManager = &failing;
  EXPECT_EQ(parser.InitXerces().GetErrorCode(), 103);
  XMLPlatformUtils::fgMemoryManager = manager;
  EXPECT_NE(parser.GetXercesMessage(), "");

  KelVarList list;
  std::istringstream stream(kData);
  EXPECT_EQ(parser.FillVarList(list, stream).GetErrorCode(), 103);
  EXPECT_EQ(parser.GetXercesMessage(), "");
  EXPECT_EQ(stream.tellg(), 0);
  EXPECT_EQ(parser.InitXerces().GetErrorCode(), 103);
  DomText dom(kData);
  EXPECT_EQ(parser.FillVarList(list, dom.Root()).GetErrorCode(), 103);
  KelSettings settings;
  EXPECT_EQ(parser.FillSettings(settings, dom.Root()).GetErrorCode(), 103);
  EXPECT_EQ(list.Size(), 0);
  XMLPlatformUtils::Terminate();  // for the start whose parser couldn't be made
}

TEST(ScoringPMMLParser, Text_ComesOutInTheChosenEncoding) {
  const std::string text = "<DataDictionary><DataField name='Caf\xC3\xA9' optype='continuous'/></DataDictionary>";
  for (const auto& [encoding, name] : {std::pair{"", "Caf\xC3\xA9"}, std::pair{"ISO-8859-1", "Caf\xE9"}}) {
    ScoringPMMLParser parser(encoding);
    KelVarList list;
    EXPECT_TRUE(ReadText(parser, text, list).IsOK());
    EXPECT_EQ(Names(list), name + std::string(" "));
  }
  ScoringPMMLParser unserved("no-such-encoding");
  KelVarList list;
  EXPECT_EQ(ReadText(unserved, text, list).GetErrorCode(), 111);  // all names come out empty
}

std::string DescribeSettings(const KelSettings& settings) {
  std::vector<std::string> names;
  settings.GetSettingNames(names);
  std::string text;
  for (const std::string& name : names) {
    for (const KelSetting* setting : settings.GetSettingByName(name)) {
      text += name + "=" + setting->GetText();
      if (const auto* list = dynamic_cast<const KelXML_1_3::KelVecValue<std::string>*>(setting->GetValue())) {
        text += "[";
        for (const std::string& entry : list->fValue) text += entry + ",";
        text += "]";
      }
      text += " ";
    }
  }
  return text;
}

struct SettingsCase {
  const char* content;
  long code;
  const char* expected;
} const kSettingsCases[] = {
    {"", 0, "old=1 "},
    {"text<!-- c --><Parameter name='a' value='x'/>\n<Other/><Parameter name='b' value=''/>", 0, "old=1 a=x b= "},
    {"<Parameter name='old' value='2'/>", 0, "old=1 old=2 "},
    {"<Parameter name='a' value='x'><ListValue><Value value='y'/></ListValue></Parameter>", 0, "old=1 a=x "},
    {"<Parameter name='a'>t<ListValue>t<Value value='x'/><Value/><Other value='z'/><Value value=''/></ListValue>"
     "<ListValue><Value value='y'/></ListValue></Parameter>",
     0, "old=1 a=[x,,] "},
    {"<Parameter name='a'><ListValue/></Parameter><Parameter name='b'/>", 0, "old=1 a=[] "},
    {"<Deeper><Parameter name='a' value='x'/></Deeper>", 0, "old=1 "},
    {"<Parameter name='a' value='x'/><Parameter value='y'/><Parameter name='b' value='z'/>", 108, "old=1 a=x "},
};

TEST(ScoringPMMLParser, FillSettings_ReadsTextsAndLists) {
  for (const SettingsCase& row : kSettingsCases) {
    DomText dom("<Any>" + std::string(row.content) + "</Any>");
    KelSettings settings;
    settings.AddSetting("old", "1", true);
    ScoringPMMLParser parser("UTF-8");
    const KelStatus status = parser.FillSettings(settings, dom.Root());
    EXPECT_EQ(status.GetErrorCode(), row.code) << row.content;
    EXPECT_EQ(DescribeSettings(settings), row.expected) << row.content;
    EXPECT_TRUE(parser.GetStatus().IsOK());
  }
  KelSettings settings;
  EXPECT_TRUE(ScoringPMMLParser().FillSettings(settings, nullptr).IsOK());
}

class BinReader : public ScoringPMMLParser {
 public:
  using ScoringPMMLParser::SetBinsFrTransDict;
};

constexpr double kLowest = std::numeric_limits<double>::lowest();
constexpr double kHighest = std::numeric_limits<double>::max();

struct BinsCase {
  const char* content;
  bool found;
  std::vector<double> boundaries;
  std::vector<std::string> labels;
} const kBinsCases[] = {
    {"<DerivedField><Discretize field='age'/></DerivedField>", true, {0.0}, {}},
    {"<DerivedField><Discretize field='age'>"
     "<DiscretizeBin binValue='low'><Interval rightMargin='10'/></DiscretizeBin>"
     "<DiscretizeBin binValue=''><Interval leftMargin='10' rightMargin='20'/></DiscretizeBin>"
     "<DiscretizeBin binValue='high'><Interval leftMargin='20'/></DiscretizeBin></Discretize></DerivedField>",
     true,
     {kLowest, 10, 20, kHighest},
     {"low", "", "high"}},
    {"text<Other/><DerivedField><FieldRef/><Discretize/><Discretize field='Age'/><Discretize field='age'>"
     "<DiscretizeBin><Interval leftMargin='1' rightMargin='2'/><Interval leftMargin='7' "
     "rightMargin='x'/></DiscretizeBin>"
     "</Discretize></DerivedField><DerivedField><Discretize field='age'/></DerivedField>",
     true,
     {1, 2, kHighest},
     {}},
    {"<DerivedField><Discretize field='age'><DiscretizeBin binValue='a'/><DiscretizeBin binValue='b'>"
     "<Interval leftMargin=' 1' rightMargin='2'/></DiscretizeBin></Discretize></DerivedField>",
     true,
     {kLowest, 2},
     {"a", "b"}},
    {"<DataField><Discretize field='age'/></DataField><DerivedField><Apply><Discretize field='age'/></Apply>"
     "</DerivedField>",
     false,
     {},
     {}},
};

TEST(ScoringPMMLParser, Bins_ComeFromTheFirstDiscretizeOfTheField) {
  for (const BinsCase& row : kBinsCases) {
    DomText dom("<TransformationDictionary>" + std::string(row.content) + "</TransformationDictionary>");
    std::vector<double> boundaries = {7};
    std::vector<std::string> labels = {"old"};
    EXPECT_EQ(BinReader().SetBinsFrTransDict(dom.Root(), "age", boundaries, labels), row.found) << row.content;
    EXPECT_EQ(boundaries, row.boundaries) << row.content;
    EXPECT_EQ(labels, row.labels) << row.content;
  }
}

}  // namespace
}  // namespace KelScoring_20
