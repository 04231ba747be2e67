#pragma once

#include <string>

#include "scoring/common/KelExport.h"

namespace KelCommon_1_3 {

/// A dynamically loaded library, held by its platform handle.
///
/// Never throws for a library that can't be had: the object exists, its symbols don't, and `KelDiagnostics` has the
/// loader's reason. Objects are independent of each other; the platform's loader does its own locking.
class KEL_EXPORT KelDynamicLoadedLibrary {
 public:
  /// How a library is held.
  static constexpr int kKeepLoaded = 1;  ///< the destructor leaves the library mapped until the process ends

  /// Turns an undecorated name into the path of the library's file. A plain name is looked up beside the library
  /// that holds this class, then in its folder "plugins"; the result is an absolute path, never relative to the
  /// working directory. A name with a folder in it is taken as that path, with only the file name decorated. A name
  /// that can't name a library file (empty, or with control characters) gives an empty path and leaves a reason.
  static std::string KelDecorateDynamicPathName(const std::string& name);

  /// Loads the library at `path`, which names a folder: nothing is searched for by a bare file name.
  KelDynamicLoadedLibrary(const std::string& path, int mode);
  ~KelDynamicLoadedLibrary();
  KelDynamicLoadedLibrary(const KelDynamicLoadedLibrary&) = delete;
  KelDynamicLoadedLibrary& operator=(const KelDynamicLoadedLibrary&) = delete;

  /// The address of `symbol`, or null when the library or the symbol is missing.
  [[nodiscard]] void* GetSymbolAddress(const std::string& symbol) const;

 private:
  void* fHandle;
};

}  // namespace KelCommon_1_3
