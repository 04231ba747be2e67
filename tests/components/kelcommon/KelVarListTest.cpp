#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

#include "scoring/common/KelMV.h"
#include "scoring/common/KelVarList.h"

namespace {

using namespace KelXML_1_3;
using KelCommon_1_3::KelMV;

using Texts = std::vector<std::string>;
using Numbers = std::vector<double>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kMax = std::numeric_limits<double>::max();

TEST(KelVarListTest, Add_EachForm_GivesLevelKindAndCount) {
  KelVarList list;
  EXPECT_EQ(list.AddCatVar("texts", "Label", Texts{"a", "b"}, Texts{"A", ""}, kRoleNone), 0);
  EXPECT_EQ(list.AddCatVar("numbers", "", Numbers{3, 1}, Texts{}, kRoleInput), 1);
  EXPECT_EQ(list.AddCatVar("bare texts", "", Texts{"a"}, kRoleNone), 2);
  EXPECT_EQ(list.AddCatVar("bare numbers", "", Numbers{}, kRoleNone), 3);
  EXPECT_EQ(list.AddCatVar("count", "", 5, kCategoricalString, kRoleNone), 4);
  EXPECT_EQ(list.AddCatVar("no count", "", 0, kCategoricalNumeric, kRoleNone), 5);
  EXPECT_EQ(list.AddContVar("continuous", "", kRoleTarget), 6);
  EXPECT_EQ(list.AddContVar("ranged", "", -1.0, 2.5, kRoleNone, false, -1), 7);
  EXPECT_EQ(list.AddContVar("binned", "", 0.0, 9.0, Numbers{3, 6}, true, kRoleInput), 8);
  ASSERT_EQ(list.Size(), 9);
  const struct {
    MeasureLevel level;
    int kind;
    int categoryCount;
  } expected[] = {
      {kCategoricalString, 3, 2},  {kCategoricalNumeric, 2, 2}, {kCategoricalString, 3, 1},
      {kCategoricalNumeric, 2, 0}, {kCategoricalString, 3, 5},  {kCategoricalNumeric, 2, 0},
      {kContinuous, 2, 0},         {kContinuous, 2, 0},         {kContinuous, 2, 3},
  };
  for (int i = 0; i < list.Size(); ++i) {
    const IKelVariable& variable = *list.GetVarAt(i);
    EXPECT_EQ(variable.GetMeasureLevel(), expected[i].level) << i;
    EXPECT_EQ(variable.GetEncoder()->GetValueKind(), expected[i].kind) << i;
    EXPECT_EQ(variable.GetCategoryCount(), expected[i].categoryCount) << i;
    EXPECT_EQ(dynamic_cast<const KelCatVar*>(&variable) != nullptr, expected[i].level != kContinuous) << i;
  }
  EXPECT_EQ(list.GetVarAt(0)->GetLabel(), "Label");
  EXPECT_EQ(list.GetVarAt(1)->GetVariableRole(), kRoleInput);
}

TEST(KelVarListTest, Add_EmptyOrDuplicateName_IsRefused) {
  KelVarList list;
  list.AddContVar("x", "first", kRoleNone);
  EXPECT_LT(list.AddContVar("x", "", kRoleNone), 0);
  EXPECT_LT(list.AddCatVar("x", "", Texts{"a"}, kRoleNone), 0);
  EXPECT_LT(list.AddCatVar("x", "", 3, kCategoricalNumeric, kRoleNone), 0);
  EXPECT_LT(list.AddContVar("", "", 0, 1, kRoleNone, false, -1), 0);
  EXPECT_LT(list.AddCatVar("", "", Numbers{1}, kRoleNone), 0);
  EXPECT_EQ(list.Size(), 1);
  EXPECT_EQ(list.GetVariable("x")->GetLabel(), "first");
  EXPECT_EQ(list.AddContVar("X", "", kRoleNone), 1);
}

TEST(KelVarListTest, Lookup_OutsideTheList_GivesNothing) {
  KelVarList list;
  list.AddContVar("x", "", kRoleNone);
  for (const int index : {-1, 1, 1000}) {
    EXPECT_EQ(list.GetVarAt(index), nullptr);
    EXPECT_EQ(list.GetEncoderAt(index), nullptr);
    list.SetVariableRole(index, kRoleTarget);
  }
  EXPECT_EQ(list.GetVariable("y"), nullptr);
  EXPECT_LT(list.FindVariable(""), 0);
  EXPECT_EQ(list.FindVariable("x"), 0);
  EXPECT_EQ(list.GetTargetRespVariable(), nullptr);
}

TEST(KelVarListTest, Targets_FollowTheRoles) {
  KelVarList list;
  for (const char* const name : {"a", "b", "c", "d"}) list.AddContVar(name, "", kRoleInput);
  list.SetVariableRole(3, kRoleTarget);
  list.GetVariable("b")->SetVariableRole(kRoleTarget);  // behind the list's back
  EXPECT_EQ(list.GetTargetIndices(), (std::vector<int>{1, 3}));
  EXPECT_EQ(list.GetTargetRespVariable()->GetName(), "b");
  list.SetVariableRole(1, kRoleNone);
  EXPECT_EQ(list.GetTargetIndices(), std::vector<int>{3});
  EXPECT_EQ(static_cast<const KelVarList&>(list).GetTargetRespVariable(), list.GetVarAt(3));
}

TEST(KelVarListTest, CategoryCount_GrowsWithTheEncoder) {
  KelVarList list;
  list.AddCatVar("x", "", 2, kCategoricalNumeric, kRoleNone);
  IKelEncoder& encoder = *list.GetEncoderAt(0);
  encoder.AddNumericValue(7);
  EXPECT_EQ(list.GetVarAt(0)->GetCategoryCount(), 2);
  encoder.AddNumericValue(8);
  encoder.AddNumericValue(9);
  EXPECT_EQ(list.GetVarAt(0)->GetCategoryCount(), 3);
}

TEST(KelVarListTest, Variable_FormatStorageRangeAndFlags_ReadBack) {
  KelVarList list;
  list.AddContVar("free", "", kRoleNone);
  list.AddContVar("ranged", "", -1.0, 2.5, kRoleNone, false, -1);
  list.AddCatVar("flag", "", Texts{"no", "yes"}, kRoleNone);
  double low = 0;
  double high = 0;
  EXPECT_TRUE(list.GetVarAt(0)->GetRange(low, high));
  EXPECT_EQ(low, -kMax);
  EXPECT_EQ(high, kMax);
  EXPECT_TRUE(list.GetVarAt(1)->GetRange(low, high));
  EXPECT_EQ(low, -1.0);
  EXPECT_EQ(high, 2.5);
  EXPECT_FALSE(list.GetVarAt(2)->GetRange(low, high));
  EXPECT_EQ(high, 2.5);

  auto& flag = dynamic_cast<KelCatVar&>(*list.GetVarAt(2));
  EXPECT_FALSE(flag.GetBinaryFlag());
  EXPECT_EQ(flag.GetBinaryFlagTrueIndex(), -1);
  flag.SetBinaryFlag(true, 1);
  flag.SetOrdinalFlag(true);
  EXPECT_EQ(flag.GetStorageType(), 0);
  EXPECT_EQ(flag.GetFormat(), nullptr);
  flag.SetStorageType(3);
  flag.SetFormat(XMLElement::Create("replaced"));
  XMLElement* const format = XMLElement::Create("Format");
  format->AddAttribute("width", "8");
  format->AddAttribute("decimals", "2");
  format->AddAttribute("width", "9");
  flag.SetFormat(format);
  flag.SetFormat(format);  // the one that is there already

  const KelVarList copy(list);
  const auto& copied = dynamic_cast<const KelCatVar&>(*copy.GetVarAt(2));
  EXPECT_TRUE(copied.GetBinaryFlag());
  EXPECT_EQ(copied.GetBinaryFlagTrueIndex(), 1);
  EXPECT_TRUE(copied.GetOrdinalFlag());
  EXPECT_EQ(copied.GetStorageType(), 3);
  ASSERT_NE(copied.GetFormat(), nullptr);
  EXPECT_NE(copied.GetFormat(), format);
  EXPECT_EQ(copied.GetFormat()->GetName(), "Format");
  EXPECT_EQ(copied.GetFormat()->GetAttributes(),
            (std::vector<std::pair<std::string, std::string>>{{"width", "9"}, {"decimals", "2"}}));
}

TEST(KelVarListTest, Copy_IsDeep) {
  KelVarList list;
  list.AddCatVar("texts", "", Texts{"a text that is too long to lie in the entry itself"}, Texts{"A"}, kRoleNone);
  list.GetEncoderAt(0)->AddMissingString("none", "nothing");
  list.GetEncoderAt(0)->SetInvalidRange(1, 2);
  list.GetEncoderAt(0)->SetBinLabels(Texts{"low", "high"});
  KelVarList copy;
  copy.AddContVar("gone", "", kRoleNone);
  copy = list;
  list.GetEncoderAt(0)->AddStringValue("b");
  list.SetVariableRole(0, kRoleTarget);
  list.AddContVar("more", "", kRoleNone);
  list = KelVarList();

  ASSERT_EQ(copy.Size(), 1);
  EXPECT_EQ(copy.FindVariable("gone"), -1);
  EXPECT_EQ(copy.FindVariable("texts"), 0);
  EXPECT_EQ(copy.GetVarAt(0)->GetVariableRole(), kRoleNone);
  const IKelEncoder& encoder = *copy.GetEncoderAt(0);
  EXPECT_EQ(encoder.GetValueCount(), 1);
  EXPECT_EQ(encoder.EncodeString("a text that is too long to lie in the entry itself"), 0.0);
  EXPECT_EQ(*encoder.GetValueLabels(), Texts{"A"});
  EXPECT_TRUE(encoder.IsMissingString("none"));
  EXPECT_EQ(encoder.GetMissingLabelAt(0), "nothing");
  EXPECT_EQ(encoder.GetBinLabels(), (Texts{"low", "high"}));
  double low = 0;
  double high = 0;
  EXPECT_TRUE(encoder.GetInvalidRange(low, high));
  EXPECT_EQ(high, 2);
  EXPECT_EQ(list.Size(), 0);
}

TEST(KelVarListTest, NumericEncoder_Categories) {
  KelVarList list;
  list.AddCatVar("x", "", Numbers{3, kNaN, -0.0, KelMV::gMissingValue, 3, 0.1}, Texts{"three", "-", "", "-", "again"},
                 kRoleNone);
  IKelEncoder& encoder = *list.GetEncoderAt(0);
  ASSERT_EQ(encoder.GetValueCount(), 3);
  EXPECT_EQ(*encoder.GetValueLabels(), Texts{"three"});
  encoder.AddNumericValue(8, "eight");
  encoder.AddStringValue("9", "nine");  // no text among numbers
  EXPECT_EQ(encoder.GetValueCount(), 4);
  EXPECT_EQ(*encoder.GetValueLabels(), (Texts{"three", "", "", "eight"}));

  EXPECT_EQ(encoder.EncodeNumber(3), 0.0);
  EXPECT_EQ(encoder.EncodeNumber(0.0), 1.0);
  EXPECT_EQ(encoder.EncodeNumber(0.1), 2.0);
  for (const double unknown : {3.5, kNaN, KelMV::gMissingValue, 9.0}) EXPECT_EQ(encoder.EncodeNumber(unknown), -1.0);
  EXPECT_EQ(encoder.EncodeString(" 3.0 "), 0.0);
  for (const char* const unknown : {"", "3x", "nan", "9"}) EXPECT_EQ(encoder.EncodeString(unknown), -1.0) << unknown;

  EXPECT_EQ(encoder.GetNumericValueAt(2), 0.1);
  EXPECT_EQ(encoder.GetStringValueAt(2), "0.1");
  for (const int outside : {-1, 4}) {
    EXPECT_EQ(encoder.GetNumericValueAt(outside), KelMV::gMissingValue);
    EXPECT_EQ(encoder.GetStringValueAt(outside), "");
  }
}

TEST(KelVarListTest, StringEncoder_Categories) {
  KelVarList list;
  list.AddCatVar("x", "", Texts{"b", "", "12.50", "b"}, Texts{"", "", "price", "again"}, kRoleNone);
  IKelEncoder& encoder = *list.GetEncoderAt(0);
  encoder.AddNumericValue(12.5, "no number among texts");
  ASSERT_EQ(encoder.GetValueCount(), 3);
  EXPECT_EQ(*encoder.GetValueLabels(), (Texts{"", "", "price"}));
  EXPECT_EQ(encoder.EncodeString("b"), 0.0);
  EXPECT_EQ(encoder.EncodeString(""), 1.0);
  EXPECT_EQ(encoder.EncodeString("12.5"), -1.0);
  EXPECT_EQ(encoder.EncodeNumber(12.5), -1.0);
  EXPECT_EQ(encoder.GetStringValueAt(2), "12.50");
  EXPECT_EQ(encoder.GetNumericValueAt(2), 12.5);
  EXPECT_EQ(encoder.GetNumericValueAt(0), KelMV::gMissingValue);
  EXPECT_EQ(encoder.GetStringValueAt(3), "");
}

TEST(KelVarListTest, DeclaredMissing_StandsBesideTheCategories) {
  KelVarList list;
  list.AddCatVar("numbers", "", Numbers{9}, kRoleNone);
  list.AddCatVar("texts", "", Texts{"n/a"}, kRoleNone);
  IKelEncoder& numbers = *list.GetEncoderAt(0);
  numbers.AddMissingNumber(9, "refused");
  numbers.AddMissingNumber(99, "");
  EXPECT_TRUE(numbers.IsMissingNumber(9));
  EXPECT_EQ(numbers.EncodeNumber(9), 0.0);  // a category all the same
  EXPECT_EQ(numbers.EncodeNumber(99), -1.0);
  EXPECT_FALSE(numbers.IsMissingNumber(KelMV::gMissingValue));
  EXPECT_FALSE(numbers.IsMissingNumber(kNaN));
  EXPECT_EQ(numbers.GetMissingCount(), 2);
  EXPECT_EQ(numbers.GetMissingStringAt(1), "99");
  EXPECT_EQ(numbers.GetMissingLabelAt(0), "refused");
  EXPECT_EQ(numbers.GetMissingLabelAt(1), "");
  EXPECT_EQ(numbers.GetMissingStringAt(2), "");

  IKelEncoder& texts = *list.GetEncoderAt(1);
  texts.AddMissingString("n/a", "");
  EXPECT_TRUE(texts.IsMissingString("n/a"));
  EXPECT_FALSE(texts.IsMissingString(""));
  EXPECT_FALSE(texts.IsMissingNumber(9));
  EXPECT_EQ(texts.EncodeString("n/a"), 0.0);

  double low = 5;
  double high = 6;
  EXPECT_FALSE(texts.GetInvalidRange(low, high));
  EXPECT_EQ(low, 5);
  texts.SetInvalidRange(1, kMax);
  EXPECT_TRUE(texts.GetInvalidRange(low, high));
  EXPECT_EQ(high, kMax);
}

// Takes a minute or more if adding or finding goes through the categories one by one.
TEST(KelVarListTest, ManyCategories_AddAndEncodeQuickly) {
  constexpr int kCount = 100000;
  Texts texts;
  Numbers numbers;
  for (int i = 0; i < kCount; ++i) {
    texts.push_back("category " + std::to_string(i));
    numbers.push_back(i * 0.5);
  }
  KelVarList list;
  list.AddCatVar("texts", "", texts, texts, kRoleNone);
  list.AddCatVar("numbers", "", numbers, texts, kRoleNone);
  const KelVarList copy(list);
  for (int i = 0; i < kCount; ++i) {
    ASSERT_EQ(copy.GetVarAt(0)->GetEncoder()->EncodeString(texts[static_cast<std::size_t>(i)]), i);
    ASSERT_EQ(copy.GetVarAt(1)->GetEncoder()->EncodeNumber(i * 0.5), i);
  }
}

}  // namespace
