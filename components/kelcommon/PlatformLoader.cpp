#include "components/kelcommon/PlatformLoader.h"

#include <dlfcn.h>
#include <filesystem>
#include <system_error>

namespace KelCommon_1_3::PlatformLoader {
namespace {

std::string LastError() {
  const char* const text = dlerror();
  return text != nullptr ? text : "the loader gives no reason";
}

std::string FindOwnFolder() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<const void*>(&FindOwnFolder), &info) == 0 || info.dli_fname == nullptr) return {};
  std::error_code error;
  const std::filesystem::path file = std::filesystem::absolute(info.dli_fname, error);
  return error ? std::string() : file.lexically_normal().parent_path().string();
}

// Worked out while the library is loaded: its path can be relative to the working directory of that moment.
const std::string ownFolder = FindOwnFolder();

}  // namespace

void* Open(const std::string& path, bool keepLoaded, std::string& reason) {
  void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | (keepLoaded ? RTLD_NODELETE : 0));
  if (library == nullptr) reason = LastError();
  return library;
}

void* FindSymbol(void* library, const std::string& symbol, std::string& reason) {
  dlerror();  // forgets what an earlier call left
  void* const address = dlsym(library, symbol.c_str());
  if (address == nullptr) reason = LastError();
  return address;
}

void Close(void* library) noexcept { dlclose(library); }

const std::string& OwnFolder() noexcept { return ownFolder; }

}  // namespace KelCommon_1_3::PlatformLoader
