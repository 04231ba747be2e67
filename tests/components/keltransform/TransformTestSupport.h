#pragma once

#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "scoring/common/KelDiagnostics.h"
#include "scoring/common/KelTransformation.h"
#include "scoring/common/Value.h"
#include "scoring/common/ValueRecord.h"

namespace KelTransformTest {

using KelCommon_1_3::KelDiagnostics;
using KelCommon_1_3::KelStatus;
using KelCommon_1_3::Value;
using KelCommon_1_3::ValueRecord;
using KelTransformNS::KelTransformation;

using NamedValues = std::vector<std::pair<std::string, Value>>;

/// One field of each type, two that declare missing values, each element on a line of its own from line 3 on.
inline std::string StandardFields() {
  return R"(
<DataField name="x" optype="continuous" dataType="double"/>
<DataField name="y" optype="continuous" dataType="double"/>
<DataField name="i" optype="continuous" dataType="integer"/>
<DataField name="f" optype="continuous" dataType="float"/>
<DataField name="b" optype="categorical" dataType="boolean"/>
<DataField name="s" optype="categorical" dataType="string"/>
<DataField name="t" optype="categorical" dataType="string"/>
<DataField name="day" optype="ordinal" dataType="date"/>
<DataField name="clock" optype="ordinal" dataType="time"/>
<DataField name="moment" optype="ordinal" dataType="dateTime"/>
<DataField name="marked" optype="continuous" dataType="integer"><Value value="-9" property="missing"/><Value
 value="N/A" property="missing"/></DataField>
<DataField name="listed" optype="categorical" dataType="string"><Value value="a"/><Value value="?"
 property="missing"/></DataField>
)";
}

/// "d7" for "d" and 7.
inline std::string Numbered(const char* prefix, int number) {
  std::string name = prefix;
  return name += std::to_string(number);
}

inline std::string Pmml(const std::string& dataFields, const std::string& transformations) {
  return "<PMML version=\"4.0\">\n<DataDictionary>" + dataFields + "</DataDictionary>\n<TransformationDictionary>" +
         transformations + "</TransformationDictionary>\n</PMML>";
}

/// Without a type the field has no "dataType".
inline std::string Derived(const std::string& name, const std::string& type, const std::string& expression) {
  const std::string dataType = type.empty() ? "" : " dataType=\"" + type + "\"";
  return "<DerivedField name=\"" + name + "\" optype=\"continuous\"" + dataType + ">" + expression +
         "</DerivedField>\n";
}

inline KelStatus AddPmml(KelTransformation& transformation, const std::string& text) {
  KelDiagnostics::Clear();
  std::istringstream stream(text);
  return transformation.AddPMML(stream, false);
}

inline KelStatus AddDictionary(KelTransformation& transformation, const std::string& content) {
  KelDiagnostics::Clear();
  std::istringstream stream("<TransformationDictionary>" + content + "</TransformationDictionary>");
  return transformation.AddTransformationDictionary(stream);
}

inline ValueRecord RecordOf(const NamedValues& values) {
  ValueRecord record;
  for (const auto& [name, value] : values) record.Add(name, value);
  return record;
}

/// The derived fields `names` of a transformation for the given inputs.
inline std::vector<Value> Compute(const KelTransformation& transformation, const NamedValues& inputs,
                                  const std::vector<std::string>& names) {
  ValueRecord record = RecordOf(inputs);
  for (const std::string& name : names) record.Add(name, Value("left over"));
  EXPECT_TRUE(transformation.Transform(record).IsOK());
  std::vector<Value> results;
  for (const std::string& name : names) results.push_back(record.Get(record.IndexOf(name)));
  return results;
}

/// The value of one derived field over the standard fields.
inline Value Evaluate(const std::string& type, const std::string& expression, const NamedValues& inputs) {
  KelTransformation transformation;
  const KelStatus status = AddPmml(transformation, Pmml(StandardFields(), Derived("result", type, expression)));
  EXPECT_TRUE(status.IsOK()) << KelDiagnostics::Last();
  return status.IsOK() ? Compute(transformation, inputs, {"result"}).front() : Value("refused");
}

inline std::string Show(const Value& value) {
  std::string kind = value.IsNull() ? "null" : value.GetType() == Value::kNumber ? "number " : "text ";
  return kind.append(value.GetString());
}

}  // namespace KelTransformTest
