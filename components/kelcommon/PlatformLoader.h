#pragma once

#include <string>

/// The one place that calls the platform's loader of dynamic libraries.
namespace KelCommon_1_3::PlatformLoader {

/// A library's file name is its base name between these two.
inline constexpr char kFilePrefix[] = "lib";
inline constexpr char kFileSuffix[] = ".so";
/// The characters that separate a file name from its folder.
inline constexpr char kFolderMarks[] = "/";

/// Loads the library at `path`, whose symbols stay its own. With `keepLoaded` it stays mapped until the process ends,
/// whatever `Close` does. Null on failure, with the loader's words in `reason`.
void* Open(const std::string& path, bool keepLoaded, std::string& reason);
/// Null on failure, with the loader's words in `reason`.
void* FindSymbol(void* library, const std::string& symbol, std::string& reason);
void Close(void* library) noexcept;

/// The absolute path of the folder that holds the library with this code, as it was when that was loaded. Empty if the
/// platform doesn't know.
const std::string& OwnFolder() noexcept;

}  // namespace KelCommon_1_3::PlatformLoader
