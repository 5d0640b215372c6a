// Libraries are loaded by their full path only, so that the system searches no folder for them.
#include "Library.h"

#include "Files.h"
#include "FrameTable.h"
#include "Paths.h"
#include "Quiet.h"
#include "System.h"

namespace quarda::platform {

using namespace win32;

namespace {

/// The full path of the library's file; empty when there is none.
std::string FileOf(std::string_view given) {
  const std::optional<std::string> path = SystemPath(given);
  if (!path) return {};
  return NameStart(given) > 0 ? FullPath(given) : FindOnSearchPath(*path, ".dll");
}

}  // namespace

// Libraries that the loaded one needs are looked for beside it, which LoadLibraryA does not do.
TLibraryHandle LoadLibraryFile(std::string_view path) noexcept {
  return OrElse(TLibraryHandle{0}, [&]() -> TLibraryHandle {
    const std::string file = FileOf(path);
    if (file.empty()) return 0;
    const TNoErrorBoxes quiet;
    const HMODULE library = ::LoadLibraryExA(file.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (library != nullptr) LearnFrames(library);
    return reinterpret_cast<TLibraryHandle>(library);
  });
}

void* FindExport(TLibraryHandle library, const char* name) noexcept {
  if (library == 0) return nullptr;
  return reinterpret_cast<void*>(::GetProcAddress(reinterpret_cast<HMODULE>(library), name));
}

void UnloadLibrary(TLibraryHandle library) noexcept {
  if (library == 0) return;
  ForgetFrames(reinterpret_cast<HMODULE>(library));
  ::FreeLibrary(reinterpret_cast<HMODULE>(library));
}

}  // namespace quarda::platform
