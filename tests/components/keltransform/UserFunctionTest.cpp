#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/components/keltransform/TransformTestSupport.h"
#include "tests/support/CaseName.h"
#include "tests/support/XmlPlatform.h"

namespace {

using namespace KelTransformTest;
using KelTest::CaseName;
using testing::HasSubstr;

const auto* const kPlatform = KelTest::XmlPlatform::KeepUp();
const Value kNull;

std::string Field(const std::string& name) { return "<FieldRef field=\"" + name + "\"/>"; }

std::string Call(const std::string& function, const std::string& arguments) {
  return "<Apply function=\"" + function + "\">" + arguments + "</Apply>";
}

std::string Parameter(const std::string& name, const std::string& type = "") {
  const std::string dataType = type.empty() ? "" : " dataType=\"" + type + "\"";
  return "<ParameterField name=\"" + name + "\"" + dataType + "/>";
}

std::string Define(const std::string& name, const std::string& type, const std::string& content) {
  const std::string dataType = type.empty() ? "" : " dataType=\"" + type + "\"";
  return "<DefineFunction name=\"" + name + "\" optype=\"continuous\"" + dataType + ">\n" + content +
         "</DefineFunction>\n";
}

std::string Identity(const std::string& name) { return Define(name, "", Parameter("p") + Field("p")); }

struct UserFunctionCase {
  const char* name;
  std::string functions;
  std::string expression;
  const char* type;
  Value expected;
};

void PrintTo(const UserFunctionCase& row, std::ostream* stream) { *stream << row.functions << row.expression; }

class UserFunctionTest : public testing::TestWithParam<UserFunctionCase> {};

TEST_P(UserFunctionTest, Apply_KnownAnswer) {
  const UserFunctionCase& row = GetParam();
  KelTransformation transformation;
  const std::string content = row.functions + Derived("result", row.type, row.expression);
  ASSERT_TRUE(AddPmml(transformation, Pmml(StandardFields(), content)).IsOK()) << KelDiagnostics::Last();
  const NamedValues inputs = {{"x", 2.5}, {"y", 4}, {"i", 7}, {"s", "a"}, {"day", "2004-08-20"}};
  const Value result = Compute(transformation, inputs, {"result"}).front();
  EXPECT_EQ(Show(result), Show(row.expected));
}

const std::string kTwice = Define("twice", "", Parameter("p") + Call("+", Field("p") + Field("p")));
const std::string kMinus = Define("minus", "", Parameter("x") + Parameter("y") + Call("-", Field("y") + Field("x")));
const std::string kScaled = Define(
    "scaled", "double",
    Parameter("p", "double") +
        R"(<NormContinuous field="p"><LinearNorm orig="0" norm="0"/><LinearNorm orig="1" norm="3"/></NormContinuous>)");
// The standard's idiom: a range by a mapping whose result is a text.
const std::string kRange = Define(
    "range", "string",
    Parameter("p", "integer") +
        R"(<Discretize field="p"><DiscretizeBin binValue="low"><Interval closure="openClosed" rightMargin="5"/></DiscretizeBin><DiscretizeBin binValue="high"><Interval closure="openOpen" leftMargin="5"/></DiscretizeBin></Discretize>)");

INSTANTIATE_TEST_SUITE_P(
    All, UserFunctionTest,
    testing::Values(
        UserFunctionCase{"plain", kTwice, Call("twice", Field("x")), "double", 5},
        // Parameters hide the fields of their names.
        UserFunctionCase{"by_position", kMinus, Call("minus", Field("x") + Field("y")), "double", 1.5},
        UserFunctionCase{"of_a_call", kTwice, Call("twice", Call("twice", Field("x"))), "double", 10},
        UserFunctionCase{"in_a_call", kTwice, Call("sqrt", Call("twice", "<Constant>8</Constant>")), "double", 4},
        UserFunctionCase{"in_a_function",
                         kTwice + Define("four", "", Parameter("q") + Call("twice", Call("twice", Field("q")))),
                         Call("four", Field("x")), "double", 10},
        UserFunctionCase{"defined_after_its_use",
                         Define("four", "", Parameter("q") + Call("twice", Call("twice", Field("q")))) + kTwice,
                         Call("four", Field("x")), "double", 10},
        UserFunctionCase{"other_expression", kScaled, Call("scaled", Field("i")), "double", 21},
        UserFunctionCase{"other_expression_of_constant", kScaled, Call("scaled", "<Constant>2</Constant>"), "double",
                         6},
        UserFunctionCase{"bins", kRange, Call("range", Field("i")), "string", "high"},
        UserFunctionCase{"argument_converted",
                         Define("f", "", Parameter("p", "string") + Call("concat", Field("p") + Field("p"))),
                         Call("f", "<Constant>1.0</Constant>"), "string", "1.01.0"},
        UserFunctionCase{"argument_rounded", Define("f", "double", Parameter("p", "float") + Field("p")),
                         Call("f", "<Constant dataType=\"double\">0.1</Constant>"), "double",
                         static_cast<double>(0.1F)},
        UserFunctionCase{"argument_no_value_of_type", Define("f", "", Parameter("p", "integer") + Field("p")),
                         Call("f", Field("x")), "double", kNull},
        UserFunctionCase{"result_converted",
                         Define("f", "float", Parameter("p") + Call("/", Field("p") + "<Constant>10</Constant>")),
                         Call("f", "<Constant>1</Constant>"), "double", static_cast<double>(0.1F)},
        UserFunctionCase{"result_integer",
                         Define("f", "integer", Parameter("p") + Call("/", Field("p") + "<Constant>2</Constant>")),
                         Call("f", Field("i")), "double", 3},
        UserFunctionCase{"missing_goes_in", Define("f", "", Parameter("p") + Call("isMissing", Field("p"))),
                         Call("f", Field("marked")), "boolean", "true"},
        UserFunctionCase{"mapped_missing", kTwice,
                         "<Apply function=\"twice\" mapMissingTo=\"9\">" + Field("marked") + "</Apply>", "double", 9},
        UserFunctionCase{"default", kTwice,
                         "<Apply function=\"twice\" defaultValue=\"8\">" + Field("marked") + "</Apply>", "double", 8},
        UserFunctionCase{"without_parameters", Define("nine", "integer", "<Constant>9</Constant>"), Call("nine", ""),
                         "double", 9},
        // What the document defines is meant, whatever a later version calls so.
        UserFunctionCase{"before_a_built_in_one", Define("median", "", Parameter("p") + Field("p")),
                         Call("median", Field("x")), "double", 2.5}),
    CaseName());

struct RefusedFunctionCase {
  const char* name;
  std::string functions;
  std::string expression;
  const char* reason;
};

void PrintTo(const RefusedFunctionCase& row, std::ostream* stream) { *stream << row.functions << row.expression; }

class UserFunctionRefusalTest : public testing::TestWithParam<RefusedFunctionCase> {};

// The first function stands on line 17, what is in it on line 20.
TEST_P(UserFunctionRefusalTest, AddPMML_NamesElementAndLine) {
  KelTransformation transformation;
  const std::string content = "\n" + GetParam().functions + Derived("bad", "double", GetParam().expression);
  EXPECT_TRUE(AddPmml(transformation, Pmml(StandardFields(), content)).IsError());
  EXPECT_THAT(KelDiagnostics::Last(), HasSubstr(GetParam().reason));
}

// f0 is the identity, and each function after it calls the one before it twice: 2 to the power of 60 calls.
std::string Doubling(const std::string& joinedBy) {
  std::string functions = Identity("f0");
  for (int index = 1; index <= 60; ++index) {
    const std::string call = Call(Numbered("f", index - 1), Field("p"));
    functions += Define(Numbered("f", index), "", Parameter("p") + Call(joinedBy, call + call));
  }
  return functions;
}
const std::string kFirst = Define("first", "", Parameter("a") + Parameter("b") + Field("a"));

INSTANTIATE_TEST_SUITE_P(
    All, UserFunctionRefusalTest,
    testing::Values(
        RefusedFunctionCase{"recursion", Define("f", "", Parameter("p") + Call("f", Field("p"))), Call("f", Field("x")),
                            R"(<Apply function="f"> line 20: calls itself: "f" -> "f")"},
        RefusedFunctionCase{"recursion_of_three",
                            Define("f", "", Parameter("p") + Call("g", Field("p"))) +
                                Define("g", "", Parameter("p") + Call("h", Field("p"))) +
                                Define("h", "", Parameter("p") + Call("g", Field("p"))),
                            Call("f", Field("x")), R"(calls itself: "g" -> "h" -> "g")"},
        RefusedFunctionCase{"too_few", kTwice, Call("twice", ""),
                            R"(<Apply function="twice"> line 21: takes 1 argument, not 0)"},
        RefusedFunctionCase{"too_many", kTwice, Call("twice", Field("x") + Field("x")), "takes 1 argument, not 2"},
        RefusedFunctionCase{"field_in_function", Define("f", "", Parameter("p") + Field("x")), Call("f", Field("x")),
                            R"(<FieldRef field="x"> line 20: is no parameter of the function "f")"},
        RefusedFunctionCase{"unknown_function_in_function", Define("f", "", Call("nothing", "")), Call("f", ""),
                            R"(<Apply function="nothing"> line 20)"},
        RefusedFunctionCase{"unsupported_in_function", Define("f", "", "<Lag field=\"p\"/>"), Call("f", ""),
                            "<Lag> line 20"},
        RefusedFunctionCase{"parameter_as_group",
                            Define("f", "", Parameter("p") + R"(<Aggregate field="p" function="sum"/>)"),
                            Call("f", Field("x")), "is a parameter, which has one value only"},
        RefusedFunctionCase{"derived_field_as_group", Derived("d", "double", Field("x")),
                            R"(<Aggregate field="d" function="sum"/>)", "is a derived field, which has one value only"},
        RefusedFunctionCase{"twice_defined", kTwice + kTwice, Field("x"), R"(<DefineFunction name="twice">)"},
        RefusedFunctionCase{"parameter_twice", Define("f", "", Parameter("p") + Parameter("p") + Field("p")),
                            Field("x"), R"(<ParameterField name="p"> line 20: is the name of another)"},
        RefusedFunctionCase{"no_body", Define("f", "", Parameter("p")), Field("x"),
                            "<DefineFunction> line 19: it has no"},
        RefusedFunctionCase{"two_bodies", Define("f", "", Parameter("p") + Field("p") + Field("p")), Field("x"),
                            "the <DefineFunction> has another expression already"},
        RefusedFunctionCase{"unknown_type", Define("f", "complex", Field("p")), Field("x"), R"(dataType="complex")"},
        RefusedFunctionCase{"unknown_parameter_type", Define("f", "", Parameter("p", "complex") + Field("p")),
                            Field("x"), R"(<ParameterField dataType="complex">)"},
        RefusedFunctionCase{"argument_of_wrong_type", Define("f", "", Parameter("p", "integer") + Field("p")),
                            Call("f", "<Constant>1.5</Constant>"), "is no value of the type integer"},
        RefusedFunctionCase{"grows_without_end", Doubling("+"), Call("f60", Field("x")), "grow too large"},
        RefusedFunctionCase{"grows_without_end_from_constants", Doubling("+"), Call("f60", "<Constant>1</Constant>"),
                            "grow too large"},
        RefusedFunctionCase{"grows_without_code", kFirst + Doubling("first"), Call("f60", Field("x")),
                            "grow too large"}),
    CaseName());

// As deep as a document may nest. A compiler that called itself for each level would need a stack to match.
TEST(DeepCallTest, AddPMML_CallsAsDeepAsDocumentsMayNest_AreCompiled) {
  constexpr int kDepth = 9000;
  std::string expression;
  for (int level = 0; level < kDepth; ++level) expression += "<Apply function=\"+\"><Constant>1</Constant>";
  expression += Field("x");
  for (int level = 0; level < kDepth; ++level) expression += "</Apply>";
  EXPECT_EQ(Evaluate("double", expression, {{"x", 0.5}}).GetReal(), kDepth + 0.5);
}

TEST(DeepCallTest, AddPMML_ChainOfFunctions_IsCompiled) {
  constexpr int kLength = 20000;
  std::string content = Identity("f0");
  for (int index = 1; index <= kLength; ++index) {
    content += Define(Numbered("f", index), "", Parameter("p") + Call(Numbered("f", index - 1), Field("p")));
  }
  content += Derived("result", "double", Call(Numbered("f", kLength), Field("x")));
  KelTransformation transformation;
  ASSERT_TRUE(AddPmml(transformation, Pmml(StandardFields(), content)).IsOK()) << KelDiagnostics::Last();
  EXPECT_EQ(Compute(transformation, {{"x", 0.5}}, {"result"}).front().GetReal(), 0.5);
}

}  // namespace
