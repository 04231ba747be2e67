#include <gtest/gtest.h>

#include "tools/kelscore/ModelField.h"

namespace kelscore {
namespace {

using KelXML_1_3::KelVarList;

struct Expected {
  const char* name;
  FieldKind kind;
  bool needed;
};

TEST(ModelFields, Variables_BecomeWhatTheModelReads) {
  KelVarList variables;
  const std::vector<std::string> noTexts;
  variables.AddContVar("age", "", KelXML_1_3::kRoleInput);
  variables.AddCatVar("code", "", std::vector<double>{1, 2}, KelXML_1_3::kRoleInput);
  variables.AddCatVar("region", "", noTexts, KelXML_1_3::kRoleInput);
  variables.AddContVar("since", "", KelXML_1_3::kRoleInput);
  variables.AddCatVar("active", "", 0, KelXML_1_3::kCategoricalNumeric, KelXML_1_3::kRoleInput);
  variables.AddContVar("amount", "", KelXML_1_3::kRoleTarget);
  variables.AddContVar("note", "", KelXML_1_3::kRoleNone);
  variables.GetVariable("note")->SetStorageType(3);  // continuous text: odd, and allowed
  variables.AddContVar("derived", "", KelXML_1_3::kRoleInput);
  // As PMML writes the role of a target from 4.2 on; the variable list takes it for an input.
  variables.AddContVar("later target", "", KelXML_1_3::kRoleInput);
  variables.AddContVar("comment", "", KelXML_1_3::kRoleInput);
  const DataFields dataFields = {{"age", {"double", ""}},
                                 {"code", {"integer", "active"}},
                                 {"region", {"string", ""}},
                                 {"since", {"date", ""}},
                                 {"active", {"boolean", ""}},
                                 {"amount", {"double", "predicted"}},
                                 {"note", {"string", ""}},
                                 {"later target", {"double", "target"}},
                                 {"comment", {"double", "supplementary"}}};

  const Expected kExpected[] = {
      {"age", FieldKind::kNumber, true},
      {"code", FieldKind::kNumber, true},
      {"region", FieldKind::kText, true},
      {"since", FieldKind::kNumberOrText, true},    // a table has 2024-02-29 here
      {"active", FieldKind::kNumberOrText, true},   // and "true" here
      {"amount", FieldKind::kNumberOrText, false},  // the model predicts it, and may want it for a residual
      {"note", FieldKind::kText, false},
      {"later target", FieldKind::kNumberOrText, false},
      {"comment", FieldKind::kNumberOrText, false},
  };
  const std::vector<ModelField> fields = ModelFields(variables, dataFields);
  ASSERT_EQ(fields.size(), std::size(kExpected));  // without the derived field
  for (std::size_t i = 0; i < fields.size(); ++i) {
    EXPECT_EQ(fields[i].name, kExpected[i].name);
    EXPECT_EQ(fields[i].kind, kExpected[i].kind) << fields[i].name;
    EXPECT_EQ(fields[i].needed, kExpected[i].needed) << fields[i].name;
  }
}

TEST(FieldsOfTable, ColumnsWithAName_AreAllTaken) {
  const std::vector<ModelField> fields = FieldsOfTable({"a", "", "b"});
  ASSERT_EQ(fields.size(), 2U);
  EXPECT_EQ(fields[1].name, "b");
  EXPECT_EQ(fields[1].kind, FieldKind::kNumberOrText);
}

}  // namespace
}  // namespace kelscore
