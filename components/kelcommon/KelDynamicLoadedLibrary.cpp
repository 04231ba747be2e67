#include "scoring/common/KelDynamicLoadedLibrary.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "components/kelcommon/PlatformLoader.h"
#include "scoring/common/KelDiagnostics.h"

namespace KelCommon_1_3 {
namespace {

constexpr char kPlugInFolder[] = "plugins";

bool HasControlCharacter(const std::string& text) {
  return std::any_of(text.begin(), text.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F;
  });
}

bool HasFolder(const std::string& path) {
  return path.find_first_of(PlatformLoader::kFolderMarks) != std::string::npos;
}

// `folder` with its separator, or empty.
std::string FileIn(const std::string& folder, const std::string& baseName) {
  return folder + PlatformLoader::kFilePrefix + baseName + PlatformLoader::kFileSuffix;
}

bool IsFile(const std::string& path) {
  std::error_code error;
  return std::filesystem::is_regular_file(path, error);
}

// A file that is in neither place is named as if it were in the first, where people look for it.
std::string FindBesideThisLibrary(const std::string& baseName) {
  if (PlatformLoader::OwnFolder().empty()) {
    KelDiagnostics::Report("the folder of the common library can't be found, so no plug-in can be");
    return {};
  }
  const std::string home = PlatformLoader::OwnFolder() + '/';
  const std::string beside = FileIn(home, baseName);
  const std::string inPlugIns = FileIn(home + kPlugInFolder + '/', baseName);
  return !IsFile(beside) && IsFile(inPlugIns) ? inPlugIns : beside;
}

// A name or path that the loader would take for something else than a file in a folder; empty if there is nothing.
std::string FaultOfPath(const std::string& path) {
  if (HasControlCharacter(path)) return "a library's path has control characters";
  if (!HasFolder(path)) return "a library's path names no folder: \"" + path + '"';
  return {};
}

}  // namespace

std::string KelDynamicLoadedLibrary::KelDecorateDynamicPathName(const std::string& name) {
  const std::size_t folderEnd = name.find_last_of(PlatformLoader::kFolderMarks);
  const std::size_t baseStart = folderEnd == std::string::npos ? 0 : folderEnd + 1;
  if (baseStart == name.size() || HasControlCharacter(name)) {
    KelDiagnostics::Report("a library's name is empty or has control characters");
    return {};
  }
  const std::string baseName = name.substr(baseStart);
  return baseStart == 0 ? FindBesideThisLibrary(baseName) : FileIn(name.substr(0, baseStart), baseName);
}

KelDynamicLoadedLibrary::KelDynamicLoadedLibrary(const std::string& path, int mode) : fHandle(nullptr) {
  if (path.empty()) return;  // what the decoration gives for a bad name, with the reason told
  std::string fault = FaultOfPath(path);
  if (fault.empty()) fHandle = PlatformLoader::Open(path, mode == kKeepLoaded, fault);
  if (fHandle == nullptr) KelDiagnostics::Report(fault);
}

KelDynamicLoadedLibrary::~KelDynamicLoadedLibrary() {
  if (fHandle != nullptr) PlatformLoader::Close(fHandle);
}

void* KelDynamicLoadedLibrary::GetSymbolAddress(const std::string& symbol) const {
  if (fHandle == nullptr) return nullptr;
  std::string reason;
  void* const address = PlatformLoader::FindSymbol(fHandle, symbol, reason);
  if (address == nullptr) KelDiagnostics::Report(reason);
  return address;
}

}  // namespace KelCommon_1_3
