#include "tests/support/PmmlText.h"

namespace KelTest {

std::string PmmlText::Text() const {
  return R"(<?xml version="1.0" encoding="UTF-8"?>)"
         "\n<PMML version=\"" +
         version + "\">\n" + header + dictionary + transformations + '<' + element + ' ' + attributes + '>' +
         extensions + "<MiningSchema>" + schema + "</MiningSchema>" + body + "</" + element + ">\n</PMML>\n";
}

std::string PmmlText::Fields(const std::string& inTarget) {
  return R"(<DataDictionary><DataField name="x" optype="continuous" dataType="double"/>)"
         R"(<DataField name="p" optype="categorical" dataType="string"/>)"
         R"(<DataField name="answer" optype="categorical" dataType="string">)" +
         inTarget + R"(<Value value="no"/><Value value="yes"/></DataField></DataDictionary>)";
}

std::string PmmlText::FlagFields() { return Fields(R"(<Extension name="flagTypeTrueValue" value="yes"/>)"); }

std::string PmmlText::Constant(const std::string& name) {
  return R"(<TransformationDictionary><DerivedField name=")" + name +
         R"(" optype="continuous" dataType="double"><Constant>3</Constant></DerivedField></TransformationDictionary>)";
}

std::string PmmlText::Propensity(const std::string& description) {
  return R"(<Extension extender="kelscoring" name="adjustedPropensity"><AdjustedPropensityByNN description=")" +
         description +
         R"("><HiddenLayer><Matrix><Array>2</Array></Matrix><Array>0</Array></HiddenLayer>)"
         R"(<OutputLayer><Matrix><Array>1</Array></Matrix><Array>0.5</Array></OutputLayer>)"
         R"(</AdjustedPropensityByNN></Extension>)";
}

}  // namespace KelTest
