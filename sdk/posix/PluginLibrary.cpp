#include "PluginLibrary.h"

#include <dlfcn.h>
#include <unwind.h>

namespace quarda {
namespace {

constexpr char kHere = 0;

_Unwind_Reason_Code StopAtOnce(_Unwind_Context*, void*) { return _URC_NORMAL_STOP; }

// The unwinder of gcc's runtime is linked in. An error that the engine raised enters the handlers
// of this library with its help, and one that was never used ends the process there.
[[maybe_unused]] const _Unwind_Reason_Code isSetUp = _Unwind_Backtrace(StopAtOnce, nullptr);

}  // namespace

std::string PluginLibraryPath() {
  Dl_info library{};
  return ::dladdr(&kHere, &library) != 0 && library.dli_fname != nullptr ? library.dli_fname : "";
}

}  // namespace quarda
