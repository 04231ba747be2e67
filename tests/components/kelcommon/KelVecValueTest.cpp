#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "scoring/common/KelDisplay.h"
#include "scoring/common/KelSettings.h"
#include "scoring/common/KelVecValue.h"

namespace {

using KelCommon_1_3::Value;
using KelXML_1_3::IKelSettingValue;
using KelXML_1_3::KelSettings;
using KelXML_1_3::KelVecValue;

using Texts = KelVecValue<std::string>;
using Values = KelVecValue<Value>;

TEST(KelVecValueTest, Conversions_CountTheEntries) {
  const Texts none;
  EXPECT_FALSE(none.ToBool());
  EXPECT_EQ(none.ToSize(), 0U);
  EXPECT_EQ(none.ToLong(), 0);
  EXPECT_EQ(none.ToString(), "Vector Value: Length of vector = 0\n");
  EXPECT_EQ(none.ToDouble(), -1.7976931348623157e308);
  EXPECT_EQ(none.GetType(), 2);

  const Texts three({"7", "", "x"});
  EXPECT_TRUE(three.ToBool());
  EXPECT_EQ(three.ToSize(), 3U);
  EXPECT_EQ(three.ToLong(), 3);
  EXPECT_EQ(three.ToString(), "Vector Value: Length of vector = 3\n");
  EXPECT_EQ(three.ToDouble(), -1.7976931348623157e308);
}

TEST(KelVecValueTest, Order_IsLexicographic) {
  const std::vector<Texts> ascending = {
      Texts(),           Texts({""}),   Texts({"B"}), Texts({"a"}), Texts({"a", "b"}), Texts({"a", "b", "c"}),
      Texts({"a", "c"}), Texts({"aa"}),
  };
  for (std::size_t i = 0; i < ascending.size(); ++i) {
    for (std::size_t k = 0; k < ascending.size(); ++k) {
      const IKelSettingValue& other = ascending[k];
      EXPECT_EQ(ascending[i] < other, i < k) << i << " " << k;
      EXPECT_EQ(ascending[i] == other, i == k) << i << " " << k;
    }
  }
  const Texts left({"a", "b"});
  const IKelSettingValue& right = Texts(left);
  EXPECT_TRUE(left == right);
  EXPECT_FALSE(left < right);
}

TEST(KelVecValueTest, Order_OtherClass_IsFalseBothWays) {
  KelSettings settings;
  settings.AddSetting("flag", true, false);
  settings.AddSetting("nested", KelSettings(), false);
  const Texts texts({"a"});
  const Values values({Value("a")});
  const IKelSettingValue* const others[] = {&values, settings.GetSettingByName("flag")[0]->GetValue(),
                                            settings.GetSettingByName("nested")[0]->GetValue()};
  for (const IKelSettingValue* const other : others) {
    EXPECT_FALSE(texts == *other);
    EXPECT_FALSE(texts < *other);
    EXPECT_FALSE(*other == texts);
    EXPECT_FALSE(*other < texts);
  }
}

TEST(KelVecValueTest, Clone_IsIndependent) {
  Values original({Value(1), Value("x")});
  const std::unique_ptr<IKelSettingValue> copy(original.Clone());
  original.fValue[0] = 2;
  const auto* const values = dynamic_cast<const Values*>(copy.get());
  ASSERT_NE(values, nullptr);
  EXPECT_TRUE(values->fValue[0] == Value(1));
  EXPECT_TRUE(*copy < static_cast<const IKelSettingValue&>(original));
}

TEST(KelVecValueTest, Display_WritesKindAndCount) {
  std::ostringstream stream;
  KelDisplay_1_3::SetDisplayStream(&stream);
  Texts(std::vector<std::string>(1234)).Display();
  KelDisplay_1_3::DisplayText(2, "indented\n");
  KelDisplay_1_3::SetDisplayStream(nullptr);
  EXPECT_EQ(stream.str(), "Setting Value Type: Vector\nTotal number of setting value: 1234\n\n    indented\n");
}

}  // namespace
