#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <system_error>
#include <thread>

#include "scoring/common/KelDiagnostics.h"
#include "scoring/common/KelDynamicLoadedLibrary.h"

namespace {

using KelCommon_1_3::KelDiagnostics;
using KelCommon_1_3::KelDynamicLoadedLibrary;

constexpr int kMode = KelDynamicLoadedLibrary::kKeepLoaded;

namespace fs = std::filesystem;

std::string Decorate(const std::string& name) { return KelDynamicLoadedLibrary::KelDecorateDynamicPathName(name); }

// The module is built beside the library, where plain names are looked up.
const std::string kModuleName = "kelcommonprobe";

TEST(KelDynamicLoadedLibraryTest, PlainName_BesideTheLibrary_LoadsAndStays) {
  const std::string path = Decorate(kModuleName);
  EXPECT_TRUE(fs::path(path).is_absolute());
  EXPECT_EQ(fs::path(path).filename(), "lib" + kModuleName + ".so");
  using CountCalls = int();
  CountCalls* countCalls = nullptr;
  {
    const KelDynamicLoadedLibrary library(path, kMode);
    countCalls = reinterpret_cast<CountCalls*>(library.GetSymbolAddress("KelProbeCountCalls"));
    ASSERT_NE(countCalls, nullptr) << KelDiagnostics::Last();
    EXPECT_EQ(countCalls(), 1);
  }
  EXPECT_EQ(countCalls(), 2);  // the code is there after the object is gone
  const KelDynamicLoadedLibrary again(path, kMode);
  EXPECT_EQ(again.GetSymbolAddress("KelProbeCountCalls"), reinterpret_cast<void*>(countCalls));
  EXPECT_EQ(countCalls(), 3);  // and its state, too
}

TEST(KelDynamicLoadedLibraryTest, MissingSymbol_GivesNullAndReason) {
  const KelDynamicLoadedLibrary library(Decorate(kModuleName), kMode);
  for (const char* const symbol : {"GetScoreParser", "kelprobecountcalls", ""}) {
    KelDiagnostics::Clear();
    EXPECT_EQ(library.GetSymbolAddress(symbol), nullptr) << symbol;
    EXPECT_NE(KelDiagnostics::Last(), "");
  }
}

TEST(KelDynamicLoadedLibraryTest, MissingFile_GivesNullAndReasonThatNamesIt) {
  KelDiagnostics::Clear();
  const KelDynamicLoadedLibrary library(Decorate("nosuchmodule20r"), kMode);
  EXPECT_EQ(library.GetSymbolAddress("GetScoreParser"), nullptr);
  EXPECT_NE(KelDiagnostics::Last().find("libnosuchmodule20r.so"), std::string::npos) << KelDiagnostics::Last();
}

TEST(KelDynamicLoadedLibraryTest, NameWithFolder_IsThatPath) {
  EXPECT_EQ(Decorate("/some/where/plug"), "/some/where/libplug.so");
  EXPECT_EQ(Decorate("./plug"), "./libplug.so");
  EXPECT_EQ(Decorate("../up/plug"), "../up/libplug.so");
  EXPECT_EQ(Decorate("/plug"), "/libplug.so");

  const fs::path folder = fs::path(Decorate(kModuleName)).parent_path();
  const KelDynamicLoadedLibrary library(Decorate((folder / kModuleName).string()), kMode);
  EXPECT_NE(library.GetSymbolAddress("KelProbeCountCalls"), nullptr);
}

TEST(KelDynamicLoadedLibraryTest, PlainName_InPluginsFolder_IsFoundThere) {
  const fs::path beside = Decorate(kModuleName);
  const fs::path plugIns = beside.parent_path() / "plugins";
  fs::create_directories(plugIns);
  const fs::path copy = plugIns / "libkelcommonprobecopy.so";
  fs::copy_file(beside, copy, fs::copy_options::overwrite_existing);
  EXPECT_EQ(Decorate("kelcommonprobecopy"), copy.string());
  EXPECT_NE(KelDynamicLoadedLibrary(copy.string(), kMode).GetSymbolAddress("KelProbeCountCalls"), nullptr);
  fs::remove(copy);
  EXPECT_EQ(Decorate("kelcommonprobecopy"), (beside.parent_path() / copy.filename()).string());
  std::error_code notEmpty;
  fs::remove(plugIns, notEmpty);
}

TEST(KelDynamicLoadedLibraryTest, WorkingDirectory_IsNeverLookedAt) {
  const fs::path earlier = fs::current_path();
  fs::current_path(fs::path(Decorate(kModuleName)).parent_path());
  const fs::path decorated = Decorate(kModuleName);
  const KelDynamicLoadedLibrary library("lib" + kModuleName + ".so", kMode);  // undecorated: no folder
  EXPECT_EQ(library.GetSymbolAddress("KelProbeCountCalls"), nullptr);
  fs::current_path("/");
  EXPECT_EQ(fs::path(Decorate(kModuleName)), decorated);
  EXPECT_TRUE(decorated.is_absolute());
  fs::current_path(earlier);
}

TEST(KelDynamicLoadedLibraryTest, NamesThatNameNoFile_GiveEmptyPathAndReason) {
  const std::string names[] = {"", "folder/", "/", std::string("plug\0in", 7), "plug\nin", "dir\t/plug", "plug\x7F"};
  for (const std::string& name : names) {
    KelDiagnostics::Clear();
    const std::string path = Decorate(name);
    EXPECT_EQ(path, "") << name;
    const std::string reason = KelDiagnostics::Last();
    EXPECT_NE(reason, "") << name;
    EXPECT_EQ(KelDynamicLoadedLibrary(path, kMode).GetSymbolAddress("KelProbeCountCalls"), nullptr);
    EXPECT_EQ(KelDiagnostics::Last(), reason) << name;  // the attempt tells nothing better
  }
}

TEST(KelDynamicLoadedLibraryTest, PathsThatAreNoLibrary_GiveNull) {
  const fs::path folder = fs::path(Decorate(kModuleName)).parent_path();
  const std::string paths[] = {folder.string(), "/dev/null", "/" + std::string(300, 'x'),
                               Decorate(kModuleName) + std::string("\0x", 2)};
  for (const std::string& path : paths) {
    KelDiagnostics::Clear();
    EXPECT_EQ(KelDynamicLoadedLibrary(path, kMode).GetSymbolAddress("KelProbeCountCalls"), nullptr) << path;
    EXPECT_NE(KelDiagnostics::Last(), "") << path;
  }
  EXPECT_NE(Decorate(std::string(300, 'x')), "");
}

TEST(KelDiagnosticsTest, Reasons_BelongToTheirThread) {
  KelDiagnostics::Report("first");
  KelDiagnostics::Report("mine");
  std::string before = "unset";
  std::thread([&before] {
    before = KelDiagnostics::Last();
    KelDiagnostics::Report("another thread's");
  }).join();
  EXPECT_EQ(before, "");
  EXPECT_EQ(KelDiagnostics::Last(), "mine");
  KelDiagnostics::Clear();
  EXPECT_EQ(KelDiagnostics::Last(), "");
}

}  // namespace
