#include "PluginLibrary.h"

#include <windows.h>

#include "FrameTable.h"

namespace quarda {
namespace {

/// As long as this library is loaded, errors find their way out of it through the engine. The
/// engine cannot go before its plug-ins.
struct TWayThroughEngine {
  TWayThroughEngine() : engine(::GetModuleHandleA("QDEngine.dll")) {
    if (engine != nullptr) platform::win32::LearnFrames(engine);
  }
  ~TWayThroughEngine() {
    if (engine != nullptr) platform::win32::ForgetFrames(engine);
  }

  HMODULE engine;
};

[[maybe_unused]] const TWayThroughEngine wayThroughEngine;

}  // namespace

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
