#include "PluginLibrary.h"

#include <windows.h>

namespace quarda {

std::string PluginLibraryPath() {
  static const char kHere = 0;
  constexpr DWORD kAsAddress =
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
  HMODULE library = nullptr;
  char path[MAX_PATH];
  if (::GetModuleHandleExA(kAsAddress, &kHere, &library) == 0) return {};
  return std::string(path, ::GetModuleFileNameA(library, path, MAX_PATH));
}

}  // namespace quarda
