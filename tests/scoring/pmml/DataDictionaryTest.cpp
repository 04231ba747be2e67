#include <sstream>
#include <string>

#include "scoring/common/KelCatVar.h"
#include "scoring/common/KelDiagnostics.h"
#include "scoring/common/KelVarList.h"
#include "scoring/pmml/ScoringPMMLParser.h"
#include "tests/scoring/pmml/DomText.h"
#include "tests/scoring/text/XmlPlatform.h"

namespace KelScoring_20 {
namespace {

using KelCommon_1_3::KelDiagnostics;
using KelCommon_1_3::KelStatus;
using KelXML_1_3::IKelEncoder;
using KelXML_1_3::IKelVariable;
using KelXML_1_3::KelCatVar;
using KelXML_1_3::KelVarList;

std::string DescribeBounds(double low, double high) {
  const auto bound = [](double value, double open) {
    std::ostringstream text;
    text << value;
    return value == open ? std::string("*") : text.str();
  };
  return bound(low, -1.7976931348623157e308) + ".." + bound(high, 1.7976931348623157e308);
}

std::string DescribeCategories(const IKelEncoder& encoder) {
  std::string text;
  for (int i = 0; i < encoder.GetValueCount(); ++i) {
    const auto position = static_cast<std::size_t>(i);
    const bool hasLabel = position < encoder.GetValueLabels()->size() && !(*encoder.GetValueLabels())[position].empty();
    text += " '" + encoder.GetStringValueAt(i) + "'" + (hasLabel ? "=" + (*encoder.GetValueLabels())[position] : "");
  }
  for (int i = 0; i < encoder.GetMissingCount(); ++i) {
    text += " missing '" + encoder.GetMissingStringAt(i) + "'=" + encoder.GetMissingLabelAt(i);
  }
  double low = 0.0;
  double high = 0.0;
  if (encoder.GetInvalidRange(low, high)) text += " invalid " + DescribeBounds(low, high);
  return text;
}

std::string DescribeFormat(const IKelVariable& variable) {
  if (!variable.GetFormat()) return std::string();
  std::string text = " " + variable.GetFormat()->GetName();
  for (const auto& [name, value] : variable.GetFormat()->GetAttributes()) text += " " + name + "=" + value;
  return text;
}

/// All that the reader has set: level, storage, range, flags, categories, missing values, invalid range, format.
std::string Describe(const IKelVariable& variable) {
  std::string text =
      "level " + std::to_string(variable.GetMeasureLevel()) + " storage " + std::to_string(variable.GetStorageType());
  double low = 0.0;
  double high = 0.0;
  if (variable.GetRange(low, high)) text += " range " + DescribeBounds(low, high);
  if (const auto* categorical = dynamic_cast<const KelCatVar*>(&variable)) {
    if (categorical->GetBinaryFlag()) text += " true " + std::to_string(categorical->GetBinaryFlagTrueIndex());
    if (categorical->GetOrdinalFlag()) text += " ordinal";
  }
  return text + DescribeCategories(*variable.GetEncoder()) + DescribeFormat(variable);
}

std::string Enclosed(const std::string& element, const std::string& content) {
  return "<" + element + ">" + content + "</" + element + ">";
}

KelStatus Read(const std::string& document, KelVarList& list) {
  DomText dom(document);
  return ScoringPMMLParser("UTF-8").FillVarList(list, dom.Root());
}

struct FieldCase {
  const char* attributes;  // besides the name
  const char* content;
  const char* expected;
} const kFieldCases[] = {
    // Storage.
    {"optype='continuous' dataType='double'", "", "level 1 storage 2 range *..*"},
    {"optype='continuous' dataType='integer'", "", "level 1 storage 1 range *..*"},
    {"optype='continuous'", "", "level 1 storage 2 range *..*"},
    {"optype='continuous' dataType='string'", "<Interval leftMargin='1'/>", "level 1 storage 3 range *..*"},
    {"optype='continuous' dataType='date'", "", "level 1 storage 2 range *..*"},
    {"optype='continuous' dataType='dateDaysSince[1970]'", "", "level 1 storage 4 range *..*"},
    {"optype='continuous' dataType='timeSeconds'", "", "level 1 storage 5 range *..*"},
    {"optype='continuous' dataType='dateTimeSecondsSince[0]'", "", "level 1 storage 6 range *..*"},
    {"optype='categorical'", "", "level 3 storage 3"},
    {"optype='ordinal'", "", "level 3 storage 3 ordinal"},
    {"optype='anything' dataType='float'", "", "level 2 storage 2"},
    {"optype='categorical' dataType='string' x-storageType='numeric'", "<Value value='1'/>", "level 2 storage 2 '1'=1"},
    {"optype='categorical' dataType='double' x-storageType='string'", "<Value value='1'/>", "level 3 storage 3 '1'=1"},
    {"optype='categorical' dataType='integer' x-storageType='real'", "", "level 2 storage 1"},
    {"optype='categorical' dataType='nonsense' x-storageType='string'", "", "level 3 storage 3"},
    // "true" and "false" are no numbers.
    {"optype='categorical' dataType='boolean'", "<Value value='true'/><Value value='0'/>", "level 2 storage 1 '0'"},
    // Values and labels.
    {"optype='categorical' dataType='string'", "<Value value='b'/><Value value='a' displayValue='A'/>",
     "level 3 storage 3 'b'=b 'a'=A"},
    {"optype='categorical' dataType='double'", "<Value value='1' displayValue='A'/><Value value='x' displayValue='B'/>",
     "level 2 storage 2 '1'"},
    {"optype='categorical' dataType='double'", "<Value value='1 '/><Value value='2'/>", "level 2 storage 2 '2'"},
    {"optype='categorical' dataType='string'", "<Value/><Value value='a'/>", "level 3 storage 3 'a'=a"},
    {"optype='categorical' dataType='string'", "<Value value=''/><Value value='a' displayValue='A'/>",
     "level 3 storage 3 '' 'a'"},
    {"optype='categorical' dataType='string'", "<Value displayValue='A'/><Value value='a' displayValue=''/>",
     "level 3 storage 3 'a'=A"},  // as many labels as values, so they pair up by position
    {"optype='categorical' dataType='string'", "<Other><Value value='a'/></Other>text<Interval leftMargin='x'/>",
     "level 3 storage 3"},
    // Missing values.
    {"optype='categorical' dataType='integer'", "<Value value='9' property='missing'/>",
     "level 2 storage 1 missing '9'=9"},
    {"optype='categorical' dataType='string'",
     "<Value value='?' property='invalid' displayValue='Q'/><Value value='a' property='valid'/>"
     "<Value value='-' property=''/>",
     "level 3 storage 3 'a'=a missing '?'=Q missing '-'=-"},
    {"optype='categorical' dataType='string'",
     "<Value value='' property='missing'/><Value value='-' property='missing'/>",
     "level 3 storage 3 missing ''=- missing '-'="},  // labels pair up by position, and the first had none
    {"optype='continuous' dataType='double'",
     "<Value value='-1' property='missing'/><Value value='5'/><Value value='x' property='missing'/>",
     "level 1 storage 2 range *..* missing '-1'=-1"},
    {"optype='continuous' dataType='string'", "<Value value='?' property='missing'/>", "level 1 storage 3 range *..*"},
    {"optype='categorical' dataType='string'",
     "<Extension name='MissingValue'><Value value='a'/><Value value='?' property='missing'/></Extension>"
     "<Extension name='Other'><Value value='b'/></Extension>",
     "level 3 storage 3 'a'=a missing '?'=?"},
    // Ranges.
    {"optype='continuous' dataType='double'", "<Interval leftMargin='1' rightMargin='1'/>",
     "level 1 storage 2 range 1..1"},
    {"optype='continuous' dataType='double'", "<Interval rightMargin='9'/><Interval leftMargin='-2.5e1'/>",
     "level 1 storage 2 range -25..*"},
    {"optype='categorical' dataType='double'", "<Interval leftMargin='1' rightMargin='2'/>", "level 2 storage 2"},
    {"optype='continuous' dataType='double'", "<Extension name='invalidRangeLower' value='3'/>",
     "level 1 storage 2 range *..* invalid 3..*"},
    {"optype='categorical' dataType='double'",
     "<Extension name='invalidRangeUpper' value='3'/><Extension name='invalidRangeUpper' value='x'/>"
     "<Extension name='invalidRangeLower'/>",
     "level 2 storage 2 invalid *..3"},
    {"optype='categorical' dataType='string'", "<Extension name='invalidRangeUpper' value='3'/>", "level 3 storage 3"},
    {"optype='continuous' dataType='string'", "<Extension name='invalidRangeUpper' value='3'/>",
     "level 1 storage 3 range *..* invalid *..3"},
    // Flags.
    {"optype='categorical' dataType='string'",
     "<Value value='no'/><Value value='yes'/><Extension name='flagTypeTrueValue' value='yes'/>",
     "level 3 storage 3 true 1 'no'=no 'yes'=yes"},
    {"optype='ordinal' dataType='integer'",
     "<Value value='0'/><Value value='1'><Extension name='flagTypeTrueValue' value='0.0'/></Value>",
     "level 2 storage 1 true 0 ordinal '0'=0 '1'=1"},  // extensions of a child count
    {"optype='categorical' dataType='string'", "<Value value='no'/><Extension name='flagTypeTrueValue' value='maybe'/>",
     "level 3 storage 3 'no'=no"},
    {"optype='categorical' dataType='integer'", "<Value value='1'/><Extension name='flagTypeTrueValue' value='1x'/>",
     "level 2 storage 1 '1'=1"},
    {"optype='categorical' dataType='string'",
     "<Value value='a'/><Extension name='flagTypeTrueValue' value='a'/><Extension name='flagTypeTrueValue'/>",
     "level 3 storage 3 'a'=a"},  // the later one counts, and it has no value
    // Formats.
    {"optype='continuous' dataType='double'",
     "<Extension name='width' value='8'/><Extension name='decimals' value='2'/>",
     "level 1 storage 2 range *..* NumberFormat name= formatType=standard width=8 decimalPlaces=2 decimalSymbol=local "
     "groupingSymbol=none"},
    {"optype='categorical' dataType='integer'", "<Extension name='format' value='anything'/>",
     "level 2 storage 1 NumberFormat name= formatType=standard width= decimalPlaces= decimalSymbol=local "
     "groupingSymbol=none"},
    {"optype='categorical' dataType='string'",
     "<Extension name='width' value='8'/><Extension name='stringLength' value='12'/>",
     "level 3 storage 3 StringFormat name= hexadecimal=false width=12"},
    {"optype='categorical' dataType='string'", "<Extension name='format' value='8'/>", "level 3 storage 3"},
    {"optype='continuous' dataType='timeSeconds'", "<Extension name='width' value='8'/>",
     "level 1 storage 5 range *..*"},
};

TEST(DataDictionary, Field_BecomesAVariable) {
  for (const FieldCase& row : kFieldCases) {
    KelVarList list;
    const std::string field = "<DataField name='f' " + std::string(row.attributes) + ">" + row.content + "</DataField>";
    EXPECT_TRUE(Read("<DataDictionary>" + field + "</DataDictionary>", list).IsOK()) << field;
    ASSERT_EQ(list.Size(), 1) << field;
    EXPECT_EQ(Describe(*list.GetVarAt(0)), row.expected) << field;
    EXPECT_EQ(list.GetVarAt(0)->GetVariableRole(), KelXML_1_3::kRoleNone) << field;
  }
}

TEST(DataDictionary, NameAndLabel_ComeFromTheirAttributes) {
  KelVarList list;
  EXPECT_TRUE(Read("<DataDictionary>text<DataField name='a' optype='continuous'/><Taxonomy/><!-- c -->"
                   "<DataField name='b' displayName='Caf\xC3\xA9' optype='continuous'/>"
                   "<DataField name='c' displayName='' optype='continuous'/></DataDictionary>",
                   list)
                  .IsOK());
  ASSERT_EQ(list.Size(), 3);
  EXPECT_EQ(list.GetVarAt(0)->GetName(), "a");
  EXPECT_EQ(list.GetVarAt(0)->GetLabel(), "a");
  EXPECT_EQ(list.GetVarAt(1)->GetLabel(), "Caf\xC3\xA9");
  EXPECT_EQ(list.GetVarAt(2)->GetLabel(), "");
}

TEST(DataDictionary, FieldTag_FollowsTheElement) {
  const std::string fields =
      "<DataField name='data' optype='continuous'/><DerivedField name='derived' optype='ordinal'/>";
  for (const auto& [element, name] :
       {std::pair{"DataDictionary", "data"}, std::pair{"AnyOther", "data"},
        std::pair{"TransformationDictionary", "derived"}, std::pair{"LocalTransformations", "derived"}}) {
    KelVarList list;
    EXPECT_TRUE(Read(Enclosed(element, fields), list).IsOK()) << element;
    ASSERT_EQ(list.Size(), 1) << element;
    EXPECT_EQ(list.GetVarAt(0)->GetName(), name) << element;
  }
}

struct RefusalCase {
  const char* field;
  long code;
  const char* reason;  // a part of it
} const kRefusalCases[] = {
    {"<DataField optype='continuous'/>", 108, "attribute name is missing"},
    {"<DataField name='f'/>", 108, "\"f\" of the dictionary: attribute optype"},
    {"<DataField name='f' optype='continuous' dataType='money'/>", 109, "dataType \"money\""},
    {"<DataField name='f' optype='continuous' dataType=''/>", 109, "dataType \"\""},
    {"<DataField name='f' optype='continuous'><Interval leftMargin='low'/></DataField>", 109, "leftMargin \"low\""},
    {"<DataField name='f' optype='continuous'><Interval rightMargin=''/></DataField>", 109, "rightMargin \"\""},
    {"<DataField name='f' optype='continuous'><Interval leftMargin='2' rightMargin='1'/></DataField>", 109, "above"},
    // Also where the interval would not be used, and with a format that the dropped field had already.
    {"<DataField name='f' optype='ordinal' dataType='double'><Interval leftMargin='x'/>"
     "<Extension name='width' value='8'/></DataField>",
     109, "leftMargin \"x\""},
    {"<DataField name='first' optype='continuous'/>", 111, "\"first\""},
    {"<DataField name='' optype='continuous'/>", 111, "empty"},
};

TEST(DataDictionary, FaultyField_EndsTheWalkAndKeepsWhatStandsInFront) {
  for (const RefusalCase& row : kRefusalCases) {
    KelVarList list;
    KelDiagnostics::Clear();
    const KelStatus status =
        Read("<DataDictionary><DataField name='first' optype='continuous'/>" + std::string(row.field) +
                 "<DataField name='last' optype='continuous'/></DataDictionary>",
             list);
    EXPECT_TRUE(status.IsError()) << row.field;
    EXPECT_EQ(status.GetErrorCode(), row.code) << row.field;
    EXPECT_EQ(list.Size(), 1) << row.field;
    EXPECT_NE(KelDiagnostics::Last().find(row.reason), std::string::npos) << KelDiagnostics::Last();
  }
}

TEST(DataDictionary, ElementForm_LeavesTheParsersStatus) {
  DomText dom("<DataDictionary><DataField/></DataDictionary>");
  ScoringPMMLParser parser;
  KelVarList list;
  EXPECT_EQ(parser.FillVarList(list, dom.Root()).GetErrorCode(), 108);
  EXPECT_TRUE(parser.GetStatus().IsOK());
  EXPECT_TRUE(parser.FillVarList(list, static_cast<xercesc::DOMElement*>(nullptr)).IsOK());
}

}  // namespace
}  // namespace KelScoring_20
