#include "Library.h"

#include <dlfcn.h>
#include <unwind.h>

#include <string>

#include "FileCalls.h"
#include "Paths.h"
#include "Program.h"
#include "Quiet.h"

namespace quarda::platform {

using namespace posix;

namespace {

using TBacktrace = decltype(&_Unwind_Backtrace);

_Unwind_Reason_Code StopAtOnce(_Unwind_Context*, void*) { return _URC_NORMAL_STOP; }

/// An error is carried by the unwinder of the library that raised it, but every library enters its
/// handlers with the help of its own one, which gcc's runtime sets up at first use only; an
/// unwinder that was never used ends the process there. Ours is linked in, the other one is that
/// of the loaded library, when it is a shared one.
void SetUpUnwinders(void* library) {
  _Unwind_Backtrace(StopAtOnce, nullptr);
  const auto other = reinterpret_cast<TBacktrace>(::dlsym(library, "_Unwind_Backtrace"));
  if (other != nullptr) other(StopAtOnce, nullptr);
}

TLibraryHandle Load(const std::string& native) {
  void* const library = ::dlopen(native.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library != nullptr) SetUpUnwinders(library);
  return reinterpret_cast<TLibraryHandle>(library);
}

/// Loads the file if it is there. The path given to the loader always holds a slash, because one
/// without would be searched for.
TLibraryHandle LoadFromFolder(std::string_view path) {
  TLibraryHandle library = 0;
  OnExisting(path, [&](const std::string& native) {
    struct stat info;
    if (StatPath(native, info) != 0) return -1;
    library = Load(native.find('/') == std::string::npos ? "./" + native : native);
    return 0;
  });
  return library;
}

}  // namespace

TLibraryHandle LoadLibraryFile(std::string_view path) noexcept {
  return OrElse(TLibraryHandle{0}, [&]() -> TLibraryHandle {
    if (path.empty() || NameStart(path) > 0) return LoadFromFolder(path);
    std::string beside = ProgramFolder();
    beside.append("\\").append(path);
    const TLibraryHandle library = LoadFromFolder(beside);
    return library != 0 ? library : Load(std::string(path));
  });
}

void* FindExport(TLibraryHandle library, const char* name) noexcept {
  return library == 0 ? nullptr : ::dlsym(reinterpret_cast<void*>(library), name);
}

void UnloadLibrary(TLibraryHandle library) noexcept {
  if (library != 0) ::dlclose(reinterpret_cast<void*>(library));
}

}  // namespace quarda::platform
