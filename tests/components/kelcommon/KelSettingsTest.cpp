#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "scoring/common/KelSettings.h"

namespace {

using KelCommon_1_3::Value;
using KelXML_1_3::IKelSettingValue;
using KelXML_1_3::KelSetting;
using KelXML_1_3::KelSettings;
using KelXML_1_3::KelVecValue;

using Names = std::vector<std::string>;

Names NamesOf(const KelSettings& settings) {
  Names names = {"from before"};
  settings.GetSettingNames(names);
  return names;
}

std::string TextOf(const KelSettings& settings, const std::string& name) {
  std::string text = "none";
  settings.GetSettingValByName(name, text);
  return text;
}

TEST(KelSettingsTest, EachKind_ReadsBack) {
  KelSettings nested;
  nested.AddSetting("inner", "x", false);
  KelSettings settings;
  EXPECT_TRUE(settings.AddSetting("text", "literal", false));  // a text, no bool
  EXPECT_TRUE(settings.AddSetting("flag", true, false));
  EXPECT_TRUE(settings.AddSetting("texts", Names{"a", "b"}, false));
  EXPECT_TRUE(settings.AddSetting("list", KelVecValue<std::string>({"c"}), false));
  EXPECT_TRUE(settings.AddSetting("values", KelVecValue<Value>({Value(1), Value("y")}), false));
  EXPECT_TRUE(settings.AddSetting("nested", nested, false));
  nested.AddSetting("later", "not in the copy", false);

  EXPECT_EQ(TextOf(settings, "text"), "literal");
  EXPECT_EQ(settings.GetSettingByName("text")[0]->GetValue(), nullptr);
  bool flag = false;
  EXPECT_TRUE(settings.GetSettingValByName("flag", flag));
  EXPECT_TRUE(flag);
  EXPECT_EQ(settings.GetSettingByName("flag")[0]->GetText(), "");
  Names texts;
  EXPECT_TRUE(settings.GetSettingValByName("texts", texts));
  EXPECT_EQ(texts, (Names{"a", "b"}));
  EXPECT_TRUE(settings.GetSettingValByName("list", texts));
  EXPECT_EQ(texts, Names{"c"});
  KelVecValue<Value> values;
  EXPECT_TRUE(settings.GetSettingValByName("values", values));
  EXPECT_TRUE(values.fValue == (std::vector<Value>{Value(1), Value("y")}));
  KelSettings read;
  EXPECT_TRUE(settings.GetSettingValByName("nested", read));
  EXPECT_EQ(NamesOf(read), Names{"inner"});
}

TEST(KelSettingsTest, WrongKindOrName_LeavesTheTargetUnchanged) {
  KelSettings settings;
  settings.AddSetting("text", "yes", false);
  settings.AddSetting("texts", Names{"a"}, false);
  std::string text = "kept";
  Names texts = {"kept"};
  bool flag = true;
  KelSettings nested;
  nested.AddSetting("kept", "", false);
  for (const char* const name : {"text", "texts", "absent", ""}) {
    EXPECT_FALSE(settings.GetSettingValByName(name, flag)) << name;
    EXPECT_FALSE(settings.GetSettingValByName(name, nested)) << name;
  }
  EXPECT_FALSE(settings.GetSettingValByName("texts", text));
  EXPECT_FALSE(settings.GetSettingValByName("text", texts));
  EXPECT_EQ(text, "kept");
  EXPECT_EQ(texts, Names{"kept"});
  EXPECT_TRUE(flag);
  EXPECT_EQ(NamesOf(nested), Names{"kept"});
}

TEST(KelSettingsTest, SeveralOfOneName_FirstOfTheWantedKindCounts) {
  KelSettings settings;
  settings.AddSetting("s", Names{"a"}, false);
  settings.AddSetting("s", "maybe", false);
  settings.AddSetting("s", "false", false);
  settings.AddSetting("s", true, false);
  settings.AddSetting("s", Names{"b"}, false);
  EXPECT_EQ(settings.GetSettingByName("s").size(), 5U);
  EXPECT_EQ(TextOf(settings, "s"), "maybe");
  bool flag = true;
  EXPECT_TRUE(settings.GetSettingValByName("s", flag));  // the text "false" stands before the bool
  EXPECT_FALSE(flag);
  Names texts;
  EXPECT_TRUE(settings.GetSettingValByName("s", texts));
  EXPECT_EQ(texts, Names{"a"});
}

TEST(KelSettingsTest, Replace_RemovesAllAndKeepsTheFirstPlace) {
  KelSettings settings;
  for (const char* const name : {"a", "b", "c", "b", "d", "b"}) settings.AddSetting(name, "old", false);
  EXPECT_EQ(NamesOf(settings), (Names{"a", "b", "c", "d"}));
  settings.AddSetting("b", "new", true);
  settings.AddSetting("e", "added", true);
  EXPECT_EQ(NamesOf(settings), (Names{"a", "b", "c", "d", "e"}));
  ASSERT_EQ(settings.GetSettingByName("b").size(), 1U);
  EXPECT_EQ(TextOf(settings, "b"), "new");
  EXPECT_EQ(TextOf(settings, "d"), "old");
  settings.AddSetting("b", Names{"x"}, true);
  EXPECT_EQ(TextOf(settings, "b"), "none");
  settings.AddSetting("d", "appended", false);
  EXPECT_EQ(settings.GetSettingByName("d")[1]->GetText(), "appended");
}

TEST(KelSettingsTest, Replace_WithOwnContent_CopiesFirst) {
  KelSettings settings;
  settings.AddSetting("s", "a text that is too long to lie in the setting itself", false);
  settings.AddSetting("s", "other", false);
  const KelSetting& first = *settings.GetSettingByName("s")[0];
  settings.AddSetting(first.GetName(), first.GetText(), true);
  EXPECT_EQ(TextOf(settings, "s"), "a text that is too long to lie in the setting itself");

  settings.AddSetting("self", settings, true);
  KelSettings nested;
  ASSERT_TRUE(settings.GetSettingValByName("self", nested));
  EXPECT_EQ(NamesOf(nested), Names{"s"});
  ASSERT_TRUE(settings.GetSettingValByName("self", settings));  // becomes what lay in it
  EXPECT_EQ(NamesOf(settings), Names{"s"});
}

TEST(KelSettingsTest, Copy_IsDeep) {
  KelSettings settings;
  settings.AddSetting("texts", Names{"a"}, false);
  KelSettings copy(settings);
  KelSettings assigned;
  assigned.AddSetting("gone", "", false);
  assigned = settings;
  dynamic_cast<KelVecValue<std::string>&>(*settings.GetSettingByName("texts")[0]->GetValue()).fValue[0] = "changed";
  settings.AddSetting("more", "", false);
  for (const KelSettings* const each : {&copy, &assigned}) {
    EXPECT_EQ(NamesOf(*each), Names{"texts"});
    Names texts;
    EXPECT_TRUE(each->GetSettingValByName("texts", texts));
    EXPECT_EQ(texts, Names{"a"});
  }
}

// Copies share a value until somebody asks for it, which mustn't show.
TEST(KelSettingsTest, ChangedValue_ShowsInItsSettingAndLaterCopies) {
  const auto list = [](const KelSettings& settings) -> Names& {
    return dynamic_cast<KelVecValue<std::string>&>(*settings.GetSettingByName("texts")[0]->GetValue()).fValue;
  };
  const auto read = [](const KelSettings& settings) {
    Names texts;
    settings.GetSettingValByName("texts", texts);
    return texts;
  };
  KelSettings first;
  first.AddSetting("texts", Names{"a"}, false);
  KelSettings second(first);
  list(second)[0] = "b";
  const KelSettings third(second);
  list(second)[0] = "c";
  EXPECT_EQ(&list(second), &list(second));
  EXPECT_EQ(read(first), Names{"a"});
  EXPECT_EQ(read(second), Names{"c"});
  EXPECT_EQ(read(third), Names{"b"});
  KelSetting assigned = *third.GetSettingByName("texts")[0];
  assigned = *second.GetSettingByName("texts")[0];
  EXPECT_TRUE(*assigned.GetValue() == *second.GetSettingByName("texts")[0]->GetValue());
}

TEST(KelSettingsTest, ValueAskedForByManyThreads_IsOne) {
  KelSettings settings;
  settings.AddSetting("texts", Names(1000, "a text"), false);
  for (int round = 0; round < 20; ++round) {
    const KelSettings copy(settings);
    std::vector<const IKelSettingValue*> values(4);
    std::vector<std::thread> threads;
    for (const IKelSettingValue*& value : values)
      threads.emplace_back([&copy, &value] { value = copy.GetSettingByName("texts")[0]->GetValue(); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(std::count(values.begin(), values.end(), values[0]), 4);
  }
}

// The values of a bool and of nested settings are reached through the interface only.
TEST(KelSettingsTest, BoolAndNestedValues_ConvertAndCompare) {
  const auto nested = [](const char* name, const char* text, bool flag) {
    KelSettings settings;
    settings.AddSetting(name, text, false);
    settings.AddSetting("flag", flag, false);
    return settings;
  };
  KelSettings holder;
  holder.AddSetting("v", false, false);
  holder.AddSetting("v", true, false);
  holder.AddSetting("v", KelSettings(), false);
  holder.AddSetting("v", nested("a", "x", false), false);
  holder.AddSetting("v", nested("a", "x", true), false);
  holder.AddSetting("v", nested("a", "y", false), false);
  holder.AddSetting("v", nested("b", "x", false), false);
  const KelSettings copy(holder);
  const std::vector<KelSetting*> settings = holder.GetSettingByName("v");
  const std::vector<KelSetting*> copies = copy.GetSettingByName("v");
  constexpr std::size_t kBools = 2;
  for (std::size_t i = 0; i < settings.size(); ++i) {
    for (std::size_t k = 0; k < settings.size(); ++k) {
      const bool sameClass = (i < kBools) == (k < kBools);
      EXPECT_EQ(*settings[i]->GetValue() == *copies[k]->GetValue(), i == k) << i << " " << k;
      EXPECT_EQ(*settings[i]->GetValue() < *copies[k]->GetValue(), sameClass && i < k) << i << " " << k;
    }
  }
  const IKelSettingValue& flag = *settings[1]->GetValue();
  EXPECT_EQ(flag.GetType(), 1);
  EXPECT_EQ(flag.ToString(), "true");
  EXPECT_EQ(flag.ToLong(), 1);
  const IKelSettingValue& inner = *settings[3]->GetValue();
  EXPECT_EQ(inner.GetType(), 3);
  EXPECT_EQ(inner.ToSize(), 2U);
  EXPECT_TRUE(inner.ToBool());
  EXPECT_FALSE(settings[2]->GetValue()->ToBool());
}

// What could only become a bool on the way doesn't compile.
template <typename T>
concept Settable = requires(KelSettings settings, T value) {
  settings.AddSetting("name", value, true);
};
enum Unscoped { kOne };
enum class Scoped { kTwo };
static_assert(Settable<bool> && Settable<const char*> && Settable<char*> && Settable<std::string>);
static_assert(Settable<Names> && Settable<KelVecValue<Value>> && Settable<KelSettings>);
static_assert(!Settable<int> && !Settable<double> && !Settable<Unscoped> && !Settable<Scoped>);
static_assert(!Settable<Value> && !Settable<const Value> && !Settable<const int*>);

}  // namespace
