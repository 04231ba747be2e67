#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <sstream>

#include "components/keltransform/ExpressionCompiler.h"
#include "components/keltransform/FrameStorage.h"
#include "tests/components/keltransform/TransformTestSupport.h"

namespace {

using namespace KelTransformNS;
using KelTransformTest::Numbered;
using KelXML_1_3::Element;
using KelXML_1_3::ElementTree;
using KelXML_1_3::PmmlError;
using testing::ElementsAre;
using testing::HasSubstr;

// A compiler over the numeric inputs "x" and "y" and the text "s".
class ExpressionCompilerTest : public testing::Test {
 protected:
  Element Parse(const std::string& text) {
    std::istringstream stream(text);
    fTrees.push_back(ElementTree::Read(stream));
    return fTrees.back()->Root();
  }

  void Declare(const std::string& fields) {
    fCompiler.DeclareDerivedFields(Parse("<LocalTransformations>" + fields + "</LocalTransformations>"));
  }

  static std::string Field(const std::string& name, const std::string& expression, const std::string& type = "double") {
    return "<DerivedField name=\"" + name + "\" optype=\"continuous\" dataType=\"" + type + "\">" + expression +
           "</DerivedField>";
  }

  static std::string Ref(const std::string& field) { return "<FieldRef field=\"" + field + "\"/>"; }
  // Twice the field's value.
  static std::string Twice(const std::string& field) {
    return "<NormContinuous field=\"" + field +
           R"("><LinearNorm orig="0" norm="0"/><LinearNorm orig="1" norm="2"/></NormContinuous>)";
  }

  std::string ErrorOf(const std::string& name) {
    try {
      (void)fCompiler.Resolve(name, fRoot);
    } catch (const PmmlError& error) {
      return error.what();
    }
    return "no error";
  }

  double Run(const Program& program, std::uint32_t slot, double x) {
    const FrameStorage storage(fCompiler.SlotCount(), FrameStorage::kMissing, fPool.HasMadeTexts());
    if (const auto found = fInputs.find("x"); found != fInputs.end()) storage.Cells()[found->second] = Cell::Number(x);
    program.Run(storage.Cells());
    return storage.Cells()[slot].number;
  }

  std::optional<ResolvedField> FindInput(std::string_view name) {
    ++fLookups[std::string(name)];
    if (name != "x" && name != "y" && name != "s") return std::nullopt;
    const std::uint32_t slot = fCompiler.NewSlot();
    fInputs.emplace(name, slot);
    const bool isText = name == "s";
    return ResolvedField{std::string(name), isText ? DataType::kString : DataType::kDouble,
                         isText ? OpType::kCategorical : OpType::kContinuous, slot};
  }

  TextPool fPool;
  std::vector<std::unique_ptr<ElementTree>> fTrees;
  std::map<std::string, std::uint32_t> fInputs;
  std::map<std::string, int> fLookups;
  ExpressionCompiler fCompiler{fPool, [this](std::string_view name) { return FindInput(name); }};
  Element fRoot = Parse("<TreeModel/>");
};

TEST_F(ExpressionCompilerTest, Resolve_ForwardReferences_ComputesInTheOrderOfUse) {
  Declare(Field("c", Twice("b")) + Field("a", Twice("x")) + Field("b", Twice("a")));
  const std::uint32_t slot = fCompiler.Resolve("c", fRoot).slot;
  EXPECT_EQ(Run(fCompiler.Finish(), slot, 1.5), 12.0);
  EXPECT_EQ(fLookups, (std::map<std::string, int>{{"x", 1}}));
}

TEST_F(ExpressionCompilerTest, Resolve_OneOfManyFields_CompilesNothingElse) {
  Declare(Field("good", Twice("x")) + Field("bad", "<Apply function=\"log2\"><FieldRef field=\"y\"/></Apply>"));
  (void)fCompiler.Resolve("good", fRoot);
  EXPECT_EQ(fLookups.count("y"), 0U);
  EXPECT_THAT(ErrorOf("bad"), HasSubstr("<Apply function=\"log2\">"));
  EXPECT_THAT(fCompiler.DerivedFieldNames(), ElementsAre("good", "bad"));
}

TEST_F(ExpressionCompilerTest, Resolve_CallOfConstants_IsComputedOnce) {
  Declare(Field("c", R"(<Apply function="sqrt"><Apply function="if"><Apply function="lessThan"><Constant>1</Constant>
      <Constant>2</Constant></Apply><Constant>16</Constant></Apply></Apply>)"));
  const std::uint32_t slot = fCompiler.Resolve("c", fRoot).slot;
  EXPECT_EQ(fCompiler.SlotCount(), 1U);  // the copy of the result
  EXPECT_EQ(Run(fCompiler.Finish(), slot, 0.0), 4.0);
}

TEST_F(ExpressionCompilerTest, Resolve_ConstantTextsThatGrow_AreNotKept) {
  std::string text = "<Constant>a</Constant>";
  for (int doubling = 0; doubling < 12; ++doubling) text = "<Apply function=\"concat\">" + text + text + "</Apply>";
  Declare(Field("c", "<Apply function=\"stringLength\">" + text + "</Apply>"));
  const std::uint32_t slot = fCompiler.Resolve("c", fRoot).slot;
  EXPECT_LT(fPool.Size(), 20U);
  EXPECT_EQ(Run(fCompiler.Finish(), slot, 0.0), 4096.0);
}

TEST_F(ExpressionCompilerTest, Resolve_PlainReference_SharesTheSlot) {
  Declare(Field("alias", Ref("x")) + Field("typed", Ref("x"), "integer"));
  const std::uint32_t alias = fCompiler.Resolve("alias", fRoot).slot;
  EXPECT_EQ(alias, fInputs["x"]);
  EXPECT_TRUE(fCompiler.Finish().IsEmpty());
  EXPECT_NE(fCompiler.Resolve("typed", fRoot).slot, alias);
}

TEST_F(ExpressionCompilerTest, Resolve_NameInTwoDictionaries_InnerOneHidesOuterOnlyForInnerFields) {
  Declare(Field("scale", Twice("x")) + Field("outer", Ref("scale")));
  Declare(Field("scale", "<Constant>-1</Constant>") + Field("inner", Ref("scale")) + Field("both", Ref("outer")));
  const std::uint32_t inner = fCompiler.Resolve("inner", fRoot).slot;
  const std::uint32_t both = fCompiler.Resolve("both", fRoot).slot;
  const Program program = fCompiler.Finish();
  EXPECT_EQ(Run(program, inner, 3), -1.0);
  EXPECT_EQ(Run(program, both, 3), 6.0);
}

TEST_F(ExpressionCompilerTest, Withdraw_FieldThatAnInputProvides_IsReadInsteadOfComputed) {
  Declare(Field("x", "<Constant>99</Constant>") + Field("twice", Twice("x")));
  fCompiler.Withdraw("x");
  const std::uint32_t slot = fCompiler.Resolve("twice", fRoot).slot;
  EXPECT_EQ(Run(fCompiler.Finish(), slot, 3), 6.0);
}

TEST_F(ExpressionCompilerTest, Find_UnknownName_GivesNullAndAsksAgain) {
  EXPECT_EQ(fCompiler.Find("z", fRoot), nullptr);
  EXPECT_EQ(fCompiler.Find("z", fRoot), nullptr);
  EXPECT_EQ(fLookups["z"], 2);
  EXPECT_THAT(ErrorOf("z"), HasSubstr("<TreeModel> line 1: there is no field \"z\""));
}

TEST_F(ExpressionCompilerTest, Resolve_AfterACycle_OtherFieldsStillCompile) {
  Declare(Field("a", Ref("b")) + Field("b", Ref("a")) + Field("c", Twice("x")));
  EXPECT_THAT(ErrorOf("a"), HasSubstr(R"("a" -> "b" -> "a")"));
  EXPECT_THAT(ErrorOf("b"), HasSubstr(R"("b" -> "a" -> "b")"));
  EXPECT_EQ(ErrorOf("c"), "no error");
}

TEST_F(ExpressionCompilerTest, Resolve_ChainOfAHundredThousandFields_NeedsNoDeepStack) {
  constexpr int kLength = 100000;
  std::string fields;
  for (int index = 0; index < kLength; ++index) {
    fields += Field(Numbered("f", index), Ref(index + 1 < kLength ? Numbered("f", index + 1) : "x"));
  }
  Declare(fields);
  EXPECT_EQ(fCompiler.Resolve("f0", fRoot).slot, fInputs["x"]);
}

TEST_F(ExpressionCompilerTest, Resolve_OrdinalField_KnowsItsValues) {
  Declare(R"(<DerivedField name="size" optype="ordinal" dataType="string"><FieldRef field="s"/>)"
          R"(<Value value="small"/><Value value="big"/></DerivedField>)");
  const ResolvedField& field = fCompiler.Resolve("size", fRoot);
  EXPECT_EQ(field.opType, OpType::kOrdinal);
  EXPECT_THAT(field.values, ElementsAre("small", "big"));
}

TEST_F(ExpressionCompilerTest, Finish_Twice_SecondProgramGoesOnFromTheFirst) {
  Declare(Field("a", Twice("x")) + Field("b", Twice("a")));
  (void)fCompiler.Resolve("a", fRoot);
  const Program first = fCompiler.Finish();
  const ResolvedField result = fCompiler.CompileExpression(Parse(Twice("b")), DataType::kFloat);
  EXPECT_EQ(result.dataType, DataType::kFloat);
  const Program second = fCompiler.Finish();
  const FrameStorage storage(fCompiler.SlotCount(), FrameStorage::kMissing, fPool.HasMadeTexts());
  storage.Cells()[fInputs["x"]] = Cell::Number(1);
  first.Run(storage.Cells());
  second.Run(storage.Cells());
  EXPECT_EQ(storage.Cells()[result.slot].number, 8.0);
}

// As a model that is nested in another one: it reads a field of the outer one, which compiles more fields afterwards.
TEST_F(ExpressionCompilerTest, Compile_WithASharedCounter_RunsOverOneFrame) {
  SlotCounter slots;
  const std::uint32_t x = slots.NewSlot();
  const ResolvedField field{"x", DataType::kDouble, OpType::kContinuous, x};
  ExpressionCompiler outer(fPool, slots, [&](std::string_view) { return field; });
  outer.DeclareDerivedFields(Parse("<T>" + Field("a", Twice("x")) + Field("b", Twice("a")) + "</T>"));
  ExpressionCompiler inner(fPool, slots, [&](std::string_view name) { return outer.Resolve(name, fRoot); });
  inner.DeclareDerivedFields(Parse("<T>" + Field("c", Twice("a")) + "</T>"));
  const std::uint32_t c = inner.Resolve("c", fRoot).slot;
  const std::uint32_t b = outer.Resolve("b", fRoot).slot;
  EXPECT_EQ(slots.Count(), 4U);
  EXPECT_EQ(inner.SlotCount(), outer.SlotCount());
  const FrameStorage storage(slots.Count());
  storage.Cells()[x] = Cell::Number(1.5);
  outer.Finish().Run(storage.Cells());
  inner.Finish().Run(storage.Cells());
  EXPECT_EQ(storage.Cells()[b].number, 6.0);
  EXPECT_EQ(storage.Cells()[c].number, 6.0);
}

TEST_F(ExpressionCompilerTest, CompileExpression_Constants_NeedNoConversionAtRunTime) {
  const ResolvedField text =
      fCompiler.CompileExpression(Parse("<Constant dataType=\"double\">2.50</Constant>"), DataType::kString);
  const FrameStorage storage(fCompiler.SlotCount(), FrameStorage::kMissing, fPool.HasMadeTexts());
  fCompiler.Finish().Run(storage.Cells());
  const Cell cell = storage.Cells()[text.slot];
  ASSERT_EQ(cell.state, Cell::kText);
  EXPECT_EQ(*cell.text, "2.5");
  EXPECT_EQ(cell.textId, fPool.Find("2.5"));
}

TEST_F(ExpressionCompilerTest, Select_OneResult_KeepsWhatItNeedsAndMarksItsInputs) {
  Declare(Field("a", Twice("x")) + Field("b", Twice("y")) + Field("c", Twice("a")));
  for (const char* const name : {"a", "b", "c"}) (void)fCompiler.Resolve(name, fRoot);
  const std::uint32_t slot = fCompiler.Resolve("c", fRoot).slot;
  const Program whole = fCompiler.Finish();
  std::vector<bool> needed(fCompiler.SlotCount());
  needed[slot] = true;
  const Program part = whole.Select(needed);
  EXPECT_TRUE(needed[fInputs["x"]]);
  EXPECT_FALSE(needed[fInputs["y"]]);
  EXPECT_FALSE(needed[fCompiler.Resolve("b", fRoot).slot]);
  EXPECT_EQ(Run(part, slot, 2), 8.0);
}

TEST_F(ExpressionCompilerTest, FindExpression_AmongOtherChildren_IsFound) {
  const Element field = Parse(
      "<OutputField><Extension><FieldRef field=\"y\"/></Extension><Value value=\"1\"/>"
      "<Constant>1</Constant></OutputField>");
  EXPECT_TRUE(FindExpression(field).Is("Constant"));
  EXPECT_FALSE(FindExpression(Parse("<OutputField><Decisions/></OutputField>")));
}

}  // namespace
