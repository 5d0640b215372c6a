#include "Library.h"

#include <dlfcn.h>

#include <string>

#include "Paths.h"
#include "Quiet.h"

namespace quarda::platform {

// The loader reports no error code, so the spelling on the disk is looked for whatever went wrong.
TLibraryHandle LoadLibraryFile(std::string_view path) noexcept {
  return posix::OrElse(TLibraryHandle{0}, [&]() -> TLibraryHandle {
    constexpr int kFlags = RTLD_NOW | RTLD_LOCAL;
    const std::optional<std::string> native = posix::ToNative(path);
    if (!native) return 0;
    void* library = ::dlopen(native->c_str(), kFlags);
    if (library == nullptr && native->find('/') != std::string::npos) {
      const posix::TSpelling found = posix::FindSpelling(*native);
      if (found.missing == 0 && found.path != *native) {
        library = ::dlopen(found.path.c_str(), kFlags);
      }
    }
    return reinterpret_cast<TLibraryHandle>(library);
  });
}

void* FindExport(TLibraryHandle library, const char* name) noexcept {
  return library == 0 ? nullptr : ::dlsym(reinterpret_cast<void*>(library), name);
}

void UnloadLibrary(TLibraryHandle library) noexcept {
  if (library != 0) ::dlclose(reinterpret_cast<void*>(library));
}

}  // namespace quarda::platform
