#include "PluginLibrary.h"

#include <dlfcn.h>
#include <unwind.h>

namespace __gnu_cxx {
[[gnu::weak]] void __freeres();  // NOLINT(bugprone-reserved-identifier): the name is the runtime's
}  // namespace __gnu_cxx

namespace quarda {
namespace {

constexpr char kHere = 0;

_Unwind_Reason_Code StopAtOnce(_Unwind_Context*, void*) { return _URC_NORMAL_STOP; }

/// What the runtime that is linked in does not do by itself when the library comes and goes.
struct TRuntime {
  // An error that the engine raised enters the handlers of this library with the help of the
  // unwinder that is linked in, and one that was never used ends the process there.
  TRuntime() { _Unwind_Backtrace(StopAtOnce, nullptr); }
  // The memory put aside for errors stays behind otherwise, each time anew.
  ~TRuntime() {
    if (&__gnu_cxx::__freeres != nullptr && IsHere(&__gnu_cxx::__freeres)) __gnu_cxx::__freeres();
  }

  static bool IsHere(void (*function)()) {
    Dl_info ours{};
    Dl_info other{};
    return ::dladdr(&kHere, &ours) != 0 &&
           ::dladdr(reinterpret_cast<void*>(function), &other) != 0 &&
           ours.dli_fbase == other.dli_fbase;
  }
};

[[maybe_unused]] const TRuntime runtime;

}  // namespace

std::string PluginLibraryPath() {
  Dl_info library{};
  return ::dladdr(&kHere, &library) != 0 && library.dli_fname != nullptr ? library.dli_fname : "";
}

}  // namespace quarda
